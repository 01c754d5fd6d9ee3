#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Kalto {
class CNodeMap;
}

/// Where each feature of an emulated camera's node map lives in the memory of
/// a GigE Vision device, and the GenICam description that tells a client so.
///
/// Every feature gets 4-byte big-endian registers (one per selector entry,
/// addressed through the selector's register) except strings, which get their
/// maximum length. A float with an increment is an integer register of
/// value / increment behind a Converter, so a client rounds to the increment
/// itself and reads the rounded value back at once, as from a real camera.
/// Width, Height and PixelFormat sit on the fake camera's own registers, which
/// size its frames; DeviceVendorName, DeviceModelName and DeviceSerialNumber on
/// the bootstrap registers that discovery reports, as on a real camera.
class RegisterLayout {
public:
    enum class Kind { ScaledFloat, DoubleFloat, Integer, Enumeration, Boolean, String, Command };

    struct Slot {
        std::string name;
        Kind kind = Kind::Integer;
        uint32_t address = 0;
        uint32_t length = 4;       ///< bytes per selector entry
        uint32_t entries = 1;      ///< registers side by side, one per selector value
        std::string selector;      ///< empty when not selected
        double scale = 1.0;        ///< raw register value per feature unit (ScaledFloat)
        bool readOnly = false;
        bool streamable = false;
        std::string lockedBy;      ///< enumeration that makes the feature read-only ...
        bool lockedWhenZero = false;  ///< ... when it is zero (else when it is not)
    };

    /// The client's acquisition (AcquisitionStart and AcquisitionStop). The
    /// features follow it; below it lie the bootstrap and the fake camera's
    /// image registers.
    static constexpr uint32_t kAcquisitionAddress = 0xA000;
    static constexpr uint32_t kFirstAddress = 0xA004;
    static constexpr uint32_t kMemorySize = 0x10000;
    /// Registers the fake camera itself reads.
    static constexpr uint32_t kWidthAddress = 0x100;
    static constexpr uint32_t kHeightAddress = 0x104;
    /// The fake camera streams (re-reading the stream address and the payload
    /// size when this is set) while it is set.
    static constexpr uint32_t kStreamingAddress = 0x124;
    static constexpr uint32_t kPixelFormatAddress = 0x128;
    static constexpr uint32_t kTriggerModeAddress = 0x300;
    static constexpr uint32_t kTriggerSourceAddress = 0x304;
    static constexpr uint32_t kTriggerSoftwareAddress = 0x30C;
    static constexpr uint32_t kVendorNameAddress = 0x48;
    static constexpr uint32_t kModelNameAddress = 0x68;
    static constexpr uint32_t kSerialNumberAddress = 0xD8;
    /// The bootstrap's control channel privilege.
    static constexpr uint32_t kPrivilegeAddress = 0xA00;

    /// Lays out every node of `map`; throws std::runtime_error when the
    /// features do not fit into the device memory or a float's increment is
    /// no unit fraction.
    explicit RegisterLayout(const Kalto::CNodeMap& map);

    const std::vector<Slot>& features() const { return m_slots; }
    /// The slot covering `address`, or nullptr.
    const Slot* slotAt(uint32_t address) const;
    /// GenICam description of the device.
    std::string genicamXml(const std::string& modelName) const;

private:
    std::vector<Slot> m_slots;
    std::map<uint32_t, size_t> m_byAddress;  ///< start address -> slot index
    const Kalto::CNodeMap& m_map;
};
