// The camera pool and its services over the emulated cameras.
#include "camerapool/camerapool.h"
#include "camerapool/icameracontrolservice.h"
#include "camerapool/icameraenumerationservice.h"
#include "camerapool/icamerastatusservice.h"
#include "camerapool/icamerastreamcontrolservice.h"
#include "camerapool/ideviceparameterservice.h"
#include "camerapool/idevicestatusservice.h"
#include "core/baseexception.h"
#include "emulatedcamera.h"
#include "emulatortransportlayer.h"
#include "kalto/itransportlayer.h"
#include "kalto/transportlayerregistry.h"
#include "parametercollection/floatparameter.h"
#include "parametercollection/integerparameter.h"
#include "parametercollection/iparametercollection.h"
#include "testapp.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

using namespace Plugin::CameraPool;

namespace {

// Frames arrive on the device thread; collect them on the test's thread.
struct FrameLog : QObject {
    explicit FrameLog(ICamera* camera)
    {
        connect(camera, &ICamera::cameraImageGrabbed, this,
                [this](const Kalto::CGrabResultPtr& r) { results << r; }, Qt::QueuedConnection);
    }
    bool waitFor(int count, int timeoutMs)
    {
        return QTest::qWaitFor([&] { return results.size() >= count; }, timeoutMs);
    }
    QList<Kalto::CGrabResultPtr> results;
};

template <class T>
T* service(const CameraPool& pool)
{
    for (const auto& s : pool.services())
        if (auto* t = qobject_cast<T*>(s.data()))
            return t;
    return nullptr;
}

class Pool : public ::testing::Test {
protected:
    void SetUp() override
    {
        TestApp::freshDataHome();
        layer = std::make_shared<EmulatorTransportLayer>();
        device = layer->camera("emu-cmed-0");
        device->nodeMap().setInteger("Width", 320);  // small frames keep the sanitizer build quick
        device->nodeMap().setInteger("Height", 200);
        registry.add(layer);
        pool = std::make_unique<CameraPool>(registry);
        control = service<ICameraControlService>(*pool);
        status = service<ICameraStatusService>(*pool);
        enumeration = service<ICameraEnumerationService>(*pool);
        stream = service<ICameraStreamControlService>(*pool);
        parameters = service<IDeviceParameterService>(*pool);
        deviceStatus = service<IDeviceStatusService>(*pool);
        ASSERT_TRUE(control && status && enumeration && stream && parameters && deviceStatus);
        info = enumeration->cameraInfo("emu-cmed-0");
        ASSERT_TRUE(info);
    }

    Kalto::CTransportLayerRegistry registry;
    std::shared_ptr<EmulatorTransportLayer> layer;
    std::shared_ptr<EmulatedCamera> device;
    std::unique_ptr<CameraPool> pool;
    ICameraControlService* control = nullptr;
    ICameraStatusService* status = nullptr;
    ICameraEnumerationService* enumeration = nullptr;
    ICameraStreamControlService* stream = nullptr;
    IDeviceParameterService* parameters = nullptr;
    IDeviceStatusService* deviceStatus = nullptr;
    QSharedPointer<ICameraInfo> info;
};

TEST_F(Pool, EnumeratesLayersAndCameraInfoWithTheirGenerations)
{
    EXPECT_EQ(enumeration->transportLayers(), QStringList{"Emulator"});
    const auto cams = enumeration->cameras("Emulator");
    ASSERT_EQ(cams.size(), 3);
    EXPECT_EQ(cams[0], info);  // one info object per device
    EXPECT_EQ(info->modelName(), "kA1920-40ucMED Emulator");
    EXPECT_EQ(info->serialNumber(), "40000101");
    EXPECT_EQ(info->displayText(), "kA1920-40ucMED Emulator (40000101)");
    EXPECT_TRUE(info->identifyingText().contains("kA1920-40ucMED Emulator"));
    EXPECT_EQ(info->sfncVersion(), QVersionNumber(2, 3, 0));
    EXPECT_LT(cams[1]->sfncVersion(), QVersionNumber(2, 0, 0));
    EXPECT_FALSE(enumeration->cameraInfo("nope"));
    EXPECT_EQ(enumeration->allCameras().size(), 3);
    // The older generation's features reach the plug-in through its typed collection.
    const auto custom = parameters->parameterCollection(cams[1]);
    ASSERT_TRUE(custom);
    EXPECT_FALSE(custom->parameter(ParameterCollection::IntegerParameterName("GainRaw"))->isNull());
    EXPECT_FALSE(custom->parameter(ParameterCollection::FloatParameterName("ExposureTimeAbs"))->isNull());
}

TEST_F(Pool, ExclusiveAccessIsCountedAndRefused)
{
    QSignalSpy opened(deviceStatus, &IDeviceStatusService::deviceOpened);
    EXPECT_TRUE(status->canGetExclusiveAccess(info));
    auto cam = control->openCameraExclusive(info);
    ASSERT_TRUE(cam);
    EXPECT_TRUE(cam->isOpen());
    EXPECT_EQ(opened.count(), 1);
    EXPECT_TRUE(deviceStatus->isDeviceOpen("emu-cmed-0"));
    EXPECT_FALSE(status->canGetExclusiveAccess(info));
    EXPECT_FALSE(control->openCamera(info));
    EXPECT_TRUE(info->errorDescription().contains("in use"));
    EXPECT_TRUE(control->releaseCamera(cam));
    EXPECT_FALSE(cam->isOpen());
    EXPECT_FALSE(control->closeCamera(info));  // nothing left to close

    auto a = control->openCamera(info);
    auto b = control->openCamera(info);
    ASSERT_TRUE(a && b);
    EXPECT_EQ(a, b);
    EXPECT_FALSE(control->openCameraExclusive(info));
    EXPECT_TRUE(control->closeCamera(info));
    EXPECT_TRUE(a->isOpen());  // one holder left
    EXPECT_TRUE(control->closeCamera(info));
    EXPECT_FALSE(a->isOpen());
}

TEST_F(Pool, ContinuousAcquisitionDeliversOnTheDeviceThreadAndStops)
{
    auto cam = control->openCamera(info);
    FrameLog frames(cam.data());
    cam->startGrabbing();
    EXPECT_TRUE(cam->isGrabbing());
    EXPECT_TRUE(stream->isCameraInUse(info));
    ASSERT_TRUE(frames.waitFor(3, 5000));
    ASSERT_TRUE(frames.results.at(0).IsValid());
    EXPECT_TRUE(frames.results.at(0)->GrabSucceeded());
    EXPECT_EQ(frames.results.at(0)->GetWidth(), 320u);
    stream->stopAll();
    EXPECT_FALSE(cam->isGrabbing());
    EXPECT_FALSE(stream->isCameraInUse(info));
    control->closeCamera(info);
}

TEST_F(Pool, SingleGrabDeliversOneFrameOrIsAbandonedAfterItsTimeout)
{
    auto cam = control->openCamera(info);
    FrameLog frames(cam.data());
    cam->grabOne(5000);
    ASSERT_TRUE(frames.waitFor(1, 5000));
    QTest::qWait(100);
    EXPECT_EQ(frames.results.size(), 1);
    EXPECT_FALSE(cam->isGrabbing());
    EXPECT_FALSE(stream->isCameraInUse(info));

    device->setExtraFrameDelayMs(2000);  // a grab that never delivers in time
    cam->grabOne(50);
    EXPECT_TRUE(cam->isGrabbing());
    QTest::qWait(150);
    EXPECT_FALSE(cam->isGrabbing());
    control->closeCamera(info);
}

TEST_F(Pool, DisconnectFailsEveryCallAtOnceNamingTheCamera)
{
    auto cam = control->openCameraExclusive(info);
    QSignalSpy camLost(cam.data(), &ICamera::cameraConnectionLost);
    QSignalSpy poolLost(status, &ICameraStatusService::cameraConnectionLost);
    cam->startGrabbing();
    device->disconnect();
    EXPECT_EQ(camLost.count(), 1);
    ASSERT_EQ(poolLost.count(), 1);
    EXPECT_EQ(poolLost.at(0).at(0).toString(), "emu-cmed-0");
    EXPECT_FALSE(cam->isOpen());
    EXPECT_FALSE(cam->isGrabbing());
    QElapsedTimer t;
    t.start();
    for (auto call : std::vector<std::function<void()>>{
             [&] { cam->startGrabbing(); }, [&] { cam->grabOne(5000); },
             [&] { cam->stopGrabbing(); }, [&] { cam->saveSettings(); },
             [&] { cam->loadSettings("Gain\t1"); }, [&] { cam->parameterCollection(); }}) {
        try {
            call();
            ADD_FAILURE() << "call on a lost camera did not fail";
        } catch (const Core::Exception::BaseException& e) {
            EXPECT_TRUE(e.message().contains("kA1920-40ucMED Emulator")) << e.message().toStdString();
            EXPECT_TRUE(e.message().contains("disconnected"));
        }
    }
    EXPECT_LT(t.elapsed(), 500);
    EXPECT_FALSE(parameters->parameterCollection(info));
    EXPECT_FALSE(status->canGetExclusiveAccess(info));
    EXPECT_FALSE(control->openCamera(info));
    EXPECT_TRUE(control->releaseCamera(cam));
    stream->stopAll();  // skips the lost camera without throwing
}

TEST_F(Pool, ServicesOutlivingThePoolFailSoftly)
{
    const auto services = pool->services();
    pool.reset();
    EXPECT_FALSE(control->openCamera(info));
    EXPECT_TRUE(enumeration->allCameras().isEmpty());
    EXPECT_FALSE(status->canGetExclusiveAccess(info));
    stream->stopAll();
    EXPECT_FALSE(deviceStatus->isDeviceOpen("emu-cmed-0"));
}

TEST_F(Pool, ParametersAndSettingsTextOfACamera)
{
    device->nodeMap().setEnum("ExposureAuto", "Off");
    device->nodeMap().setEnum("GainAuto", "Off");
    auto params = parameters->parameterCollection(info);
    ASSERT_TRUE(params);
    auto cam = control->openCamera(info);
    params->parameter(ParameterCollection::FloatParameterName("Gain"))->setValue(6);
    const QString saved = cam->saveSettings();
    EXPECT_TRUE(saved.contains("\nGain\t6\n"));
    QStringList rejected;
    EXPECT_FALSE(cam->loadSettings("Gain\t3\nHue\t1\nExposureTime\tx\n", &rejected));
    EXPECT_EQ(rejected, (QStringList{"line 2: Hue: unknown feature", "line 3: ExposureTime: not a number"}));
    EXPECT_DOUBLE_EQ(params->parameter(ParameterCollection::FloatParameterName("Gain"))->value(), 3);
    EXPECT_TRUE(cam->loadSettings(saved));
    EXPECT_EQ(cam->saveSettings(), saved);
    control->closeCamera(info);
}

// A layer that lists a device it cannot open, registered ahead of the emulator's.
struct ListLayer : Kalto::ITransportLayer {
    std::string name() const override { return "GigE"; }
    std::vector<Kalto::SDeviceInfo> enumerateDevices() override { return {Kalto::SDeviceInfo{}}; }
    std::shared_ptr<Kalto::IDevice> createDevice(const std::string&) override { return nullptr; }
};

TEST_F(Pool, RegistryEnumeratesEveryLayerInOrderAndReplacesAndRemovesByName)
{
    Kalto::CTransportLayerRegistry r;
    r.add(std::make_shared<ListLayer>());
    r.add(layer);
    const auto devices = r.enumerateDevices();
    ASSERT_EQ(devices.size(), 4u);
    EXPECT_EQ(devices[0].transportLayer, "GigE");  // filled in for a layer that leaves it empty
    EXPECT_EQ(devices[2].id, "emu-custom-1");
    EXPECT_EQ(devices[2].transportLayer, "Emulator");
    const auto custom = r.createDevice("emu-custom-1");
    ASSERT_TRUE(custom);
    EXPECT_EQ(custom, r.createDevice("emu-custom-1"));  // one device object per camera
    EXPECT_EQ(custom->info().modelName, "kA1920-40uc Emulation");
    EXPECT_EQ(r.createDevice("zz"), nullptr);

    const auto other = std::make_shared<EmulatorTransportLayer>();
    r.add(other);
    EXPECT_EQ(r.transportLayers().size(), 2u);
    EXPECT_EQ(r.transportLayer("Emulator"), other);
    r.remove("Emulator");
    EXPECT_EQ(r.enumerateDevices().size(), 1u);
    EXPECT_EQ(r.transportLayer("Emulator"), nullptr);
    EXPECT_THROW(r.add(nullptr), std::exception);
}

}  // namespace
