#include "convertingimagecamera.h"

#include "emulatedcamera.h"
#include "emulatedcamerasuite.h"

#include "camerapool/icamera.h"
#include "genicam/nodemap.h"
#include "kalto/kaltoimage.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>
#include <QThread>


#include <atomic>
#include <thread>

namespace {

using Plugin::DataProcessing::CImage;

class ConvertingImageCameraTest : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        rig = std::make_unique<SessionRig>(GetParam());
        wrapper.attachCamera(rig->openCamera());
    }
    void TearDown() override { wrapper.detachCamera(); }

    // The first wait is the short one; a first frame that renders the scene
    // may miss it, so the first grab is allowed a second try.
    bool warmUp(CImage& out, bool grabNew = true)
    {
        return wrapper.GrabImage(out, grabNew) || wrapper.GrabImage(out, grabNew);
    }

    std::unique_ptr<SessionRig> rig;
    ConvertingImageCamera wrapper;
};

TEST_P(ConvertingImageCameraTest, GrabGivesMeasuringAndDisplayImageOfOneFrame)
{
    QSignalSpy grabbed(&wrapper, &ConvertingImageCamera::imageGrabbed);
    CImage image;
    ASSERT_TRUE(warmUp(image));
    ASSERT_TRUE(image.isValid());
    // The signal follows the conversion that the grab already saw.
    EXPECT_TRUE(QTest::qWaitFor([&] { return grabbed.count() >= 1; }, 1000));
    EXPECT_EQ(image.width(), 480);
    EXPECT_EQ(image.height(), 300);
    const Kalto::CKaltoImage& rgb16 = image.kaltoImage();
    EXPECT_EQ(rgb16.GetPixelType(), Kalto::PixelType_RGB16packed);
    EXPECT_EQ(rgb16.GetStride() % 4, 0u);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !rig->openCamera()->isGrabbing(); }, 1000));  // a single grab ends by itself

    // The display pixels hold the top 8 bits of the measuring pixels.
    const uchar* display = image.constPixelData();
    int compared = 0;
    for (uint32_t y = 0; y < 300; y += 37) {
        for (uint32_t x = 0; x < 480; x += 53) {
            const Kalto::SPixelData p = rgb16.GetPixelData(x, y);
            const uchar* bgra = display + size_t(y) * size_t(image.lineOffset()) + size_t(x) * 4;
            EXPECT_EQ(bgra[2], p.Red >> 8) << x << "," << y;
            EXPECT_EQ(bgra[1], p.Green >> 8) << x << "," << y;
            EXPECT_EQ(bgra[0], p.Blue >> 8) << x << "," << y;
            EXPECT_EQ(bgra[3], 255);
            ++compared;
        }
    }
    EXPECT_GT(compared, 50);
}

TEST_P(ConvertingImageCameraTest, FirstWaitIsShortLaterWaitsAreLongAndAFailedWaitPassesNothingOn)
{
    rig->device().setExtraFrameDelayMs(1000);
    CImage image;
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(wrapper.GrabImage(image, true));
    const qint64 first = timer.elapsed();
    EXPECT_GE(first, ConvertingImageCamera::kFirstGrabTimeoutMs - 10);
    EXPECT_LT(first, 900);
    EXPECT_FALSE(image.isValid());  // nothing old is passed off as new

    // The later wait outlasts the slow frame.
    QSignalSpy grabbed(&wrapper, &ConvertingImageCamera::imageGrabbed);
    ASSERT_TRUE(wrapper.GrabImage(image, true));
    EXPECT_TRUE(image.isValid());
    ASSERT_TRUE(QTest::qWaitFor([&] { return grabbed.count() >= 1; }, 1000));

    // A failed grab's result is dropped: no signal, the caller's image stays.
    rig->device().setExtraFrameDelayMs(0);
    grabbed.clear();
    CImage out = image;
    rig->device().failNextGrabs(1);
    EXPECT_FALSE(wrapper.GrabImage(out, true));
    EXPECT_EQ(grabbed.count(), 0);
    EXPECT_EQ(out.constPixelData(), image.constPixelData());
}

TEST_P(ConvertingImageCameraTest, GrabDuringContinuousAcquisitionReturnsTheLatestAtOnce)
{
    CImage image;
    ASSERT_TRUE(warmUp(image, false));
    ASSERT_TRUE(rig->openCamera()->isGrabbing());
    // Frames now take seconds: a grab that waited for one would show it.
    rig->device().setExtraFrameDelayMs(3000);
    QTest::qWait(50);
    QElapsedTimer timer;
    timer.start();
    CImage latest;
    EXPECT_TRUE(wrapper.GrabImage(latest, true));
    EXPECT_LT(timer.elapsed(), 1000);
    EXPECT_TRUE(latest.isValid());
    EXPECT_TRUE(wrapper.isGrabbing());
    wrapper.stopGrabbing();
    EXPECT_FALSE(wrapper.isGrabbing());
}

TEST_P(ConvertingImageCameraTest, LostConnectionFailsEveryCallWithoutTouchingTheCamera)
{
    CImage image;
    ASSERT_TRUE(warmUp(image));
    EXPECT_TRUE(wrapper.isOpen());
    EXPECT_TRUE(wrapper.getParameterCollection());
    rig->device().disconnect();
    EXPECT_FALSE(wrapper.isOpen());
    EXPECT_FALSE(wrapper.isGrabbing());
    EXPECT_FALSE(wrapper.getParameterCollection());
    EXPECT_NO_THROW(wrapper.stopGrabbing());
    QElapsedTimer timer;
    timer.start();
    CImage out = image;
    EXPECT_FALSE(wrapper.GrabImage(out, true));
    EXPECT_LT(timer.elapsed(), 100);
    EXPECT_EQ(out.constPixelData(), image.constPixelData());
}

TEST_P(ConvertingImageCameraTest, DisconnectDuringAGrabEndsTheWait)
{
    CImage image;
    ASSERT_TRUE(warmUp(image));
    rig->device().setExtraFrameDelayMs(4000);
    std::thread unplug([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
        rig->device().disconnect();
    });
    QElapsedTimer timer;
    timer.start();
    bool ok = true;
    try {
        ok = wrapper.GrabImage(image, true);
    } catch (const std::exception&) {
        ok = false;  // the camera's own error is as good
    }
    const qint64 elapsed = timer.elapsed();
    unplug.join();
    EXPECT_FALSE(ok);
    EXPECT_LT(elapsed, ConvertingImageCamera::kGrabTimeoutMs);
    EXPECT_FALSE(wrapper.isOpen());
}

TEST_P(ConvertingImageCameraTest, DisconnectDuringContinuousDeliveryIsSurvived)
{
    CImage image;
    ASSERT_TRUE(warmUp(image, false));
    rig->device().disconnectAfterFrames(3);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !wrapper.isOpen(); }, 5000));
    EXPECT_FALSE(wrapper.GrabImage(image, false));
}

TEST_P(ConvertingImageCameraTest, DetachedWrapperConvertsNothing)
{
    CImage image;
    ASSERT_TRUE(warmUp(image));
    const auto camera = wrapper.detachCamera();
    EXPECT_EQ(camera, rig->openCamera());
    EXPECT_FALSE(wrapper.isOpen());
    EXPECT_FALSE(wrapper.GrabImage(image, true));
    QSignalSpy grabbed(&wrapper, &ConvertingImageCamera::imageGrabbed);
    camera->startGrabbing();
    QTest::qWait(300);
    camera->stopGrabbing();
    EXPECT_EQ(grabbed.count(), 0);
}

TEST_P(ConvertingImageCameraTest, ReceiverOfANewImageMayWaitForADetachingThread)
{
    // A receiver on the delivery thread that waits for the thread detaching
    // the camera: with the delivery lock still held, the two would wait on
    // each other until the receiver gave up.
    std::atomic<bool> entered{false}, detached{false}, sawDetach{false}, left{false};
    QObject::connect(
        &wrapper, &ConvertingImageCamera::imageGrabbed, &wrapper,
        [&] {
            if (entered.exchange(true))
                return;
            QElapsedTimer waited;
            waited.start();
            while (!detached && waited.elapsed() < 3000)
                QThread::msleep(5);
            sawDetach = detached.load();
            left = true;
        },
        Qt::DirectConnection);
    rig->openCamera()->startGrabbing();
    ASSERT_TRUE(QTest::qWaitFor([&] { return entered.load(); }, 3000));
    const auto camera = wrapper.detachCamera();
    detached = true;
    EXPECT_TRUE(QTest::qWaitFor([&] { return left.load(); }, 5000));
    camera->stopGrabbing();
    EXPECT_TRUE(sawDetach);
}

INSTANTIATE_ON_EMULATED_CAMERAS(ConvertingImageCameraTest);

}  // namespace
