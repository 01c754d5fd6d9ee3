// The emulated cameras as the host and the plug-in reach them: through the
// camera pool, its camera objects and the typed parameter collection.
#include "emulatedcamera.h"
#include "emulatortransportlayer.h"

#include "camerapool/camerapool.h"
#include "genicam/nodemap.h"
#include "camerapool/icamera.h"
#include "kalto/grabresultdata.h"
#include "kalto/transportlayerregistry.h"
#include "parametercollection/floatparameter.h"
#include "parametercollection/integerparameter.h"
#include "parametercollection/iparametercollection.h"

#include "testapp.h"

#include <QTest>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>

namespace {

using Plugin::CameraPool::CameraPool;

class CameraPoolEmulator : public ::testing::Test {
protected:
    void SetUp() override
    {
        TestApp::freshDataHome();
        m_layer = std::make_shared<EmulatorTransportLayer>();
        m_registry.add(m_layer);
        m_pool = std::make_unique<CameraPool>(m_registry);
    }

    Kalto::CTransportLayerRegistry m_registry;
    std::shared_ptr<EmulatorTransportLayer> m_layer;
    std::unique_ptr<CameraPool> m_pool;
};

TEST_F(CameraPoolEmulator, PoolSeesThreeCamerasWithTheirGenerations)
{
    ASSERT_TRUE(m_pool->transportLayers().contains("Emulator"));
    const auto cams = m_pool->cameras("Emulator");
    ASSERT_EQ(cams.size(), 3);
    auto medical = m_pool->cameraInfo("emu-cmed-0");
    ASSERT_TRUE(medical);
    EXPECT_TRUE(medical->modelName().contains("cMED"));
    auto camera = m_pool->open(medical, true);
    ASSERT_TRUE(camera);
    const auto params = camera->parameterCollection();
    EXPECT_EQ(params->sfncVersion(), QVersionNumber(2, 3, 0));
    m_pool->release(camera);

    auto custom = m_pool->open(m_pool->cameraInfo("emu-custom-1"), true);
    ASSERT_TRUE(custom);
    const auto p = custom->parameterCollection();
    EXPECT_LT(p->sfncVersion(), QVersionNumber(2, 0, 0));
    // What the session does with GainRaw: value / 100 in, truncated value * 100 out.
    const auto gainRaw = p->parameter(ParameterCollection::IntegerParameterName("GainRaw"));
    ASSERT_FALSE(gainRaw->isNull());
    const auto pipeline = p->parameter(ParameterCollection::IntegerParameterName("DeviceColorPipelineVersion"));
    EXPECT_EQ(pipeline->value(), 1);
    const auto exposure = p->parameter(ParameterCollection::FloatParameterName("ExposureTimeAbs"));
    EXPECT_FALSE(exposure->isNull());
    m_pool->release(custom);
}

TEST_F(CameraPoolEmulator, GrabOneAndConnectionLoss)
{
    auto info = m_pool->cameraInfo("emu-cmed-0");
    auto emulated = m_layer->camera("emu-cmed-0");
    emulated->nodeMap().setInteger("Width", 320);
    emulated->nodeMap().setInteger("Height", 200);
    auto camera = m_pool->open(info, true);
    ASSERT_TRUE(camera);
    std::atomic<int> grabbed{0}, lost{0}, poolLost{0};
    QObject::connect(camera.data(), &Plugin::CameraPool::ICamera::cameraImageGrabbed, camera.data(),
                     [&](const Kalto::CGrabResultPtr& r) {
                         if (r && r->GrabSucceeded() && r->GetWidth() == 320)
                             ++grabbed;
                     }, Qt::DirectConnection);
    QObject::connect(camera.data(), &Plugin::CameraPool::ICamera::cameraConnectionLost, camera.data(),
                     [&] { ++lost; }, Qt::DirectConnection);
    QObject::connect(m_pool.get(), &CameraPool::cameraConnectionLost, m_pool.get(),
                     [&](const QString&) { ++poolLost; }, Qt::DirectConnection);
    camera->grabOne(5000);
    EXPECT_TRUE(QTest::qWaitFor([&] { return grabbed > 0; }, 10000));
    EXPECT_EQ(grabbed.load(), 1);

    emulated->disconnect();
    EXPECT_TRUE(QTest::qWaitFor([&] { return lost > 0 && poolLost > 0; }, 5000));
    EXPECT_EQ(lost.load(), 1);
    EXPECT_EQ(poolLost.load(), 1);
    EXPECT_FALSE(camera->isOpen());
    m_pool->release(camera);
}

}  // namespace
