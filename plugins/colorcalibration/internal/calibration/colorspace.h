#pragma once

#include <dlib/matrix.h>

/// CIE XYZ on the 0..100 scale (Y = 100 for the white point).
struct pixel_xyz {
    double X;
    double Y;
    double Z;
};

/// CIELAB, L in 0..100.
struct pixel_lab {
    double L;
    double a;
    double b;
};

/// Colour-science toolbox of the engine. RGB values are doubles on a 0..255
/// scale; "linear" means light-linear, "sRGB" the values after the sRGB curve.
class ColorSpace {
public:
    /// sRGB-encoded 0..255 to linear 0..255; NaN and non-positive (-inf too) give 0,
    /// above 255 (+inf too) gives 255: a camera value out of range is clipped, never refused.
    double sRGB_to_RGB(double x) const;
    dlib::matrix<double, 1, 3> sRGB_to_RGB(const dlib::matrix<double, 1, 3>& rgb) const;
    /// Linear 0..255 to sRGB-encoded 0..255, clamped as the decoder.
    double RGB_to_sRGB(double x) const;
    dlib::matrix<double, 1, 3> RGB_to_sRGB(const dlib::matrix<double, 1, 3>& rgb) const;

    /// Linear RGB (0..255) to XYZ (0..100) through `rgbToXyz`; no clamping.
    pixel_xyz RGB_To_XYZ(const dlib::matrix<double, 1, 3>& rgb,
                         const dlib::matrix<double, 3, 3>& rgbToXyz) const;
    /// `whitePoint` is (Xw, Yw, Zw) with Yw = 1.
    pixel_lab XYZ_To_Lab(const pixel_xyz& xyz, const dlib::matrix<double, 1, 3>& whitePoint) const;

    /// CIEDE2000 with kL = kC = kH = 1; `ignoreLightness` drops the lightness term.
    /// -1.0 when the difference is not a number: a sample holding NaN or an
    /// infinity, or one so far out of range that the formula overflows.
    double DeltaE2000(const pixel_lab& first, const pixel_lab& second, bool ignoreLightness) const;
    /// Chroma-and-hue-only CIEDE2000: DeltaE2000(first, second, true).
    double DeltaC2000(const pixel_lab& first, const pixel_lab& second) const;

    dlib::matrix<double, 3, 3> GetMatrixRGB2XYZatD65() const;
    dlib::matrix<double, 1, 3> GetWhitePointAtD65() const;
};
