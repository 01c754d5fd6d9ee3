#include "whitebalance.h"

#include "colorchecker.h"

#include <algorithm>

WhiteBalance::WhiteBalance(ColorChecker* checker) : ColorCalibrationStepV1(checker) {}

void WhiteBalance::Run()
{
    Calculate();
    Apply();
}

void WhiteBalance::Calculate()
{
    const long k = m_checker->GetIndex80percent();
    double sr = 0.0, sg = 0.0, sb = 0.0;
    for (long row = k; row < k + 3; ++row) {
        // A row with any channel at 250 or above may be clipped: it says nothing about the cast.
        if (dlib::max(dlib::rowm(m_input, row)) >= 250.0)
            continue;
        sr += m_input(row, 0);
        sg += m_input(row, 1);
        sb += m_input(row, 2);
    }
    // No guard against zero sums: the resulting NaN/inf gains end as saturated
    // values in ClipResult, which is how a useless measurement shows.
    const double m = std::max({sr, sg, sb});
    gainR = m / sr;
    gainG = m / sg;
    gainB = m / sb;
}

void WhiteBalance::Apply()
{
    dlib::matrix<double, 3, 3> g = dlib::zeros_matrix<double>(3, 3);
    g(0, 0) = gainR;
    g(1, 1) = gainG;
    g(2, 2) = gainB;
    m_output = m_input * g;
    ClipResult();
}

void WhiteBalance::GetWhiteBalance(double& r, double& g, double& b) const
{
    r = gainR;
    g = gainG;
    b = gainB;
}
