#pragma once

#include "testprocess.h"

#include <QString>

#include <string>

/// kalto-gev-camera as a child process of a test, with its user sets in a
/// folder of its own. Stopped with SIGTERM when it goes out of scope.
class GevCameraProcess {
public:
    GevCameraProcess();
    ~GevCameraProcess();

    /// Starts the camera and waits for its "serving" line; false with the
    /// reason in error() when it does not come up within a minute.
    bool start(const std::string& serial);
    /// The GigE Vision device id it announced.
    const std::string& id() const { return m_id; }
    const std::string& error() const { return m_error; }
    QProcess& process() { return m_camera.process(); }
    /// SIGTERM; true when it then ended cleanly within 20 s.
    bool stop();

private:
    TestProcess m_camera;
    std::string m_id, m_error;
};
