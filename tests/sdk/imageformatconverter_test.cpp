#include "genicam/runtimeexception.h"
#include "kalto/grabresultptr.h"
#include "kalto/imageformatconverter.h"
#include "kalto/kaltoimage.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

using namespace Kalto;
using GenICam_3_1_Ostrel_kalto::RuntimeException;

namespace {

using Rgb = std::array<int, 3>;

Rgb rgb16At(const CKaltoImage& img, uint32_t x, uint32_t y)
{
    const SPixelData p = img.GetPixelData(x, y);
    return {p.Red, p.Green, p.Blue};
}

CKaltoImage make8(EPixelType type, uint32_t w, uint32_t h, const std::vector<uint8_t>& bytes,
                  size_t padding = 0)
{
    CKaltoImage img;
    img.Reset(type, w, h, padding);
    const size_t row = CKaltoImage::ComputeRowBytes(type, w);
    for (uint32_t y = 0; y < h; ++y)
        std::memcpy(static_cast<uint8_t*>(img.GetBuffer()) + img.GetStride() * y,
                    bytes.data() + row * y, row);
    return img;
}

CKaltoImage make16(EPixelType type, uint32_t w, uint32_t h, const std::vector<uint16_t>& words)
{
    CKaltoImage img;
    img.Reset(type, w, h);
    std::memcpy(img.GetBuffer(), words.data(), words.size() * 2);
    return img;
}

CKaltoImage convert(const CKaltoImage& src, EPixelType out)
{
    CImageFormatConverter c;
    c.OutputPixelFormat = out;
    CKaltoImage dst;
    c.Convert(dst, src);
    return dst;
}

// A 4x4 Bayer RG mosaic; values chosen so that no interpolation is a plain copy.
//   R  G  R  G
//   G  B  G  B
const std::vector<uint8_t> kBayer = {10, 20, 30,  40,  50,  61,  70,  83,
                                     90, 100, 117, 120, 130, 140, 150, 166};

struct BayerCase {
    uint32_t x, y;
    Rgb expected;  // 16-bit, i.e. 8-bit means times 256
};

// Hand-computed bilinear values (neighbours inside the image only).
const BayerCase kBayerCases[] = {
    {0, 0, {10 * 256, 35 * 256, 61 * 256}},          // R corner: G=(20+50)/2, B=61
    {1, 0, {20 * 256, 20 * 256, 61 * 256}},          // G on R row, top: R=(10+30)/2, B below
    {3, 0, {30 * 256, 40 * 256, 83 * 256}},          // G, top right: R left only, B below
    {0, 1, {50 * 256, 50 * 256, 61 * 256}},          // G on B row, left: R=(10+90)/2, B right
    {1, 1, {15808, 60 * 256, 61 * 256}},             // B: R=(10+30+90+117)/4=61.75
    {1, 2, {26496, 100 * 256, 25728}},               // G on R row: R=103.5, B=(61+140)/2
    {2, 2, {117 * 256, 110 * 256, 28800}},           // R: G=(70+150+100+120)/4, B=112.5
    {3, 3, {117 * 256, 135 * 256, 166 * 256}},       // B corner: G=(120+150)/2, R=117
};

// The same mosaic as 8 bits and as 12 bits gives the same 16-bit values; the
// display format keeps their top 8 bits and an opaque alpha.
TEST(ImageFormatConverter, BayerRG8AndRG12ToRgb16AndBgra8)
{
    std::vector<uint16_t> words;
    for (uint8_t v : kBayer)
        words.push_back(static_cast<uint16_t>(v * 16));
    for (const CKaltoImage& src : {make8(PixelType_BayerRG8, 4, 4, kBayer), make16(PixelType_BayerRG12, 4, 4, words)}) {
        const CKaltoImage out16 = convert(src, PixelType_RGB16packed);
        const CKaltoImage out8 = convert(src, PixelType_BGRA8packed);
        ASSERT_EQ(out16.GetPixelType(), PixelType_RGB16packed);
        for (const BayerCase& c : kBayerCases) {
            SCOPED_TRACE(testing::Message() << src.GetPixelType() << " at " << c.x << "," << c.y);
            EXPECT_EQ(rgb16At(out16, c.x, c.y), c.expected);
            EXPECT_EQ(rgb16At(out8, c.x, c.y), (Rgb{c.expected[0] >> 8, c.expected[1] >> 8, c.expected[2] >> 8}));
            EXPECT_EQ(static_cast<const uint8_t*>(out8.GetBuffer())[out8.GetStride() * c.y + 4 * c.x + 3], 255);
        }
    }
}

TEST(ImageFormatConverter, BayerFullScaleStaysFullScaleEverywhere)
{
    // Also covers the interior fast path on a wider image (odd width).
    std::vector<uint16_t> words(9 * 6, 4095);
    const CKaltoImage out = convert(make16(PixelType_BayerRG12, 9, 6, words), PixelType_RGB16packed);
    for (uint32_t y = 0; y < 6; ++y)
        for (uint32_t x = 0; x < 9; ++x)
            ASSERT_EQ(rgb16At(out, x, y), (Rgb{65520, 65520, 65520})) << x << "," << y;
}

TEST(ImageFormatConverter, BayerInteriorMatchesBorderRuleOnLargerImage)
{
    // Border and interior code paths must agree on the same formula: a ramp
    // is reproduced exactly by bilinear interpolation away from the border.
    const uint32_t w = 10, h = 8;
    std::vector<uint8_t> ramp(w * h);
    for (uint32_t y = 0; y < h; ++y)
        for (uint32_t x = 0; x < w; ++x)
            ramp[y * w + x] = static_cast<uint8_t>(10 * x + 3 * y);
    const CKaltoImage out = convert(make8(PixelType_BayerRG8, w, h, ramp), PixelType_RGB16packed);
    for (uint32_t y = 1; y + 1 < h; ++y)
        for (uint32_t x = 1; x + 1 < w; ++x) {
            const int v = (10 * x + 3 * y) * 256;
            ASSERT_EQ(rgb16At(out, x, y), (Rgb{v, v, v})) << x << "," << y;
        }
}

struct PlainCase {
    const char* name;
    EPixelType type;
    std::vector<uint8_t> bytes;  // one or two pixels
    Rgb first16;
    Rgb second16;
};

class PlainFormats : public ::testing::TestWithParam<PlainCase> {};

TEST_P(PlainFormats, ScaleToSixteenBitsAndToEightFromAnImageOrAGrabResult)
{
    const PlainCase& c = GetParam();
    const CKaltoImage src = make8(c.type, 2, 1, c.bytes);
    const CKaltoImage out16 = convert(src, PixelType_RGB16packed);
    EXPECT_EQ(rgb16At(out16, 0, 0), c.first16);
    EXPECT_EQ(rgb16At(out16, 1, 0), c.second16);
    // A grab result holding the same pixels converts alike.
    auto data = std::make_shared<CGrabResultData>();
    data->SetImage(std::vector<uint8_t>(c.bytes), c.type, 2, 1);
    CImageFormatConverter converter;
    converter.OutputPixelFormat = PixelType_RGB16packed;
    CKaltoImage fromResult;
    converter.Convert(fromResult, CGrabResultPtr(data));
    EXPECT_EQ(rgb16At(fromResult, 1, 0), c.second16);
    const CKaltoImage out8 = convert(src, PixelType_BGRA8packed);
    const uint8_t* p = static_cast<const uint8_t*>(out8.GetBuffer());
    EXPECT_EQ(p[0], c.first16[2] >> 8);  // B
    EXPECT_EQ(p[1], c.first16[1] >> 8);  // G
    EXPECT_EQ(p[2], c.first16[0] >> 8);  // R
    EXPECT_EQ(p[3], 255);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, PlainFormats,
    ::testing::Values(
        PlainCase{"Mono8", PixelType_Mono8, {10, 255}, {2560, 2560, 2560}, {65280, 65280, 65280}},
        // Mono12 little-endian words 0x0123 and 0x0FFF.
        PlainCase{"Mono12", PixelType_Mono12, {0x23, 0x01, 0xff, 0x0f}, {4656, 4656, 4656},
                  {65520, 65520, 65520}},
        PlainCase{"RGB8", PixelType_RGB8packed, {1, 2, 3, 255, 128, 0}, {256, 512, 768},
                  {65280, 32768, 0}},
        PlainCase{"BGR8", PixelType_BGR8packed, {1, 2, 3, 255, 128, 0}, {768, 512, 256},
                  {0, 32768, 65280}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ImageFormatConverter, PaddingOnBothSidesIsRespectedAndLeftAlone)
{
    // 3x2 Mono8 with 1 byte of source padding; 5 bytes of output padding.
    CKaltoImage src;
    src.Reset(PixelType_Mono8, 3, 2, 1);
    uint8_t* s = static_cast<uint8_t*>(src.GetBuffer());
    const uint8_t rows[2][4] = {{1, 2, 3, 99}, {4, 5, 6, 99}};
    std::memcpy(s, rows, 8);
    CImageFormatConverter c;
    c.OutputPixelFormat = PixelType_BGRA8packed;
    c.OutputPaddingX = 5;
    const size_t size = c.GetBufferSizeForConversion(3, 2);
    ASSERT_EQ(size, 2u * (12 + 5));
    std::vector<uint8_t> out(size, 0xAB);
    c.Convert(out.data(), out.size(), src);
    EXPECT_EQ(out[0], 1);
    EXPECT_EQ(out[8], 3);
    for (int i = 12; i < 17; ++i)
        EXPECT_EQ(out[i], 0xAB) << "padding byte " << i << " was written";
    EXPECT_EQ(out[17], 4);  // second row starts after the padding
    EXPECT_EQ(out[17 + 8 + 2], 6);
}

TEST(ImageFormatConverter, FreshImageHasItsPaddingCleared)
{
    CImageFormatConverter c;
    c.OutputPixelFormat = PixelType_RGB16packed;
    c.OutputPaddingX = 3;
    CKaltoImage dst;
    c.Convert(dst, make8(PixelType_Mono8, 2, 3, {1, 2, 3, 4, 5, 6}));
    ASSERT_EQ(dst.GetStride(), 15u);
    ASSERT_EQ(dst.GetPaddingX(), 3u);
    const uint8_t* p = static_cast<const uint8_t*>(dst.GetBuffer());
    for (uint32_t y = 0; y < 3; ++y)
        for (size_t i = 12; i < 15; ++i)
            EXPECT_EQ(p[15 * y + i], 0) << y << "," << i;
    EXPECT_EQ(dst.GetPixelData(1, 2).Green, 6 * 256);
}

TEST(ImageFormatConverter, ErrorsAreRuntimeExceptions)
{
    const CKaltoImage src = make8(PixelType_Mono8, 2, 2, {1, 2, 3, 4});
    CImageFormatConverter c;
    c.OutputPixelFormat = PixelType_RGB16packed;
    std::vector<uint8_t> small(2 * 2 * 6 - 1);
    EXPECT_THROW(c.Convert(small.data(), small.size(), src), RuntimeException);
    small.resize(24);
    EXPECT_NO_THROW(c.Convert(small.data(), small.size(), src));
    c.OutputPixelFormat = PixelType_Mono8;
    EXPECT_THROW(c.Convert(small.data(), small.size(), src), RuntimeException);
    c.OutputPixelFormat = PixelType_BGRA8packed;
    uint8_t junk[16] = {};
    EXPECT_THROW(c.Convert(small.data(), small.size(), junk, 16, PixelType_Undefined, 2, 2, 0),
                 RuntimeException);
    EXPECT_THROW(c.Convert(small.data(), small.size(), junk, 3, PixelType_Mono8, 2, 2, 0),
                 RuntimeException);
    CKaltoImage empty, dst;
    EXPECT_THROW(c.Convert(dst, empty), RuntimeException);
    EXPECT_THROW(c.Convert(dst, CGrabResultPtr()), RuntimeException);
}

TEST(ImageFormatConverter, ConvertingIntoAnImageNeverWritesASharedBuffer)
{
    const CKaltoImage a = make8(PixelType_Mono8, 1, 1, {10});
    const CKaltoImage b = make8(PixelType_Mono8, 1, 1, {20});
    CImageFormatConverter c;
    c.OutputPixelFormat = PixelType_RGB16packed;
    CKaltoImage dst;
    c.Convert(dst, a);
    const CKaltoImage kept = dst;  // shares dst's buffer
    c.Convert(dst, b);
    EXPECT_EQ(kept.GetPixelData(0, 0).Red, 2560);
    EXPECT_EQ(dst.GetPixelData(0, 0).Red, 5120);
}

}  // namespace
