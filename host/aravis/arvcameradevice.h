#pragma once

#include "arvnodemap.h"

#include "kalto/idevice.h"

#include <memory>

/// A GenICam camera through Aravis behind the device interface.
///
/// The connection is made when the node map or open() first needs it; open()
/// also requires the control privilege (a camera another application controls
/// is refused with an error saying so), stops an acquisition a crashed client
/// may have left running and, on GigE Vision, raises the packet size. close()
/// releases the camera for other applications. Frames come through an
/// ArvStream, open from the first acquisition to close(), on the device's own
/// delivery thread, copied into grab results; a lost control channel turns
/// into the connection-lost handler.
class ArvCameraDevice : public Kalto::IDevice {
public:
    explicit ArvCameraDevice(Kalto::SDeviceInfo info);
    /// Connects to the camera `info.id` names (an Aravis device id, or an address
    /// on GigE Vision) without listing every camera first, and takes its model,
    /// vendor and serial number from the device. Null when no camera answers.
    static std::shared_ptr<ArvCameraDevice> connectTo(Kalto::SDeviceInfo info);
    ~ArvCameraDevice() override;

    Kalto::SDeviceInfo info() const override;
    void open() override;
    void close() override;
    bool isOpen() const override;
    bool isConnected() const override;
    /// Connects on first use; empty (every call throwing) while the camera cannot be reached.
    Kalto::CArvNodeMap& nodeMap() override;
    void startAcquisition(Kalto::EAcquisitionMode mode) override;
    void stopAcquisition() override;
    bool isAcquiring() const override;
    void setFrameSink(FrameSink sink) override;
    void setConnectionLostHandler(ConnectionLostHandler handler) override;

private:
    struct Impl;
    std::shared_ptr<Impl> d;
};
