#include "genicam/featurepersistence.h"

#include "genicam/inodemap.h"
#include "genicam/runtimeexception.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <cmath>
#include <mutex>
#include <set>

namespace Kalto {

namespace {

constexpr const char* kLinesHeader = "# Lines\t";
constexpr const char* kEndMarker = "# End";

}  // namespace

namespace {

const char kHexDigits[] = "0123456789ABCDEF";

std::string escapeText(const std::string& s)
{
    std::string out;
    out.reserve(s.size());
    for (unsigned char c : s) {
        switch (c) {
        case '\\': out += "\\\\"; break;
        case '\t': out += "\\t"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        default:
            if (c < 0x20 || c == 0x7f || c == '#') {
                out += "\\x";
                out += kHexDigits[c >> 4];
                out += kHexDigits[c & 15];
            } else {
                out += static_cast<char>(c);
            }
        }
    }
    return out;
}

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

bool unescapeText(std::string_view s, std::string& out)
{
    out.clear();
    out.reserve(s.size());
    for (size_t i = 0; i < s.size(); ++i) {
        if (s[i] != '\\') {
            out += s[i];
            continue;
        }
        if (++i >= s.size())
            return false;
        switch (s[i]) {
        case '\\': out += '\\'; break;
        case 't': out += '\t'; break;
        case 'n': out += '\n'; break;
        case 'r': out += '\r'; break;
        case 'x': {
            if (i + 2 >= s.size())
                return false;
            const int hi = hexValue(s[i + 1]), lo = hexValue(s[i + 2]);
            if (hi < 0 || lo < 0)
                return false;
            out += static_cast<char>(hi * 16 + lo);
            i += 2;
            break;
        }
        default:
            return false;
        }
    }
    return true;
}

// Returns an empty reason when the line is well-formed UTF-8 without control
// bytes other than tab.
const char* checkText(std::string_view s)
{
    const auto* p = reinterpret_cast<const unsigned char*>(s.data());
    const size_t n = s.size();
    size_t i = 0;
    while (i < n) {
        const unsigned char c = p[i];
        if (c < 0x80) {
            if ((c < 0x20 && c != '\t') || c == 0x7f)
                return "control or binary bytes in the line";
            ++i;
            continue;
        }
        size_t len;
        uint32_t cp;
        if (c >= 0xc2 && c <= 0xdf) {
            len = 2;
            cp = c & 0x1f;
        } else if (c >= 0xe0 && c <= 0xef) {
            len = 3;
            cp = c & 0x0f;
        } else if (c >= 0xf0 && c <= 0xf4) {
            len = 4;
            cp = c & 0x07;
        } else {
            return "not valid UTF-8";
        }
        if (i + len > n)
            return "not valid UTF-8";
        for (size_t k = 1; k < len; ++k) {
            if ((p[i + k] & 0xc0) != 0x80)
                return "not valid UTF-8";
            cp = (cp << 6) | (p[i + k] & 0x3f);
        }
        // Overlong forms, surrogates and code points past U+10FFFF.
        if ((len == 3 && cp < 0x800) || (len == 4 && (cp < 0x10000 || cp > 0x10ffff)) ||
            (cp >= 0xd800 && cp <= 0xdfff))
            return "not valid UTF-8";
        i += len;
    }
    return nullptr;
}

bool parseDouble(std::string_view s, double& v)
{
    if (s.empty())
        return false;
    const char* end = s.data() + s.size();
    auto r = std::from_chars(s.data(), end, v, std::chars_format::general);
    return r.ec == std::errc() && r.ptr == end && std::isfinite(v);
}

bool parseInt(std::string_view s, int64_t& v)
{
    if (s.empty())
        return false;
    const char* end = s.data() + s.size();
    auto r = std::from_chars(s.data(), end, v, 10);
    return r.ec == std::errc() && r.ptr == end;
}

std::string shortName(std::string_view name)
{
    // Names of rejected lines are reported back; keep them readable and short.
    constexpr size_t kMax = 80;
    if (name.size() <= kMax)
        return std::string(name);
    return std::string(name.substr(0, kMax)) + "...";
}

void writeValue(const INodeMap& map, const std::string& name, const std::string* entry,
                std::string& out)
{
    out += name;
    out += '\t';
    switch (map.nodeType(name)) {
    case ENodeType::Float:
        out += CFeaturePersistence::FormatFloat(entry ? map.getFloatFor(name, *entry)
                                                      : map.getFloat(name));
        break;
    case ENodeType::Integer:
        out += std::to_string(entry ? map.getIntegerFor(name, *entry) : map.getInteger(name));
        break;
    case ENodeType::Enumeration:
        out += entry ? map.getEnumFor(name, *entry) : map.getEnum(name);
        break;
    case ENodeType::Boolean:
        out += (entry ? map.getBoolFor(name, *entry) : map.getBool(name)) ? "1" : "0";
        break;
    case ENodeType::String:
        out += escapeText(entry ? map.getStringFor(name, *entry) : map.getString(name));
        break;
    case ENodeType::Command:
        break;
    }
    out += '\n';
}

bool persistable(const INodeMap& map, const std::string& name)
{
    return map.isPersistent(name) && map.nodeType(name) != ENodeType::Command &&
           map.isWritable(name);
}

}  // namespace

std::string CFeaturePersistence::FormatFloat(double value)
{
    char buf[64];
    auto r = std::to_chars(buf, buf + sizeof buf, value);
    return std::string(buf, r.ptr);
}

std::string CFeaturePersistence::Save(const INodeMap& map)
{
    std::lock_guard<std::recursive_mutex> lock(map.mutex());
    std::string out;
    for (const std::string& name : map.nodeNames()) {
        if (!map.selectorOf(name).empty())
            continue;  // written in its selector's block
        std::vector<std::string> selected;
        if (map.nodeType(name) == ENodeType::Enumeration)
            for (const std::string& f : map.selectedFeatures(name))
                if (persistable(map, f))
                    selected.push_back(f);
        if (selected.empty()) {
            if (persistable(map, name))
                writeValue(map, name, nullptr, out);
            continue;
        }
        if (!map.isWritable(name))
            continue;  // the entries could not be addressed when loading
        for (const SEnumEntry& e : map.enumEntries(name)) {
            if (!e.available)
                continue;
            out += name + '\t' + e.symbolic + '\n';
            for (const std::string& f : selected)
                writeValue(map, f, &e.symbolic, out);
        }
        writeValue(map, name, nullptr, out);
    }
    // The count and the end marker tell a whole text from a cut one.
    const size_t lines = 3 + size_t(std::count(out.begin(), out.end(), '\n')) + 1;
    return "# Kalto feature persistence text\n# Node map: " + escapeText(map.name()) + "\n" + kLinesHeader +
           std::to_string(lines) + "\n" + out + kEndMarker + "\n";
}

namespace {

// One load: the lines of a text applied in order, with what they leave behind
// for the lines after them (failed selectors, the declared length).
class Loader {
public:
    explicit Loader(INodeMap& map) : m_map(map) {}

    SLoadReport run(std::string_view text)
    {
        size_t pos = 0;
        while (pos < text.size()) {
            ++m_lineNumber;
            size_t end = text.find('\n', pos);
            const bool terminated = end != std::string_view::npos;
            if (!terminated)
                end = text.size();
            std::string_view line = text.substr(pos, end - pos);
            pos = end + 1;
            if (!line.empty() && line.back() == '\r')
                line.remove_suffix(1);
            loadLine(line, terminated);
        }
        if (m_declaredLines > 0 && !m_ended)
            reject({}, "truncated: the text ends after line " + std::to_string(m_lineNumber) + " of " +
                           std::to_string(m_declaredLines) + ", before its end marker");
        return std::move(m_report);
    }

private:
    void reject(std::string_view feature, std::string reason)
    {
        ++m_report.rejectedCount;
        if (m_report.rejected.size() < CFeaturePersistence::kMaxReportedLines)
            m_report.rejected.push_back({m_lineNumber, shortName(feature), std::move(reason)});
    }

    void loadLine(std::string_view line, bool terminated)
    {
        if (line.size() > CFeaturePersistence::kMaxLineBytes) {
            reject({}, "line longer than " + std::to_string(CFeaturePersistence::kMaxLineBytes) + " bytes");
            return;
        }
        if (line.find_first_not_of(" \t") == std::string_view::npos)
            return;
        if (line.front() == '#') {
            readHeader(line);
            return;
        }
        if (m_declaredLines > 0 && !terminated) {
            reject(line.substr(0, line.find('\t')), "cut off: the text ends inside this line");
            return;
        }
        if (const char* bad = checkText(line)) {
            reject({}, bad);
            return;
        }
        const size_t tab = line.find('\t');
        if (tab == std::string_view::npos) {
            reject(line.substr(0, line.find(' ')), "no tab between name and value");
            return;
        }
        loadFeature(std::string(line.substr(0, tab)), line.substr(tab + 1));
    }

    // Texts written before the length was declared load as they always did.
    void readHeader(std::string_view line)
    {
        if (m_lineNumber <= 3 && line.substr(0, std::strlen(kLinesHeader)) == kLinesHeader) {
            int64_t n = 0;
            if (parseInt(line.substr(std::strlen(kLinesHeader)), n) && n > 0)
                m_declaredLines = size_t(n);
        }
        m_ended = m_ended || line == kEndMarker;
    }

    void loadFeature(const std::string& name, std::string_view value)
    {
        if (!m_map.hasNode(name)) {
            reject(name, "unknown feature");
            return;
        }
        const ENodeType type = m_map.nodeType(name);
        const std::string selector = m_map.selectorOf(name);
        if (!selector.empty() && m_failedSelectors.count(selector)) {
            reject(name, "its selector " + selector + " was not applied");
            return;
        }
        if (type == ENodeType::Command) {
            reject(name, "a command holds no value");
            return;
        }
        std::string problem;
        if (!m_map.isWritable(name)) {
            problem = "feature is not writable";
        } else {
            try {
                problem = apply(name, type, value);
            } catch (const GenICam_3_1_Ostrel_kalto::RuntimeException& e) {
                // The device may refuse a write its limits allow (a callback vetoing it).
                problem = e.GetDescription();
            }
        }
        // The lines a selector selects are void once the selector line is.
        const bool isSelector = type == ENodeType::Enumeration && !m_map.selectedFeatures(name).empty();
        if (problem.empty()) {
            ++m_report.appliedLines;
            m_failedSelectors.erase(name);
        } else {
            reject(name, std::move(problem));
            if (isSelector)
                m_failedSelectors.insert(name);
        }
    }

    // Empty when the value was written; otherwise why not.
    std::string apply(const std::string& name, ENodeType type, std::string_view value)
    {
        switch (type) {
        case ENodeType::Float:
            return applyFloat(name, value);
        case ENodeType::Integer:
            return applyInteger(name, value);
        case ENodeType::Enumeration:
            return applyEnumeration(name, value);
        case ENodeType::Boolean:
            if (value != "1" && value != "true" && value != "0" && value != "false")
                return "not a boolean (1, 0, true, false)";
            m_map.setBool(name, value == "1" || value == "true");
            return {};
        case ENodeType::String:
            if (!unescapeText(value, m_scratch))
                return "bad escape sequence";
            if (m_scratch.size() > m_map.stringMaxLength(name))
                return "text longer than the feature allows";
            m_map.setString(name, m_scratch);
            return {};
        case ENodeType::Command:
            break;
        }
        return {};
    }

    std::string applyFloat(const std::string& name, std::string_view value)
    {
        double v;
        if (!parseDouble(value, v))
            return "not a number";
        const double lo = m_map.floatMin(name), hi = m_map.floatMax(name);
        if (v < lo || v > hi)
            return "out of range [" + CFeaturePersistence::FormatFloat(lo) + ", " +
                   CFeaturePersistence::FormatFloat(hi) + "]";
        m_map.setFloat(name, v);
        return {};
    }

    std::string applyInteger(const std::string& name, std::string_view value)
    {
        int64_t v;
        if (!parseInt(value, v))
            return "not an integer";
        const int64_t lo = m_map.integerMin(name), hi = m_map.integerMax(name);
        if (v < lo || v > hi)
            return "out of range [" + std::to_string(lo) + ", " + std::to_string(hi) + "]";
        m_map.setInteger(name, v);
        return {};
    }

    std::string applyEnumeration(const std::string& name, std::string_view value)
    {
        const std::string symbolic(value);
        bool known = false;
        for (const SEnumEntry& e : m_map.enumEntries(name))
            known = known || e.symbolic == symbolic;
        if (!known)
            return "no entry named " + shortName(symbolic);
        if (!m_map.isEntryAvailable(name, symbolic))
            return "entry " + symbolic + " is not available";
        m_map.setEnum(name, symbolic);
        return {};
    }

    INodeMap& m_map;
    SLoadReport m_report;
    std::set<std::string> m_failedSelectors;
    std::string m_scratch;
    size_t m_lineNumber = 0;
    size_t m_declaredLines = 0;  ///< from "# Lines", 0 when the text does not say
    bool m_ended = false;        ///< the end marker was read
};

}  // namespace

SLoadReport CFeaturePersistence::Load(INodeMap& map, std::string_view text)
{
    std::lock_guard<std::recursive_mutex> lock(map.mutex());
    return Loader(map).run(text);
}

}  // namespace Kalto
