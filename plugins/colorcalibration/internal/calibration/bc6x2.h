#pragma once

#include "colorcalibrationstepv1.h"

/// Hue and saturation adjustment in six hue sectors, as the camera applies it.
/// Parameters: hues of red, yellow, green, cyan, blue, magenta, then their
/// saturations; neutral is hue 0 and saturation 1.
class Bc6x2 : public ColorCalibrationStepV1 {
public:
    explicit Bc6x2(ColorChecker* checker);
    void Run() override;
    /// Throws std::runtime_error when a chromatic patch is exactly grey.
    void Calculate();
    void Apply();
    void GetBc6x2(dlib::matrix<double, 12, 1>& p) const;

    /// Sector 0..5 by the order of the channels (see the table in the source),
    /// -1 for a grey colour.
    int HueToSector6(double& r, double& g, double& b);
    /// The camera's adjustment of one colour; greys pass unchanged.
    dlib::matrix<double, 1, 3> Bc6x2Operator(dlib::matrix<double, 1, 3> rgb,
                                             dlib::matrix<double, 12, 1> P);

private:
    dlib::matrix<double, 12, 1> params;
};
