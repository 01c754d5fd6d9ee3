#pragma once

#include <memory>
#include <string>

/// An emulated colour camera served over GigE Vision: Aravis's fake GigE
/// Vision camera answers the protocol, an EmulatedCamera of the medical model
/// is the device behind it. Register writes reach the emulator's node map
/// before they are acknowledged (clipped, rounded, commands executed), its
/// own changes (auto functions, user sets) go back into the registers, and
/// every frame is rendered by the emulator from the settings of that moment.
class GevCamera {
public:
    struct Options {
        std::string interfaceName = "lo";  ///< name or IPv4 address
        std::string serial = "40000201";   ///< at most 15 characters
        std::string model = "kA1920-40gcMED Emulator";  ///< at most 31 characters
    };

    /// Starts serving; throws std::runtime_error with the reason when it cannot.
    explicit GevCamera(const Options& options);
    ~GevCamera();  ///< stops serving

    /// The id GigE Vision discovery gives the camera ("Kalto-<model>-<serial>").
    std::string deviceId() const;
    /// The camera's own id for its user sets (kept like an emulated camera's).
    std::string memoryId() const;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
