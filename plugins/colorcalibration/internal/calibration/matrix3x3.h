#pragma once

#include "colorcalibrationstepv1.h"

/// 3x3 colour matrix with unit row sums (greys and the white balance pass
/// unchanged), fitted by least squares in RGB weighted by the target's Lab
/// sensitivity over the 18 chromatic patches.
class Matrix3x3 : public ColorCalibrationStepV1 {
public:
    explicit Matrix3x3(ColorChecker* checker);
    void Run() override;
    void Calculate();
    void Apply();
    /// Row i gives output channel i (R, G, B) from the input R, G, B.
    void GetMatrix(dlib::matrix<double, 3, 3>& m) const;

private:
    dlib::matrix<double, 3, 3> matrix;
};
