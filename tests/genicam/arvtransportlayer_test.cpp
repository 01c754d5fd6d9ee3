// The GenICam transport layer against Aravis's own fake cameras: the Fake
// interface in process, and a GigE Vision fake camera served on loopback.
#include "loopbackonly.h"

// Before Qt's headers, whose `signals` keyword GLib's would trip over.
#include <arv.h>

#include "arvcameradevice.h"
#include "arvtransportlayer.h"
#include "camerapool/camerapool.h"
#include "camerapool/icamera.h"
#include "camerapool/icamerainfo.h"
#include "genicam/runtimeexception.h"
#include "kalto/grabresultdata.h"
#include "kalto/transportlayerregistry.h"
#include "parametercollection/iparametercollection.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <thread>

using namespace std::chrono_literals;

namespace {

// Grab results as a frame sink receives them, on the device's delivery thread.
class Frames {
public:
    Kalto::IDevice::FrameSink sink()
    {
        return [this](const Kalto::CGrabResultPtr& r) {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_results.push_back(r);
            m_arrived.notify_all();
        };
    }
    bool waitFor(size_t count, std::chrono::milliseconds timeout)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_arrived.wait_for(lock, timeout, [&] { return m_results.size() >= count; });
    }
    std::vector<Kalto::CGrabResultPtr> results()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_results;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::vector<Kalto::CGrabResultPtr> m_results;
};

template <class F>
std::string errorOf(F call)
{
    try {
        call();
    } catch (const GenICam_3_1_Ostrel_kalto::RuntimeException& e) {
        return e.GetDescription();
    }
    return {};
}

Kalto::SDeviceInfo findDevice(ArvTransportLayer& layer, const std::string& idPart)
{
    for (const Kalto::SDeviceInfo& info : layer.enumerateDevices())
        if (info.id.find(idPart) != std::string::npos)
            return info;
    return {};
}

class FakeInterface : public ::testing::Test {
protected:
    void SetUp() override
    {
        KALTO_SKIP_UNLESS_LOOPBACK_ONLY();
        arv_set_fake_camera_genicam_filename(COLCAL_GENICAM_TEST_XML);
        layer = std::make_unique<ArvTransportLayer>(std::vector<std::string>{"Fake"});
    }
    std::unique_ptr<ArvTransportLayer> layer;
};

TEST_F(FakeInterface, EnumeratesItsCameraByAravisId)
{
    const std::vector<Kalto::SDeviceInfo> devices = layer->enumerateDevices();
    ASSERT_EQ(devices.size(), 1u);
    EXPECT_EQ(devices[0].transportLayer, "GenICam");
    EXPECT_FALSE(devices[0].id.empty());
    auto device = layer->createDevice(devices[0].id);
    ASSERT_TRUE(device);
    EXPECT_EQ(layer->createDevice(devices[0].id), device);  // one object per camera
    EXPECT_EQ(device->info().id, devices[0].id);
    EXPECT_FALSE(layer->createDevice("emu-cmed-0"));
}

TEST_F(FakeInterface, GrabsSingleFramesAndStreamsUntilStopped)
{
    const Kalto::SDeviceInfo info = findDevice(*layer, "");
    ASSERT_FALSE(info.id.empty());
    auto device = layer->createDevice(info.id);
    Frames frames;
    device->setFrameSink(frames.sink());
    device->open();
    ASSERT_TRUE(device->isOpen());
    device->nodeMap().setInteger("Width", 64);
    device->nodeMap().setInteger("Height", 48);
    device->nodeMap().setEnum("PixelFormat", "RGB8");

    device->startAcquisition(Kalto::EAcquisitionMode::SingleFrame);
    ASSERT_TRUE(frames.waitFor(1, 5s));
    const Kalto::CGrabResultPtr first = frames.results()[0];
    ASSERT_TRUE(first->GrabSucceeded()) << first->GetErrorDescription();
    EXPECT_EQ(first->GetWidth(), 64u);
    EXPECT_EQ(first->GetHeight(), 48u);
    EXPECT_EQ(first->GetPixelType(), Kalto::PixelType_RGB8packed);
    EXPECT_EQ(first->GetPayloadSize(), 64u * 48u * 3u);
    std::this_thread::sleep_for(300ms);
    EXPECT_EQ(frames.results().size(), 1u);  // a single frame is one result
    EXPECT_FALSE(device->isAcquiring());

    device->nodeMap().setEnum("PixelFormat", "BayerRG8");
    device->startAcquisition(Kalto::EAcquisitionMode::Continuous);
    ASSERT_TRUE(frames.waitFor(4, 10s));
    EXPECT_TRUE(device->isAcquiring());
    device->stopAcquisition();
    const std::vector<Kalto::CGrabResultPtr> streamed = frames.results();
    for (size_t i = 1; i < streamed.size(); ++i) {
        ASSERT_TRUE(streamed[i]->GrabSucceeded());
        EXPECT_EQ(streamed[i]->GetPixelType(), Kalto::PixelType_BayerRG8);
    }
    EXPECT_GT(streamed[3]->GetImageNumber(), streamed[2]->GetImageNumber());
    std::this_thread::sleep_for(300ms);
    EXPECT_EQ(frames.results().size(), streamed.size());  // nothing after stop returned
    EXPECT_FALSE(device->isAcquiring());

    device->close();
    EXPECT_FALSE(device->isOpen());
    EXPECT_NE(errorOf([&] { device->startAcquisition(Kalto::EAcquisitionMode::Continuous); }).find("not open"),
              std::string::npos);
}

// A GigE Vision camera on loopback, served by Aravis's fake GigE camera in
// this process; the client side goes through the real protocol.
class GigEVisionLoopback : public ::testing::Test {
protected:
    void SetUp() override
    {
        KALTO_SKIP_UNLESS_LOOPBACK_ONLY();
        server = arv_gv_fake_camera_new_full("127.0.0.1", "LOOP01", COLCAL_GENICAM_TEST_XML);
        ASSERT_TRUE(server && arv_gv_fake_camera_is_running(server));
        layer = std::make_unique<ArvTransportLayer>(std::vector<std::string>{"GigEVision"});
        info = findDevice(*layer, "LOOP01");
        ASSERT_FALSE(info.id.empty()) << "the loopback camera was not discovered";
    }
    void TearDown() override
    {
        layer.reset();
        if (server)
            g_object_unref(server);
    }

    ArvGvFakeCamera* server = nullptr;
    std::unique_ptr<ArvTransportLayer> layer;
    Kalto::SDeviceInfo info;
};

TEST_F(GigEVisionLoopback, OpensExclusivelyAndGrabs)
{
    auto device = layer->createDevice(info.id);
    Frames frames;
    device->setFrameSink(frames.sink());
    device->open();
    device->nodeMap().setInteger("Width", 320);
    device->nodeMap().setInteger("Height", 240);
    device->nodeMap().setEnum("PixelFormat", "Mono8");
    device->startAcquisition(Kalto::EAcquisitionMode::SingleFrame);
    ASSERT_TRUE(frames.waitFor(1, 10s));
    const Kalto::CGrabResultPtr frame = frames.results()[0];
    ASSERT_TRUE(frame->GrabSucceeded()) << frame->GetErrorDescription();
    EXPECT_EQ(frame->GetWidth(), 320u);
    EXPECT_EQ(frame->GetPixelType(), Kalto::PixelType_Mono8);

    // A second client reaches the camera but may not control it.
    ArvCameraDevice other(info);
    const std::string refused = errorOf([&] { other.open(); });
    EXPECT_NE(refused.find("another application controls it"), std::string::npos) << refused;
    EXPECT_FALSE(other.isOpen());

    // Closing hands the control privilege on.
    device->close();
    other.open();
    EXPECT_TRUE(other.isOpen());
    other.close();
}

TEST_F(GigEVisionLoopback, LostControlChannelReportsConnectionLost)
{
    auto device = layer->createDevice(info.id);
    std::promise<void> lost;
    device->setConnectionLostHandler([&] { lost.set_value(); });
    device->open();
    device->startAcquisition(Kalto::EAcquisitionMode::Continuous);

    g_object_unref(server);  // the camera goes away
    server = nullptr;
    ASSERT_EQ(lost.get_future().wait_for(20s), std::future_status::ready);
    EXPECT_FALSE(device->isConnected());
    EXPECT_FALSE(device->isAcquiring());
    EXPECT_NE(errorOf([&] { device->open(); }).find("lost its connection"), std::string::npos);
    EXPECT_NE(errorOf([&] { device->startAcquisition(Kalto::EAcquisitionMode::SingleFrame); }).find("lost"),
              std::string::npos);
    device->setConnectionLostHandler({});
    device->close();
}

// The same through the camera pool, as the plug-in and colcal reach a camera:
// features through the parameter collection and the persistence text, and the
// lost camera as the pool's connection-lost.
TEST_F(GigEVisionLoopback, PoolReadsFeaturesAndHearsTheCameraGo)
{
    Kalto::CTransportLayerRegistry registry;
    registry.add(std::shared_ptr<ArvTransportLayer>(std::move(layer)));
    Plugin::CameraPool::CameraPool pool(registry);
    // Heard on Aravis's heartbeat thread: a promise carries it over.
    std::promise<QString> lost;
    QObject::connect(&pool, &Plugin::CameraPool::CameraPool::cameraConnectionLost, &pool,
                     [&](const QString& id) { lost.set_value(id); }, Qt::DirectConnection);
    const QSharedPointer<Plugin::CameraPool::ICameraInfo> cameraInfo = pool.cameraInfo(QString::fromStdString(info.id));
    ASSERT_TRUE(cameraInfo);
    auto camera = pool.open(cameraInfo, true);
    ASSERT_TRUE(camera);
    EXPECT_EQ(camera->parameterCollection()->sfncVersion(), QVersionNumber(2, 1, 0));
    EXPECT_TRUE(camera->saveSettings().contains("\nBalanceRatioSelector\tBlue\nBalanceRatio\t"));
    camera->startGrabbing();

    g_object_unref(server);
    server = nullptr;
    std::future<QString> heard = lost.get_future();
    ASSERT_EQ(heard.wait_for(20s), std::future_status::ready);
    EXPECT_EQ(heard.get().toStdString(), info.id);
    EXPECT_FALSE(camera->isOpen());
    EXPECT_FALSE(pool.canGetExclusiveAccess(cameraInfo));
    EXPECT_TRUE(pool.release(camera));
}

}  // namespace
