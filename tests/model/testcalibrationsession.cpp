#include "testcalibrationsession.h"

#include "camerapool/icamera.h"
#include "core/baseexception.h"
#include "genicam/runtimeexception.h"
#include "parametercollection/floatparameter.h"
#include "parametercollection/integerparameter.h"
#include "parametercollection/iparametercollection.h"

#include <QVersionNumber>

#include <algorithm>

using namespace ParameterCollection;
using Lock = std::lock_guard<std::recursive_mutex>;

namespace {

QSharedPointer<FloatParameter> exposureParameter(IParameterCollection& p)
{
    auto abs = p.parameter(FloatParameterName("ExposureTimeAbs"));
    return abs->isNull() ? p.parameter(FloatParameterName("ExposureTime")) : abs;
}

bool isSfnc2(IParameterCollection& p)
{
    return p.sfncVersion() >= QVersionNumber(2, 0, 0);
}

}  // namespace

TestCalibrationSession::TestCalibrationSession(QSharedPointer<Plugin::CameraPool::ICamera> camera,
                                               const CTrapezoid& grid)
    : m_camera(std::move(camera))
{
    m_wrapper.attachCamera(m_camera);
    m_discriminator.setGridPosition(grid);
}

TestCalibrationSession::~TestCalibrationSession()
{
    m_wrapper.detachCamera();
}

CTrapezoid TestCalibrationSession::GetGridPosition()
{
    Lock lock(m_mutex);
    return m_discriminator.getGridPosition();
}

void TestCalibrationSession::SetGridPositon(const CTrapezoid& grid)
{
    Lock lock(m_mutex);
    m_discriminator.setGridPosition(grid);
}

void TestCalibrationSession::GetColorPatchPositions(QVector<CTrapezoid>& positions)
{
    Lock lock(m_mutex);
    m_discriminator.getChartPositions(positions);
}

bool TestCalibrationSession::grab()
{
    try {
        if (!m_wrapper.GrabImage(m_lastImage, true) || !m_lastImage.isValid())
            return false;
    } catch (const std::exception&) {
        return false;  // the camera went away under the grab
    }
    Kalto::CKaltoImage image = m_lastImage.kaltoImage();
    if (m_discriminator.update80PercentGrayPatchValue(&image))
        emit Gray80PercentHitRateChanged(m_discriminator.get80PercentGrayPatch150DnHitRate());
    return true;
}

int TestCalibrationSession::GetColorPatchValues(QVector<QColor>& values, bool forceGrab)
{
    Lock lock(m_mutex);
    ++m_measurements;
    if (!m_wrapper.isOpen())
        return 0;
    if (!m_wrapper.isGrabbing() || forceGrab)
        grab();
    const int before = values.size();
    m_discriminator.getColorPatchValues(values);
    if (values.size() == before && m_lastImage.isValid()) {
        Kalto::CKaltoImage image = m_lastImage.kaltoImage();
        m_discriminator.updateColorPatchValues(&image);
        m_discriminator.getColorPatchValues(values);
    }
    return values.size() - before;
}

double TestCalibrationSession::measureGrey()
{
    QVector<QColor> values;
    if (GetColorPatchValues(values, true) <= ChartDiscriminator::kGray80PercentIndex)
        return -1.0;
    const QColor& c = values[ChartDiscriminator::kGray80PercentIndex];
    return std::max({c.red(), c.green(), c.blue()});
}

bool TestCalibrationSession::GetExposureTimeRange(double& min, double& value, double& max)
{
    Lock lock(m_mutex);
    const auto p = m_wrapper.getParameterCollection();
    if (!p || !m_wrapper.isOpen())
        return false;
    try {
        const auto e = exposureParameter(*p);
        if (e->isNull() || !e->isReadable())
            return false;
        min = e->minimum();
        value = e->value();
        max = e->maximum();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool TestCalibrationSession::SetExposureTimeValue(double exposureUs)
{
    Lock lock(m_mutex);
    const auto p = m_wrapper.getParameterCollection();
    if (!p || !m_wrapper.isOpen())
        return false;
    try {
        const auto e = exposureParameter(*p);
        if (e->isNull() || !e->isWritable())
            return false;
        e->setValue(exposureUs);
        ++m_exposureWrites;
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

double TestCalibrationSession::GetExposureTimeValue()
{
    double min, value, max;
    return GetExposureTimeRange(min, value, max) ? value : -1.0;
}

bool TestCalibrationSession::GetGainRange(double& min, double& value, double& max)
{
    Lock lock(m_mutex);
    const auto p = m_wrapper.getParameterCollection();
    if (!p || !m_wrapper.isOpen())
        return false;
    try {
        if (isSfnc2(*p)) {
            const auto g = p->parameter(FloatParameterName("Gain"));
            if (g->isNull() || !g->isReadable())
                return false;
            min = g->minimum();
            value = g->value();
            max = g->maximum();
        } else {
            const auto g = p->parameter(IntegerParameterName("GainRaw"));
            if (g->isNull() || !g->isReadable())
                return false;
            min = g->minimum() / 100.0;
            value = g->value() / 100.0;
            max = g->maximum() / 100.0;
        }
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool TestCalibrationSession::SetGainValue(double gain)
{
    Lock lock(m_mutex);
    const auto p = m_wrapper.getParameterCollection();
    if (!p || !m_wrapper.isOpen())
        return false;
    try {
        if (isSfnc2(*p)) {
            const auto g = p->parameter(FloatParameterName("Gain"));
            if (g->isNull() || !g->isWritable())
                return false;
            g->setValue(gain);
        } else {
            const auto g = p->parameter(IntegerParameterName("GainRaw"));
            if (g->isNull() || !g->isWritable())
                return false;
            g->setValue(qint64(gain * 100.0));
        }
        ++m_gainWrites;
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

double TestCalibrationSession::GetGainValue()
{
    double min, value, max;
    return GetGainRange(min, value, max) ? value : -1.0;
}
