// kalto-gev-camera under the camera pool over GigE Vision: a camera asked
// for by id is the one the listing gives, an unknown id is refused; the
// camera dies while the pool streams from it: the pool and the camera object
// report the lost connection, once, and nothing waits forever.

#include "arvtransportlayer.h"
#include "gevcameraprocess.h"
#include "loopbackonly.h"

#include "camerapool/camerapool.h"
#include "camerapool/icamera.h"
#include "kalto/grabresultdata.h"
#include "kalto/transportlayerregistry.h"
#include "parametercollection/iparametercollection.h"

#include <QElapsedTimer>
#include <QTest>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>

namespace {

using Plugin::CameraPool::CameraPool;

// A camera of its own per test, behind a registry with the GigE Vision layer.
class GevCameraPool : public ::testing::Test {
protected:
    void SetUp() override
    {
        KALTO_SKIP_UNLESS_LOOPBACK_ONLY();
        ASSERT_TRUE(server.start("P" + std::to_string(::getpid()))) << server.error();
        registry.add(std::make_shared<ArvTransportLayer>(std::vector<std::string>{"GigEVision"}));
    }

    GevCameraProcess server;
    Kalto::CTransportLayerRegistry registry;
};

TEST_F(GevCameraPool, FindsACameraByIdAsListedAndRefusesAnUnknownId)
{
    CameraPool byId(registry);  // asked before anything was listed
    const auto found = byId.cameraInfo(QString::fromStdString(server.id()));
    ASSERT_TRUE(found) << "the pool does not find " << server.id();
    EXPECT_FALSE(byId.cameraInfo(QString::fromStdString(server.id() + "0")));

    CameraPool listing(registry);
    const auto listed = listing.cameras("GenICam");
    ASSERT_EQ(listed.size(), 1);
    EXPECT_EQ(found->deviceId(), listed[0]->deviceId());
    EXPECT_EQ(found->modelName(), listed[0]->modelName());
    EXPECT_EQ(found->vendorName(), listed[0]->vendorName());
    EXPECT_EQ(found->serialNumber(), listed[0]->serialNumber());
    EXPECT_EQ(found->transportLayer(), "GenICam");
    EXPECT_EQ(found->sfncVersion(), QVersionNumber(2, 3, 0));
}

TEST_F(GevCameraPool, KillingTheCameraDuringAGrabGivesConnectionLost)
{
    CameraPool pool(registry);
    const auto info = pool.cameraInfo(QString::fromStdString(server.id()));
    ASSERT_TRUE(info) << "the pool does not list " << server.id();
    const auto camera = pool.open(info, true);
    ASSERT_TRUE(camera);
    EXPECT_EQ(camera->parameterCollection()->sfncVersion(), QVersionNumber(2, 3, 0));

    std::atomic<int> grabbed{0}, lost{0}, poolLost{0};
    QObject::connect(camera.data(), &Plugin::CameraPool::ICamera::cameraImageGrabbed, camera.data(),
                     [&](const Kalto::CGrabResultPtr& r) {
                         if (r && r->GrabSucceeded())
                             ++grabbed;
                     }, Qt::DirectConnection);
    QObject::connect(camera.data(), &Plugin::CameraPool::ICamera::cameraConnectionLost, camera.data(),
                     [&] { ++lost; }, Qt::DirectConnection);
    QObject::connect(&pool, &CameraPool::cameraConnectionLost, &pool, [&](const QString&) { ++poolLost; },
                     Qt::DirectConnection);
    camera->startGrabbing();
    ASSERT_TRUE(QTest::qWaitFor([&] { return grabbed > 0; }, 30000)) << "no frame within 30 s";

    server.process().kill();
    ASSERT_TRUE(server.process().waitForFinished(10000));
    QElapsedTimer t;
    t.start();
    // Aravis notices a silent GigE Vision camera after a few heartbeats.
    EXPECT_TRUE(QTest::qWaitFor([&] { return lost > 0 && poolLost > 0; }, 30000));
    std::printf("connection lost reported %.1f s after the camera died\n", t.elapsed() / 1000.0);
    EXPECT_EQ(lost.load(), 1);
    EXPECT_EQ(poolLost.load(), 1);
    EXPECT_FALSE(camera->isOpen());
    pool.release(camera);
}

}  // namespace
