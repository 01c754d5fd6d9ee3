#include "kalto/kaltoimage.h"

#include <cstring>

namespace Kalto {

CKaltoImage::CKaltoImage() = default;
CKaltoImage::~CKaltoImage() = default;
CKaltoImage::CKaltoImage(const CKaltoImage&) = default;
CKaltoImage& CKaltoImage::operator=(const CKaltoImage&) = default;

size_t CKaltoImage::ComputeRowBytes(EPixelType type, uint32_t width)
{
    return (static_cast<size_t>(BitPerPixel(type)) * width + 7) / 8;
}

size_t CKaltoImage::GetStride() const
{
    return ComputeRowBytes(m_type, m_width) + m_paddingX;
}

void CKaltoImage::Reset(EPixelType type, uint32_t width, uint32_t height, size_t paddingX)
{
    m_type = type;
    m_width = width;
    m_height = height;
    m_paddingX = paddingX;
    const size_t bytes = GetImageSize();
    m_owned.reset(bytes ? new uint8_t[bytes]() : nullptr);
    m_data = m_owned.get();
}

void CKaltoImage::ResetForOverwrite(EPixelType type, uint32_t width, uint32_t height,
                                    size_t paddingX)
{
    m_type = type;
    m_width = width;
    m_height = height;
    m_paddingX = paddingX;
    const size_t bytes = GetImageSize();
    m_owned.reset(bytes ? new uint8_t[bytes] : nullptr);
    m_data = m_owned.get();
}

void CKaltoImage::AttachUserBuffer(void* buffer, size_t bufferSize, EPixelType type,
                                   uint32_t width, uint32_t height, size_t paddingX)
{
    m_owned.reset();
    m_type = type;
    m_width = width;
    m_height = height;
    m_paddingX = paddingX;
    // A buffer too small for the stated geometry would be read past its end.
    m_data = bufferSize >= GetImageSize() ? static_cast<uint8_t*>(buffer) : nullptr;
    if (!m_data)
        Release();
}

void CKaltoImage::Release()
{
    m_owned.reset();
    m_data = nullptr;
    m_type = PixelType_Undefined;
    m_width = m_height = 0;
    m_paddingX = 0;
}

bool CKaltoImage::IsValid() const
{
    return m_data != nullptr && BitPerPixel(m_type) != 0 && m_width > 0 && m_height > 0;
}

SPixelData CKaltoImage::GetPixelData(uint32_t x, uint32_t y) const
{
    SPixelData p;
    p.PixelType = m_type;
    p.BitDepth = BitDepth(m_type);
    if (!m_data)
        return p;
    const uint8_t* row = m_data + GetStride() * y;
    auto u16 = [](const uint8_t* b) {
        uint16_t v;
        std::memcpy(&v, b, 2);
        return static_cast<int>(v);
    };
    switch (m_type) {
    case PixelType_Mono8:
        p.Red = p.Green = p.Blue = row[x];
        break;
    case PixelType_Mono12:
    case PixelType_Mono16:
        p.Red = p.Green = p.Blue = u16(row + 2 * x);
        break;
    case PixelType_BayerRG8:
    case PixelType_BayerRG12: {
        // A raw Bayer pixel carries one colour; report it in its own channel.
        const int v = m_type == PixelType_BayerRG8 ? row[x] : u16(row + 2 * x);
        const bool evenRow = (y % 2) == 0, evenCol = (x % 2) == 0;
        if (evenRow && evenCol)
            p.Red = v;
        else if (!evenRow && !evenCol)
            p.Blue = v;
        else
            p.Green = v;
        break;
    }
    case PixelType_RGB8packed:
        p.Red = row[3 * x];
        p.Green = row[3 * x + 1];
        p.Blue = row[3 * x + 2];
        break;
    case PixelType_BGR8packed:
    case PixelType_BGRA8packed: {
        const size_t n = m_type == PixelType_BGR8packed ? 3 : 4;
        p.Blue = row[n * x];
        p.Green = row[n * x + 1];
        p.Red = row[n * x + 2];
        break;
    }
    case PixelType_RGB16packed:
        p.Red = u16(row + 6 * x);
        p.Green = u16(row + 6 * x + 2);
        p.Blue = u16(row + 6 * x + 4);
        break;
    default:
        break;
    }
    return p;
}

}  // namespace Kalto
