#include "camerapool/camerainfo.h"

namespace Plugin {
namespace CameraPool {

CameraInfo::CameraInfo(const Kalto::SDeviceInfo& info, const QVersionNumber& sfncVersion)
    : m_info(info), m_sfnc(sfncVersion)
{
}

QString CameraInfo::deviceId() const { return QString::fromStdString(m_info.id); }
QString CameraInfo::modelName() const { return QString::fromStdString(m_info.modelName); }
QString CameraInfo::serialNumber() const { return QString::fromStdString(m_info.serialNumber); }
QString CameraInfo::vendorName() const { return QString::fromStdString(m_info.vendorName); }
QString CameraInfo::transportLayer() const { return QString::fromStdString(m_info.transportLayer); }

QString CameraInfo::displayText() const
{
    const QString name = m_info.userDefinedName.empty()
                             ? modelName()
                             : QString::fromStdString(m_info.userDefinedName);
    return serialNumber().isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, serialNumber());
}

QString CameraInfo::identifyingText() const
{
    return QStringLiteral("%1 %2 (%3) [%4]")
        .arg(vendorName(), modelName(), serialNumber(), transportLayer())
        .trimmed();
}

QVersionNumber CameraInfo::sfncVersion() const
{
    QMutexLocker lock(&m_mutex);
    return m_sfnc;
}

QString CameraInfo::errorDescription() const
{
    QMutexLocker lock(&m_mutex);
    return m_error;
}

void CameraInfo::setSfncVersion(const QVersionNumber& version)
{
    QMutexLocker lock(&m_mutex);
    m_sfnc = version;
}

void CameraInfo::setErrorDescription(const QString& text)
{
    QMutexLocker lock(&m_mutex);
    m_error = text;
}

}  // namespace CameraPool
}  // namespace Plugin
