#include "colorspace.h"

#include <cfloat>
#include <cmath>

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double k25Pow7 = 6103515625.0;

// Both transfer curves share this clamp: NaN and non-positive values end at 0.
double clamp255(double r)
{
    if (r > 0.0)
        return r < 255.0 ? r : 255.0;
    return 0.0;
}

template <class Curve>
dlib::matrix<double, 1, 3> perChannel(const dlib::matrix<double, 1, 3>& rgb, Curve curve)
{
    dlib::matrix<double, 1, 3> out;
    for (long i = 0; i < 3; ++i)
        out(i) = curve(rgb(i));
    return out;
}

}  // namespace

double ColorSpace::sRGB_to_RGB(double x) const
{
    const double v = x / 255.0;
    const double r = v <= 0.04045 ? v / 12.92 * 255.0 : std::pow((v + 0.055) / 1.055, 2.4) * 255.0;
    return clamp255(r);
}

dlib::matrix<double, 1, 3> ColorSpace::sRGB_to_RGB(const dlib::matrix<double, 1, 3>& rgb) const
{
    return perChannel(rgb, [this](double x) { return sRGB_to_RGB(x); });
}

double ColorSpace::RGB_to_sRGB(double x) const
{
    const double v = x / 255.0;
    const double r = v <= 0.0031308049535603713
                         ? v * 12.92 * 255.0
                         : (1.055 * std::pow(v, 0.4166666666666667) - 0.055) * 255.0;
    return clamp255(r);
}

dlib::matrix<double, 1, 3> ColorSpace::RGB_to_sRGB(const dlib::matrix<double, 1, 3>& rgb) const
{
    return perChannel(rgb, [this](double x) { return RGB_to_sRGB(x); });
}

pixel_xyz ColorSpace::RGB_To_XYZ(const dlib::matrix<double, 1, 3>& rgb,
                                 const dlib::matrix<double, 3, 3>& m) const
{
    const double r = rgb(0) / 255.0, g = rgb(1) / 255.0, b = rgb(2) / 255.0;
    return {100.0 * (m(0, 0) * r + m(0, 1) * g + m(0, 2) * b),
            100.0 * (m(1, 0) * r + m(1, 1) * g + m(1, 2) * b),
            100.0 * (m(2, 0) * r + m(2, 1) * g + m(2, 2) * b)};
}

pixel_lab ColorSpace::XYZ_To_Lab(const pixel_xyz& xyz, const dlib::matrix<double, 1, 3>& w) const
{
    // The rounded CIE constants are deliberate: the published error figures use them.
    auto f = [](double t) { return t > 0.008856 ? std::cbrt(t) : (903.3 * t + 16.0) / 116.0; };
    const double fx = f(xyz.X / (100.0 * w(0)));
    const double fy = f(xyz.Y / (100.0 * w(1)));
    const double fz = f(xyz.Z / (100.0 * w(2)));
    return {116.0 * fy - 16.0, 500.0 * (fx - fy), 200.0 * (fy - fz)};
}

double ColorSpace::DeltaE2000(const pixel_lab& s1, const pixel_lab& s2, bool ignoreLightness) const
{
    const double C1 = std::sqrt(s1.a * s1.a + s1.b * s1.b);
    const double C2 = std::sqrt(s2.a * s2.a + s2.b * s2.b);
    const double Cbar = (C1 + C2) / 2.0;
    const double Cbar7 = std::pow(Cbar, 7.0);
    const double G = 0.5 * (1.0 - std::sqrt(Cbar7 / (Cbar7 + k25Pow7)));

    const double a1p = s1.a * (1.0 + G), a2p = s2.a * (1.0 + G);
    const double C1p = std::sqrt(a1p * a1p + s1.b * s1.b);
    const double C2p = std::sqrt(a2p * a2p + s2.b * s2.b);

    auto hue = [](double ap, double b) {
        if (std::fabs(ap) + std::fabs(b) < DBL_EPSILON)
            return 0.0;
        const double h = std::atan2(b, ap);
        return h < 0.0 ? h + 2.0 * kPi : h;
    };
    const double h1p = hue(a1p, s1.b), h2p = hue(a2p, s2.b);

    const double dLp = s2.L - s1.L;
    const double dCp = C2p - C1p;
    const bool achromatic = C1p * C2p < DBL_EPSILON;

    double dhp = 0.0;
    if (!achromatic) {
        dhp = h2p - h1p;
        if (dhp > kPi)
            dhp -= 2.0 * kPi;
        if (dhp < -kPi)
            dhp += 2.0 * kPi;
    }
    const double dHp = 2.0 * std::sqrt(C1p * C2p) * std::sin(dhp / 2.0);

    const double Lbarp = (s1.L + s2.L) / 2.0;
    const double Cbarp = (C1p + C2p) / 2.0;

    double hbarp;
    if (achromatic) {
        hbarp = h1p + h2p;
    } else {
        hbarp = (h1p + h2p) / 2.0;
        if (std::fabs(h1p - h2p) > kPi)
            hbarp -= kPi;
        if (hbarp < 0.0)
            hbarp += 2.0 * kPi;
    }

    const double T = 1.0 - 0.17 * std::cos(hbarp - kPi / 6.0) + 0.24 * std::cos(2.0 * hbarp) +
                     0.32 * std::cos(3.0 * hbarp + kPi / 30.0) -
                     0.20 * std::cos(4.0 * hbarp - 1.0995574287564276);
    const double e = (hbarp * 57.29577951308232 - 275.0) / 25.0;
    const double dTheta = kPi / 6.0 * std::exp(-e * e);
    const double Cbarp7 = std::pow(Cbarp, 7.0);
    const double RC = 2.0 * std::sqrt(Cbarp7 / (Cbarp7 + k25Pow7));
    const double RT = -std::sin(2.0 * dTheta) * RC;

    const double Lm = (Lbarp - 50.0) * (Lbarp - 50.0);
    const double SL = ignoreLightness ? DBL_MAX : 1.0 + 0.015 * Lm / std::sqrt(20.0 + Lm);
    const double SC = 1.0 + 0.045 * Cbarp;
    const double SH = 1.0 + 0.015 * Cbarp * T;

    const double tL = dLp / SL, tC = dCp / SC, tH = dHp / SH;
    const double dE = std::sqrt(tL * tL + tC * tC + tH * tH + RT * tC * tH);
    // NaN and infinities in a sample carry through every term to here.
    return std::isfinite(dE) ? dE : -1.0;
}

double ColorSpace::DeltaC2000(const pixel_lab& first, const pixel_lab& second) const
{
    return DeltaE2000(first, second, true);
}

dlib::matrix<double, 3, 3> ColorSpace::GetMatrixRGB2XYZatD65() const
{
    dlib::matrix<double, 3, 3> m;
    m = 0.4124564, 0.3575761, 0.1804375,
        0.2126729, 0.7151522, 0.072175,
        0.0193339, 0.119192, 0.9503041;
    return m;
}

dlib::matrix<double, 1, 3> ColorSpace::GetWhitePointAtD65() const
{
    dlib::matrix<double, 1, 3> w;
    w = 0.95047, 1.0, 1.08883;
    return w;
}
