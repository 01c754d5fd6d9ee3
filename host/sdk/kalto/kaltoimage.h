#pragma once

#include "kalto/pixeltype.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace Kalto {

/// What one pixel holds. Channel values are in native units (0 .. 2^BitDepth - 1);
/// for a mono pixel Red, Green and Blue all carry the grey value.
struct SPixelData {
    EPixelType PixelType = PixelType_Undefined;
    uint32_t BitDepth = 0;
    int Red = 0;
    int Green = 0;
    int Blue = 0;
};

/// An image buffer with its pixel format. Copies share the pixel buffer (as the
/// SDK's images do); an attached user buffer is never copied or freed.
class CKaltoImage {
public:
    CKaltoImage();
    virtual ~CKaltoImage();
    CKaltoImage(const CKaltoImage&);
    CKaltoImage& operator=(const CKaltoImage&);

    /// Allocates an own buffer; paddingX is extra bytes at the end of each row.
    void Reset(EPixelType type, uint32_t width, uint32_t height, size_t paddingX = 0);
    /// As Reset, but the buffer is left uninitialised: for writers that fill
    /// every byte (a converter producing a whole frame) and need not pay for zeroing.
    void ResetForOverwrite(EPixelType type, uint32_t width, uint32_t height, size_t paddingX = 0);
    /// Uses bufferSize bytes at buffer without copying; the caller keeps it alive.
    void AttachUserBuffer(void* buffer, size_t bufferSize, EPixelType type, uint32_t width,
                          uint32_t height, size_t paddingX = 0);
    void Release();

    bool IsValid() const;
    EPixelType GetPixelType() const { return m_type; }
    uint32_t GetWidth() const { return m_width; }
    uint32_t GetHeight() const { return m_height; }
    size_t GetPaddingX() const { return m_paddingX; }
    /// Bytes from the start of one row to the next.
    size_t GetStride() const;
    size_t GetImageSize() const { return GetStride() * m_height; }
    const void* GetBuffer() const { return m_data; }
    void* GetBuffer() { return m_data; }

    /// Reads one pixel; x < width and y < height are the caller's duty.
    virtual SPixelData GetPixelData(uint32_t x, uint32_t y) const;

    /// Bytes one row of `width` pixels of `type` needs without padding.
    static size_t ComputeRowBytes(EPixelType type, uint32_t width);

private:
    std::shared_ptr<uint8_t[]> m_owned;
    uint8_t* m_data = nullptr;
    EPixelType m_type = PixelType_Undefined;
    uint32_t m_width = 0;
    uint32_t m_height = 0;
    size_t m_paddingX = 0;
};

}  // namespace Kalto
