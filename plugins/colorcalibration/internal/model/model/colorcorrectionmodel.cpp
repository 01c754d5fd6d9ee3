#include "colorcorrectionmodel.h"

#include "colorcorrectionmodelimpl.h"

ColorCorrectionModel::ColorCorrectionModel(QObject* parent) : QObject(parent), m_impl(new ColorCorrectionModelImpl)
{
    using Impl = ColorCorrectionModelImpl;
    using Self = ColorCorrectionModel;
    connect(m_impl, &Impl::Gray80PercentHitRateChanged, this, &Self::Gray80PercentHitRateChanged);
    connect(m_impl, &Impl::ExposureTimeValueChanged, this, &Self::ExposureTimeValueChanged);
    connect(m_impl, &Impl::GainValueChanged, this, &Self::GainValueChanged);
    connect(m_impl, &Impl::GridPositionChanged, this, &Self::GridPositionChanged);
    connect(m_impl, &Impl::CalibrationFinished, this, &Self::CalibrationFinished);
    connect(m_impl, &Impl::AutoAdjustGray80PercentPatchFinished, this, &Self::AutoAdjustGray80PercentPatchFinished);
    connect(m_impl, &Impl::cameraRemoved, this, &Self::cameraRemoved);
}

ColorCorrectionModel::~ColorCorrectionModel()
{
    delete m_impl;
}

QJsonObject ColorCorrectionModel::GetCalibrationsResultsJson()
{
    return m_impl->GetCalibrationsResultsJson();
}

QJsonObject ColorCorrectionModel::GetAvailableUserSetsJson()
{
    return m_impl->GetAvailableUserSetsJson();
}

bool ColorCorrectionModel::StoreSettingsInUserSet(const QString& userSet, bool setAsDefault)
{
    return m_impl->StoreSettingsInUserSet(userSet, setAsDefault);
}

bool ColorCorrectionModel::SaveSettingsToFilePath(const QString& path)
{
    return m_impl->SaveSettingsToFilePath(path);
}

bool ColorCorrectionModel::SaveSummaryToFilePath(const QString& path)
{
    return m_impl->SaveSummaryToFilePath(path);
}

bool ColorCorrectionModel::AutoAdjustGray80PercentPatch()
{
    return m_impl->AutoAdjustGray80PercentPatch();
}

CTrapezoid ColorCorrectionModel::GetGridPosition()
{
    return m_impl->GetGridPosition();
}

void ColorCorrectionModel::SetGridPositon(const CTrapezoid& grid)
{
    m_impl->SetGridPositon(grid);
}

void ColorCorrectionModel::GetColorPatchPositions(QVector<CTrapezoid>& positions)
{
    m_impl->GetColorPatchPositions(positions);
}

void ColorCorrectionModel::GetColorPatchInitialValues(QVector<QColor>& values)
{
    m_impl->GetColorPatchInitialValues(values);
}

void ColorCorrectionModel::GetColorPatchTargetValues(QVector<QColor>& values)
{
    m_impl->GetColorPatchTargetValues(values);
}

int ColorCorrectionModel::GetColorPatchValues(QVector<QColor>& values, bool forceGrab)
{
    return m_impl->GetColorPatchValues(values, forceGrab);
}

void ColorCorrectionModel::GetColorPatchCurrentValues(QVector<QColor>& values)
{
    m_impl->GetColorPatchCurrentValues(values);
}

bool ColorCorrectionModel::GetCameraInitialImage(QImage& image)
{
    return m_impl->GetCameraInitialImage(image);
}

bool ColorCorrectionModel::ApplyInitialColorPatchValues()
{
    return m_impl->ApplyInitialColorPatchValues();
}

bool ColorCorrectionModel::ApplyInitialCameraImageAndPatchValues()
{
    return m_impl->ApplyInitialCameraImageAndPatchValues();
}

bool ColorCorrectionModel::ExecuteCalibrationAndApply()
{
    return m_impl->ExecuteCalibrationAndApply();
}

bool ColorCorrectionModel::GetExposureTimeRange(double& min, double& value, double& max)
{
    return m_impl->GetExposureTimeRange(min, value, max);
}

bool ColorCorrectionModel::SetExposureTimeValue(double exposureUs)
{
    return m_impl->SetExposureTimeValue(exposureUs);
}

double ColorCorrectionModel::GetExposureTimeValue()
{
    return m_impl->GetExposureTimeValue();
}

bool ColorCorrectionModel::GetGainRange(double& min, double& value, double& max)
{
    return m_impl->GetGainRange(min, value, max);
}

bool ColorCorrectionModel::SetGainValue(double gain)
{
    return m_impl->SetGainValue(gain);
}

double ColorCorrectionModel::GetGainValue()
{
    return m_impl->GetGainValue();
}

bool ColorCorrectionModel::ExecuteWhitebalance()
{
    return m_impl->ExecuteWhitebalance();
}

bool ColorCorrectionModel::RestoreDetectedExposureAndGain()
{
    return m_impl->RestoreDetectedExposureAndGain();
}

bool ColorCorrectionModel::StoreDetectedExposureAndGain()
{
    return m_impl->StoreDetectedExposureAndGain();
}

bool ColorCorrectionModel::Open(QSharedPointer<Plugin::CameraPool::ICameraInfo> cameraInfo)
{
    return m_impl->Open(cameraInfo);
}

bool ColorCorrectionModel::Close()
{
    return m_impl->Close();
}

bool ColorCorrectionModel::GrabImage(QImage& image, bool grabNew)
{
    return m_impl->GrabImage(image, grabNew);
}

bool ColorCorrectionModel::StopGrab()
{
    return m_impl->StopGrab();
}

bool ColorCorrectionModel::LoadSettings(const QFile& file)
{
    return m_impl->LoadSettings(file);
}

bool ColorCorrectionModel::LoadSettings(const QString& settings)
{
    return m_impl->LoadSettings(settings);
}

bool ColorCorrectionModel::SetNeutralSettings()
{
    return m_impl->SetNeutralSettings();
}

bool ColorCorrectionModel::CreateSettingsBackup(bool flag)
{
    return m_impl->CreateSettingsBackup(flag);
}

bool ColorCorrectionModel::RestoreSettingsBackup(bool flag)
{
    return m_impl->RestoreSettingsBackup(flag);
}

bool ColorCorrectionModel::ActivateMonoImage()
{
    return m_impl->ActivateMonoImage();
}

void ColorCorrectionModel::injectCameraControlService(QSharedPointer<Plugin::CameraPool::ICameraControlService> service)
{
    m_impl->injectCameraControlService(service);
}

void ColorCorrectionModel::injectCameraStatusService(QSharedPointer<Plugin::CameraPool::ICameraStatusService> service)
{
    m_impl->injectCameraStatusService(service);
}

bool ColorCorrectionModel::DisableAutoFunctions()
{
    return m_impl->DisableAutoFunctions();
}

bool ColorCorrectionModel::StopAutoAdjustGray80PercentPatch()
{
    return m_impl->StopAutoAdjustGray80PercentPatch();
}

void ColorCorrectionModel::SetPublishedChartEdition(PublishedChartEdition edition)
{
    m_impl->SetPublishedChartEdition(edition);
}
