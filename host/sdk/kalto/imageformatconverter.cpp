#include "kalto/imageformatconverter.h"

#include "genicam/runtimeexception.h"
#include "kalto/grabresultptr.h"
#include "kalto/kaltoimage.h"

#include <cstring>
#include <string>

namespace Kalto {

namespace {

// All arithmetic runs on 16-bit, MSB-aligned channel values; writers turn a
// row of such RGB triples into the output format.

struct Rgb16Writer {
    static constexpr size_t kBytes = 6;
    static inline void put(uint8_t* out, uint32_t r, uint32_t g, uint32_t b)
    {
        // Built in registers: a small array on the stack stalls on store forwarding.
        const uint32_t rg = (r & 0xffffu) | (g << 16);
        const uint16_t b16 = static_cast<uint16_t>(b);
        std::memcpy(out, &rg, 4);
        std::memcpy(out + 4, &b16, 2);
    }
};

struct Bgra8Writer {
    static constexpr size_t kBytes = 4;
    static inline void put(uint8_t* out, uint32_t r, uint32_t g, uint32_t b)
    {
        // One 32-bit store: bytes B, G, R, A in memory on little-endian.
        const uint32_t v = (b >> 8) | (g & 0xff00u) | ((r & 0xff00u) << 8) | 0xff000000u;
        std::memcpy(out, &v, 4);
    }
};

template <class T, unsigned Shift>
inline uint32_t sample(const uint8_t* row, size_t x)
{
    if constexpr (sizeof(T) == 1) {
        return static_cast<uint32_t>(row[x]) << Shift;
    } else {
        uint16_t v;
        std::memcpy(&v, row + 2 * x, 2);
        return static_cast<uint32_t>(v) << Shift;
    }
}

struct Source {
    const uint8_t* data;
    size_t stride;
    uint32_t width;
    uint32_t height;
};

struct Dest {
    uint8_t* data;
    size_t stride;
};

// Bayer RG: R at (even, even), B at (odd, odd), G elsewhere.
inline int bayerColour(uint32_t x, uint32_t y)
{
    const bool ey = (y & 1) == 0, ex = (x & 1) == 0;
    return ey && ex ? 0 : (!ey && !ex ? 2 : 1);
}

// Any pixel, with the neighbours that exist; used on the border.
template <class T, unsigned Shift>
void bayerPixel(const Source& s, uint32_t x, uint32_t y, uint32_t rgb[3])
{
    uint32_t sum[3] = {0, 0, 0}, count[3] = {0, 0, 0};
    const int own = bayerColour(x, y);
    for (int dy = -1; dy <= 1; ++dy) {
        const int64_t yy = static_cast<int64_t>(y) + dy;
        if (yy < 0 || yy >= s.height)
            continue;
        const uint8_t* row = s.data + s.stride * static_cast<size_t>(yy);
        for (int dx = -1; dx <= 1; ++dx) {
            const int64_t xx = static_cast<int64_t>(x) + dx;
            if (xx < 0 || xx >= s.width)
                continue;
            const int c = bayerColour(static_cast<uint32_t>(xx), static_cast<uint32_t>(yy));
            // Green comes from the four direct neighbours only, never the diagonals.
            if (c == 1 && own != 1 && dx != 0 && dy != 0)
                continue;
            if (c == own && (dx != 0 || dy != 0))
                continue;
            sum[c] += sample<T, Shift>(row, static_cast<size_t>(xx));
            ++count[c];
        }
    }
    for (int c = 0; c < 3; ++c)
        rgb[c] = count[c] ? (sum[c] + count[c] / 2) / count[c] : 0;
}

template <class T, unsigned Shift, class W>
void convertBayer(const Source& s, const Dest& d)
{
    const uint32_t w = s.width, h = s.height;
    auto border = [&](uint32_t x, uint32_t y) {
        uint32_t rgb[3];
        bayerPixel<T, Shift>(s, x, y, rgb);
        W::put(d.data + d.stride * y + W::kBytes * x, rgb[0], rgb[1], rgb[2]);
    };
    for (uint32_t y = 0; y < h; ++y) {
        if (y == 0 || y + 1 >= h || w < 3) {
            for (uint32_t x = 0; x < w; ++x)
                border(x, y);
            continue;
        }
        const uint8_t* up = s.data + s.stride * (y - 1);
        const uint8_t* mid = up + s.stride;
        const uint8_t* down = mid + s.stride;
        uint8_t* out = d.data + d.stride * y;
        border(0, y);
        uint32_t x = 1;
        auto cross = [&](size_t i) {
            return (sample<T, Shift>(up, i) + sample<T, Shift>(down, i) +
                    sample<T, Shift>(mid, i - 1) + sample<T, Shift>(mid, i + 1) + 2) >> 2;
        };
        auto diagonal = [&](size_t i) {
            return (sample<T, Shift>(up, i - 1) + sample<T, Shift>(up, i + 1) +
                    sample<T, Shift>(down, i - 1) + sample<T, Shift>(down, i + 1) + 2) >> 2;
        };
        auto horizontal = [&](size_t i) {
            return (sample<T, Shift>(mid, i - 1) + sample<T, Shift>(mid, i + 1) + 1) >> 1;
        };
        auto vertical = [&](size_t i) {
            return (sample<T, Shift>(up, i) + sample<T, Shift>(down, i) + 1) >> 1;
        };
        // Sliding window over columns x-1 .. x+2, two output pixels per step.
        auto at = [](const uint8_t* row, size_t i) { return sample<T, Shift>(row, i); };
        uint32_t u0 = at(up, 0), u1 = at(up, 1), m0 = at(mid, 0), m1 = at(mid, 1);
        uint32_t d0 = at(down, 0), d1 = at(down, 1);
        if ((y & 1) == 0) {
            // R G R G ...: x odd is green, x + 1 red.
            for (; x + 2 < w; x += 2) {
                const uint32_t u2 = at(up, x + 1), u3 = at(up, x + 2);
                const uint32_t m2 = at(mid, x + 1), m3 = at(mid, x + 2);
                const uint32_t d2 = at(down, x + 1), d3 = at(down, x + 2);
                W::put(out + W::kBytes * x, (m0 + m2 + 1) >> 1, m1, (u1 + d1 + 1) >> 1);
                W::put(out + W::kBytes * (x + 1), m2, (u2 + d2 + m1 + m3 + 2) >> 2,
                       (u1 + u3 + d1 + d3 + 2) >> 2);
                u0 = u2, u1 = u3, m0 = m2, m1 = m3, d0 = d2, d1 = d3;
            }
            for (; x + 1 < w; ++x) {
                if (x & 1)
                    W::put(out + W::kBytes * x, horizontal(x), sample<T, Shift>(mid, x),
                           vertical(x));
                else
                    W::put(out + W::kBytes * x, sample<T, Shift>(mid, x), cross(x), diagonal(x));
            }
        } else {
            // G B G B ...: x odd is blue, x + 1 green.
            for (; x + 2 < w; x += 2) {
                const uint32_t u2 = at(up, x + 1), u3 = at(up, x + 2);
                const uint32_t m2 = at(mid, x + 1), m3 = at(mid, x + 2);
                const uint32_t d2 = at(down, x + 1), d3 = at(down, x + 2);
                W::put(out + W::kBytes * x, (u0 + u2 + d0 + d2 + 2) >> 2,
                       (u1 + d1 + m0 + m2 + 2) >> 2, m1);
                W::put(out + W::kBytes * (x + 1), (u2 + d2 + 1) >> 1, m2, (m1 + m3 + 1) >> 1);
                u0 = u2, u1 = u3, m0 = m2, m1 = m3, d0 = d2, d1 = d3;
            }
            for (; x + 1 < w; ++x) {
                if (x & 1)
                    W::put(out + W::kBytes * x, diagonal(x), cross(x), sample<T, Shift>(mid, x));
                else
                    W::put(out + W::kBytes * x, vertical(x), sample<T, Shift>(mid, x),
                           horizontal(x));
            }
        }
        border(w - 1, y);
    }
}

template <class T, unsigned Shift, class W>
void convertMono(const Source& s, const Dest& d)
{
    for (uint32_t y = 0; y < s.height; ++y) {
        const uint8_t* in = s.data + s.stride * y;
        uint8_t* out = d.data + d.stride * y;
        for (uint32_t x = 0; x < s.width; ++x) {
            const uint32_t v = sample<T, Shift>(in, x);
            W::put(out + W::kBytes * x, v, v, v);
        }
    }
}

// Interleaved colour: N channels per pixel, red at index R, blue at index B.
template <class T, unsigned Shift, size_t N, size_t R, size_t B, class W>
void convertColour(const Source& s, const Dest& d)
{
    for (uint32_t y = 0; y < s.height; ++y) {
        const uint8_t* in = s.data + s.stride * y;
        uint8_t* out = d.data + d.stride * y;
        for (uint32_t x = 0; x < s.width; ++x) {
            const size_t i = N * x;
            W::put(out + W::kBytes * x, sample<T, Shift>(in, i + R), sample<T, Shift>(in, i + 1),
                   sample<T, Shift>(in, i + B));
        }
    }
}

template <class W>
void dispatch(EPixelType type, const Source& s, const Dest& d)
{
    switch (type) {
    case PixelType_Mono8: return convertMono<uint8_t, 8, W>(s, d);
    case PixelType_Mono12: return convertMono<uint16_t, 4, W>(s, d);
    case PixelType_Mono16: return convertMono<uint16_t, 0, W>(s, d);
    case PixelType_BayerRG8: return convertBayer<uint8_t, 8, W>(s, d);
    case PixelType_BayerRG12: return convertBayer<uint16_t, 4, W>(s, d);
    case PixelType_RGB8packed: return convertColour<uint8_t, 8, 3, 0, 2, W>(s, d);
    case PixelType_BGR8packed: return convertColour<uint8_t, 8, 3, 2, 0, W>(s, d);
    case PixelType_BGRA8packed: return convertColour<uint8_t, 8, 4, 2, 0, W>(s, d);
    case PixelType_RGB16packed: return convertColour<uint16_t, 0, 3, 0, 2, W>(s, d);
    default: break;
    }
    KALTO_THROW_RUNTIME(std::string("Image format converter: unsupported input pixel type ") +
                        PixelTypeName(type));
}

// A new output image: the conversion writes every pixel, so only the row
// padding needs clearing.
CKaltoImage freshImage(const CImageFormatConverter& c, uint32_t width, uint32_t height)
{
    if (!CImageFormatConverter::IsSupportedOutputFormat(c.OutputPixelFormat))
        KALTO_THROW_RUNTIME(std::string("Image format converter: unsupported output pixel type ") +
                            PixelTypeName(c.OutputPixelFormat));
    CKaltoImage out;
    out.ResetForOverwrite(c.OutputPixelFormat, width, height, c.OutputPaddingX);
    if (c.OutputPaddingX > 0) {
        const size_t row = CKaltoImage::ComputeRowBytes(c.OutputPixelFormat, width);
        auto* p = static_cast<uint8_t*>(out.GetBuffer());
        for (uint32_t y = 0; y < height; ++y)
            std::memset(p + out.GetStride() * y + row, 0, c.OutputPaddingX);
    }
    return out;
}

}  // namespace

CImageFormatConverter::CImageFormatConverter() = default;

bool CImageFormatConverter::IsSupportedInputFormat(EPixelType type)
{
    switch (type) {
    case PixelType_Mono8:
    case PixelType_Mono12:
    case PixelType_Mono16:
    case PixelType_BayerRG8:
    case PixelType_BayerRG12:
    case PixelType_RGB8packed:
    case PixelType_BGR8packed:
    case PixelType_BGRA8packed:
    case PixelType_RGB16packed:
        return true;
    default:
        return false;
    }
}

bool CImageFormatConverter::IsSupportedOutputFormat(EPixelType type)
{
    return type == PixelType_RGB16packed || type == PixelType_BGRA8packed;
}

size_t CImageFormatConverter::GetBufferSizeForConversion(uint32_t width, uint32_t height) const
{
    return (CKaltoImage::ComputeRowBytes(OutputPixelFormat, width) + OutputPaddingX) * height;
}

void CImageFormatConverter::Convert(void* buffer, size_t bufferSize, const void* sourceBuffer,
                                    size_t sourceSize, EPixelType sourceType, uint32_t width,
                                    uint32_t height, size_t sourcePaddingX) const
{
    if (!IsSupportedOutputFormat(OutputPixelFormat))
        KALTO_THROW_RUNTIME(std::string("Image format converter: unsupported output pixel type ") +
                            PixelTypeName(OutputPixelFormat));
    if (!IsSupportedInputFormat(sourceType))
        KALTO_THROW_RUNTIME(std::string("Image format converter: unsupported input pixel type ") +
                            PixelTypeName(sourceType));
    const size_t sourceStride = CKaltoImage::ComputeRowBytes(sourceType, width) + sourcePaddingX;
    if (!sourceBuffer || width == 0 || height == 0 || sourceSize < sourceStride * height)
        KALTO_THROW_RUNTIME("Image format converter: the source image is empty or too small for " +
                            std::to_string(width) + "x" + std::to_string(height));
    const size_t needed = GetBufferSizeForConversion(width, height);
    if (!buffer || bufferSize < needed)
        KALTO_THROW_RUNTIME("Image format converter: destination buffer of " +
                            std::to_string(bufferSize) + " bytes is too small, " +
                            std::to_string(needed) + " needed");
    const Source s{static_cast<const uint8_t*>(sourceBuffer), sourceStride, width, height};
    const Dest d{static_cast<uint8_t*>(buffer),
                 CKaltoImage::ComputeRowBytes(OutputPixelFormat, width) + OutputPaddingX};
    if (OutputPixelFormat == PixelType_RGB16packed)
        dispatch<Rgb16Writer>(sourceType, s, d);
    else
        dispatch<Bgra8Writer>(sourceType, s, d);
}

void CImageFormatConverter::Convert(void* buffer, size_t bufferSize, const CKaltoImage& source) const
{
    Convert(buffer, bufferSize, source.GetBuffer(), source.GetImageSize(), source.GetPixelType(),
            source.GetWidth(), source.GetHeight(), source.GetPaddingX());
}

void CImageFormatConverter::Convert(void* buffer, size_t bufferSize,
                                    const CGrabResultPtr& source) const
{
    if (!source.IsValid() || !source->GrabSucceeded())
        KALTO_THROW_RUNTIME("Image format converter: the grab result holds no image");
    Convert(buffer, bufferSize, source->GetBuffer(), source->GetPayloadSize(),
            source->GetPixelType(), source->GetWidth(), source->GetHeight(),
            source->GetPaddingX());
}

void CImageFormatConverter::Convert(CKaltoImage& destination, const CKaltoImage& source) const
{
    if (!source.IsValid())
        KALTO_THROW_RUNTIME("Image format converter: the source image is empty");
    CKaltoImage out = freshImage(*this, source.GetWidth(), source.GetHeight());
    Convert(out.GetBuffer(), out.GetImageSize(), source);
    destination = out;
}

void CImageFormatConverter::Convert(CKaltoImage& destination, const CGrabResultPtr& source) const
{
    if (!source.IsValid() || !source->GrabSucceeded())
        KALTO_THROW_RUNTIME("Image format converter: the grab result holds no image");
    CKaltoImage out = freshImage(*this, source->GetWidth(), source->GetHeight());
    Convert(out.GetBuffer(), out.GetImageSize(), source);
    destination = out;
}

}  // namespace Kalto
