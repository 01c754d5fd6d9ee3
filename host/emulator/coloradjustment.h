#pragma once

#include <array>

/// The camera's six-colour hue/saturation adjustment. P[0..5] are the hue
/// values of red, yellow, green, cyan, blue and magenta, P[6..11] their
/// saturations; hue 0 and saturation 1 leave a colour unchanged, and a grey
/// is never changed. Works on linear values of any scale.
class ColorAdjustment {
public:
    using Params = std::array<double, 12>;
    static Params neutral();

    /// Adjusts one colour in place.
    template <typename T>
    static void apply(T rgb[3], const T p[12]);
    static void apply(double rgb[3], const Params& p) { apply<double>(rgb, p.data()); }
};

template <typename T>
void ColorAdjustment::apply(T rgb[3], const T p[12])
{
    const T r = rgb[0], g = rgb[1], b = rgb[2];
    // Smallest channel first (a grey counts as blue smallest), then the larger
    // of the other two; i1 is the primary colour of the largest channel, i2 the
    // secondary colour opposite the smallest one.
    int lo, hi, mid, i1, i2;
    T sigma;
    if (b >= r && g > r) {
        lo = 0;
        i2 = 3;
        if (b >= g) { hi = 2; mid = 1; i1 = 4; sigma = T(-1); }
        else { hi = 1; mid = 2; i1 = 2; sigma = T(1); }
    } else if (r >= g && b > g) {
        lo = 1;
        i2 = 5;
        if (r >= b) { hi = 0; mid = 2; i1 = 0; sigma = T(-1); }
        else { hi = 2; mid = 0; i1 = 4; sigma = T(1); }
    } else {
        lo = 2;
        i2 = 1;
        if (g >= r) { hi = 1; mid = 0; i1 = 2; sigma = T(-1); }
        else { hi = 0; mid = 1; i1 = 0; sigma = T(1); }
    }
    const T mx = rgb[hi], md = rgb[mid], mn = rgb[lo];
    const T h1 = sigma * p[i1], s1 = p[i1 + 6], h2 = sigma * p[i2], s2 = p[i2 + 6];
    const T d1 = mx - md, d2 = md - mn;
    rgb[hi] = mx + h2 * d2;
    rgb[mid] = mx - (h1 + s1) * d1 - h2 * d2;
    rgb[lo] = mx - (s1 - h1) * d1 - s2 * d2;
}
