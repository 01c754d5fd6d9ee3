#include "colorcalibrationstepv1.h"

#include "colorchecker.h"
#include "colorspace.h"

ColorCalibrationStepV1::ColorCalibrationStepV1(ColorChecker* checker)
    : m_checker(checker), m_colorSpace(new ColorSpace)
{
}

ColorCalibrationStepV1::~ColorCalibrationStepV1()
{
    delete m_colorSpace;
}

double ColorCalibrationStepV1::GetError(int patch, bool chromaOnly, bool afterStep)
{
    const Chart& chart = afterStep ? m_output : m_input;
    const dlib::matrix<double, 1, 3> measured = dlib::rowm(chart, patch);
    const dlib::matrix<double, 1, 3> target = dlib::rowm(m_checker->GetTargetRgb(), patch);

    const dlib::matrix<double, 3, 3> toXyz = m_colorSpace->GetMatrixRGB2XYZatD65();
    const dlib::matrix<double, 1, 3> white = m_colorSpace->GetWhitePointAtD65();
    const pixel_lab m = m_colorSpace->XYZ_To_Lab(m_colorSpace->RGB_To_XYZ(measured, toXyz), white);
    const pixel_lab t = m_colorSpace->XYZ_To_Lab(m_colorSpace->RGB_To_XYZ(target, toXyz), white);
    return chromaOnly ? m_colorSpace->DeltaC2000(m, t) : m_colorSpace->DeltaE2000(m, t, false);
}

void ColorCalibrationStepV1::ClipResult()
{
    for (long r = 0; r < m_output.nr(); ++r)
        for (long c = 0; c < 3; ++c) {
            double v = m_output(r, c);
            v = v < 255.0 ? v : 255.0;  // NaN takes the 255 branch
            m_output(r, c) = v > 0.0 ? v : 0.0;
        }
}
