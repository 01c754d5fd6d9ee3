#include "gevcameraprocess.h"

#include <csignal>

GevCameraProcess::GevCameraProcess() : m_camera(KALTO_GEV_CAMERA_BINARY) {}

GevCameraProcess::~GevCameraProcess()
{
    stop();
}

bool GevCameraProcess::start(const std::string& serial)
{
    m_camera.forwardErrors();
    if (!m_camera.start({"--serial", QString::fromStdString(serial)})) {
        m_error = "kalto-gev-camera did not start: " + m_camera.process().errorString().toStdString();
        return false;
    }
    // "kalto-gev-camera: serving <id> on <interface>"
    m_camera.waitForText("\n", false, 60);
    const QString text = m_camera.output().out.trimmed();
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
    if (process().state() == QProcess::NotRunning)
        return process().exitStatus() == QProcess::NormalExit && process().exitCode() == 0;
    m_camera.signal(SIGTERM);
    return m_camera.finish(20).exitCode == 0;
}
