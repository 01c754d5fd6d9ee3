#include "matrix3x3.h"

#include "chartlimits.h"
#include "colorchecker.h"

namespace {

using ChartLayout::kChromatic;
constexpr long kRows = 3 * kChromatic;

// vec(M) = A * p + b, where p holds the six off-diagonal entries
// (m01, m02, m10, m12, m20, m21) and each diagonal is 1 minus its row's others.
dlib::matrix<double, 9, 6> constraintMatrix()
{
    dlib::matrix<double, 9, 6> a;
    a = -1, -1, 0, 0, 0, 0,
         1,  0, 0, 0, 0, 0,
         0,  1, 0, 0, 0, 0,
         0,  0, 1, 0, 0, 0,
         0,  0, -1, -1, 0, 0,
         0,  0, 0, 1, 0, 0,
         0,  0, 0, 0, 1, 0,
         0,  0, 0, 0, 0, 1,
         0,  0, 0, 0, -1, -1;
    return a;
}

dlib::matrix<double, 9, 1> constraintOffset()
{
    dlib::matrix<double, 9, 1> b;
    b = 1, 0, 0, 0, 1, 0, 0, 0, 1;
    return b;
}

}  // namespace

Matrix3x3::Matrix3x3(ColorChecker* checker) : ColorCalibrationStepV1(checker) {}

void Matrix3x3::Run()
{
    Calculate();
    Apply();
}

void Matrix3x3::Calculate()
{
    const dlib::matrix<double, ChartLayout::kPatches, 3> target = m_checker->GetTargetRgb();
    dlib::matrix<double, kRows, 1> t;
    dlib::matrix<double, kRows, 9> x = dlib::zeros_matrix<double>(kRows, 9);
    for (long k = 0; k < kChromatic; ++k)
        for (long c = 0; c < 3; ++c) {
            t(3 * k + c) = target(k, c);
            for (long j = 0; j < 3; ++j)
                x(3 * k + c, 3 * c + j) = m_input(k, j);
        }

    const dlib::matrix<double, kRows, kRows> jac =
        dlib::subm(m_checker->GetTargetFullJacobian(), 0, 0, kRows, kRows);
    const dlib::matrix<double, 9, 6> a = constraintMatrix();
    const dlib::matrix<double, 9, 1> b = constraintOffset();

    const dlib::matrix<double, kRows, 6> k = jac * (x * a);
    const dlib::matrix<double, kRows, 1> y = jac * (t - x * b);
    const dlib::matrix<double, 6, 1> p = dlib::pinv(k) * y;

    const dlib::matrix<double, 9, 1> m = a * p + b;
    for (long r = 0; r < 3; ++r)
        for (long c = 0; c < 3; ++c)
            matrix(r, c) = m(3 * r + c);
}

void Matrix3x3::Apply()
{
    for (long k = 0; k < ChartLayout::kPatches; ++k)
        for (long i = 0; i < 3; ++i)
            m_output(k, i) = limitTo255(matrix(i, 0) * m_input(k, 0) + matrix(i, 1) * m_input(k, 1) +
                                        matrix(i, 2) * m_input(k, 2));
}

void Matrix3x3::GetMatrix(dlib::matrix<double, 3, 3>& m) const
{
    if (&m != &matrix)
        m = matrix;
}
