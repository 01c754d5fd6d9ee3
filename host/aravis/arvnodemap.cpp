#include "arvnodemap.h"

#include "genicam/runtimeexception.h"

#include <arv.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <set>

namespace Kalto {

namespace {

using Lock = std::lock_guard<std::recursive_mutex>;

// The element names of GenICam's value nodes, by the type users see.
bool typeOfElement(const char* element, ENodeType& type)
{
    static const std::map<std::string, ENodeType> types = {
        {"Float", ENodeType::Float},          {"FloatReg", ENodeType::Float},
        {"Converter", ENodeType::Float},      {"SwissKnife", ENodeType::Float},
        {"Integer", ENodeType::Integer},      {"IntReg", ENodeType::Integer},
        {"MaskedIntReg", ENodeType::Integer}, {"IntConverter", ENodeType::Integer},
        {"IntSwissKnife", ENodeType::Integer}, {"StructEntry", ENodeType::Integer},
        {"Enumeration", ENodeType::Enumeration}, {"Boolean", ENodeType::Boolean},
        {"String", ENodeType::String},        {"StringReg", ENodeType::String},
        {"Command", ENodeType::Command},
    };
    const auto it = element ? types.find(element) : types.end();
    if (it == types.end())
        return false;
    type = it->second;
    return true;
}

// Selected-feature reads switch the selector and must put it back whatever happens.
class SelectorRestore {
public:
    SelectorRestore(CArvNodeMap& map, std::string selector, std::string entry)
        : m_map(map), m_selector(std::move(selector)), m_entry(std::move(entry))
    {
    }
    ~SelectorRestore()
    {
        try {
            m_map.setEnum(m_selector, m_entry);
        } catch (const std::exception&) {
            // The device is gone; there is no selection left to restore.
        }
    }

private:
    CArvNodeMap& m_map;
    std::string m_selector;
    std::string m_entry;
};

}  // namespace

struct CArvNodeMap::Impl {
    std::string name;
    mutable std::recursive_mutex mutex;
    ArvDevice* device = nullptr;
    ArvGc* gc = nullptr;

    // Structure, read once per connection.
    mutable bool structureRead = false;
    mutable std::vector<std::string> names;
    mutable std::map<std::string, std::string> selectorOf;
    mutable std::map<std::string, std::vector<std::string>> selected;

    struct Callback {
        std::string feature;  // empty: every feature
        ChangeCallback fn;
    };
    std::map<int, Callback> callbacks;
    int nextCallbackId = 1;
    // Callbacks suspended while a *For read switches a selector and back.
    int quiet = 0;

    [[noreturn]] static void fail(const std::string& what) { KALTO_THROW_RUNTIME(what); }

    ArvGcFeatureNode* find(const std::string& n) const
    {
        if (!gc || n.empty())
            return nullptr;
        ArvGcNode* node = arv_gc_get_node(gc, n.c_str());
        return node && ARV_IS_GC_FEATURE_NODE(node) ? ARV_GC_FEATURE_NODE(node) : nullptr;
    }

    bool typeOf(ArvGcFeatureNode* node, ENodeType& type) const
    {
        return typeOfElement(arv_dom_node_get_node_name(ARV_DOM_NODE(node)), type);
    }

    ArvGcFeatureNode* node(const std::string& n) const
    {
        if (!gc)
            fail("Feature " + n + ": camera " + name + " is not connected");
        ArvGcFeatureNode* f = find(n);
        ENodeType t;
        if (!f || !typeOf(f, t))
            fail("Node not existing: " + n);
        return f;
    }

    ArvGcFeatureNode* typed(const std::string& n, ENodeType want) const
    {
        ArvGcFeatureNode* f = node(n);
        ENodeType t;
        typeOf(f, t);
        if (t != want)
            fail("Feature " + n + " is of type " + NodeTypeName(t) + ", not " + NodeTypeName(want));
        return f;
    }

    // Throws the device's error, naming the feature, when `error` is set.
    static void check(const std::string& feature, GError* error)
    {
        if (!error)
            return;
        const std::string message = error->message ? error->message : "unknown error";
        g_error_free(error);
        fail("Feature " + feature + ": " + message);
    }

    EAccessMode access(ArvGcFeatureNode* f) const
    {
        GError* error = nullptr;
        const bool implemented = arv_gc_feature_node_is_implemented(f, &error);
        if (error) {
            g_error_free(error);
            return EAccessMode::NA;
        }
        const bool available = implemented && arv_gc_feature_node_is_available(f, &error);
        if (error) {
            g_error_free(error);
            return EAccessMode::NA;
        }
        if (!available)
            return EAccessMode::NA;
        const bool locked = arv_gc_feature_node_is_locked(f, &error);
        if (error) {
            g_error_free(error);
            return EAccessMode::NA;
        }
        switch (arv_gc_feature_node_get_actual_access_mode(f)) {
        case ARV_GC_ACCESS_MODE_RW:
        case ARV_GC_ACCESS_MODE_WO:
            return locked ? EAccessMode::RO : EAccessMode::RW;
        case ARV_GC_ACCESS_MODE_RO:
            return EAccessMode::RO;
        default:
            return EAccessMode::NA;
        }
    }

    void requireWritable(const std::string& n, ArvGcFeatureNode* f) const
    {
        const EAccessMode m = access(f);
        if (m != EAccessMode::RW)
            fail("Feature " + n + " is not writable (" +
                 (m == EAccessMode::NA ? "not available" : "read-only") + ")");
    }

    void walk(const std::string& category, std::set<std::string>& seen) const
    {
        ArvGcNode* node = arv_gc_get_node(gc, category.c_str());
        if (!node || !ARV_IS_GC_CATEGORY(node))
            return;
        for (const GSList* it = arv_gc_category_get_features(ARV_GC_CATEGORY(node)); it; it = it->next) {
            const std::string feature = static_cast<const char*>(it->data);
            if (!seen.insert(feature).second)
                continue;
            ArvGcNode* child = arv_gc_get_node(gc, feature.c_str());
            if (!child)
                continue;
            if (ARV_IS_GC_CATEGORY(child)) {
                walk(feature, seen);
                continue;
            }
            ENodeType t;
            if (ARV_IS_GC_FEATURE_NODE(child) && typeOf(ARV_GC_FEATURE_NODE(child), t))
                names.push_back(feature);
        }
    }

    void readStructure() const
    {
        if (structureRead || !gc)
            return;
        std::set<std::string> seen{"Root"};
        walk("Root", seen);
        for (const std::string& n : names) {
            ArvGcFeatureNode* f = find(n);
            if (!ARV_IS_GC_SELECTOR(f) || !arv_gc_selector_is_selector(ARV_GC_SELECTOR(f)))
                continue;
            for (const GSList* it = arv_gc_selector_get_selected_features(ARV_GC_SELECTOR(f)); it;
                 it = it->next) {
                if (!ARV_IS_GC_FEATURE_NODE(it->data))
                    continue;
                const std::string s = arv_gc_feature_node_get_name(ARV_GC_FEATURE_NODE(it->data));
                selected[n].push_back(s);
                selectorOf.emplace(s, n);  // the first selector when there are more
            }
        }
        structureRead = true;
    }

    void notify(const std::string& feature)
    {
        if (quiet || callbacks.empty())
            return;
        readStructure();
        std::vector<ChangeCallback> todo;
        for (const auto& c : callbacks)
            if (c.second.feature.empty() || c.second.feature == feature)
                todo.push_back(c.second.fn);
        for (const auto& fn : todo)
            fn(feature);
        const auto it = selected.find(feature);
        if (it != selected.end())
            for (const std::string& s : it->second)
                notify(s);
    }

    void notifyAll()
    {
        if (quiet)
            return;
        std::vector<std::pair<std::string, ChangeCallback>> todo;
        for (const auto& c : callbacks)
            todo.emplace_back(c.second.feature, c.second.fn);
        for (const auto& t : todo)
            t.second(t.first);
    }

    // A selected feature read with its selector switched to `entry`, quietly,
    // and the selection put back afterwards.
    template <class Read>
    auto readFor(const CArvNodeMap& map, const std::string& feature, const std::string& entry, Read read)
        -> decltype(read())
    {
        Lock lock(mutex);
        const std::string selector = map.selectorOf(feature);
        if (selector.empty())
            fail("Feature " + feature + " has no selector");
        if (map.nodeType(selector) != ENodeType::Enumeration)
            fail("Feature " + feature + ": selector " + selector + " is not an enumeration");
        auto& self = const_cast<CArvNodeMap&>(map);
        ++quiet;
        struct Loud {
            int& q;
            ~Loud() { --q; }
        } loud{quiet};
        // Each read and write is a round trip to the device: none that changes nothing.
        const std::string previous = self.getEnum(selector);
        if (previous == entry)
            return read();
        SelectorRestore restore(self, selector, previous);
        self.setEnum(selector, entry);
        return read();
    }

    SEnumEntry entryOf(ArvGcEnumEntry* e) const
    {
        ArvGcFeatureNode* f = ARV_GC_FEATURE_NODE(e);
        SEnumEntry out;
        out.symbolic = arv_gc_feature_node_get_name(f);
        const char* display = arv_gc_feature_node_get_display_name(f);
        out.displayName = display && *display ? display : out.symbolic;
        GError* error = nullptr;
        out.value = arv_gc_enum_entry_get_value(e, &error);
        if (error)
            g_error_free(error);
        out.available = access(f) != EAccessMode::NA;
        return out;
    }
};

CArvNodeMap::CArvNodeMap(std::string name) : d(new Impl)
{
    d->name = std::move(name);
}

CArvNodeMap::~CArvNodeMap()
{
    detach();
}

void CArvNodeMap::attach(ArvDevice* device)
{
    Lock lock(d->mutex);
    detach();
    if (!device)
        return;
    ArvGc* gc = arv_device_get_genicam(device);
    if (!gc)
        Impl::fail("Camera " + d->name + " has no GenICam description");
    d->device = ARV_DEVICE(g_object_ref(device));
    d->gc = gc;
}

void CArvNodeMap::detach()
{
    Lock lock(d->mutex);
    if (d->device)
        g_object_unref(d->device);
    d->device = nullptr;
    d->gc = nullptr;
    d->structureRead = false;
    d->names.clear();
    d->selectorOf.clear();
    d->selected.clear();
}

bool CArvNodeMap::isAttached() const
{
    Lock lock(d->mutex);
    return d->gc != nullptr;
}

const std::string& CArvNodeMap::name() const { return d->name; }
std::recursive_mutex& CArvNodeMap::mutex() const { return d->mutex; }

// ---- Structure

bool CArvNodeMap::hasNode(const std::string& name) const
{
    Lock lock(d->mutex);
    ArvGcFeatureNode* f = d->find(name);
    ENodeType t;
    return f && d->typeOf(f, t);
}

std::vector<std::string> CArvNodeMap::nodeNames() const
{
    Lock lock(d->mutex);
    d->readStructure();
    return d->names;
}

ENodeType CArvNodeMap::nodeType(const std::string& name) const
{
    Lock lock(d->mutex);
    ENodeType t;
    d->typeOf(d->node(name), t);
    return t;
}

EAccessMode CArvNodeMap::accessMode(const std::string& name) const
{
    Lock lock(d->mutex);
    ArvGcFeatureNode* f = d->find(name);
    ENodeType t;
    return f && d->typeOf(f, t) ? d->access(f) : EAccessMode::NA;
}

bool CArvNodeMap::isAvailable(const std::string& name) const
{
    return accessMode(name) != EAccessMode::NA;
}

bool CArvNodeMap::isReadable(const std::string& name) const
{
    Lock lock(d->mutex);
    ArvGcFeatureNode* f = d->find(name);
    ENodeType t;
    return f && d->typeOf(f, t) && t != ENodeType::Command && d->access(f) != EAccessMode::NA &&
           arv_gc_feature_node_get_actual_access_mode(f) != ARV_GC_ACCESS_MODE_WO;
}

bool CArvNodeMap::isWritable(const std::string& name) const
{
    return accessMode(name) == EAccessMode::RW;
}

bool CArvNodeMap::isPersistent(const std::string& name) const
{
    Lock lock(d->mutex);
    ArvGcFeatureNode* f = d->node(name);
    for (ArvDomNode* c = arv_dom_node_get_first_child(ARV_DOM_NODE(f)); c; c = arv_dom_node_get_next_sibling(c))
        if (ARV_IS_GC_PROPERTY_NODE(c) &&
            arv_gc_property_node_get_node_type(ARV_GC_PROPERTY_NODE(c)) == ARV_GC_PROPERTY_NODE_TYPE_STREAMABLE)
            return arv_gc_property_node_get_streamable(ARV_GC_PROPERTY_NODE(c), ARV_GC_STREAMABLE_NO) ==
                   ARV_GC_STREAMABLE_YES;
    return false;
}

std::string CArvNodeMap::selectorOf(const std::string& feature) const
{
    Lock lock(d->mutex);
    d->node(feature);
    d->readStructure();
    const auto it = d->selectorOf.find(feature);
    return it == d->selectorOf.end() ? std::string() : it->second;
}

std::vector<std::string> CArvNodeMap::selectedFeatures(const std::string& selector) const
{
    Lock lock(d->mutex);
    d->node(selector);
    d->readStructure();
    const auto it = d->selected.find(selector);
    return it == d->selected.end() ? std::vector<std::string>() : it->second;
}

// ---- Float

double CArvNodeMap::getFloat(const std::string& name) const
{
    Lock lock(d->mutex);
    GError* error = nullptr;
    const double v = arv_gc_float_get_value(ARV_GC_FLOAT(d->typed(name, ENodeType::Float)), &error);
    Impl::check(name, error);
    return v;
}

double CArvNodeMap::getFloatFor(const std::string& name, const std::string& entry) const
{
    return d->readFor(*this, name, entry, [&] { return getFloat(name); });
}

double CArvNodeMap::floatMin(const std::string& name) const
{
    Lock lock(d->mutex);
    GError* error = nullptr;
    const double v = arv_gc_float_get_min(ARV_GC_FLOAT(d->typed(name, ENodeType::Float)), &error);
    Impl::check(name, error);
    return v;
}

double CArvNodeMap::floatMax(const std::string& name) const
{
    Lock lock(d->mutex);
    GError* error = nullptr;
    const double v = arv_gc_float_get_max(ARV_GC_FLOAT(d->typed(name, ENodeType::Float)), &error);
    Impl::check(name, error);
    return v;
}

double CArvNodeMap::floatIncrement(const std::string& name) const
{
    Lock lock(d->mutex);
    GError* error = nullptr;
    const double v = arv_gc_float_get_inc(ARV_GC_FLOAT(d->typed(name, ENodeType::Float)), &error);
    // A feature without an increment is continuous: Aravis says so with an error
    // (no <Inc> down the value's chain) or with the smallest double.
    if (error) {
        g_error_free(error);
        return 0.0;
    }
    return std::isfinite(v) && v > 1e-300 ? v : 0.0;
}

std::string CArvNodeMap::floatUnit(const std::string& name) const
{
    Lock lock(d->mutex);
    const char* unit = arv_gc_float_get_unit(ARV_GC_FLOAT(d->typed(name, ENodeType::Float)));
    return unit ? unit : "";
}

double CArvNodeMap::setFloat(const std::string& name, double value)
{
    Lock lock(d->mutex);
    ArvGcFeatureNode* f = d->typed(name, ENodeType::Float);
    d->requireWritable(name, f);
    if (std::isnan(value))
        Impl::fail("Feature " + name + ": NaN is not a value");
    const double v = ClipFloat(value, floatMin(name), floatMax(name), floatIncrement(name));
    GError* error = nullptr;
    arv_gc_float_set_value(ARV_GC_FLOAT(f), v, &error);
    Impl::check(name, error);
    const double now = getFloat(name);
    d->notify(name);
    return now;
}

// ---- Integer

int64_t CArvNodeMap::getInteger(const std::string& name) const
{
    Lock lock(d->mutex);
    GError* error = nullptr;
    const int64_t v = arv_gc_integer_get_value(ARV_GC_INTEGER(d->typed(name, ENodeType::Integer)), &error);
    Impl::check(name, error);
    return v;
}

int64_t CArvNodeMap::getIntegerFor(const std::string& name, const std::string& entry) const
{
    return d->readFor(*this, name, entry, [&] { return getInteger(name); });
}

int64_t CArvNodeMap::integerMin(const std::string& name) const
{
    Lock lock(d->mutex);
    GError* error = nullptr;
    const int64_t v = arv_gc_integer_get_min(ARV_GC_INTEGER(d->typed(name, ENodeType::Integer)), &error);
    Impl::check(name, error);
    return v;
}

int64_t CArvNodeMap::integerMax(const std::string& name) const
{
    Lock lock(d->mutex);
    GError* error = nullptr;
    const int64_t v = arv_gc_integer_get_max(ARV_GC_INTEGER(d->typed(name, ENodeType::Integer)), &error);
    Impl::check(name, error);
    return v;
}

int64_t CArvNodeMap::integerIncrement(const std::string& name) const
{
    Lock lock(d->mutex);
    GError* error = nullptr;
    const int64_t v = arv_gc_integer_get_inc(ARV_GC_INTEGER(d->typed(name, ENodeType::Integer)), &error);
    Impl::check(name, error);
    return std::max<int64_t>(1, v);
}

int64_t CArvNodeMap::setInteger(const std::string& name, int64_t value)
{
    Lock lock(d->mutex);
    ArvGcFeatureNode* f = d->typed(name, ENodeType::Integer);
    d->requireWritable(name, f);
    const int64_t v = ClipInteger(value, integerMin(name), integerMax(name), integerIncrement(name));
    GError* error = nullptr;
    arv_gc_integer_set_value(ARV_GC_INTEGER(f), v, &error);
    Impl::check(name, error);
    const int64_t now = getInteger(name);
    d->notify(name);
    return now;
}

// ---- Enumeration

std::string CArvNodeMap::getEnum(const std::string& name) const
{
    Lock lock(d->mutex);
    GError* error = nullptr;
    const char* v = arv_gc_enumeration_get_string_value(
        ARV_GC_ENUMERATION(d->typed(name, ENodeType::Enumeration)), &error);
    Impl::check(name, error);
    if (!v)
        Impl::fail("Feature " + name + ": the device holds a value of no entry");
    return v;
}

std::string CArvNodeMap::getEnumFor(const std::string& name, const std::string& entry) const
{
    return d->readFor(*this, name, entry, [&] { return getEnum(name); });
}

int64_t CArvNodeMap::getEnumValue(const std::string& name) const
{
    Lock lock(d->mutex);
    GError* error = nullptr;
    const int64_t v = arv_gc_enumeration_get_int_value(
        ARV_GC_ENUMERATION(d->typed(name, ENodeType::Enumeration)), &error);
    Impl::check(name, error);
    return v;
}

std::vector<SEnumEntry> CArvNodeMap::enumEntries(const std::string& name) const
{
    Lock lock(d->mutex);
    std::vector<SEnumEntry> out;
    // In the order of the description (Aravis's own entry list runs backwards).
    ArvDomNode* enumeration = ARV_DOM_NODE(d->typed(name, ENodeType::Enumeration));
    for (ArvDomNode* c = arv_dom_node_get_first_child(enumeration); c; c = arv_dom_node_get_next_sibling(c))
        if (ARV_IS_GC_ENUM_ENTRY(c))
            out.push_back(d->entryOf(ARV_GC_ENUM_ENTRY(c)));
    return out;
}

bool CArvNodeMap::isEntryAvailable(const std::string& name, const std::string& symbolic) const
{
    Lock lock(d->mutex);
    ArvGcFeatureNode* f = d->find(name);
    ENodeType t;
    if (!f || !d->typeOf(f, t) || t != ENodeType::Enumeration)
        return false;
    for (const SEnumEntry& e : enumEntries(name))
        if (e.symbolic == symbolic)
            return e.available;
    return false;
}

void CArvNodeMap::setEnum(const std::string& name, const std::string& symbolic)
{
    Lock lock(d->mutex);
    ArvGcFeatureNode* f = d->typed(name, ENodeType::Enumeration);
    d->requireWritable(name, f);
    bool known = false;
    for (const SEnumEntry& e : enumEntries(name)) {
        if (e.symbolic != symbolic)
            continue;
        if (!e.available)
            Impl::fail("Feature " + name + ": entry " + symbolic + " is not available");
        known = true;
    }
    if (!known)
        Impl::fail("Feature " + name + " has no entry " + symbolic);
    GError* error = nullptr;
    arv_gc_enumeration_set_string_value(ARV_GC_ENUMERATION(f), symbolic.c_str(), &error);
    Impl::check(name, error);
    d->notify(name);
}

void CArvNodeMap::setEnumValue(const std::string& name, int64_t value)
{
    Lock lock(d->mutex);
    for (const SEnumEntry& e : enumEntries(name))
        if (e.value == value)
            return setEnum(name, e.symbolic);
    Impl::fail("Feature " + name + " has no entry of value " + std::to_string(value));
}

// ---- Boolean

bool CArvNodeMap::getBool(const std::string& name) const
{
    Lock lock(d->mutex);
    GError* error = nullptr;
    const bool v = arv_gc_boolean_get_value(ARV_GC_BOOLEAN(d->typed(name, ENodeType::Boolean)), &error);
    Impl::check(name, error);
    return v;
}

bool CArvNodeMap::getBoolFor(const std::string& name, const std::string& entry) const
{
    return d->readFor(*this, name, entry, [&] { return getBool(name); });
}

void CArvNodeMap::setBool(const std::string& name, bool value)
{
    Lock lock(d->mutex);
    ArvGcFeatureNode* f = d->typed(name, ENodeType::Boolean);
    d->requireWritable(name, f);
    GError* error = nullptr;
    arv_gc_boolean_set_value(ARV_GC_BOOLEAN(f), value, &error);
    Impl::check(name, error);
    d->notify(name);
}

// ---- String

std::string CArvNodeMap::getString(const std::string& name) const
{
    Lock lock(d->mutex);
    GError* error = nullptr;
    const char* v = arv_gc_string_get_value(ARV_GC_STRING(d->typed(name, ENodeType::String)), &error);
    Impl::check(name, error);
    return v ? v : "";
}

std::string CArvNodeMap::getStringFor(const std::string& name, const std::string& entry) const
{
    return d->readFor(*this, name, entry, [&] { return getString(name); });
}

size_t CArvNodeMap::stringMaxLength(const std::string& name) const
{
    Lock lock(d->mutex);
    GError* error = nullptr;
    const int64_t v = arv_gc_string_get_max_length(ARV_GC_STRING(d->typed(name, ENodeType::String)), &error);
    Impl::check(name, error);
    return v > 0 ? static_cast<size_t>(v) : 0;
}

void CArvNodeMap::setString(const std::string& name, const std::string& value)
{
    Lock lock(d->mutex);
    ArvGcFeatureNode* f = d->typed(name, ENodeType::String);
    d->requireWritable(name, f);
    const size_t max = stringMaxLength(name);
    if (value.size() > max)
        Impl::fail("Feature " + name + ": text longer than " + std::to_string(max) + " bytes");
    GError* error = nullptr;
    arv_gc_string_set_value(ARV_GC_STRING(f), value.c_str(), &error);
    Impl::check(name, error);
    d->notify(name);
}

// ---- Command

void CArvNodeMap::execute(const std::string& name)
{
    Lock lock(d->mutex);
    ArvGcFeatureNode* f = d->typed(name, ENodeType::Command);
    d->requireWritable(name, f);
    GError* error = nullptr;
    arv_gc_command_execute(ARV_GC_COMMAND(f), &error);
    Impl::check(name, error);
    // Loading a user set is the one command whose purpose is to change every feature.
    if (name == "UserSetLoad")
        d->notifyAll();
    else
        d->notify(name);
}

// ---- Change callbacks

int CArvNodeMap::addChangeCallback(const std::string& feature, ChangeCallback callback)
{
    Lock lock(d->mutex);
    if (!feature.empty())
        d->node(feature);
    const int id = d->nextCallbackId++;
    d->callbacks.emplace(id, Impl::Callback{feature, std::move(callback)});
    return id;
}

void CArvNodeMap::removeChangeCallback(int id)
{
    Lock lock(d->mutex);
    d->callbacks.erase(id);
}

}  // namespace Kalto
