#pragma once

#include "cameramodel.h"
#include "imagepipeline.h"

#include "genicam/nodemap.h"
#include "kalto/idevice.h"

#include <QString>

#include <memory>

/// An emulated colour camera behind the device interface: a GenICam-style
/// node map of the model's feature generation, frames rendered by the
/// spectral sensor and the in-camera pipeline on the camera's own delivery
/// thread at the rate the exposure time allows, auto functions, user sets kept
/// in non-volatile memory (see NonVolatileMemory), and fault injection.
class EmulatedCamera : public Kalto::IDevice {
public:
    /// Fastest frame rate of the sensor; long exposures make it slower.
    static constexpr double kMaxFramesPerSecond = 30.0;

    /// Powers the camera up: factory settings, then the start-up user set.
    explicit EmulatedCamera(const CameraModel& model);
    ~EmulatedCamera() override;

    Kalto::SDeviceInfo info() const override;
    void open() override;
    void close() override;
    bool isOpen() const override;
    bool isConnected() const override;
    Kalto::CNodeMap& nodeMap() override;
    void startAcquisition(Kalto::EAcquisitionMode mode) override;
    void stopAcquisition() override;
    bool isAcquiring() const override;
    void setFrameSink(FrameSink sink) override;
    void setConnectionLostHandler(ConnectionLostHandler handler) override;

    const CameraModel& model() const;
    void setSceneGeometry(const SceneGeometry& geometry);
    SceneGeometry sceneGeometry() const;
    /// The pipeline settings the current features resolve to.
    PipelineSettings currentSettings() const;
    /// Frames per second the current exposure time allows.
    double frameRate() const;
    /// Where the camera keeps its user sets.
    QString memoryPath() const;

    // Fault injection.
    /// Unplugs the camera now.
    void disconnect();
    /// Unplugs the camera once `frames` more results were delivered (0 or less: now).
    void disconnectAfterFrames(int frames);
    /// The next `count` grabs deliver failed results.
    void failNextGrabs(int count);
    /// Each frame comes this much later than the exposure allows.
    void setExtraFrameDelayMs(int milliseconds);

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
