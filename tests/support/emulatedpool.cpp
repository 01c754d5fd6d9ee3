#include "emulatedpool.h"

#include "guitestapp.h"

#include <QCoreApplication>

#include "chartprojection.h"
#include "colorcorrectionmodel.h"
#include "emulatedcamera.h"
#include "emulatortransportlayer.h"

#include "camerapool/camerapool.h"
#include "camerapool/icameracontrolservice.h"
#include "camerapool/icamerainfo.h"
#include "camerapool/icamerastatusservice.h"
#include "core/iservice.h"
#include "genicam/featurepersistence.h"
#include "genicam/nodemap.h"
#include "kalto/transportlayerregistry.h"

#include <cmath>
#include <stdexcept>

EmulatedPool::EmulatedPool()
{
    // Whatever application the program made; a widget one when there is none yet.
    if (!QCoreApplication::instance())
        GuiTestApp::instance();
    m_registry = std::make_unique<Kalto::CTransportLayerRegistry>();
    m_layer = std::make_shared<EmulatorTransportLayer>();
    m_registry->add(m_layer);
    m_pool = std::make_unique<Plugin::CameraPool::CameraPool>(*m_registry);
}

EmulatedPool::~EmulatedPool()
{
    m_pool->stopAll();
    m_pool.reset();
}

QSharedPointer<Plugin::CameraPool::ICameraInfo> EmulatedPool::info(const QString& deviceId) const
{
    auto info = m_pool->cameraInfo(deviceId);
    if (!info)
        throw std::runtime_error("no emulated camera " + deviceId.toStdString());
    return info;
}

EmulatedCamera& EmulatedPool::device(const QString& deviceId)
{
    auto device = m_layer->camera(deviceId.toStdString());
    if (!device)
        throw std::runtime_error("no emulated camera " + deviceId.toStdString());
    return *device;
}

void EmulatedPool::setFrameSize(const QString& deviceId, int width, int height)
{
    device(deviceId).nodeMap().setInteger("Width", width);
    device(deviceId).nodeMap().setInteger("Height", height);
}

CTrapezoid EmulatedPool::grid(const QString& deviceId)
{
    EmulatedCamera& d = device(deviceId);
    const int width = int(d.nodeMap().getInteger("Width"));
    const int height = int(d.nodeMap().getInteger("Height"));
    const ChartProjection::Quad q = ChartProjection(d.sceneGeometry(), width, height).grid();  // TL, TR, BR, BL
    auto pt = [](const ChartProjection::Point& p) { return QPoint(int(std::lround(p[0])), int(std::lround(p[1]))); };
    return CTrapezoid(pt(q[0]), pt(q[1]), pt(q[3]), pt(q[2]));
}

QString EmulatedPool::settingsText(const QString& deviceId)
{
    return QString::fromStdString(Kalto::CFeaturePersistence::Save(device(deviceId).nodeMap()));
}

std::unique_ptr<ColorCorrectionModel> EmulatedPool::createModel() const
{
    auto model = std::make_unique<ColorCorrectionModel>();
    for (const auto& service : m_pool->services()) {
        if (auto control = service.objectCast<Plugin::CameraPool::ICameraControlService>())
            model->injectCameraControlService(control);
        if (auto status = service.objectCast<Plugin::CameraPool::ICameraStatusService>())
            model->injectCameraStatusService(status);
    }
    return model;
}
