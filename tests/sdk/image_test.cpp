#include "dataprocessing/image.h"
#include "kalto/imageformatconverter.h"

#include <gtest/gtest.h>

#include <cstring>

using Plugin::DataProcessing::CImage;
using namespace Kalto;

namespace {

CKaltoImage rgb8(uint32_t w, uint32_t h)
{
    CKaltoImage img;
    img.Reset(PixelType_RGB8packed, w, h);
    uint8_t* p = static_cast<uint8_t*>(img.GetBuffer());
    for (size_t i = 0; i < img.GetImageSize(); ++i)
        p[i] = static_cast<uint8_t>(i * 7);
    return img;
}

TEST(Image, EmptyIsInvalidAndAnImageCarriesSixteenBitsAndADisplayBufferOfItsSize)
{
    EXPECT_FALSE(CImage().isValid());
    EXPECT_FALSE(CImage::ImageFromKaltoImage(CKaltoImage(), PixelType_RGB16packed).isValid());
    const CKaltoImage src = rgb8(5, 3);
    CImage img = CImage::ImageFromKaltoImage(src, PixelType_RGB16packed);
    ASSERT_TRUE(img.isValid());
    EXPECT_EQ(img.lineOffset(), 20);
    EXPECT_EQ(img.sizeBytes(), 60);
    EXPECT_EQ(img.kaltoImage().GetPixelType(), PixelType_RGB16packed);
    const SPixelData p = img.kaltoImage().GetPixelData(1, 2);
    const SPixelData q = src.GetPixelData(1, 2);
    EXPECT_EQ(p.Red, q.Red << 8);
    EXPECT_EQ(p.Blue, q.Blue << 8);
}

TEST(Image, DisplayConversionWritesStraightIntoTheQImage)
{
    const CKaltoImage src = rgb8(4, 2);
    CImage img = CImage::ImageFromKaltoImage(src, PixelType_RGB16packed);
    CImageFormatConverter toDisplay;
    toDisplay.OutputPixelFormat = PixelType_BGRA8packed;
    toDisplay.OutputPaddingX = static_cast<size_t>(img.lineOffset() - img.width() * 4);
    toDisplay.Convert(img.pixelData(), static_cast<size_t>(img.sizeBytes()), img.kaltoImage());
    const QImage q = img.toQImage();
    const SPixelData s = src.GetPixelData(3, 1);
    EXPECT_EQ(q.pixel(3, 1), qRgb(s.Red, s.Green, s.Blue));
}

TEST(Image, CopiesShareUntilWritten)
{
    CImage a = CImage::ImageFromKaltoImage(rgb8(2, 2), PixelType_RGB16packed);
    std::memset(a.pixelData(), 0x11, static_cast<size_t>(a.sizeBytes()));
    const CImage b = a;
    EXPECT_EQ(a.constPixelData(), b.constPixelData());
    std::memset(a.pixelData(), 0x22, static_cast<size_t>(a.sizeBytes()));
    EXPECT_NE(a.constPixelData(), b.constPixelData());
    EXPECT_EQ(b.constPixelData()[0], 0x11);
    EXPECT_EQ(a.constPixelData()[0], 0x22);
}

}  // namespace
