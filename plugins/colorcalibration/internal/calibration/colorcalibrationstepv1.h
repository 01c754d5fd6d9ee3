#pragma once

#include "chartlayout.h"
#include "colorcalibrationstep.h"

class ColorChecker;
class ColorSpace;

/// Common base of the engine's steps: error against the reference chart and
/// the clipping rule of the multiplying steps.
class ColorCalibrationStepV1 : public ColorCalibrationStep<ChartLayout::kPatches> {
public:
    /// The checker is borrowed and must outlive the step.
    explicit ColorCalibrationStepV1(ColorChecker* checker);
    ~ColorCalibrationStepV1() override;
    ColorCalibrationStepV1(const ColorCalibrationStepV1&) = delete;
    ColorCalibrationStepV1& operator=(const ColorCalibrationStepV1&) = delete;

    /// CIEDE2000 (or its chroma-only variant) of patch 0..23 against the target.
    double GetError(int patch, bool chromaOnly, bool afterStep) override;
    /// Limits the output chart to 0..255; NaN becomes 255 so that a gain that
    /// divided by zero shows as saturation rather than as black.
    void ClipResult();

protected:
    ColorChecker* m_checker;
    ColorSpace* m_colorSpace;
};
