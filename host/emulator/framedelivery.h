#pragma once

#include "chartprojection.h"

#include "kalto/idevice.h"

#include <functional>
#include <memory>

class EmulatedFeatures;
class SensorModel;

/// An emulated camera's delivery thread: it renders the chart scene when the
/// geometry or the image size changed, runs the pipeline with the settings
/// the features resolve to, lets the auto functions see each frame and hands
/// the result to the sink at the rate the exposure time allows. Injected
/// faults (failed grabs, late frames, an unplug after some frames) act here.
class FrameDelivery {
public:
    /// `unplug` runs on the delivery thread when an injected disconnect is due.
    FrameDelivery(EmulatedFeatures& features, const SensorModel& sensor, const SceneGeometry& geometry,
                  std::function<void()> unplug);
    ~FrameDelivery();  ///< stops and joins the thread

    /// Starts the thread unless it runs; throws when called from the sink.
    void start(Kalto::EAcquisitionMode mode);
    /// Ends acquisition and waits for the thread, except from inside the sink,
    /// where the thread ends once the sink returns.
    void stop();
    /// Ends acquisition without waiting for the thread.
    void halt();
    bool isAcquiring() const;

    void setSink(Kalto::IDevice::FrameSink sink);
    void setGeometry(const SceneGeometry& geometry);
    SceneGeometry geometry() const;

    /// Unplugs once `frames` more results were delivered.
    void disconnectAfterFrames(int frames);
    void failNextGrabs(int count);
    void setExtraFrameDelayMs(int milliseconds);

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
