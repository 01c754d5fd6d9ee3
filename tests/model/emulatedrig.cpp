#include "emulatedrig.h"

#include "camerajustify.h"
#include "chartprojection.h"
#include "emulatedcamera.h"
#include "emulatortransportlayer.h"

#include "camerapool/camerapool.h"
#include "camerapool/icamera.h"
#include "genicam/nodemap.h"
#include "kalto/transportlayerregistry.h"
#include "parametercollection/iparametercollection.h"

#include <QCoreApplication>

#include <cmath>
#include <stdexcept>

namespace {

QPoint toPoint(const ChartProjection::Point& p)
{
    return QPoint(int(std::lround(p[0])), int(std::lround(p[1])));
}

}  // namespace

EmulatedRig::EmulatedRig(const std::string& deviceId, int width, int height)
    : m_width(width), m_height(height)
{
    if (!m_dir.isValid())
        throw std::runtime_error("no temporary folder");
    // The camera's flash lives under the user's data folder: keep it in the sandbox.
    qputenv("XDG_DATA_HOME", m_dir.path().toUtf8());
    m_registry = std::make_unique<Kalto::CTransportLayerRegistry>();
    m_layer = std::make_shared<EmulatorTransportLayer>();
    m_registry->add(m_layer);
    m_pool = std::make_unique<Plugin::CameraPool::CameraPool>(*m_registry);
    m_info = m_pool->cameraInfo(QString::fromStdString(deviceId));
    if (!m_info)
        throw std::runtime_error("no emulated camera " + deviceId);
    m_camera = m_pool->open(m_info, true);
    if (!m_camera)
        throw std::runtime_error("cannot open " + deviceId);
    m_device = m_layer->camera(deviceId);
    m_device->nodeMap().setInteger("Width", width);
    m_device->nodeMap().setInteger("Height", height);
}

EmulatedRig::~EmulatedRig()
{
    if (m_camera && m_pool)
        m_pool->release(m_camera);
    m_camera.reset();
    m_pool.reset();
}

QSharedPointer<ParameterCollection::IParameterCollection> EmulatedRig::parameters() const
{
    return m_camera->parameterCollection();
}

CTrapezoid EmulatedRig::grid() const
{
    const ChartProjection projection(m_device->sceneGeometry(), m_width, m_height);
    const ChartProjection::Quad q = projection.grid();  // TL, TR, BR, BL
    return CTrapezoid(toPoint(q[0]), toPoint(q[1]), toPoint(q[3]), toPoint(q[2]));
}

bool EmulatedRig::sfnc2() const
{
    return m_device->model().generation == CameraModel::Generation::Sfnc2;
}

void neutralise(CameraJustify& justify)
{
    justify.disableTestImage();
    justify.disableBlackLevel();
    justify.disableGamma();
    justify.disableMatrix();
    justify.disableHSBC();
    justify.disableLUT();
    justify.disableBC6x2Op();
    justify.disableWhiteBalance();
    justify.disableDemosaicing();
    justify.disableAutofunctions();
}
