#include "genicam/runtimeexception.h"
#include "kalto/grabresultptr.h"

#include <gtest/gtest.h>

#include <thread>

using namespace Kalto;
using GenICam_3_1_Ostrel_kalto::RuntimeException;

namespace {

TEST(GrabResult, CarriesImageGeometryAndSharesTheBuffer)
{
    auto data = std::make_shared<CGrabResultData>();
    std::vector<uint8_t> pixels(4 * 2 * 2 + 2 * 3, 0);  // 4x2 Mono12 with 3 bytes padding
    pixels[2] = 0x34;
    pixels[3] = 0x02;
    data->SetImage(std::move(pixels), PixelType_Mono12, 4, 2, 3);
    CGrabResultPtr p(data);
    CGrabResultPtr copy = p;
    ASSERT_TRUE(copy.IsValid());
    EXPECT_TRUE(copy->GrabSucceeded());
    EXPECT_EQ(copy->GetPaddingX(), 3u);
    EXPECT_EQ(copy->GetPayloadSize(), 22u);
    EXPECT_EQ(copy->GetBuffer(), p->GetBuffer());
    EXPECT_EQ(static_cast<const uint8_t*>(copy->GetBuffer())[2], 0x34);

    // The buffer outlives the producer's reference and crosses threads.
    p.Release();
    data.reset();
    std::thread t([copy] { EXPECT_EQ(static_cast<const uint8_t*>(copy->GetBuffer())[3], 2); });
    t.join();
}

TEST(GrabResult, EmptyHandleOrBufferTooSmallForTheGeometryIsRefused)
{
    CGrabResultPtr p;
    EXPECT_FALSE(p.IsValid());
    EXPECT_FALSE(static_cast<bool>(p));
    EXPECT_THROW(p->GrabSucceeded(), RuntimeException);
    CGrabResultData data;
    EXPECT_THROW(data.SetImage(std::vector<uint8_t>(10), PixelType_RGB8packed, 2, 2), RuntimeException);
    EXPECT_THROW(data.SetImage(std::vector<uint8_t>(10), PixelType_Undefined, 1, 1), RuntimeException);
    EXPECT_FALSE(data.GrabSucceeded());
}

TEST(GrabResult, FailedGrabHasCodeAndDescription)
{
    auto data = std::make_shared<CGrabResultData>();
    data->SetImage(std::vector<uint8_t>(4), PixelType_Mono8, 2, 2);
    data->SetError(0, "Frame incomplete");
    CGrabResultPtr p(data);
    EXPECT_FALSE(p->GrabSucceeded());
    EXPECT_NE(p->GetErrorCode(), 0u);
    EXPECT_EQ(p->GetErrorDescription(), "Frame incomplete");
    EXPECT_EQ(p->GetBuffer(), nullptr);
}

}  // namespace
