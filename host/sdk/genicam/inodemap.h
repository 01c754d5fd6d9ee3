#pragma once

#include "genicam/nodetypes.h"

#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace Kalto {

/// A camera's GenICam feature tree as its users see it: structure, access,
/// typed values, selectors and the persistence flags. Implemented in memory
/// (CNodeMap, the emulator's) and over a real device's own node map.
///
/// Every call throws GenICam_3_1_Ostrel_kalto::RuntimeException naming the
/// feature when it is unknown, of another type, not writable for a set, or
/// when the device refuses. Numeric writes outside the range are clipped and
/// rounded to the increment; the set* calls return what the device then holds.
/// Reads do not check the access mode: callers acting for a user test
/// isReadable first.
///
/// mutex() serialises every call; hold it across calls that must see one state.
/// Change callbacks run under it, after the change, on the writer's thread.
class INodeMap {
public:
    using ChangeCallback = std::function<void(const std::string& feature)>;

    virtual ~INodeMap() = default;

    virtual const std::string& name() const = 0;
    virtual std::recursive_mutex& mutex() const = 0;

    // Structure.
    virtual bool hasNode(const std::string& name) const = 0;
    /// Every feature, in the order persistence writes them.
    virtual std::vector<std::string> nodeNames() const = 0;
    virtual ENodeType nodeType(const std::string& name) const = 0;
    /// NA for unknown features.
    virtual EAccessMode accessMode(const std::string& name) const = 0;
    virtual bool isAvailable(const std::string& name) const = 0;
    virtual bool isReadable(const std::string& name) const = 0;  ///< never for commands
    virtual bool isWritable(const std::string& name) const = 0;
    /// Whether the feature belongs in feature-persistence text (GenICam's Streamable).
    virtual bool isPersistent(const std::string& name) const = 0;
    /// The selector of `feature`, empty when it is not selected.
    virtual std::string selectorOf(const std::string& feature) const = 0;
    /// The features `selector` selects.
    virtual std::vector<std::string> selectedFeatures(const std::string& selector) const = 0;

    // The *For reads give a selected feature's value for a selector entry
    // other than the current one (the selection is the same afterwards).

    // Float.
    virtual double getFloat(const std::string& name) const = 0;
    virtual double getFloatFor(const std::string& name, const std::string& selectorEntry) const = 0;
    virtual double floatMin(const std::string& name) const = 0;
    virtual double floatMax(const std::string& name) const = 0;
    virtual double floatIncrement(const std::string& name) const = 0;  ///< 0: continuous
    virtual std::string floatUnit(const std::string& name) const = 0;
    virtual double setFloat(const std::string& name, double value) = 0;

    // Integer.
    virtual int64_t getInteger(const std::string& name) const = 0;
    virtual int64_t getIntegerFor(const std::string& name, const std::string& selectorEntry) const = 0;
    virtual int64_t integerMin(const std::string& name) const = 0;
    virtual int64_t integerMax(const std::string& name) const = 0;
    virtual int64_t integerIncrement(const std::string& name) const = 0;
    virtual int64_t setInteger(const std::string& name, int64_t value) = 0;

    // Enumeration; an unknown or unavailable entry throws.
    virtual std::string getEnum(const std::string& name) const = 0;
    virtual std::string getEnumFor(const std::string& name, const std::string& selectorEntry) const = 0;
    virtual int64_t getEnumValue(const std::string& name) const = 0;
    virtual std::vector<SEnumEntry> enumEntries(const std::string& name) const = 0;
    virtual bool isEntryAvailable(const std::string& name, const std::string& symbolic) const = 0;
    virtual void setEnum(const std::string& name, const std::string& symbolic) = 0;
    virtual void setEnumValue(const std::string& name, int64_t value) = 0;

    // Boolean.
    virtual bool getBool(const std::string& name) const = 0;
    virtual bool getBoolFor(const std::string& name, const std::string& selectorEntry) const = 0;
    virtual void setBool(const std::string& name, bool value) = 0;

    // String; longer than the maximum length (bytes) throws.
    virtual std::string getString(const std::string& name) const = 0;
    virtual std::string getStringFor(const std::string& name, const std::string& selectorEntry) const = 0;
    virtual size_t stringMaxLength(const std::string& name) const = 0;
    virtual void setString(const std::string& name, const std::string& value) = 0;

    /// Runs the command; throws when it is not writable.
    virtual void execute(const std::string& name) = 0;

    /// `feature` empty: called for every feature. Returns an id for removeChangeCallback.
    virtual int addChangeCallback(const std::string& feature, ChangeCallback callback) = 0;
    virtual void removeChangeCallback(int id) = 0;
};

}  // namespace Kalto
