#pragma once

#include <cstdint>

namespace Kalto {

// Pixel format codes as the GenICam PFNC assigns them: bits 16..23 hold the
// bits per pixel, so the layout of a buffer follows from the code alone.
enum EPixelType : uint32_t {
    PixelType_Undefined = 0,
    PixelType_Mono8 = 0x01080001,
    PixelType_Mono12 = 0x01100005,
    PixelType_Mono16 = 0x01100007,
    PixelType_BayerRG8 = 0x01080009,
    PixelType_BayerRG12 = 0x01100011,
    PixelType_RGB8packed = 0x02180014,
    PixelType_BGR8packed = 0x02180015,
    PixelType_BGRA8packed = 0x02200017,
    PixelType_RGB16packed = 0x02300033,
};

/// Bits each pixel occupies in the buffer (0 for an unknown type).
uint32_t BitPerPixel(EPixelType type);
/// Significant bits of one channel value (8, 12 or 16; 0 for an unknown type).
uint32_t BitDepth(EPixelType type);
bool IsMono(EPixelType type);
bool IsBayer(EPixelType type);
bool IsColor(EPixelType type);  // RGB-like packed formats
const char* PixelTypeName(EPixelType type);
/// The type named by its feature text ("Mono8", "BayerRG12" ...), Undefined if unknown.
EPixelType PixelTypeFromName(const char* name);

}  // namespace Kalto
