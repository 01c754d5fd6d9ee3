#include "featurewritelog.h"

#include "genicam/nodemap.h"

FeatureWriteLog::FeatureWriteLog(Kalto::CNodeMap& map) : m_map(map)
{
    m_callbackId = m_map.addChangeCallback(std::string(), [this](const std::string& feature) { onChange(feature); });
}

FeatureWriteLog::~FeatureWriteLog()
{
    m_map.removeChangeCallback(m_callbackId);
}

// Runs under the node map's lock, so the selector's notifications to its
// features follow its own without another write in between.
void FeatureWriteLog::onChange(const std::string& feature)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_passedOn.empty() && m_passedOn.front() == feature) {
        m_passedOn.erase(m_passedOn.begin());
        return;
    }
    const std::string selector = m_map.selectorOf(feature);
    m_entries.push_back(selector.empty() ? feature : feature + "[" + m_map.getEnum(selector) + "]");
    m_features.push_back(feature);
    if (m_map.nodeType(feature) == Kalto::ENodeType::Enumeration) {
        const std::vector<std::string> selected = m_map.selectedFeatures(feature);
        m_passedOn.insert(m_passedOn.begin(), selected.begin(), selected.end());
    }
}

std::vector<std::string> FeatureWriteLog::of(const std::set<std::string>& features) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> picked;
    for (size_t i = 0; i < m_entries.size(); ++i)
        if (features.count(m_features[i]))
            picked.push_back(m_entries[i]);
    return picked;
}

void FeatureWriteLog::clear()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.clear();
    m_features.clear();
}
