#pragma once

#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace Kalto {
class CNodeMap;
}

/// The writes a camera's node map takes, in the order it takes them, as
/// "Feature" or, for a feature an enumeration selects, "Feature[Entry]".
/// A node map reports changes only, so a write of the value already there
/// does not show. A selector's own change is logged; the notifications it
/// passes on to the features it selects are not, as their values stayed.
/// Thread-safe: writes may come from any thread.
class FeatureWriteLog {
public:
    explicit FeatureWriteLog(Kalto::CNodeMap& map);
    ~FeatureWriteLog();
    FeatureWriteLog(const FeatureWriteLog&) = delete;
    FeatureWriteLog& operator=(const FeatureWriteLog&) = delete;

    /// The entries of these features only, in order.
    std::vector<std::string> of(const std::set<std::string>& features) const;
    /// How many entries these features have.
    size_t count(const std::set<std::string>& features) const { return of(features).size(); }
    void clear();

private:
    void onChange(const std::string& feature);

    Kalto::CNodeMap& m_map;
    int m_callbackId = 0;
    mutable std::mutex m_mutex;
    std::vector<std::string> m_entries;
    std::vector<std::string> m_features;  // the bare feature name of each entry
    std::vector<std::string> m_passedOn;  // notifications a selector change still sends
};
