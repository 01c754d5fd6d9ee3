#include "colorcorrectionmodelimpl.h"

#include "calibrationresult.h"
#include "camerajustify.h"
#include "chartcolors.h"
#include "chartdiscriminator.h"
#include "colorcalibrationv1.h"
#include "colorspace.h"
#include "convertingimagecamera.h"
#include "exposuregaincontrol.h"
#include "gridpositionstore.h"
#include "modellog.h"
#include "original.h"
#include "resultsdocumentkeys.h"
#include "colorchecker.h"

#include "camerapool/icamera.h"
#include "camerapool/icameracontrolservice.h"
#include "camerapool/icamerainfo.h"
#include "camerapool/icamerastatusservice.h"
#include "core/baseexception.h"
#include "parametercollection/enumparameter.h"
#include "parametercollection/integerparameter.h"
#include "parametercollection/iparametercollection.h"

#include <QJsonArray>
#include <QTextStream>
#include <QVersionNumber>

#include <cmath>
#include <stdexcept>
#include <utility>

using ParameterCollection::EnumParameterName;
using ParameterCollection::IntegerParameterName;

namespace {

namespace Keys = ResultsDocumentKeys;

const QVersionNumber kSfnc2(2, 0, 0);

// Runs one session operation: any exception becomes the operation's failure
// text plus "<operation>: <message>" as warnings, and the fallback result.
template <class R, class F>
R guarded(const char* operation, const char* failureText, R fallback, F&& work)
{
    try {
        return work();
    } catch (const Core::Exception::BaseException& e) {
        modellog::warning(failureText);
        modellog::warning(QString("%1: %2").arg(operation, e.message()));
    } catch (const std::exception& e) {
        modellog::warning(failureText);
        modellog::warning(QString("%1: %2").arg(operation, QString::fromUtf8(e.what())));
    } catch (...) {
        modellog::warning(failureText);
        modellog::warning(QString("%1: Unspecified exception occurred.").arg(operation));
    }
    return fallback;
}

// Share of a grid cell's width and height that a patch sample covers.
constexpr int kPatchSizePercent = 70;

}  // namespace

// One public operation: holds the session lock and knows whether it came in
// through the event loop of a grab this same thread is waiting in. The
// outermost call runs what was queued meanwhile, after releasing the lock.
class ColorCorrectionModelImpl::Call {
public:
    explicit Call(ColorCorrectionModelImpl& session) : m_session(session), m_lock(session.m_mutex)
    {
        m_reentered = session.m_grabWaiting;
        ++session.m_callDepth;
    }
    ~Call()
    {
        if (--m_session.m_callDepth > 0 || m_session.m_queuedCalls.isEmpty())
            return;
        const QVector<std::function<void()>> queued = std::exchange(m_session.m_queuedCalls, {});
        m_lock.unlock();
        for (const auto& call : queued)
            call();
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    /// True, with a warning, when this call came in during a grab's wait.
    bool refused(const char* operation) const
    {
        if (m_reentered)
            modellog::warning(QStringLiteral("%1: refused while another operation of the session waits for an image.")
                                  .arg(QString::fromLatin1(operation)));
        return m_reentered;
    }
    /// Queues `work` instead when this call came in during a grab's wait.
    bool queued(std::function<void()> work)
    {
        if (m_reentered)
            m_session.m_queuedCalls.append(std::move(work));
        return m_reentered;
    }

private:
    ColorCorrectionModelImpl& m_session;
    std::unique_lock<std::recursive_mutex> m_lock;
    bool m_reentered = false;
};

ColorCorrectionModelImpl::ColorCorrectionModelImpl()
    : m_engine(new ColorCalibrationV1), m_discriminator(new ChartDiscriminator(kPatchSizePercent))
{
    m_matrix = dlib::identity_matrix<double>(3);
    m_bc6x2 = 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1;
    start(QThread::InheritPriority);
}

ColorCorrectionModelImpl::~ColorCorrectionModelImpl()
{
    if (m_camera && m_camera->isOpen())
        Close();
    else
        deleteCameraObjects();
    quit();
    wait();
    delete m_discriminator;
    delete m_engine;
}

void ColorCorrectionModelImpl::run()
{
    exec();
}

void ColorCorrectionModelImpl::injectCameraControlService(
    QSharedPointer<Plugin::CameraPool::ICameraControlService> service)
{
    Call call(*this);
    m_controlService = service;
}

void ColorCorrectionModelImpl::injectCameraStatusService(
    QSharedPointer<Plugin::CameraPool::ICameraStatusService> service)
{
    Call call(*this);
    m_statusService = service;
}

bool ColorCorrectionModelImpl::isCameraOpen()
{
    return m_camera && m_camera->isOpen();
}

// ---------------------------------------------------------------- open, close

bool ColorCorrectionModelImpl::Open(QSharedPointer<Plugin::CameraPool::ICameraInfo> cameraInfo)
{
    Call call(*this);
    if (call.refused("Open"))
        return false;
    try {
        if (!m_controlService)
            throw Core::Exception::BaseException("No camera control service");
        QSharedPointer<Plugin::CameraPool::ICamera> camera;
        if (m_statusService && m_statusService->canGetExclusiveAccess(cameraInfo)) {
            camera = m_controlService->openCameraExclusive(cameraInfo);
            if (!camera)
                throw Core::Exception::BaseException("Get exclusive camera access failed");
            m_exclusiveAccess = true;
        } else {
            camera = m_controlService->openCamera(cameraInfo);
            // The text names exclusive access although this is the normal path; kept as it stands.
            if (!camera)
                throw Core::Exception::BaseException("Camera open with exclusive access failed");
            m_exclusiveAccess = false;
        }
        m_poolCamera = camera;
        m_cameraInfo = cameraInfo;
        m_connectionLost = false;
        m_camera = new ConvertingImageCamera;
        m_camera->attachCamera(camera);

        m_cameraJustify = new CameraJustify(camera);
        m_cameraJustify->disableTestImage();
        connect(m_cameraJustify, &CameraJustify::AutoBrightnessFinished, this,
                &ColorCorrectionModelImpl::AutoAdjustGray80PercentPatchFinished);

        m_result = new CalibrationResult(cameraInfo->identifyingText());
        initializeNodemapConnections();
        // Kept for the camera object's lifetime (Close leaves it), made once.
        connect(camera.data(), &Plugin::CameraPool::ICamera::cameraConnectionLost, this,
                &ColorCorrectionModelImpl::onConnectionLost, Qt::UniqueConnection);
        restoreLastGridPosition();
        return true;
    } catch (...) {
        // Nothing is logged here; the caller reports the failed open. A hold the
        // pool already gave is handed back so the camera is not left locked.
        if (m_poolCamera && m_controlService)
            m_controlService->releaseCamera(m_poolCamera);
        deleteCameraObjects();
        return false;
    }
}

void ColorCorrectionModelImpl::deleteCameraObjects()
{
    if (m_camera) {
        m_camera->detachCamera();
        delete m_camera;
    }
    m_camera = nullptr;
    delete m_result;
    m_result = nullptr;
    delete m_cameraJustify;
    m_cameraJustify = nullptr;
    m_exposureGain.reset();
    m_poolCamera.clear();
}

void ColorCorrectionModelImpl::forgetMeasurements()
{
    m_initialValues.clear();
    m_currentValues.clear();
    m_calibrationInput.clear();
    m_initialImage = Plugin::DataProcessing::CImage();
    m_lastImage = Plugin::DataProcessing::CImage();
    m_detectedGain = -1.0;
    m_detectedExposure = -1.0;
    // The sampled colours live in the discriminator; only the grid outlasts a session.
    const CTrapezoid grid = m_discriminator->getGridPosition();
    delete m_discriminator;
    m_discriminator = new ChartDiscriminator(kPatchSizePercent);
    m_discriminator->setGridPosition(grid);
}

void ColorCorrectionModelImpl::SetPublishedChartEdition(PublishedChartEdition edition)
{
    std::lock_guard<std::recursive_mutex> lock(m_mutex);
    m_publishedEdition = edition;
}

bool ColorCorrectionModelImpl::StopAutoAdjustGray80PercentPatch()
{
    CameraJustify* justify;
    {
        Call call(*this);
        if (call.refused("StopAutoAdjustGray80PercentPatch"))
            return false;
        justify = m_cameraJustify;
    }
    // Waiting for the worker's last round needs the session lock free: the round
    // measures through this session.
    if (!justify || justify->stopAutoBrightness(CameraJustify::kAutoBrightnessStopTimeoutMs))
        return true;
    modellog::warning(QStringLiteral("StopAutoAdjustGray80PercentPatch: the brightness loop did not end within %1 ms.")
                          .arg(CameraJustify::kAutoBrightnessStopTimeoutMs));
    return false;
}

bool ColorCorrectionModelImpl::Close()
{
    {
        Call call(*this);
        if (call.queued([this] { Close(); }))
            return true;
    }
    StopAutoAdjustGray80PercentPatch();
    Call call(*this);
    return guarded("Close", "Error: Failed to close camera.", false, [&] {
        storeLastGridPosition();
        forgetMeasurements();
        if (m_statusService)
            disconnect(m_statusService.data(), &Plugin::CameraPool::ICameraStatusService::cameraConnectionLost, this,
                       nullptr);
        QSharedPointer<Plugin::CameraPool::ICamera> camera = m_camera ? m_camera->detachCamera() : m_poolCamera;
        if (camera && m_controlService) {
            if (camera->isOpen() && !m_exclusiveAccess)
                m_controlService->closeCamera(m_cameraInfo);
            else
                m_controlService->releaseCamera(camera);
        }
        if (m_exposureGain) {
            disconnect(m_exposureGain->gainParameter(), nullptr, this, nullptr);
            disconnect(m_exposureGain->exposureParameter(), nullptr, this, nullptr);
        }
        deleteCameraObjects();
        return true;
    });
}

void ColorCorrectionModelImpl::initializeNodemapConnections()
{
    m_exposureGain = std::make_unique<ExposureGainControl>(m_camera->getParameterCollection());
    connect(m_exposureGain->gainParameter(), &ParameterCollection::Parameter::parameterDataChangedDecoupled, this,
            &ColorCorrectionModelImpl::onGainValueChanged);
    connect(m_exposureGain->exposureParameter(), &ParameterCollection::Parameter::parameterDataChangedDecoupled, this,
            &ColorCorrectionModelImpl::onExposureTimeValueChanged);
}

void ColorCorrectionModelImpl::onConnectionLost()
{
    // The connection outlives the session (it is made once per camera object),
    // so a camera that is no longer open here is none of this session's business.
    // Open and Close, which change the camera, run on this object's thread as
    // this slot does; no lock, so a long operation elsewhere cannot hold up the news.
    const auto* lost = qobject_cast<Plugin::CameraPool::ICamera*>(sender());
    if (!m_poolCamera || (lost && lost != m_poolCamera.data()))
        return;
    m_connectionLost = true;
    emit cameraRemoved();
}

void ColorCorrectionModelImpl::onExposureTimeValueChanged(QVariant data)
{
    emit ExposureTimeValueChanged(data.toDouble());
}

void ColorCorrectionModelImpl::onGainValueChanged(QVariant data)
{
    if (m_exposureGain)
        emit GainValueChanged(m_exposureGain->notifiedGain(data.toDouble()));
}

// ------------------------------------------------------------------- grabbing

bool ColorCorrectionModelImpl::GrabImage(Plugin::DataProcessing::CImage& out, bool grabNew)
{
    Call call(*this);
    if (call.refused("GrabImage"))
        return false;
    return guarded("GrabImage", "Error: Failed to grab image.", false, [&] {
        if (!isCameraOpen())
            return false;
        bool grabbed = false;
        {
            // Calls the wait's event loop delivers on this thread see this.
            m_grabWaiting = true;
            struct Waited {
                bool& flag;
                ~Waited() { flag = false; }
            } waited{m_grabWaiting};
            grabbed = m_camera->GrabImage(m_lastImage, grabNew);
        }
        if (!grabbed)
            return false;
        if (!m_lastImage.isValid())
            return false;
        Kalto::CKaltoImage measuring = m_lastImage.kaltoImage();
        if (m_discriminator->update80PercentGrayPatchValue(&measuring))
            emit Gray80PercentHitRateChanged(m_discriminator->get80PercentGrayPatch150DnHitRate());
        out = m_lastImage;
        return true;
    });
}

bool ColorCorrectionModelImpl::GrabImage(QImage& image, bool grabNew)
{
    Call call(*this);
    Plugin::DataProcessing::CImage grabbed;
    if (!GrabImage(grabbed, grabNew))
        return false;
    image = grabbed.toQImage().copy();
    return true;
}

bool ColorCorrectionModelImpl::StopGrab()
{
    Call call(*this);
    if (call.queued([this] { StopGrab(); }))
        return true;
    if (isCameraOpen() && m_camera->isGrabbing())
        m_camera->stopGrabbing();
    return true;
}

// ------------------------------------------------------------ grid and patches

CTrapezoid ColorCorrectionModelImpl::GetGridPosition()
{
    Call call(*this);
    return m_discriminator->getGridPosition();
}

void ColorCorrectionModelImpl::SetGridPositon(const CTrapezoid& grid)
{
    Call call(*this);
    m_discriminator->setGridPosition(grid);
}

void ColorCorrectionModelImpl::GetColorPatchPositions(QVector<CTrapezoid>& positions)
{
    Call call(*this);
    m_discriminator->getChartPositions(positions);
}

int ColorCorrectionModelImpl::GetColorPatchValues(QVector<QColor>& values, bool forceGrab)
{
    Call call(*this);
    if (call.refused("GetColorPatchValues"))
        return 0;
    if (isCameraOpen() && (!m_camera->isGrabbing() || forceGrab)) {
        Plugin::DataProcessing::CImage ignored;
        GrabImage(ignored, true);
    }
    const int before = values.size();
    m_discriminator->getColorPatchValues(values);
    if (values.size() == before && m_lastImage.isValid()) {
        Kalto::CKaltoImage measuring = m_lastImage.kaltoImage();
        m_discriminator->updateColorPatchValues(&measuring);
        m_discriminator->getColorPatchValues(values);
        emit Gray80PercentHitRateChanged(m_discriminator->get80PercentGrayPatch150DnHitRate());
    }
    return values.size() - before;
}

void ColorCorrectionModelImpl::GetColorPatchInitialValues(QVector<QColor>& values)
{
    Call call(*this);
    values += m_initialValues;
}

void ColorCorrectionModelImpl::GetColorPatchTargetValues(QVector<QColor>& values)
{
    Call call(*this);
    const ColorSpace cs;
    const dlib::matrix<double, 24, 3> target = m_engine->GetTargetChart();
    for (long k = 0; k < 24; ++k)
        values.append(QColor::fromRgbF(cs.RGB_to_sRGB(target(k, 0)) / 255.0, cs.RGB_to_sRGB(target(k, 1)) / 255.0,
                                       cs.RGB_to_sRGB(target(k, 2)) / 255.0, 1.0));
}

void ColorCorrectionModelImpl::GetColorPatchCurrentValues(QVector<QColor>& values)
{
    Call call(*this);
    QVector<QColor> fresh;
    m_discriminator->getColorPatchValues(fresh);
    if (!fresh.isEmpty())
        m_currentValues = fresh;
    values += m_currentValues;
}

bool ColorCorrectionModelImpl::GetCameraInitialImage(QImage& image)
{
    Call call(*this);
    image = m_initialImage.toQImage();
    return m_initialImage.isValid();
}

bool ColorCorrectionModelImpl::ApplyInitialCameraImageAndPatchValues()
{
    Call call(*this);
    if (call.refused("ApplyInitialCameraImageAndPatchValues"))
        return false;
    Plugin::DataProcessing::CImage grabbed;
    if (!GrabImage(grabbed, true) || !grabbed.isValid())
        return false;
    m_initialImage = grabbed;
    Kalto::CKaltoImage measuring = m_lastImage.kaltoImage();
    m_discriminator->updateColorPatchValues(&measuring);
    m_initialValues.clear();
    m_discriminator->getColorPatchValues(m_initialValues);
    return true;
}

bool ColorCorrectionModelImpl::ApplyInitialColorPatchValues()
{
    Call call(*this);
    if (call.refused("ApplyInitialColorPatchValues"))
        return false;
    QVector<QColor> values;
    GetColorPatchValues(values, true);
    m_calibrationInput.clear();
    m_calibrationInput += values;
    return true;
}

// ------------------------------------------------------- exposure and gain

bool ColorCorrectionModelImpl::GetExposureTimeRange(double& min, double& value, double& max)
{
    Call call(*this);
    return guarded("GetExposureTimeRange", "Error: Failed to read the exposure time.", false, [&] {
        return isCameraOpen() && m_exposureGain && m_exposureGain->exposureRange(min, value, max);
    });
}

bool ColorCorrectionModelImpl::SetExposureTimeValue(double exposureUs)
{
    Call call(*this);
    return guarded("SetExposureTimeValue", "Error: Failed to set the exposure time.", false, [&] {
        return isCameraOpen() && m_exposureGain && m_exposureGain->setExposure(exposureUs);
    });
}

double ColorCorrectionModelImpl::GetExposureTimeValue()
{
    Call call(*this);
    return guarded("GetExposureTimeValue", "Error: Failed to read the exposure time.", -1.0, [&] {
        double min, value, max;
        return isCameraOpen() && m_exposureGain && m_exposureGain->exposureRange(min, value, max) ? value : -1.0;
    });
}

bool ColorCorrectionModelImpl::GetGainRange(double& min, double& value, double& max)
{
    Call call(*this);
    return guarded("GetGainRange", "Error: Failed to read the gain.", false, [&] {
        return isCameraOpen() && m_exposureGain && m_exposureGain->gainRange(min, value, max);
    });
}

bool ColorCorrectionModelImpl::SetGainValue(double gain)
{
    Call call(*this);
    return guarded("SetGainValue", "Error: Failed to set the gain.", false, [&] {
        return isCameraOpen() && m_exposureGain && m_exposureGain->setGain(gain);
    });
}

double ColorCorrectionModelImpl::GetGainValue()
{
    Call call(*this);
    return guarded("GetGainValue", "Error: Failed to read the gain.", -1.0, [&] {
        double min, value, max;
        return isCameraOpen() && m_exposureGain && m_exposureGain->gainRange(min, value, max) ? value : -1.0;
    });
}

bool ColorCorrectionModelImpl::StoreDetectedExposureAndGain()
{
    m_detectedGain = GetGainValue();
    m_detectedExposure = GetExposureTimeValue();
    return m_detectedGain > -1.0 && m_detectedExposure > -1.0;
}

bool ColorCorrectionModelImpl::RestoreDetectedExposureAndGain()
{
    if (!(m_detectedGain > -1.0 && m_detectedExposure > -1.0))
        return false;
    {
        Call call(*this);
        if (call.refused("RestoreDetectedExposureAndGain"))
            return false;
        if (!m_cameraJustify)
            return false;
        if (!guarded("RestoreDetectedExposureAndGain", "Error: Failed to restore exposure and gain.", false, [&] {
                m_cameraJustify->disableAutoGainAndAutoExposure();
                return true;
            }))
            return false;
    }
    SetGainValue(m_detectedGain);
    SetExposureTimeValue(m_detectedExposure);
    return true;
}

// ------------------------------------------------------------- calibration

bool ColorCorrectionModelImpl::AutoAdjustGray80PercentPatch()
{
    {
        Call call(*this);
        if (call.refused("AutoAdjustGray80PercentPatch"))
            return false;
    }
    // A loop still running needs the session lock for its last round: it is
    // ended before the lock is taken, and waited for only so long.
    const bool previousEnded = StopAutoAdjustGray80PercentPatch();
    Call call(*this);
    return guarded("AutoAdjustGray80PercentPatch", "Autoadjust failed.", false, [&] {
        if (!previousEnded)
            throw std::runtime_error("the previous brightness loop is still running");
        if (!m_cameraJustify)
            throw std::runtime_error("no camera is open");
        m_cameraJustify->startAutoBrightness(this);
        return true;
    });
}

bool ColorCorrectionModelImpl::ExecuteWhitebalance()
{
    Call call(*this);
    if (call.refused("ExecuteWhitebalance"))
        return false;
    return guarded("ExecuteWhitebalance", "Whitebalance failed!", false, [&] {
        StopGrab();
        QVector<QColor> values;
        GetColorPatchValues(values, true);
        if (values.size() != 24)
            throw std::runtime_error(QString("%1 of 24 patches measured").arg(values.size()).toStdString());
        m_engine->SetChart(COLORCALIBRATION_STEP_ORIGINAL, convertQColorsToMatrix(values, false));
        m_engine->Run(COLORCALIBRATION_STEP_WHITEBALANCE, COLORCALIBRATION_STEP_ORIGINAL);
        m_engine->GetWhiteBalance(m_whiteBalance[0], m_whiteBalance[1], m_whiteBalance[2]);
        m_cameraJustify->setWhiteBalance(m_whiteBalance[0], m_whiteBalance[1], m_whiteBalance[2]);
        return true;
    });
}

bool ColorCorrectionModelImpl::ExecuteCalibrationAndApply()
{
    Call call(*this);
    if (call.refused("ExecuteCalibrationAndApply"))
        return false;
    return guarded("ExecuteCalibrationAndApply", "Calibration failed.", false, [&] {
        m_currentValues.clear();
        StopGrab();
        if (m_calibrationInput.size() != 24)
            throw std::runtime_error(
                QString("%1 of 24 patches measured").arg(m_calibrationInput.size()).toStdString());
        m_engine->SetChart(COLORCALIBRATION_STEP_ORIGINAL, convertQColorsToMatrix(m_calibrationInput, false));
        m_engine->Run();
        m_engine->GetWhiteBalance(m_whiteBalance[0], m_whiteBalance[1], m_whiteBalance[2]);
        m_cameraJustify->setWhiteBalance(m_whiteBalance[0], m_whiteBalance[1], m_whiteBalance[2]);
        m_engine->GetMatrix(m_matrix);
        m_cameraJustify->setMatrix(m_matrix);
        m_engine->GetBc6x2(m_bc6x2);
        m_cameraJustify->setBC6x2Op(m_bc6x2);
        m_engine->GetGamma(m_gamma);
        m_cameraJustify->setGamma(m_gamma, true);
        const auto params = m_camera->getParameterCollection();
        m_srgbGammaApplied = params && params->sfncVersion() < kSfnc2;
        if (m_srgbGammaApplied)
            m_cameraJustify->setSRGBGamma(true);
        emit CalibrationFinished();
        return true;
    });
}

// ------------------------------------------------------------- preparation

bool ColorCorrectionModelImpl::ActivateMonoImage()
{
    Call call(*this);
    if (call.refused("ActivateMonoImage"))
        return false;
    return guarded("ActivateMonoImage", "Error: Failed to activate the mono image.", false, [&] {
        m_cameraJustify->activateMonoImage();
        return true;
    });
}

bool ColorCorrectionModelImpl::DisableAutoFunctions()
{
    Call call(*this);
    if (call.refused("DisableAutoFunctions"))
        return false;
    return guarded("DisableAutoFunctions", "Error: Failed to disable the auto functions.", false, [&] {
        m_cameraJustify->disableAutofunctions();
        return true;
    });
}

bool ColorCorrectionModelImpl::SetNeutralSettings()
{
    Call call(*this);
    if (call.refused("SetNeutralSettings"))
        return false;
    return guarded("SetNeutralSettings", "Error: Set neutral camera settings failed.", false, [&] {
        if (!isCameraOpen())
            return false;
        StopGrab();
        m_cameraJustify->disableBlackLevel();
        m_cameraJustify->disableGamma();
        m_cameraJustify->disableMatrix();
        m_cameraJustify->disableHSBC();
        m_cameraJustify->disableLUT();
        m_cameraJustify->disableBC6x2Op();
        m_cameraJustify->disableWhiteBalance();
        m_cameraJustify->disableDemosaicing();
        m_cameraJustify->disableAutofunctions();
        return true;
    });
}

bool ColorCorrectionModelImpl::CreateSettingsBackup(bool flag)
{
    Call call(*this);
    if (call.refused("CreateSettingsBackup"))
        return false;
    return guarded("CreateSettingsBackup", "Error: Backup of camera settings failed.", false, [&] {
        if (!isCameraOpen())
            return false;
        StopGrab();
        m_cameraJustify->backupParameterCollection(flag);
        return true;
    });
}

bool ColorCorrectionModelImpl::RestoreSettingsBackup(bool flag)
{
    {
        Call call(*this);
        if (call.queued([this, flag] { RestoreSettingsBackup(flag); }))
            return true;
    }
    // A brightness loop still running would go on changing what is restored.
    StopAutoAdjustGray80PercentPatch();
    Call call(*this);
    return guarded("RestoreSettingsBackup", "Error: Restore of camera settings failed.", false, [&] {
        if (!isCameraOpen())
            return false;
        StopGrab();
        for (const QString& line : m_cameraJustify->restoreParameterCollection(flag))
            modellog::warning(QStringLiteral("RestoreSettingsBackup: %1").arg(line));
        return true;
    });
}

bool ColorCorrectionModelImpl::LoadSettings(const QString& settings)
{
    Call call(*this);
    if (call.refused("LoadSettings"))
        return false;
    return guarded("LoadSettings", "Error: Load settings to camera failed.", false, [&] {
        if (!isCameraOpen())
            return false;
        StopGrab();
        // Lines the camera rejects are named one by one; the rest is applied.
        for (const QString& line : m_cameraJustify->loadNodemapSettings(settings))
            modellog::warning(QStringLiteral("LoadSettings: %1").arg(line));
        return true;
    });
}

bool ColorCorrectionModelImpl::LoadSettings(const QFile& file)
{
    Call call(*this);
    QTextStream in(const_cast<QFile*>(&file));
    return LoadSettings(in.readAll());
}

// --------------------------------------------------------- results and saving

bool ColorCorrectionModelImpl::SaveSettingsToFilePath(const QString& path)
{
    Call call(*this);
    if (call.refused("SaveSettingsToFilePath"))
        return false;
    if (!isCameraOpen() || !m_result)
        return false;
    return m_result->SaveSettingsToFilePath(path);
}

bool ColorCorrectionModelImpl::SaveSummaryToFilePath(const QString& path)
{
    Call call(*this);
    if (call.refused("SaveSummaryToFilePath"))
        return false;
    if (!isCameraOpen() || !m_result)
        return false;
    const QJsonObject document = GetCalibrationsResultsJson();
    m_result->SetPublishedChartEdition(m_publishedEdition);
    return m_result->SaveSummaryToFilePath(path, m_initialImage.toQImage(), m_lastImage.toQImage(), document);
}

bool ColorCorrectionModelImpl::StoreSettingsInUserSet(const QString& userSet, bool setAsDefault)
{
    Call call(*this);
    if (call.refused("StoreSettingsInUserSet"))
        return false;
    return guarded("StoreSettingsInUserSet", "Store settings in UserSet failed.", false, [&] {
        // Always saved; the start-up set only when asked.
        m_cameraJustify->setUserSet(userSet, true, setAsDefault);
        return true;
    });
}

QJsonObject ColorCorrectionModelImpl::GetAvailableUserSetsJson()
{
    Call call(*this);
    return guarded("GetAvailableUserSetsJson", "Get available usersets failed.", QJsonObject(), [&] {
        if (!isCameraOpen())
            return QJsonObject();
        const auto selector = m_camera->getParameterCollection()->parameter(EnumParameterName("UserSetSelector"));
        QJsonArray sets;
        for (const QString& name : selector->symbolics()) {
            const QVariantMap entry = selector->entry(name);
            if (entry.isEmpty() || !name.contains("userset", Qt::CaseInsensitive))
                continue;
            sets.append(QJsonObject{{"userset", name}, {"DisplayName", entry.value("DisplayName").toString()}});
        }
        return QJsonObject{{"UserSets", sets}};
    });
}

QJsonObject ColorCorrectionModelImpl::GetCalibrationsResultsJson()
{
    Call call(*this);
    if (call.refused("GetCalibrationsResultsJson"))
        return QJsonObject();
    if (!isCameraOpen())
        return QJsonObject();
    QVector<QColor> initial, target, current;
    GetColorPatchInitialValues(initial);
    GetColorPatchTargetValues(target);
    GetColorPatchCurrentValues(current);

    ColorChecker checker;
    Original measured(&checker, 1.0);
    QVector<QColor> padded = current;
    padded.resize(24);  // a short measurement fills the unused rows with black
    const dlib::matrix<double, 24, 3> currentChart = convertQColorsToMatrix(padded, true);
    measured.SetInputChart(currentChart);
    measured.SetOutputChart(currentChart);
    measured.Run();

    QJsonObject colors, precise;
    for (int i = 0; i < current.size() && i < 24; ++i) {
        const QColor in = i < initial.size() ? initial[i] : QColor();
        const double dE = measured.GetError(i, false, false);
        const double dC = measured.GetError(i, true, false);
        QJsonObject p{{Keys::kInitial, createRgbFQString(in)},
                      {Keys::kTarget, createRgbFQString(target[i])},
                      {Keys::kCurrent, createRgbFQString(current[i])},
                      {Keys::kDeltaE, QString::number(dE, 'f', 6)},
                      {Keys::kDeltaC, QString::number(dC, 'f', 6)}};
        QJsonObject d{{Keys::kInitial, in.name()},
                      {Keys::kTarget, target[i].name()},
                      {Keys::kCurrent, current[i].name()},
                      {Keys::kDeltaE, QString::number(dE, 'f', 4)},
                      {Keys::kDeltaC, QString::number(dC, 'f', 4)}};
        colors.insert(Keys::patchKey(i), d);
        precise.insert(Keys::patchKey(i), p);
    }
    StopGrab();
    return guarded("GetCalibrationsResultsJson", "Error: Failed to read the camera settings.", QJsonObject(), [&] {
        QString stored = m_cameraJustify->getStoredCameraSettings();
        QString actual = m_cameraJustify->saveNodemapSettings();
        m_result->SetStoredSettings(stored);
        m_result->SetActualSettings(actual);
        QJsonObject document = m_result->GetResultsJson();
        document.insert(Keys::kColors, colors);
        document.insert(Keys::kPreciseColors, precise);
        return document;
    });
}

// ----------------------------------------------------------- grid persistence

QString ColorCorrectionModelImpl::cameraText() const
{
    return m_cameraInfo ? m_cameraInfo->identifyingText() : QString();
}

void ColorCorrectionModelImpl::storeLastGridPosition()
{
    guarded("storeLastGridPosition", "Failed to store grid position.", false, [&] {
        const auto params = m_camera ? m_camera->getParameterCollection() : nullptr;
        if (!params)
            return false;
        const double w = params->parameter(IntegerParameterName("Width"))->value();
        const double h = params->parameter(IntegerParameterName("Height"))->value();
        if (w <= 0 || h <= 0)
            return false;
        GridPositionStore::store(cameraText(), m_discriminator->getGridPosition(), w, h);
        return true;
    });
}

void ColorCorrectionModelImpl::restoreLastGridPosition()
{
    guarded("restoreLastGridPosition", "Failed to restore old grid position.", false, [&] {
        const auto params = m_camera->getParameterCollection();
        const auto width = params->parameter(IntegerParameterName("Width"));
        const auto height = params->parameter(IntegerParameterName("Height"));
        if (!width->isReadable() || !height->isReadable())
            throw Core::Exception::BaseException("Width or Height is not readable");
        SetGridPositon(GridPositionStore::restore(cameraText(), width->value(), height->value()));
        return true;
    });
}

// ------------------------------------------------------------- conversions

dlib::matrix<double, 24, 3> ColorCorrectionModelImpl::convertQColorsToMatrix(QVector<QColor>& colors,
                                                                             bool linearise)
{
    return chartFromColors(colors, linearise);
}

QVector<QColor> ColorCorrectionModelImpl::convertMatrixToQColors(const dlib::matrix<double, 24, 3>& matrix,
                                                                 bool toSRGB)
{
    const ColorSpace cs;
    QVector<QColor> colors;
    for (long i = 0; i < 24; ++i) {
        dlib::matrix<double, 1, 3> row = dlib::rowm(matrix, i);
        if (toSRGB)
            row = cs.RGB_to_sRGB(row);
        colors.append(QColor::fromRgbF(qBound(0.0, row(0) / 255.0, 1.0), qBound(0.0, row(1) / 255.0, 1.0),
                                       qBound(0.0, row(2) / 255.0, 1.0), 1.0));
    }
    return colors;
}

QString ColorCorrectionModelImpl::createRgbFQString(const QColor& color)
{
    return QString("R: %1 G: %2 B: %3")
        .arg(color.redF(), 0, 'f', 4)
        .arg(color.greenF(), 0, 'f', 4)
        .arg(color.blueF(), 0, 'f', 4);
}
