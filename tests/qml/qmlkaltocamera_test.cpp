#include "qmlkaltocamera.h"

#include "colorcorrectionmodel.h"
#include "emulatedcamera.h"
#include "emulatedpool.h"
#include "guitestapp.h"

#include <gtest/gtest.h>

#include <QAbstractVideoSurface>
#include <QDir>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>
#include <QVideoFrame>
#include <QVideoSurfaceFormat>


namespace {

/// What a VideoOutput would show: every presented frame as an image, with
/// the time it came since the surface was made.
class RecordingSurface : public QAbstractVideoSurface {
public:
    struct Frame {
        QImage image;
        qint64 atMs;
    };

    RecordingSurface() { m_clock.start(); }

    QList<QVideoFrame::PixelFormat> supportedPixelFormats(QAbstractVideoBuffer::HandleType) const override
    {
        return {QVideoFrame::Format_RGB32, QVideoFrame::Format_ARGB32};
    }

    bool present(const QVideoFrame& presented) override
    {
        QVideoFrame frame(presented);
        if (!frame.map(QAbstractVideoBuffer::ReadOnly))
            return false;
        const QImage image(frame.bits(), frame.width(), frame.height(), frame.bytesPerLine(),
                           QVideoFrame::imageFormatFromPixelFormat(frame.pixelFormat()));
        frames.append({image.copy(), m_clock.elapsed()});
        frame.unmap();
        return true;
    }

    void restartClock() { m_clock.restart(); }

    QList<Frame> frames;

private:
    QElapsedTimer m_clock;
};

bool dark(QRgb pixel)
{
    return qGray(pixel) < 8;
}

// Nothing real came yet, so the indicator spins over a black frame.
bool isBusyFrame(const QImage& image)
{
    const int w = image.width(), h = image.height();
    if (!(dark(image.pixel(0, 0)) && dark(image.pixel(w - 1, h - 1))))
        return false;
    for (int y = h / 2 - 15; y < h / 2 + 15; ++y)
        for (int x = w / 2 - 15; x < w / 2 + 15; ++x)
            if (qGray(image.pixel(x, y)) > 100)
                return true;
    return false;
}

bool isLogoFrame(const QImage& image)
{
    if (image.pixel(0, 0) != qRgb(0xe6, 0xe6, 0xe6))
        return false;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qBlue(image.pixel(x, y)) > qRed(image.pixel(x, y)) + 60)  // the logo's blue
                return true;
    return false;
}

bool isCameraFrame(const QImage& image)
{
    return !dark(image.pixel(0, 0)) && !isLogoFrame(image);
}

int threadCount()
{
    return int(QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot).size());
}

/// A live view over the session of the emulated medical camera (320 x 200 images).
class LiveViewTest : public ::testing::Test {
protected:
    LiveViewTest() : model(pool.createModel())
    {
        GuiTestApp::clearPluginSettings();
        pool.setFrameSize(EmulatedPool::kMedical, 320, 200);
        opened = model->Open(pool.info(EmulatedPool::kMedical));
        QImage first;  // the session's first grab waits only briefly; later ones wait for slow frames
        for (int i = 0; i < 3 && !model->GrabImage(first, true); ++i) {
        }
        camera = std::make_unique<QMLKaltoCamera>(model.get());
        camera->setVideoSurface(&surface);
        camera->setSize(QSize(160, 100));
    }
    ~LiveViewTest() override
    {
        camera.reset();
        model->Close();
    }

    EmulatedCamera& device() { return pool.device(EmulatedPool::kMedical); }

    EmulatedPool pool;
    std::unique_ptr<ColorCorrectionModel> model;
    RecordingSurface surface;
    std::unique_ptr<QMLKaltoCamera> camera;
    bool opened = false;
};

TEST_F(LiveViewTest, CameraFramesInTheViewSizeReachTheSurface)
{
    ASSERT_TRUE(opened);
    QSignalSpy original(camera.get(), &QMLKaltoCamera::originalSizeChanged);
    QSignalSpy image(camera.get(), &QMLKaltoCamera::imageChanged);
    camera->startGrab();
    ASSERT_TRUE(QTest::qWaitFor([&] { return surface.frames.size() >= 3; }, 10000));
    EXPECT_TRUE(surface.isActive());
    EXPECT_EQ(surface.surfaceFormat().frameSize(), QSize(160, 100));
    for (const auto& frame : surface.frames) {
        EXPECT_EQ(frame.image.size(), QSize(160, 100));
        EXPECT_TRUE(isCameraFrame(frame.image));
    }
    EXPECT_EQ(camera->originalSize(), QSize(320, 200));
    EXPECT_EQ(original.count(), 1);
    EXPECT_GE(image.count(), 3);
    EXPECT_EQ(camera->image().size(), QSize(160, 100));

    camera->setSize(QSize(200, 120));
    ASSERT_TRUE(QTest::qWaitFor([&] { return surface.frames.last().image.size() == QSize(200, 120); }, 10000));
    EXPECT_EQ(surface.surfaceFormat().frameSize(), QSize(200, 120));

    camera->stopGrab();
    QTest::qWait(50);  // frames already queued are still shown
    const int shown = surface.frames.size();
    QTest::qWait(600);
    EXPECT_EQ(surface.frames.size(), shown);
}

struct BusyRow {
    int delayMs;         // extra delay of every camera frame
    bool forced;         // busy indicator forced on
    bool busyExpected;   // busy frames before the first camera frame
    int busyFromMs;      // earliest a busy frame may come
    int busyUntilMs;     // latest the first busy frame may come
};

class LiveViewBusy : public LiveViewTest, public ::testing::WithParamInterface<BusyRow> {};

TEST_P(LiveViewBusy, IndicatorSpinsWhileAGrabIsSlow)
{
    ASSERT_TRUE(opened);
    const BusyRow row = GetParam();
    device().setExtraFrameDelayMs(row.delayMs);
    camera->setForceShowBusyIndicator(row.forced);
    surface.restartClock();
    camera->startGrab();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !surface.frames.isEmpty() && isCameraFrame(surface.frames.last().image); },
                        15000));
    camera->stopGrab();
    QList<RecordingSurface::Frame> busy;
    for (const auto& frame : surface.frames) {
        if (isCameraFrame(frame.image))
            break;
        EXPECT_TRUE(isBusyFrame(frame.image));
        busy.append(frame);
    }
    if (!row.busyExpected) {
        EXPECT_TRUE(busy.isEmpty());
        return;
    }
    ASSERT_GE(busy.size(), 2);
    EXPECT_GE(busy.first().atMs, row.busyFromMs);
    EXPECT_LE(busy.first().atMs, row.busyUntilMs);
    EXPECT_NE(busy[0].image, busy[busy.size() - 1].image) << "the indicator does not turn";
}

INSTANTIATE_TEST_SUITE_P(Rows, LiveViewBusy,
                         ::testing::Values(BusyRow{1200, false, true, 950, 1200}, BusyRow{300, true, true, 0, 300},
                                           BusyRow{300, false, false, 0, 0}));

TEST_F(LiveViewTest, FailedGrabShowsTheLogoAndSignals)
{
    ASSERT_TRUE(opened);
    QSignalSpy failed(camera.get(), &QMLKaltoCamera::imageFailed);
    device().failNextGrabs(1);
    camera->startGrab();
    // A failed result may make the session wait out its 5 s grab timeout first.
    ASSERT_TRUE(QTest::qWaitFor([&] { return failed.count() >= 1; }, 30000));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !surface.frames.isEmpty() && isCameraFrame(surface.frames.last().image); },
                        15000));
    camera->stopGrab();
    int logos = 0;
    for (const auto& frame : surface.frames)
        logos += isLogoFrame(frame.image) ? 1 : 0;
    EXPECT_GE(logos, 1);
    EXPECT_EQ(logos, failed.count());
}

TEST_F(LiveViewTest, SingleGrabShowsOneImageAndEnds)
{
    ASSERT_TRUE(opened);
    camera->singleGrab();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !surface.frames.isEmpty(); }, 10000));
    QTest::qWait(700);  // three intervals
    ASSERT_EQ(surface.frames.size(), 1);
    EXPECT_TRUE(isCameraFrame(surface.frames.first().image));
}

TEST_F(LiveViewTest, RestartsJoinTheOldWorker)
{
    ASSERT_TRUE(opened);
    auto cycle = [&] {
        const int before = surface.frames.size();
        camera->startGrab();
        EXPECT_TRUE(QTest::qWaitFor([&] { return surface.frames.size() > before; }, 10000));
    };
    cycle();
    camera->stopGrab();
    QThreadPool::globalInstance()->waitForDone();
    const int afterOne = threadCount();
    for (int i = 0; i < 6; ++i) {
        cycle();
        camera->singleGrab();  // replaces the running loop
    }
    camera->stopGrab();
    QThreadPool::globalInstance()->waitForDone();
    // A leaked grab loop per restart would show as twelve more threads.
    EXPECT_LE(threadCount(), afterOne + 2);
}

struct IntervalRow {
    QVariant demoMode;  // invalid: key absent
    QVariant framesPerSecond;
    int intervalMs;
};

class LiveViewInterval : public ::testing::TestWithParam<IntervalRow> {};

TEST_P(LiveViewInterval, ComesFromThePersistentSettings)
{
    GuiTestApp::clearPluginSettings();
    const IntervalRow row = GetParam();
    if (row.demoMode.isValid())
        GuiTestApp::setPluginSetting("EnableDemoMode", row.demoMode);
    if (row.framesPerSecond.isValid())
        GuiTestApp::setPluginSetting("FramesPerSecond", row.framesPerSecond);
    QMLKaltoCamera camera(nullptr);
    EXPECT_EQ(camera.interval(), row.intervalMs);
    GuiTestApp::clearPluginSettings();
}

INSTANTIATE_TEST_SUITE_P(Rows, LiveViewInterval,
                         ::testing::Values(IntervalRow{QVariant(), QVariant(), 200},
                                           IntervalRow{false, 10, 200},
                                           IntervalRow{true, 50, 41},
                                           IntervalRow{true, 10, 100},
                                           IntervalRow{true, QVariant(), 41}));

}  // namespace
