#include "kaltocompatibilityhelper.h"

#include <QRegularExpression>

namespace Plugin {
namespace ColorCalibration {

bool KaltoCompatibilityHelper::isMedicalCamera(const QString& modelName)
{
    return modelName.contains(QLatin1String("cMED"));
}

bool KaltoCompatibilityHelper::isCustomCamera(const QString& modelName)
{
    static const QRegularExpression customModel(QStringLiteral(
        "([a-z0-9]){2}([AL]){1}([0-9]){1,4}([-]){1}([0-9])+([cgu]){1}([c]){1}([A-Z])+"));
    return customModel.match(modelName).hasMatch() || modelName.contains(QLatin1String("Emulation"));
}

}  // namespace ColorCalibration
}  // namespace Plugin
