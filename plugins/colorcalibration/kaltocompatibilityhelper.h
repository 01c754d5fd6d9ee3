#pragma once

#include <QString>

namespace Plugin {
namespace ColorCalibration {

/// Which camera models the calibrator may be offered for, judged by model name alone.
class KaltoCompatibilityHelper {
public:
    /// Medical models carry "cMED" in their name; they need no further check.
    static bool isMedicalCamera(const QString& modelName);
    /// Custom models: the custom-model name pattern anywhere in the name, or
    /// "Emulation". Their colour pipeline version decides compatibility.
    static bool isCustomCamera(const QString& modelName);
};

}  // namespace ColorCalibration
}  // namespace Plugin
