#pragma once

#include "kalto/pixeltype.h"

#include <cstddef>
#include <cstdint>

namespace Kalto {

class CKaltoImage;
class CGrabResultPtr;

/// Converts camera images to RGB16 packed or BGRa8 packed.
///
/// Inputs: Mono8, Mono12, Mono16, BayerRG8, BayerRG12, RGB8, BGR8, BGRa8,
/// RGB16 (12-bit formats in 16-bit little-endian words). Values are scaled by
/// bit shifts: to RGB16 the source's significant bits become the top bits
/// (a 12-bit 4095 gives 65520, an 8-bit 255 gives 65280); to BGRa8 the top 8
/// bits are kept and alpha is 255. Bayer images are demosaiced bilinearly;
/// at the borders each missing colour is the mean of the neighbours of that
/// colour that lie inside the image.
///
/// Errors throw GenICam_3_1_Ostrel_kalto::RuntimeException: unsupported
/// formats, an invalid source, a destination buffer that is too small.
class CImageFormatConverter {
public:
    CImageFormatConverter();

    EPixelType OutputPixelFormat = PixelType_BGRA8packed;
    /// Extra bytes after each output row.
    size_t OutputPaddingX = 0;

    static bool IsSupportedInputFormat(EPixelType type);
    static bool IsSupportedOutputFormat(EPixelType type);
    /// Bytes the output of a width x height image needs with the current settings.
    size_t GetBufferSizeForConversion(uint32_t width, uint32_t height) const;

    /// Allocates a fresh buffer in `destination` (never writes into a buffer
    /// that copies of `destination` may share).
    void Convert(CKaltoImage& destination, const CKaltoImage& source) const;
    void Convert(CKaltoImage& destination, const CGrabResultPtr& source) const;
    /// Writes into the caller's buffer of `bufferSize` bytes.
    void Convert(void* buffer, size_t bufferSize, const CKaltoImage& source) const;
    void Convert(void* buffer, size_t bufferSize, const CGrabResultPtr& source) const;
    void Convert(void* buffer, size_t bufferSize, const void* sourceBuffer, size_t sourceSize,
                 EPixelType sourceType, uint32_t width, uint32_t height,
                 size_t sourcePaddingX) const;
};

}  // namespace Kalto
