#pragma once

#include "colorcalibrationstepv1.h"

/// Per-channel gains that make the light greys neutral; the channel with the
/// largest sum keeps gain 1, so every gain is at least 1.
class WhiteBalance : public ColorCalibrationStepV1 {
public:
    explicit WhiteBalance(ColorChecker* checker);
    void Run() override;
    void Calculate();
    void Apply();
    void GetWhiteBalance(double& r, double& g, double& b) const;

private:
    double gainR;
    double gainG;
    double gainB;
};
