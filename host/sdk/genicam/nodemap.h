#pragma once

#include "genicam/inodemap.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Kalto {

/// A GenICam-style feature tree: typed nodes in registration order.
///
/// Writes through the set* calls respect the node's access mode and throw
/// GenICam_3_1_Ostrel_kalto::RuntimeException naming the feature when the node
/// is unknown, of another type, or not writable. Numeric writes outside the
/// range are clipped; float writes are rounded to the increment when it is
/// non-zero, integer writes always. The store* calls are the device's own
/// updates (an auto function moving a read-only ExposureTime): same clipping,
/// no access check. Reads never check the access mode; callers that act for a
/// user test isReadable first.
///
/// A feature selected by an enumeration selector keeps one value per selector
/// entry; plain calls address the entry the selector currently holds, the
/// *For calls a named entry.
///
/// Every call takes one recursive mutex. Change callbacks run under it, after
/// the change, on the writer's thread: they may call back into the map but
/// must not wait for another thread that uses it.
class CNodeMap : public INodeMap {
public:
    using AccessFunction = std::function<EAccessMode()>;

    explicit CNodeMap(std::string name = "Device");
    ~CNodeMap() override;
    CNodeMap(const CNodeMap&) = delete;
    CNodeMap& operator=(const CNodeMap&) = delete;

    const std::string& name() const override;
    std::recursive_mutex& mutex() const override;

    // Registration. A second node of the same name throws.
    void addFloat(const std::string& name, double min, double max, double increment, double value,
                  const std::string& unit = std::string());
    void addInteger(const std::string& name, int64_t min, int64_t max, int64_t increment,
                    int64_t value);
    void addEnumeration(const std::string& name, std::vector<SEnumEntry> entries,
                        const std::string& symbolic);
    void addBoolean(const std::string& name, bool value);
    void addString(const std::string& name, const std::string& value, size_t maxLength = 1024);
    void addCommand(const std::string& name, std::function<void()> execute);
    /// Makes `feature` keep one value per entry of the enumeration `selector`;
    /// every entry starts with the feature's current value.
    void setSelectedBy(const std::string& feature, const std::string& selector);
    void setAccessMode(const std::string& name, EAccessMode mode);
    /// State-dependent access; the effective mode is the lower of both.
    void setAccessFunction(const std::string& name, AccessFunction function);
    /// Whether the node goes into feature-persistence text (value nodes default to yes).
    void setPersistent(const std::string& name, bool persistent);
    void setEntryAvailable(const std::string& enumeration, const std::string& symbolic,
                           bool available);
    /// Changes the limits at run time; stored values are clipped into them.
    void setFloatRange(const std::string& name, double min, double max);
    void setIntegerRange(const std::string& name, int64_t min, int64_t max);

    /// `feature` empty: called for every node. Returns an id for removeChangeCallback.
    int addChangeCallback(const std::string& feature, ChangeCallback callback) override;
    void removeChangeCallback(int id) override;

    // Structure.
    bool hasNode(const std::string& name) const override;
    std::vector<std::string> nodeNames() const override;
    ENodeType nodeType(const std::string& name) const override;
    EAccessMode accessMode(const std::string& name) const override;
    bool isAvailable(const std::string& name) const override;  // exists and not NA
    bool isReadable(const std::string& name) const override;
    bool isWritable(const std::string& name) const override;
    bool isPersistent(const std::string& name) const override;
    /// The selector of `feature`, empty when it is not selected.
    std::string selectorOf(const std::string& feature) const override;
    /// The features `selector` selects, in registration order.
    std::vector<std::string> selectedFeatures(const std::string& selector) const override;

    // Float.
    double getFloat(const std::string& name) const override;
    double getFloatFor(const std::string& name, const std::string& selectorEntry) const override;
    double floatMin(const std::string& name) const override;
    double floatMax(const std::string& name) const override;
    double floatIncrement(const std::string& name) const override;  ///< 0: continuous
    std::string floatUnit(const std::string& name) const override;
    /// Returns the value actually stored (clipped and rounded).
    double setFloat(const std::string& name, double value) override;
    double storeFloat(const std::string& name, double value);
    double storeFloatFor(const std::string& name, const std::string& selectorEntry, double value);

    // Integer.
    int64_t getInteger(const std::string& name) const override;
    int64_t getIntegerFor(const std::string& name, const std::string& selectorEntry) const override;
    int64_t integerMin(const std::string& name) const override;
    int64_t integerMax(const std::string& name) const override;
    int64_t integerIncrement(const std::string& name) const override;
    int64_t setInteger(const std::string& name, int64_t value) override;
    int64_t storeInteger(const std::string& name, int64_t value);

    // Enumeration; an unknown or unavailable entry throws.
    std::string getEnum(const std::string& name) const override;
    std::string getEnumFor(const std::string& name, const std::string& selectorEntry) const override;
    int64_t getEnumValue(const std::string& name) const override;
    std::vector<SEnumEntry> enumEntries(const std::string& name) const override;
    bool isEntryAvailable(const std::string& name, const std::string& symbolic) const override;
    void setEnum(const std::string& name, const std::string& symbolic) override;
    void setEnumValue(const std::string& name, int64_t value) override;
    void storeEnum(const std::string& name, const std::string& symbolic);

    // Boolean.
    bool getBool(const std::string& name) const override;
    bool getBoolFor(const std::string& name, const std::string& selectorEntry) const override;
    void setBool(const std::string& name, bool value) override;
    void storeBool(const std::string& name, bool value);

    // String; longer than the maximum length throws.
    std::string getString(const std::string& name) const override;
    std::string getStringFor(const std::string& name, const std::string& selectorEntry) const override;
    size_t stringMaxLength(const std::string& name) const override;
    void setString(const std::string& name, const std::string& value) override;
    void storeString(const std::string& name, const std::string& value);

    /// Runs the command's callback; throws when not writable.
    void execute(const std::string& name) override;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

}  // namespace Kalto
