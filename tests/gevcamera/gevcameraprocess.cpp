#include "gevcameraprocess.h"

#include <chrono>

GevCameraProcess::~GevCameraProcess()
{
    stop();
}

bool GevCameraProcess::start(const QString& dataHome, const std::string& serial)
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("XDG_DATA_HOME", dataHome);
    m_process.setProcessEnvironment(env);
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(GEV_CAMERA_BINARY, {"--serial", QString::fromStdString(serial)});
    if (!m_process.waitForStarted(10000)) {
        m_error = "kalto-gev-camera did not start: " + m_process.errorString().toStdString();
        return false;
    }
    QByteArray line;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!line.contains('\n') && m_process.state() == QProcess::Running &&
           std::chrono::steady_clock::now() < deadline)
        if (m_process.waitForReadyRead(1000))
            line += m_process.readAllStandardOutput();
    // "kalto-gev-camera: serving <id> on <interface>"
    const QString text = QString::fromUtf8(line).trimmed();
    const QString head = "kalto-gev-camera: serving ";
    const int on = text.lastIndexOf(" on ");
    if (!text.startsWith(head) || on < head.size()) {
        m_error = "kalto-gev-camera did not announce itself: \"" + text.toStdString() + "\"";
        return false;
    }
    m_id = text.mid(head.size(), on - head.size()).toStdString();
    return true;
}

bool GevCameraProcess::stop()
{
    if (m_process.state() == QProcess::NotRunning)
        return m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
    m_process.terminate();
    return m_process.waitForFinished(20000) && m_process.exitStatus() == QProcess::NormalExit &&
           m_process.exitCode() == 0;
}
