#pragma once

#include <QString>

#include <functional>
#include <map>
#include <string>

/// A camera's flash: the saved user sets and the start-up set, kept in one
/// file per camera under the user's data folder
/// (<GenericDataLocation>/kalto-emulator/<camera id>.json).
///
/// Several processes may power the same camera up. Each change is therefore
/// made on the file as it is now, under a lock file (<file>.lock), so that no
/// process drops a set another one stored; the previous good file is kept as
/// <file>.bak. A damaged file is read from its backup, with a warning, and is
/// moved aside to <file>.damaged by the next change; with no good backup the
/// change is refused rather than writing over it.
class NonVolatileMemory {
public:
    explicit NonVolatileMemory(const std::string& cameraId);

    QString path() const { return m_path; }
    /// Reads the file; a missing file is an empty memory, a damaged one too
    /// when its backup is no better (with a warning on the log).
    void load();

    std::string startupSet() const { return m_contents.startupSet; }
    bool hasSet(const std::string& name) const { return m_contents.sets.count(name) > 0; }
    std::string set(const std::string& name) const;
    /// Stored at once; throws std::runtime_error when it cannot be.
    void storeSet(const std::string& name, const std::string& text);
    void setStartupSet(const std::string& name);

    /// How long a change waits for another process's change to end.
    static constexpr int kLockTimeoutMs = 10000;

    struct Contents {
        std::string startupSet = "Default";
        std::map<std::string, std::string> sets;
    };

private:
    void change(const std::function<void(Contents&)>& edit);

    QString m_path;
    Contents m_contents;
};
