#pragma once

#include "colorcalibrationstepv1.h"

/// The measured chart as it stands (times a scale), limited to 0..255.
class Original : public ColorCalibrationStepV1 {
public:
    Original(ColorChecker* checker, double scale);
    void Run() override;

private:
    double scale;
};
