#include "genicam/nodemap.h"

#include "genicam/runtimeexception.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <unordered_map>

namespace Kalto {

namespace {

// One stored value; which member counts follows from the node type (Boolean and
// Enumeration keep theirs in i, the enumeration as its entry index).
struct Value {
    double f = 0.0;
    int64_t i = 0;
    std::string s;
};

struct Node {
    std::string name;
    ENodeType type = ENodeType::Float;
    EAccessMode access = EAccessMode::RW;
    CNodeMap::AccessFunction accessFunction;
    bool persistent = true;
    std::string unit;
    double fMin = 0, fMax = 0, fInc = 0;
    int64_t iMin = 0, iMax = 0, iInc = 1;
    size_t maxLength = 0;
    std::vector<SEnumEntry> entries;
    std::function<void()> command;
    int selector = -1;          // index of the selecting node, -1 when not selected
    std::vector<int> selected;  // for selectors: the nodes they select
    std::vector<Value> values;  // one, or one per selector entry
};

double clipFloat(const Node& n, double v)
{
    return ClipFloat(v, n.fMin, n.fMax, n.fInc);
}

int64_t clipInteger(const Node& n, int64_t v)
{
    return ClipInteger(v, n.iMin, n.iMax, n.iInc);
}

}  // namespace

struct CNodeMap::Impl {
    std::string name;
    mutable std::recursive_mutex mutex;
    std::vector<Node> nodes;
    std::unordered_map<std::string, int> index;
    struct Callback {
        int node;  // -1: every node
        ChangeCallback fn;
    };
    std::map<int, Callback> callbacks;
    int nextCallbackId = 1;

    [[noreturn]] void fail(const std::string& what, const char* file, unsigned line) const
    {
        throw GenICam_3_1_Ostrel_kalto::RuntimeException(what, file, line);
    }

    int find(const std::string& n) const
    {
        auto it = index.find(n);
        return it == index.end() ? -1 : it->second;
    }

    Node& node(const std::string& n)
    {
        const int i = find(n);
        if (i < 0)
            fail("Node not existing: " + n, __FILE__, __LINE__);
        return nodes[i];
    }
    const Node& node(const std::string& n) const { return const_cast<Impl*>(this)->node(n); }

    Node& typed(const std::string& n, ENodeType t)
    {
        Node& nd = node(n);
        if (nd.type != t)
            fail("Feature " + n + " is of type " + NodeTypeName(nd.type) + ", not " + NodeTypeName(t),
                 __FILE__, __LINE__);
        return nd;
    }
    const Node& typed(const std::string& n, ENodeType t) const
    {
        return const_cast<Impl*>(this)->typed(n, t);
    }

    EAccessMode access(const Node& n) const
    {
        EAccessMode m = n.access;
        if (n.accessFunction)
            m = std::min(m, n.accessFunction());
        return m;
    }

    void requireWritable(const Node& n) const
    {
        const EAccessMode m = access(n);
        if (m != EAccessMode::RW)
            fail("Feature " + n.name + " is not writable (" +
                     (m == EAccessMode::NA ? "not available" : "read-only") + ")",
                 __FILE__, __LINE__);
    }

    size_t slot(const Node& n) const
    {
        if (n.selector < 0)
            return 0;
        return static_cast<size_t>(nodes[n.selector].values[0].i);
    }

    size_t slotFor(const Node& n, const std::string& entry) const
    {
        if (n.selector < 0)
            fail("Feature " + n.name + " has no selector", __FILE__, __LINE__);
        const Node& sel = nodes[n.selector];
        for (size_t k = 0; k < sel.entries.size(); ++k)
            if (sel.entries[k].symbolic == entry)
                return k;
        fail("Selector " + sel.name + " has no entry " + entry, __FILE__, __LINE__);
    }

    size_t entryIndex(const Node& n, const std::string& symbolic) const
    {
        for (size_t k = 0; k < n.entries.size(); ++k)
            if (n.entries[k].symbolic == symbolic)
                return k;
        fail("Feature " + n.name + " has no entry " + symbolic, __FILE__, __LINE__);
    }

    Node& add(const std::string& n, ENodeType t)
    {
        if (n.empty())
            fail("A node needs a name", __FILE__, __LINE__);
        if (find(n) >= 0)
            fail("Node registered twice: " + n, __FILE__, __LINE__);
        index.emplace(n, static_cast<int>(nodes.size()));
        nodes.emplace_back();
        Node& nd = nodes.back();
        nd.name = n;
        nd.type = t;
        nd.values.resize(1);
        return nd;
    }

    void notify(int nodeIndex)
    {
        const std::string& n = nodes[nodeIndex].name;
        // Copy first: a callback may add or remove callbacks.
        std::vector<ChangeCallback> todo;
        for (const auto& c : callbacks)
            if (c.second.node < 0 || c.second.node == nodeIndex)
                todo.push_back(c.second.fn);
        for (const auto& fn : todo)
            fn(n);
        // A new selection changes what every selected feature shows.
        const std::vector<int> sel = nodes[nodeIndex].selected;
        if (nodes[nodeIndex].type == ENodeType::Enumeration)
            for (int s : sel)
                notify(s);
    }

    int indexOf(const Node& n) const { return static_cast<int>(&n - nodes.data()); }

    double writeFloat(Node& n, size_t s, double v)
    {
        if (std::isnan(v))
            fail("Feature " + n.name + ": NaN is not a value", __FILE__, __LINE__);
        const double c = clipFloat(n, v);
        if (n.values[s].f != c || std::signbit(n.values[s].f) != std::signbit(c)) {
            n.values[s].f = c;
            notify(indexOf(n));
        }
        return c;
    }

    int64_t writeInteger(Node& n, size_t s, int64_t v)
    {
        const int64_t c = clipInteger(n, v);
        if (n.values[s].i != c) {
            n.values[s].i = c;
            notify(indexOf(n));
        }
        return c;
    }

    void writeEntry(Node& n, size_t k)
    {
        if (!n.entries[k].available)
            fail("Feature " + n.name + ": entry " + n.entries[k].symbolic + " is not available",
                 __FILE__, __LINE__);
        const size_t s = slot(n);
        if (n.values[s].i != static_cast<int64_t>(k)) {
            n.values[s].i = static_cast<int64_t>(k);
            notify(indexOf(n));
        }
    }

    void writeBool(Node& n, bool v)
    {
        const size_t s = slot(n);
        if (n.values[s].i != (v ? 1 : 0)) {
            n.values[s].i = v ? 1 : 0;
            notify(indexOf(n));
        }
    }

    void writeString(Node& n, const std::string& v)
    {
        if (v.size() > n.maxLength)
            fail("Feature " + n.name + ": text longer than " + std::to_string(n.maxLength) +
                     " bytes",
                 __FILE__, __LINE__);
        const size_t s = slot(n);
        if (n.values[s].s != v) {
            n.values[s].s = v;
            notify(indexOf(n));
        }
    }
};

CNodeMap::CNodeMap(std::string name) : d(new Impl)
{
    d->name = std::move(name);
}

CNodeMap::~CNodeMap() = default;

const std::string& CNodeMap::name() const { return d->name; }
std::recursive_mutex& CNodeMap::mutex() const { return d->mutex; }

using Lock = std::lock_guard<std::recursive_mutex>;

void CNodeMap::addFloat(const std::string& name, double min, double max, double increment,
                        double value, const std::string& unit)
{
    Lock lock(d->mutex);
    if (!(min <= max) || !(increment >= 0.0) || !std::isfinite(increment))
        d->fail("Feature " + name + ": invalid range", __FILE__, __LINE__);
    Node& n = d->add(name, ENodeType::Float);
    n.fMin = min;
    n.fMax = max;
    n.fInc = increment;
    n.unit = unit;
    n.values[0].f = clipFloat(n, std::isnan(value) ? min : value);
}

void CNodeMap::addInteger(const std::string& name, int64_t min, int64_t max, int64_t increment,
                          int64_t value)
{
    Lock lock(d->mutex);
    if (min > max || increment < 1)
        d->fail("Feature " + name + ": invalid range", __FILE__, __LINE__);
    Node& n = d->add(name, ENodeType::Integer);
    n.iMin = min;
    n.iMax = max;
    n.iInc = increment;
    n.values[0].i = clipInteger(n, value);
}

void CNodeMap::addEnumeration(const std::string& name, std::vector<SEnumEntry> entries,
                              const std::string& symbolic)
{
    Lock lock(d->mutex);
    if (entries.empty())
        d->fail("Feature " + name + ": an enumeration needs entries", __FILE__, __LINE__);
    for (size_t a = 0; a < entries.size(); ++a) {
        if (entries[a].symbolic.empty())
            d->fail("Feature " + name + ": entry without a name", __FILE__, __LINE__);
        if (entries[a].displayName.empty())
            entries[a].displayName = entries[a].symbolic;
        for (size_t b = 0; b < a; ++b)
            if (entries[b].symbolic == entries[a].symbolic)
                d->fail("Feature " + name + ": entry twice: " + entries[a].symbolic, __FILE__,
                        __LINE__);
    }
    Node n;
    n.entries = std::move(entries);
    const size_t k = d->entryIndex(n, symbolic);  // throws before anything is registered
    Node& added = d->add(name, ENodeType::Enumeration);
    added.entries = std::move(n.entries);
    added.values[0].i = static_cast<int64_t>(k);
}

void CNodeMap::addBoolean(const std::string& name, bool value)
{
    Lock lock(d->mutex);
    d->add(name, ENodeType::Boolean).values[0].i = value ? 1 : 0;
}

void CNodeMap::addString(const std::string& name, const std::string& value, size_t maxLength)
{
    Lock lock(d->mutex);
    if (value.size() > maxLength)
        d->fail("Feature " + name + ": initial text too long", __FILE__, __LINE__);
    Node& n = d->add(name, ENodeType::String);
    n.maxLength = maxLength;
    n.values[0].s = value;
}

void CNodeMap::addCommand(const std::string& name, std::function<void()> execute)
{
    Lock lock(d->mutex);
    Node& n = d->add(name, ENodeType::Command);
    n.command = std::move(execute);
    n.persistent = false;
}

void CNodeMap::setSelectedBy(const std::string& feature, const std::string& selector)
{
    Lock lock(d->mutex);
    Node& f = d->node(feature);
    Node& s = d->typed(selector, ENodeType::Enumeration);
    if (&f == &s || f.selector >= 0 || s.selector >= 0 || !f.selected.empty())
        d->fail("Feature " + feature + " cannot be selected by " + selector +
                    " (one selector level only)",
                __FILE__, __LINE__);
    f.selector = d->indexOf(s);
    s.selected.push_back(d->indexOf(f));
    std::sort(s.selected.begin(), s.selected.end());
    f.values.assign(s.entries.size(), f.values[0]);
}

void CNodeMap::setAccessMode(const std::string& name, EAccessMode mode)
{
    Lock lock(d->mutex);
    d->node(name).access = mode;
}

void CNodeMap::setAccessFunction(const std::string& name, AccessFunction function)
{
    Lock lock(d->mutex);
    d->node(name).accessFunction = std::move(function);
}

void CNodeMap::setPersistent(const std::string& name, bool persistent)
{
    Lock lock(d->mutex);
    Node& n = d->node(name);
    n.persistent = persistent && n.type != ENodeType::Command;
}

void CNodeMap::setEntryAvailable(const std::string& enumeration, const std::string& symbolic,
                                 bool available)
{
    Lock lock(d->mutex);
    Node& n = d->typed(enumeration, ENodeType::Enumeration);
    n.entries[d->entryIndex(n, symbolic)].available = available;
}

void CNodeMap::setFloatRange(const std::string& name, double min, double max)
{
    Lock lock(d->mutex);
    Node& n = d->typed(name, ENodeType::Float);
    if (!(min <= max))
        d->fail("Feature " + name + ": invalid range", __FILE__, __LINE__);
    n.fMin = min;
    n.fMax = max;
    bool changed = false;
    for (Value& v : n.values) {
        const double c = clipFloat(n, v.f);
        changed = changed || c != v.f;
        v.f = c;
    }
    if (changed)
        d->notify(d->indexOf(n));
}

void CNodeMap::setIntegerRange(const std::string& name, int64_t min, int64_t max)
{
    Lock lock(d->mutex);
    Node& n = d->typed(name, ENodeType::Integer);
    if (min > max)
        d->fail("Feature " + name + ": invalid range", __FILE__, __LINE__);
    n.iMin = min;
    n.iMax = max;
    bool changed = false;
    for (Value& v : n.values) {
        const int64_t c = clipInteger(n, v.i);
        changed = changed || c != v.i;
        v.i = c;
    }
    if (changed)
        d->notify(d->indexOf(n));
}

int CNodeMap::addChangeCallback(const std::string& feature, ChangeCallback callback)
{
    Lock lock(d->mutex);
    const int node = feature.empty() ? -1 : d->indexOf(d->node(feature));
    const int id = d->nextCallbackId++;
    d->callbacks.emplace(id, Impl::Callback{node, std::move(callback)});
    return id;
}

void CNodeMap::removeChangeCallback(int id)
{
    Lock lock(d->mutex);
    d->callbacks.erase(id);
}

bool CNodeMap::hasNode(const std::string& name) const
{
    Lock lock(d->mutex);
    return d->find(name) >= 0;
}

std::vector<std::string> CNodeMap::nodeNames() const
{
    Lock lock(d->mutex);
    std::vector<std::string> names;
    names.reserve(d->nodes.size());
    for (const Node& n : d->nodes)
        names.push_back(n.name);
    return names;
}

ENodeType CNodeMap::nodeType(const std::string& name) const
{
    Lock lock(d->mutex);
    return d->node(name).type;
}

EAccessMode CNodeMap::accessMode(const std::string& name) const
{
    Lock lock(d->mutex);
    const int i = d->find(name);
    return i < 0 ? EAccessMode::NA : d->access(d->nodes[i]);
}

bool CNodeMap::isAvailable(const std::string& name) const
{
    return accessMode(name) != EAccessMode::NA;
}

bool CNodeMap::isReadable(const std::string& name) const
{
    Lock lock(d->mutex);
    const int i = d->find(name);
    return i >= 0 && d->nodes[i].type != ENodeType::Command &&
           d->access(d->nodes[i]) != EAccessMode::NA;
}

bool CNodeMap::isWritable(const std::string& name) const
{
    return accessMode(name) == EAccessMode::RW;
}

bool CNodeMap::isPersistent(const std::string& name) const
{
    Lock lock(d->mutex);
    return d->node(name).persistent;
}

std::string CNodeMap::selectorOf(const std::string& feature) const
{
    Lock lock(d->mutex);
    const Node& n = d->node(feature);
    return n.selector < 0 ? std::string() : d->nodes[n.selector].name;
}

std::vector<std::string> CNodeMap::selectedFeatures(const std::string& selector) const
{
    Lock lock(d->mutex);
    std::vector<std::string> names;
    for (int i : d->node(selector).selected)
        names.push_back(d->nodes[i].name);
    return names;
}

// ---- Float

double CNodeMap::getFloat(const std::string& name) const
{
    Lock lock(d->mutex);
    const Node& n = d->typed(name, ENodeType::Float);
    return n.values[d->slot(n)].f;
}

double CNodeMap::getFloatFor(const std::string& name, const std::string& entry) const
{
    Lock lock(d->mutex);
    const Node& n = d->typed(name, ENodeType::Float);
    return n.values[d->slotFor(n, entry)].f;
}

double CNodeMap::floatMin(const std::string& name) const
{
    Lock lock(d->mutex);
    return d->typed(name, ENodeType::Float).fMin;
}

double CNodeMap::floatMax(const std::string& name) const
{
    Lock lock(d->mutex);
    return d->typed(name, ENodeType::Float).fMax;
}

double CNodeMap::floatIncrement(const std::string& name) const
{
    Lock lock(d->mutex);
    return d->typed(name, ENodeType::Float).fInc;
}

std::string CNodeMap::floatUnit(const std::string& name) const
{
    Lock lock(d->mutex);
    return d->typed(name, ENodeType::Float).unit;
}

double CNodeMap::setFloat(const std::string& name, double value)
{
    Lock lock(d->mutex);
    Node& n = d->typed(name, ENodeType::Float);
    d->requireWritable(n);
    return d->writeFloat(n, d->slot(n), value);
}

double CNodeMap::storeFloat(const std::string& name, double value)
{
    Lock lock(d->mutex);
    Node& n = d->typed(name, ENodeType::Float);
    return d->writeFloat(n, d->slot(n), value);
}

double CNodeMap::storeFloatFor(const std::string& name, const std::string& entry, double value)
{
    Lock lock(d->mutex);
    Node& n = d->typed(name, ENodeType::Float);
    return d->writeFloat(n, d->slotFor(n, entry), value);
}

// ---- Integer

int64_t CNodeMap::getInteger(const std::string& name) const
{
    Lock lock(d->mutex);
    const Node& n = d->typed(name, ENodeType::Integer);
    return n.values[d->slot(n)].i;
}

int64_t CNodeMap::getIntegerFor(const std::string& name, const std::string& entry) const
{
    Lock lock(d->mutex);
    const Node& n = d->typed(name, ENodeType::Integer);
    return n.values[d->slotFor(n, entry)].i;
}

int64_t CNodeMap::integerMin(const std::string& name) const
{
    Lock lock(d->mutex);
    return d->typed(name, ENodeType::Integer).iMin;
}

int64_t CNodeMap::integerMax(const std::string& name) const
{
    Lock lock(d->mutex);
    return d->typed(name, ENodeType::Integer).iMax;
}

int64_t CNodeMap::integerIncrement(const std::string& name) const
{
    Lock lock(d->mutex);
    return d->typed(name, ENodeType::Integer).iInc;
}

int64_t CNodeMap::setInteger(const std::string& name, int64_t value)
{
    Lock lock(d->mutex);
    Node& n = d->typed(name, ENodeType::Integer);
    d->requireWritable(n);
    return d->writeInteger(n, d->slot(n), value);
}

int64_t CNodeMap::storeInteger(const std::string& name, int64_t value)
{
    Lock lock(d->mutex);
    Node& n = d->typed(name, ENodeType::Integer);
    return d->writeInteger(n, d->slot(n), value);
}

// ---- Enumeration

std::string CNodeMap::getEnum(const std::string& name) const
{
    Lock lock(d->mutex);
    const Node& n = d->typed(name, ENodeType::Enumeration);
    return n.entries[n.values[d->slot(n)].i].symbolic;
}

std::string CNodeMap::getEnumFor(const std::string& name, const std::string& entry) const
{
    Lock lock(d->mutex);
    const Node& n = d->typed(name, ENodeType::Enumeration);
    return n.entries[n.values[d->slotFor(n, entry)].i].symbolic;
}

int64_t CNodeMap::getEnumValue(const std::string& name) const
{
    Lock lock(d->mutex);
    const Node& n = d->typed(name, ENodeType::Enumeration);
    return n.entries[n.values[d->slot(n)].i].value;
}

std::vector<SEnumEntry> CNodeMap::enumEntries(const std::string& name) const
{
    Lock lock(d->mutex);
    return d->typed(name, ENodeType::Enumeration).entries;
}

bool CNodeMap::isEntryAvailable(const std::string& name, const std::string& symbolic) const
{
    Lock lock(d->mutex);
    const int i = d->find(name);
    if (i < 0 || d->nodes[i].type != ENodeType::Enumeration)
        return false;
    for (const SEnumEntry& e : d->nodes[i].entries)
        if (e.symbolic == symbolic)
            return e.available;
    return false;
}

void CNodeMap::setEnum(const std::string& name, const std::string& symbolic)
{
    Lock lock(d->mutex);
    Node& n = d->typed(name, ENodeType::Enumeration);
    d->requireWritable(n);
    d->writeEntry(n, d->entryIndex(n, symbolic));
}

void CNodeMap::setEnumValue(const std::string& name, int64_t value)
{
    Lock lock(d->mutex);
    Node& n = d->typed(name, ENodeType::Enumeration);
    d->requireWritable(n);
    for (size_t k = 0; k < n.entries.size(); ++k)
        if (n.entries[k].value == value)
            return d->writeEntry(n, k);
    d->fail("Feature " + name + " has no entry of value " + std::to_string(value), __FILE__,
            __LINE__);
}

void CNodeMap::storeEnum(const std::string& name, const std::string& symbolic)
{
    Lock lock(d->mutex);
    Node& n = d->typed(name, ENodeType::Enumeration);
    d->writeEntry(n, d->entryIndex(n, symbolic));
}

// ---- Boolean

bool CNodeMap::getBool(const std::string& name) const
{
    Lock lock(d->mutex);
    const Node& n = d->typed(name, ENodeType::Boolean);
    return n.values[d->slot(n)].i != 0;
}

bool CNodeMap::getBoolFor(const std::string& name, const std::string& entry) const
{
    Lock lock(d->mutex);
    const Node& n = d->typed(name, ENodeType::Boolean);
    return n.values[d->slotFor(n, entry)].i != 0;
}

void CNodeMap::setBool(const std::string& name, bool value)
{
    Lock lock(d->mutex);
    Node& n = d->typed(name, ENodeType::Boolean);
    d->requireWritable(n);
    d->writeBool(n, value);
}

void CNodeMap::storeBool(const std::string& name, bool value)
{
    Lock lock(d->mutex);
    d->writeBool(d->typed(name, ENodeType::Boolean), value);
}

// ---- String

std::string CNodeMap::getString(const std::string& name) const
{
    Lock lock(d->mutex);
    const Node& n = d->typed(name, ENodeType::String);
    return n.values[d->slot(n)].s;
}

std::string CNodeMap::getStringFor(const std::string& name, const std::string& entry) const
{
    Lock lock(d->mutex);
    const Node& n = d->typed(name, ENodeType::String);
    return n.values[d->slotFor(n, entry)].s;
}

size_t CNodeMap::stringMaxLength(const std::string& name) const
{
    Lock lock(d->mutex);
    return d->typed(name, ENodeType::String).maxLength;
}

void CNodeMap::setString(const std::string& name, const std::string& value)
{
    Lock lock(d->mutex);
    Node& n = d->typed(name, ENodeType::String);
    d->requireWritable(n);
    d->writeString(n, value);
}

void CNodeMap::storeString(const std::string& name, const std::string& value)
{
    Lock lock(d->mutex);
    d->writeString(d->typed(name, ENodeType::String), value);
}

// ---- Command

void CNodeMap::execute(const std::string& name)
{
    Lock lock(d->mutex);
    Node& n = d->typed(name, ENodeType::Command);
    d->requireWritable(n);
    if (n.command)
        n.command();
}

}  // namespace Kalto
