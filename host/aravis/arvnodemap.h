#pragma once

#include "genicam/inodemap.h"

#include <memory>

typedef struct _ArvDevice ArvDevice;

namespace Kalto {

/// The node map of a GenICam device reached through Aravis: every read and
/// write goes to the device through its own GenICam description, nothing is
/// kept on this side but the structure (feature names, categories, selectors).
///
/// Features are listed in the order of a depth-first walk from the "Root"
/// category. A feature is persistent when its description marks it
/// Streamable. Writes are clipped into the range and rounded to the increment
/// the device reports before they are sent; the set* calls return what the
/// device then reads back. Change callbacks see the writes made through this
/// map (a selector's also for the features it selects, UserSetLoad for every
/// feature), not changes the device makes on its own.
///
/// The map serves one connection at a time: attach() gives it the device,
/// detach() takes it away; detached, every value call throws naming the
/// feature and the structure is empty.
class CArvNodeMap : public INodeMap {
public:
    explicit CArvNodeMap(std::string name);
    ~CArvNodeMap() override;
    CArvNodeMap(const CArvNodeMap&) = delete;
    CArvNodeMap& operator=(const CArvNodeMap&) = delete;

    /// Takes a reference to `device` (released by detach or the destructor).
    void attach(ArvDevice* device);
    void detach();
    bool isAttached() const;

    const std::string& name() const override;
    std::recursive_mutex& mutex() const override;

    bool hasNode(const std::string& name) const override;
    std::vector<std::string> nodeNames() const override;
    ENodeType nodeType(const std::string& name) const override;
    EAccessMode accessMode(const std::string& name) const override;
    bool isAvailable(const std::string& name) const override;
    bool isReadable(const std::string& name) const override;
    bool isWritable(const std::string& name) const override;
    bool isPersistent(const std::string& name) const override;
    std::string selectorOf(const std::string& feature) const override;
    std::vector<std::string> selectedFeatures(const std::string& selector) const override;

    double getFloat(const std::string& name) const override;
    double getFloatFor(const std::string& name, const std::string& selectorEntry) const override;
    double floatMin(const std::string& name) const override;
    double floatMax(const std::string& name) const override;
    double floatIncrement(const std::string& name) const override;
    std::string floatUnit(const std::string& name) const override;
    double setFloat(const std::string& name, double value) override;

    int64_t getInteger(const std::string& name) const override;
    int64_t getIntegerFor(const std::string& name, const std::string& selectorEntry) const override;
    int64_t integerMin(const std::string& name) const override;
    int64_t integerMax(const std::string& name) const override;
    int64_t integerIncrement(const std::string& name) const override;
    int64_t setInteger(const std::string& name, int64_t value) override;

    std::string getEnum(const std::string& name) const override;
    std::string getEnumFor(const std::string& name, const std::string& selectorEntry) const override;
    int64_t getEnumValue(const std::string& name) const override;
    std::vector<SEnumEntry> enumEntries(const std::string& name) const override;
    bool isEntryAvailable(const std::string& name, const std::string& symbolic) const override;
    void setEnum(const std::string& name, const std::string& symbolic) override;
    void setEnumValue(const std::string& name, int64_t value) override;

    bool getBool(const std::string& name) const override;
    bool getBoolFor(const std::string& name, const std::string& selectorEntry) const override;
    void setBool(const std::string& name, bool value) override;

    std::string getString(const std::string& name) const override;
    std::string getStringFor(const std::string& name, const std::string& selectorEntry) const override;
    size_t stringMaxLength(const std::string& name) const override;
    void setString(const std::string& name, const std::string& value) override;

    void execute(const std::string& name) override;

    int addChangeCallback(const std::string& feature, ChangeCallback callback) override;
    void removeChangeCallback(int id) override;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

}  // namespace Kalto
