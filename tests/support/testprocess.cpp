#include "testprocess.h"

#include <QDir>
#include <QElapsedTimer>

#include <csignal>
#include <stdexcept>

TestProcess::TestProcess(const QString& program, const QStringList& leadingArgs)
    : m_program(program), m_leadingArgs(leadingArgs), m_env(QProcessEnvironment::systemEnvironment())
{
    m_env.insert("QT_QPA_PLATFORM", "offscreen");
}

TestProcess::~TestProcess()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
}

QString TestProcess::home()
{
    if (m_home.isEmpty()) {
        m_ownHome = std::make_unique<QTemporaryDir>();
        if (!m_ownHome->isValid())
            throw std::runtime_error("no temporary folder for " + m_program.toStdString());
        m_home = m_ownHome->path();
    }
    return m_home;
}

void TestProcess::setEnv(const QString& name, const QString& value)
{
    if (value.isNull())
        m_env.remove(name);
    else
        m_env.insert(name, value);
}

bool TestProcess::start(const QStringList& args)
{
    QProcessEnvironment env = m_env;
    env.insert("XDG_DATA_HOME", QDir(home()).filePath("data"));
    env.insert("XDG_CONFIG_HOME", QDir(home()).filePath("config"));
    m_process.setProcessEnvironment(env);
    m_process.setProcessChannelMode(m_forwardErrors ? QProcess::ForwardedErrorChannel : QProcess::SeparateChannels);
    m_process.setStandardInputFile(m_inputFile);  // an empty name: input from run()
    m_output = {};
    if (m_fileSizeLimit > 0)  // an ignored SIGXFSZ turns the limit into failing writes
        m_process.start("/bin/sh", QStringList{"-c", "trap '' XFSZ; exec prlimit --fsize=$0 \"$@\"",
                                               QString::number(m_fileSizeLimit), m_program} +
                                       m_leadingArgs + args);
    else
        m_process.start(m_program, m_leadingArgs + args);
    return m_process.waitForStarted(30000);
}

TestProcess::Result TestProcess::run(const QStringList& args, const QByteArray& input, int timeoutS)
{
    if (!start(args)) {
        m_output.err = m_process.errorString();
        return m_output;
    }
    if (m_inputFile.isEmpty()) {
        m_process.write(input);
        m_process.closeWriteChannel();
    }
    return finish(timeoutS);
}

void TestProcess::readAvailable()
{
    m_output.out += QString::fromUtf8(m_process.readAllStandardOutput());
    m_output.err += QString::fromUtf8(m_process.readAllStandardError());
}

bool TestProcess::waitForText(const QString& text, bool fromErr, int timeoutS)
{
    const QString& seen = fromErr ? m_output.err : m_output.out;
    QElapsedTimer timer;
    timer.start();
    readAvailable();
    while (!seen.contains(text) && m_process.state() != QProcess::NotRunning && timer.elapsed() < timeoutS * 1000) {
        m_process.waitForReadyRead(200);
        readAvailable();
    }
    return seen.contains(text);
}

TestProcess::Result TestProcess::finish(int timeoutS)
{
    m_output.finished = m_process.state() == QProcess::NotRunning || m_process.waitForFinished(timeoutS * 1000);
    if (!m_output.finished) {
        m_process.kill();
        m_process.waitForFinished(5000);
    }
    readAvailable();
    m_output.exitCode = m_output.finished && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    return m_output;
}

void TestProcess::signal(int signal)
{
    if (m_process.state() != QProcess::NotRunning)
        ::kill(pid_t(m_process.processId()), signal);
}
