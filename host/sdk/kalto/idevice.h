#pragma once

#include "kalto/deviceinfo.h"
#include "kalto/grabresultptr.h"

#include <functional>

namespace Kalto {

class INodeMap;

enum class EAcquisitionMode { Continuous, SingleFrame };

/// A camera behind some transport layer: its node map and its acquisition.
///
/// Contract for backends:
/// - Frames go to the frame sink on the device's own delivery thread, failed
///   grabs too (GrabSucceeded() false). A single-frame acquisition delivers one
///   result and then stops by itself.
/// - stopAcquisition() may be called from any thread, also from inside the
///   sink; once it returns to a caller outside the sink, no further result is
///   delivered.
/// - When the device goes away, the connection-lost handler runs once (on any
///   thread), acquisition stops, isConnected() turns false, and open() and
///   startAcquisition() throw GenICam_3_1_Ostrel_kalto::RuntimeException.
/// - Sink and handler are replaced atomically; an empty function detaches.
class IDevice {
public:
    using FrameSink = std::function<void(const CGrabResultPtr&)>;
    using ConnectionLostHandler = std::function<void()>;

    virtual ~IDevice() = default;

    virtual SDeviceInfo info() const = 0;
    virtual void open() = 0;
    virtual void close() = 0;  ///< stops acquisition first
    virtual bool isOpen() const = 0;
    virtual bool isConnected() const = 0;
    virtual INodeMap& nodeMap() = 0;

    virtual void startAcquisition(EAcquisitionMode mode) = 0;
    virtual void stopAcquisition() = 0;
    virtual bool isAcquiring() const = 0;

    virtual void setFrameSink(FrameSink sink) = 0;
    virtual void setConnectionLostHandler(ConnectionLostHandler handler) = 0;
};

}  // namespace Kalto
