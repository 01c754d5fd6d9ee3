#pragma once

#include "colorcalibrationstepv1.h"

/// One gain on all channels that brings the reference grey patch's brightest
/// channel to the target level.
class DigitalGain : public ColorCalibrationStepV1 {
public:
    explicit DigitalGain(ColorChecker* checker);
    void Run() override;
    void Calculate();
    void Apply();
    void GetDigitalGain(double& gain) const;

private:
    double gain;
};
