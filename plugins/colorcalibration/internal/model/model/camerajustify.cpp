#include "camerajustify.h"

#include "cameraautobrightnesshelper.h"
#include "camerapool/icamera.h"

#include "genicam/runtimeexception.h"
#include "parametercollection/booleanparameter.h"
#include "parametercollection/commandparameter.h"
#include "parametercollection/enumparameter.h"
#include "parametercollection/floatparameter.h"
#include "parametercollection/integerparameter.h"
#include "parametercollection/iparametercollection.h"

#include <QThread>
#include <QVersionNumber>

#include <cmath>

using namespace ParameterCollection;

namespace {

// Errors raised here name this file as the camera SDK's errors name theirs.
constexpr const char* kSourceFile = "kaltoviewer/plugins/colorcalibration/internal/model/model/camerajustify";

const char* const kUnsupportedSfnc = "Camera SFNC version is unsupported.";

enum class Sfnc { Version1, Version2 };

Sfnc sfncGeneration(const IParameterCollection& parameters, unsigned int line)
{
    const QVersionNumber version = parameters.sfncVersion();
    if (version.isNull() || version.majorVersion() < 1)
        throw GenICam_3_1_Ostrel_kalto::RuntimeException(kUnsupportedSfnc, kSourceFile, line);
    return version >= QVersionNumber(2, 0, 0) ? Sfnc::Version2 : Sfnc::Version1;
}

// The lenient writers below skip features the camera lacks or locks; they
// report whether they wrote.

bool writeEnumIfPossible(IParameterCollection& parameters, const EnumParameterName& name,
                         const QString& symbolic)
{
    const auto p = parameters.parameter(name);
    if (p->isNull() || !p->isWritable() || !p->hasEntry(symbolic))
        return false;
    p->setValue(symbolic);
    return true;
}

bool writeBoolIfPossible(IParameterCollection& parameters, const BooleanParameterName& name, bool value)
{
    const auto p = parameters.parameter(name);
    if (p->isNull() || !p->isWritable())
        return false;
    p->setValue(value);
    return true;
}

// A feature that some cameras model as float and others as integer.
bool writeNumberIfPossible(IParameterCollection& parameters, const QString& name, double value)
{
    const auto f = parameters.parameter(FloatParameterName(name));
    if (!f->isNull()) {
        if (!f->isWritable())
            return false;
        f->setValue(value);
        return true;
    }
    const auto i = parameters.parameter(IntegerParameterName(name));
    if (i->isNull() || !i->isWritable())
        return false;
    i->setValue(static_cast<qint64>(std::llround(value)));
    return true;
}

// Fixed-point scale of the raw colour-adjustment features (1.0 = 128), used
// only on cameras that lack the float features.
constexpr double kColorAdjustmentRawScale = 128.0;

}  // namespace

CameraJustify::CameraJustify(QSharedPointer<Plugin::CameraPool::ICamera> camera, QObject* parent)
    : QObject(parent), m_camera(std::move(camera)), m_userSetName(QStringLiteral("UserSet1"))
{
}

CameraJustify::~CameraJustify()
{
    finishAutoBrightnessThread();
}

QSharedPointer<IParameterCollection> CameraJustify::parameters() const
{
    if (!m_camera)
        throw GenICam_3_1_Ostrel_kalto::RuntimeException("No camera.", kSourceFile, __LINE__);
    auto collection = m_camera->parameterCollection();
    if (!collection)
        throw GenICam_3_1_Ostrel_kalto::RuntimeException("The camera has no parameter collection.",
                                                         kSourceFile, __LINE__);
    return collection;
}

void CameraJustify::disableHSBC()
{
    const auto p = parameters();
    writeNumberIfPossible(*p, QStringLiteral("OstHue"), 0.0);
    writeNumberIfPossible(*p, QStringLiteral("OstSaturation"), 1.0);
    writeNumberIfPossible(*p, QStringLiteral("OstBrightness"), 0.0);
    writeNumberIfPossible(*p, QStringLiteral("OstContrast"), 0.0);
}

void CameraJustify::activateMonoImage()
{
    const auto p = parameters();
    const auto format = p->parameter(EnumParameterName("PixelFormat"));
    if (format->isNull() || !format->isWritable())
        return;
    format->setValue(format->hasEntry(QStringLiteral("Mono8")) ? QStringLiteral("Mono8")
                                                                : QStringLiteral("Mono12"));
}

void CameraJustify::disableTestImage()
{
    const auto p = parameters();
    writeEnumIfPossible(*p, EnumParameterName("TestImageSelector"), QStringLiteral("Off"));
    writeEnumIfPossible(*p, EnumParameterName("TestPattern"), QStringLiteral("Off"));
}

void CameraJustify::disableDemosaicing()
{
    const auto p = parameters();
    writeEnumIfPossible(*p, EnumParameterName("DemosaicingMode"), QStringLiteral("Simple"));
}

void CameraJustify::disableAutoGainAndAutoExposure()
{
    const auto p = parameters();
    writeEnumIfPossible(*p, EnumParameterName("ExposureAuto"), QStringLiteral("Off"));
    writeEnumIfPossible(*p, EnumParameterName("GainAuto"), QStringLiteral("Off"));
}

void CameraJustify::disableAutofunctions()
{
    const auto p = parameters();
    writeEnumIfPossible(*p, EnumParameterName("BalanceWhiteAuto"), QStringLiteral("Off"));
    writeEnumIfPossible(*p, EnumParameterName("TonalRangeAuto"), QStringLiteral("Off"));
    writeEnumIfPossible(*p, EnumParameterName("TonalRangeEnable"), QStringLiteral("Off"));
    writeEnumIfPossible(*p, EnumParameterName("OstContrastMode"), QStringLiteral("Linear"));
    disableAutoGainAndAutoExposure();
}

void CameraJustify::disableBlackLevel()
{
    const auto p = parameters();
    writeEnumIfPossible(*p, EnumParameterName("BlackLevelSelector"), QStringLiteral("All"));
    const bool sfnc2 = sfncGeneration(*p, __LINE__) == Sfnc::Version2;
    writeNumberIfPossible(*p, sfnc2 ? QStringLiteral("BlackLevel") : QStringLiteral("BlackLevelRaw"), 0.0);
}

void CameraJustify::disableLUT()
{
    const auto p = parameters();
    writeEnumIfPossible(*p, EnumParameterName("LUTSelector"), QStringLiteral("Luminance"));
    writeBoolIfPossible(*p, BooleanParameterName("LUTEnable"), false);
}

void CameraJustify::disableWhiteBalance()
{
    const auto p = parameters();
    const bool sfnc2 = sfncGeneration(*p, __LINE__) == Sfnc::Version2;
    const auto ratio = p->parameter(FloatParameterName(sfnc2 ? "BalanceRatio" : "BalanceRatioAbs"));
    if (ratio->isNull())
        return;
    // Cameras hold the ratios read-only while their automatic white balance
    // runs, and the session switches auto functions off only later. Neutral
    // white balance means no automatic one either, so it goes off first here.
    if (!ratio->isWritable())
        writeEnumIfPossible(*p, EnumParameterName("BalanceWhiteAuto"), QStringLiteral("Off"));
    if (!ratio->isWritable())
        return;
    setWhiteBalance(1.0, 1.0, 1.0);
}

void CameraJustify::disableMatrix()
{
    const auto p = parameters();
    if (!p->parameter(FloatParameterName("ColorTransformationValue"))->isNull())
        setMatrix(dlib::identity_matrix<double>(3));
    if (!writeEnumIfPossible(*p, EnumParameterName("OstLightSourcePreset") || EnumParameterName("LightSourceSelector"),
                             QStringLiteral("Off")))
        throw GenICam_3_1_Ostrel_kalto::RuntimeException("Couldn't get or write (Ost)LightSourcePreset",
                                                         kSourceFile, __LINE__);
}

void CameraJustify::disableGamma()
{
    const auto p = parameters();
    if (p->parameter(FloatParameterName("Gamma"))->isNull())
        return;
    setGamma(1.0, true);
}

void CameraJustify::disableBC6x2Op()
{
    const auto p = parameters();
    if (sfncGeneration(*p, __LINE__) == Sfnc::Version2) {
        dlib::matrix<double, 12, 1> neutral;
        neutral = 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1;
        setBC6x2Op(neutral);
    } else {
        writeBoolIfPossible(*p, BooleanParameterName("OstColorAdjustmentEnable") ||
                                    BooleanParameterName("ColorAdjustmentEnable"),
                            false);
    }
}

void CameraJustify::backupParameterCollection(bool)
{
    m_storedSettings = saveNodemapSettings();
}

QStringList CameraJustify::restoreParameterCollection(bool)
{
    return loadNodemapSettings(m_storedSettings);
}

QString CameraJustify::saveNodemapSettings()
{
    if (!m_camera)
        throw GenICam_3_1_Ostrel_kalto::RuntimeException("No camera.", kSourceFile, __LINE__);
    return m_camera->saveSettings();
}

QStringList CameraJustify::loadNodemapSettings(const QString& settings)
{
    if (!m_camera)
        throw GenICam_3_1_Ostrel_kalto::RuntimeException("No camera.", kSourceFile, __LINE__);
    QStringList rejected;
    int applied = 0;
    if (m_camera->loadSettings(settings, &rejected, &applied))
        return {};
    // A file from another camera or firmware differs in a few features; what
    // the camera takes is kept. Only a text of which nothing fits is refused.
    if (applied > 0)
        return rejected.isEmpty() ? QStringList{QStringLiteral("unknown lines rejected")} : rejected;
    const QString message = QStringLiteral("Camera settings not applied, not one line fits this camera: %1")
                                .arg(rejected.isEmpty() ? QStringLiteral("unknown lines") : rejected.first());
    throw GenICam_3_1_Ostrel_kalto::RuntimeException(message.toStdString(), kSourceFile, __LINE__);
}

QString CameraJustify::getStoredCameraSettings() const
{
    return m_storedSettings;
}

void CameraJustify::saveToUserSet(QSharedPointer<IParameterCollection> parameters)
{
    if (!m_saveToUserSetEnabled || !parameters)
        return;
    parameters->parameter(EnumParameterName("UserSetSelector"))->setValue(m_userSetName);
    if (m_setUserSetAsDefault)
        parameters->parameter(EnumParameterName("UserSetDefault") || EnumParameterName("UserSetDefaultSelector"))
            ->setValue(m_userSetName);
    parameters->parameter(CommandParameterName("UserSetSave"))->execute();
}

void CameraJustify::setUserSet(QString name, bool save, bool setAsDefault)
{
    m_userSetName = std::move(name);
    m_saveToUserSetEnabled = save;
    m_setUserSetAsDefault = setAsDefault;
    saveToUserSet(parameters());
}

void CameraJustify::setWhiteBalance(double r, double g, double b)
{
    const auto p = parameters();
    const bool sfnc2 = sfncGeneration(*p, __LINE__) == Sfnc::Version2;
    const auto selector = p->parameter(EnumParameterName("BalanceRatioSelector"));
    const auto ratio = p->parameter(FloatParameterName(sfnc2 ? "BalanceRatio" : "BalanceRatioAbs"));
    const std::pair<const char*, double> order[] = {{"Red", r}, {"Blue", b}, {"Green", g}};
    for (const auto& [colour, value] : order) {
        selector->setValue(QString::fromLatin1(colour));
        ratio->setValue(value);
    }
    saveToUserSet(p);
}

void CameraJustify::setMatrix(const dlib::matrix<double, 3, 3>& m)
{
    const auto p = parameters();
    if (sfncGeneration(*p, __LINE__) == Sfnc::Version2)
        writeEnumIfPossible(*p, EnumParameterName("LightSourceSelector"), QStringLiteral("Custom"));
    else
        writeEnumIfPossible(*p, EnumParameterName("OstLightSourcePreset"), QStringLiteral("Off"));

    const auto selector = p->parameter(EnumParameterName("ColorTransformationValueSelector"));
    const auto value = p->parameter(FloatParameterName("ColorTransformationValue"));
    // Per row: the two off-diagonal entries, then the diagonal.
    static const int kColumns[3][3] = {{1, 2, 0}, {0, 2, 1}, {0, 1, 2}};
    for (int row = 0; row < 3; ++row) {
        double kept = 0.0;
        for (int k = 0; k < 3; ++k) {
            const int column = kColumns[row][k];
            selector->setValue(QStringLiteral("Gain%1%2").arg(row).arg(column));
            if (k < 2) {
                value->setValue(m(row, column));
                kept += value->value();
            } else {
                value->setValue(1.0 - kept);
            }
        }
    }
    saveToUserSet(p);
}

void CameraJustify::setGamma(double gamma, bool enable)
{
    const auto p = parameters();
    writeEnumIfPossible(*p, EnumParameterName("GammaSelector"), QStringLiteral("User"));
    writeBoolIfPossible(*p, BooleanParameterName("GammaEnable"), enable);
    p->parameter(FloatParameterName("Gamma"))->setValue(gamma);
    saveToUserSet(p);
}

void CameraJustify::setSRGBGamma(bool enable)
{
    const auto p = parameters();
    p->parameter(EnumParameterName("GammaSelector"))->setValue(QStringLiteral("sRGB"));
    p->parameter(BooleanParameterName("GammaEnable"))->setValue(enable);
    saveToUserSet(p);
}

void CameraJustify::setBC6x2Op(const dlib::matrix<double, 12, 1>& params)
{
    const auto p = parameters();
    const auto selector =
        p->parameter(EnumParameterName("OstColorAdjustmentSelector") || EnumParameterName("ColorAdjustmentSelector"));
    const auto hue = p->parameter(FloatParameterName("OstColorAdjustmentHue") || FloatParameterName("ColorAdjustmentHue"));
    const auto saturation = p->parameter(FloatParameterName("OstColorAdjustmentSaturation") ||
                                         FloatParameterName("ColorAdjustmentSaturation"));
    const auto hueRaw = p->parameter(IntegerParameterName("OstColorAdjustmentHueRaw") ||
                                     IntegerParameterName("ColorAdjustmentHueRaw"));
    const auto saturationRaw = p->parameter(IntegerParameterName("OstColorAdjustmentSaturationRaw") ||
                                            IntegerParameterName("ColorAdjustmentSaturationRaw"));
    const bool hueUsable = hue->isWritable() || hueRaw->isWritable();
    const bool saturationUsable = saturation->isWritable() || saturationRaw->isWritable();
    if (!selector->isWritable() || !hueUsable || !saturationUsable)
        throw GenICam_3_1_Ostrel_kalto::RuntimeException(
            "Couldn't get or write one of the following parameters: (Ost)ColorAdjustmentSelector, "
            "(Ost)ColorAdjustmentSaturation, (Ost)ColorAdjustmentSelector",
            kSourceFile, __LINE__);

    static const char* const kColours[6] = {"Red", "Yellow", "Green", "Cyan", "Blue", "Magenta"};
    for (int k = 0; k < 6; ++k) {
        selector->setValue(QString::fromLatin1(kColours[k]));
        if (hue->isWritable())
            hue->setValue(params(k));
        else
            hueRaw->setValue(std::llround(params(k) * kColorAdjustmentRawScale));
        if (saturation->isWritable())
            saturation->setValue(params(6 + k));
        else
            saturationRaw->setValue(std::llround(params(6 + k) * kColorAdjustmentRawScale));
    }
    saveToUserSet(p);
}

void CameraJustify::startAutoBrightness(CalibrationInterface* calibration)
{
    // A caller holding the session lock, which a running loop needs for its
    // next round, must have stopped it first; the wait is bounded either way.
    if (!stopAutoBrightness(kAutoBrightnessStopTimeoutMs))
        throw GenICam_3_1_Ostrel_kalto::RuntimeException("The previous brightness loop is still running.",
                                                         kSourceFile, __LINE__);
    finishAutoBrightnessThread();
    m_autoBrightnessThread = new QThread;
    m_autoBrightness = new CameraAutoBrightnessHelper(calibration, parameters());
    m_autoBrightness->moveToThread(m_autoBrightnessThread);
    connect(m_autoBrightnessThread, &QThread::started, m_autoBrightness, &CameraAutoBrightnessHelper::doWork);
    connect(m_autoBrightness, &CameraAutoBrightnessHelper::AutoBrightnessFinished, this,
            &CameraJustify::AutoBrightnessFinished);
    m_autoBrightnessThread->start();
}

bool CameraJustify::stopAutoBrightness(int timeoutMs)
{
    if (m_autoBrightness)
        m_autoBrightness->stop();
    if (!m_autoBrightnessThread)
        return true;
    m_autoBrightnessThread->quit();
    return timeoutMs < 0 ? m_autoBrightnessThread->wait() : m_autoBrightnessThread->wait(timeoutMs);
}

void CameraJustify::finishAutoBrightnessThread()
{
    if (!m_autoBrightnessThread)
        return;
    stopAutoBrightness(-1);
    delete m_autoBrightness;
    m_autoBrightness = nullptr;
    delete m_autoBrightnessThread;
    m_autoBrightnessThread = nullptr;
}
