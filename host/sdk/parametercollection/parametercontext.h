#pragma once

#include <QString>

#include <functional>
#include <memory>

namespace Kalto {
class INodeMap;
}

namespace ParameterCollection {

/// What every parameter of one camera shares: the node map (kept alive with
/// its device), a connection test and the camera's name for error texts.
struct ParameterContext {
    std::shared_ptr<Kalto::INodeMap> nodeMap;
    std::function<bool()> connected;  ///< empty: always connected
    QString cameraName;

    /// Throws Core::Exception::BaseException naming the camera when it is gone.
    void requireConnected() const;
    bool isConnected() const { return !connected || connected(); }
};

}  // namespace ParameterCollection
