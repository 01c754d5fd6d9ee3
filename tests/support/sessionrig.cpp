#include "sessionrig.h"

#include "testapp.h"

#include "chartdiscriminator.h"
#include "colorcorrectionmodel.h"
#include "emulatedcamera.h"

#include "camerapool/camerapool.h"
#include "camerapool/icamera.h"
#include "genicam/nodemap.h"

#include <QImage>
#include <QSettings>

#include <algorithm>
#include <stdexcept>

SessionRig::SessionRig(const QString& deviceId, int width, int height) : m_id(deviceId)
{
    TestApp::instance();
    // A user set saved as the start-up set by one test would otherwise open the next test's camera.
    TestApp::freshDataHome();
    QSettings().remove("ColCalPlugin");
    m_pool = std::make_unique<EmulatedPool>();
    m_pool->setFrameSize(m_id, width, height);
    m_model = m_pool->createModel();
}

SessionRig::~SessionRig()
{
    m_model.reset();  // closes a session still open
    if (m_camera)
        m_pool->pool().release(m_camera);
    m_camera.reset();
    m_pool.reset();
}

Kalto::CNodeMap& SessionRig::nodeMap()
{
    return device().nodeMap();
}

bool SessionRig::sfnc2()
{
    return device().model().generation == CameraModel::Generation::Sfnc2;
}

void SessionRig::resize(int width, int height)
{
    m_pool->setFrameSize(m_id, width, height);
}

QSharedPointer<Plugin::CameraPool::ICamera> SessionRig::openCamera()
{
    if (!m_camera)
        m_camera = m_pool->pool().open(info(), true);
    if (!m_camera)
        throw std::runtime_error("cannot open " + m_id.toStdString());
    return m_camera;
}

bool SessionRig::open()
{
    if (!m_model->Open(info()))
        return false;
    QImage live;
    for (int i = 0; i < 3 && !m_model->GrabImage(live, true); ++i) {
    }
    m_model->SetGridPositon(grid());
    return !live.isNull();
}

QString SessionRig::openAndNeutralise()
{
    if (!open())
        return {};
    const QString opened = settingsText();
    if (!m_model->CreateSettingsBackup(false) || !m_model->SetNeutralSettings())
        return {};
    return opened;
}

double SessionRig::measureGrey()
{
    QVector<QColor> values;
    if (m_model->GetColorPatchValues(values, true) <= ChartDiscriminator::kGray80PercentIndex)
        return -1.0;
    const QColor& c = values[ChartDiscriminator::kGray80PercentIndex];
    return std::max({c.red(), c.green(), c.blue()});
}

double SessionRig::exposureForGrey(double targetDn)
{
    double exposure = m_model->GetExposureTimeValue();
    double grey = measureGrey();
    while (grey >= 250.0 && exposure > 200.0) {
        exposure /= 2;
        m_model->SetExposureTimeValue(exposure);
        grey = measureGrey();
    }
    return grey > 0.0 ? exposure * targetDn / grey : -1.0;
}
