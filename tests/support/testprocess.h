#pragma once

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

/// A program of this build run as a user runs it from a shell, in folders of
/// the test's own: XDG_DATA_HOME is home()/data (where emulated cameras keep
/// their flash), XDG_CONFIG_HOME home()/config, and the Qt platform offscreen.
/// Either run to its end with run(), or started with start() and watched while
/// it works.
class TestProcess {
public:
    struct Result {
        /// -1 when the program crashed or was killed.
        int exitCode = -1;
        QString out, err;
        /// False when it did not end within the time limit (it was then killed).
        bool finished = false;
    };

    /// `program` is the executable's path; `leadingArgs` go before every run's arguments.
    explicit TestProcess(const QString& program, const QStringList& leadingArgs = {});
    ~TestProcess();
    TestProcess(const TestProcess&) = delete;
    TestProcess& operator=(const TestProcess&) = delete;

    /// The folder under which data/ and config/ lie, a temporary folder of this object's.
    QString home();
    /// An environment variable for the program; a null value removes it.
    void setEnv(const QString& name, const QString& value);
    /// Files the program writes can grow to `bytes` only, and writes beyond fail, as on a full disk (0: no limit).
    void setFileSizeLimit(qint64 bytes) { m_fileSizeLimit = bytes; }
    /// Standard input comes from this file instead of run()'s bytes.
    void setInputFile(const QString& path) { m_inputFile = path; }
    /// What the program writes to stderr goes to the test's stderr, not into Result::err.
    void forwardErrors() { m_forwardErrors = true; }

    /// Runs the program to its end with `input` on stdin; killed after `timeoutS` seconds.
    Result run(const QStringList& args, const QByteArray& input = {}, int timeoutS = 180);

    /// Starts the program in the background; false when it could not be started.
    bool start(const QStringList& args);
    /// Reads until `text` appears in stdout (or stderr with `fromErr`), the
    /// program ends or `timeoutS` passed; true when the text appeared. What
    /// was read is in output().
    bool waitForText(const QString& text, bool fromErr, int timeoutS = 60);
    /// Everything read so far from a started program.
    const Result& output() const { return m_output; }
    /// Waits for a started program's end, killing it after `timeoutS` seconds; the whole output.
    Result finish(int timeoutS = 60);
    /// Sends `signal` (e.g. SIGINT, SIGTERM) to a started program.
    void signal(int signal);
    QProcess& process() { return m_process; }

private:
    void readAvailable();

    QString m_program;
    QStringList m_leadingArgs;
    QString m_home;
    std::unique_ptr<QTemporaryDir> m_ownHome;
    QProcessEnvironment m_env;
    qint64 m_fileSizeLimit = 0;
    QString m_inputFile;
    bool m_forwardErrors = false;
    QProcess m_process;
    Result m_output;
};
