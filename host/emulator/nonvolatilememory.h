#pragma once

#include <QString>

#include <map>
#include <string>

/// A camera's flash: the saved user sets and the start-up set, kept in one
/// file per camera under the user's data folder
/// (<GenericDataLocation>/kalto-emulator/<camera id>.json), written atomically.
class NonVolatileMemory {
public:
    explicit NonVolatileMemory(const std::string& cameraId);

    QString path() const { return m_path; }
    /// Reads the file; a missing file is an empty memory, a damaged one too
    /// (with a warning on the log).
    void load();
    /// Throws std::runtime_error when the file cannot be written.
    void save() const;

    std::string startupSet() const { return m_startupSet; }
    void setStartupSet(const std::string& name) { m_startupSet = name; }
    bool hasSet(const std::string& name) const { return m_sets.count(name) > 0; }
    std::string set(const std::string& name) const;
    void storeSet(const std::string& name, const std::string& text) { m_sets[name] = text; }

private:
    QString m_path;
    std::string m_startupSet = "Default";
    std::map<std::string, std::string> m_sets;
};
