#pragma once

#include <QString>

/// Keys of the calibration results document: the two settings branches that
/// CalibrationResult parses the camera's settings text into, and the patch
/// colours the session adds. Every writer and reader takes them from here.
namespace ResultsDocumentKeys {

// Top level.
constexpr char kOriginal[] = "Original";      ///< settings branch before the calibration
constexpr char kCalibrated[] = "Calibrated";  ///< settings branch the camera holds now
constexpr char kColors[] = "Colors";          ///< patch objects, display precision
constexpr char kPreciseColors[] = "PreciseColors";  ///< patch objects, full precision

// A settings branch.
constexpr char kBlackLevel[] = "BlackLevel";
constexpr char kGamma[] = "Gamma";
constexpr char kBc6x2[] = "BC6x2";  ///< holds kHue and kSaturation, each by kSixColours
constexpr char kHsbc[] = "HSBC";    ///< holds kHue, kSaturation, kBrightness, kContrast
constexpr char kHue[] = "Hue";
constexpr char kSaturation[] = "Saturation";
constexpr char kBrightness[] = "Brightness";
constexpr char kContrast[] = "Contrast";
constexpr char kMatrix[] = "Matrix";              ///< holds matrixGainKey(row, column)
constexpr char kWhiteBalance[] = "WhiteBalance";  ///< holds kBalanceChannels
constexpr const char* kBalanceChannels[3] = {"Red", "Green", "Blue"};
/// The hue sectors in the engine's order (its BC6x2 values: hues, then saturations).
constexpr const char* kSixColours[6] = {"Red", "Yellow", "Green", "Cyan", "Blue", "Magenta"};

// A patch object.
constexpr char kInitial[] = "Initial";
constexpr char kTarget[] = "Target";
constexpr char kCurrent[] = "Current";
constexpr char kDeltaE[] = "DeltaE";
constexpr char kDeltaC[] = "DeltaC";

/// "Patch01" .. "Patch24" for patch 0..23: two digits, so the keys sort in chart order.
inline QString patchKey(int patch)
{
    return QString("Patch%1").arg(patch + 1, 2, 10, QChar('0'));
}

/// "Gain00" .. "Gain22"; the row is the output channel.
inline QString matrixGainKey(int row, int column)
{
    return QString("Gain%1%2").arg(row).arg(column);
}

}  // namespace ResultsDocumentKeys
