#include "chartfit.h"

#include "coloradjustment.h"
#include "colorchecker.h"
#include "colorspace.h"

#include <algorithm>

namespace {

double clip255(double v)
{
    return std::min(255.0, std::max(0.0, v));
}

using Chart = ChartFit::Chart;
using Target = decltype(ColorChecker().GetTargetRgb());
using Jacobian = decltype(ColorChecker().GetTargetFullJacobian());

void clip(Chart& c)
{
    for (long k = 0; k < 24; ++k)
        for (long j = 0; j < 3; ++j)
            c(k, j) = clip255(c(k, j));
}

// Digital gain brings patch 19 to 150; white balance evens greys 19..21 that
// are not clipped.
void fitGainAndBalance(ChartFit& f, Chart& c)
{
    const double m19 = dlib::max(dlib::rowm(c, 19));
    f.digitalGain = m19 > 0 ? 150.0 / m19 : 1.0;
    c = dlib::matrix_cast<double>(c * f.digitalGain);
    clip(c);
    std::array<double, 3> sums{{0, 0, 0}};
    for (long k = 19; k <= 21; ++k)
        if (dlib::max(dlib::rowm(c, k)) < 250.0)
            for (long j = 0; j < 3; ++j)
                sums[j] += c(k, j);
    const double mx = std::max({sums[0], sums[1], sums[2]});
    for (long j = 0; j < 3; ++j)
        f.whiteBalance[j] = mx / sums[j];
    for (long k = 0; k < 24; ++k)
        for (long j = 0; j < 3; ++j)
            c(k, j) = clip255(c(k, j) * f.whiteBalance[j]);
}

// Matrix: off-diagonals p, diagonal 1 - row sum of the others.
void fitMatrix(ChartFit& f, Chart& c, const Target& target, const Jacobian& jac)
{
    dlib::matrix<double, 54, 6> XA;
    dlib::matrix<double, 54, 1> t, Xb;
    XA = 0;
    for (long k = 0; k < 18; ++k) {
        const double R = c(k, 0), G = c(k, 1), B = c(k, 2);
        // row r: out_r = in_r + p_a (in_a - in_r) + p_b (in_b - in_r)
        XA(3 * k, 0) = G - R; XA(3 * k, 1) = B - R;
        XA(3 * k + 1, 2) = R - G; XA(3 * k + 1, 3) = B - G;
        XA(3 * k + 2, 4) = R - B; XA(3 * k + 2, 5) = G - B;
        for (long j = 0; j < 3; ++j) {
            t(3 * k + j) = target(k, j);
            Xb(3 * k + j) = c(k, j);
        }
    }
    const dlib::matrix<double, 54, 54> J = dlib::subm(jac, 0, 0, 54, 54);
    const dlib::matrix<double, 54, 6> K = J * XA;
    const dlib::matrix<double, 54, 1> y = J * (t - Xb);
    const dlib::matrix<double, 6, 1> p = dlib::pinv(K) * y;
    f.matrix = 1 - p(0) - p(1), p(0), p(1),
               p(2), 1 - p(2) - p(3), p(3),
               p(4), p(5), 1 - p(4) - p(5);
    for (long k = 0; k < 24; ++k) {
        const dlib::matrix<double, 3, 1> in = dlib::trans(dlib::rowm(c, k));
        const dlib::matrix<double, 3, 1> out = f.matrix * in;
        for (long j = 0; j < 3; ++j)
            c(k, j) = clip255(out(j));
    }
}

// Hue/saturation: the operator is linear in P once each patch's channel
// order is known, so its Jacobian columns come from unit parameter steps.
void fitColourAdjustment(ChartFit& f, Chart& c, const Target& target, const Jacobian& jac)
{
    dlib::matrix<double, 54, 12> D;
    dlib::matrix<double, 54, 1> f0, t;
    for (long k = 0; k < 18; ++k) {
        double zero[12] = {0};
        double base[3] = {c(k, 0), c(k, 1), c(k, 2)};
        ColorAdjustment::apply<double>(base, zero);
        for (long i = 0; i < 12; ++i) {
            double unit[12] = {0};
            unit[i] = 1.0;
            double v[3] = {c(k, 0), c(k, 1), c(k, 2)};
            ColorAdjustment::apply<double>(v, unit);
            for (long j = 0; j < 3; ++j)
                D(3 * k + j, i) = v[j] - base[j];
        }
        for (long j = 0; j < 3; ++j) {
            f0(3 * k + j) = base[j];
            t(3 * k + j) = target(k, j);
        }
    }
    const dlib::matrix<double, 54, 54> J = dlib::subm(jac, 0, 0, 54, 54);
    const dlib::matrix<double, 12, 1> P = dlib::pinv(J * D) * (J * (t - f0));
    for (long i = 0; i < 12; ++i)
        f.bc6x2[i] = P(i);
    for (long k = 0; k < 24; ++k) {
        double v[3] = {c(k, 0), c(k, 1), c(k, 2)};
        ColorAdjustment::apply<double>(v, f.bc6x2.data());
        for (long j = 0; j < 3; ++j)
            c(k, j) = clip255(v[j]);
    }
}

}  // namespace

double ChartFit::deltaE(const Chart& chart, long k)
{
    const ColorSpace cs;
    const auto target = ColorChecker().GetTargetRgb();
    const auto m = cs.GetMatrixRGB2XYZatD65();
    const auto w = cs.GetWhitePointAtD65();
    const pixel_lab a = cs.XYZ_To_Lab(cs.RGB_To_XYZ(dlib::rowm(chart, k), m), w);
    const pixel_lab b = cs.XYZ_To_Lab(cs.RGB_To_XYZ(dlib::rowm(target, k), m), w);
    return cs.DeltaE2000(a, b, false);
}

double ChartFit::meanDeltaE(const Chart& chart)
{
    double sum = 0.0;
    for (long k = 0; k < 24; ++k)
        sum += deltaE(chart, k);
    return sum / 24.0;
}

ChartFit ChartFit::fit(const Chart& measured)
{
    ChartFit f;
    const ColorChecker checker;
    const auto target = checker.GetTargetRgb();
    const auto jac = checker.GetTargetFullJacobian();
    Chart c = measured;
    fitGainAndBalance(f, c);
    fitMatrix(f, c, target, jac);
    f.afterMatrix = c;
    fitColourAdjustment(f, c, target, jac);
    f.corrected = c;
    return f;
}
