#include "coloradjustment.h"

#include <gtest/gtest.h>

namespace {

struct AdjustCase {
    const char* name;
    std::array<double, 3> in;
    ColorAdjustment::Params p;
    std::array<double, 3> expected;
};

// Expected values worked out by hand from largest/middle/smallest, d1 = mx - md,
// d2 = md - mn and the sector's sign.
const AdjustCase kCases[] = {
    {"redYellowSector", {200, 100, 50}, {0.1, 0.2, 0, 0, 0, 0, 0.5, 2.0, 1, 1, 1, 1}, {210, 130, 60}},
    {"greenYellowSectorNegativeSign", {100, 200, 50}, {0, 0.2, 0.1, 0, 0, 0, 1, 2.0, 0.5, 1, 1, 1}, {170, 190, 40}},
    {"blueCyanSector", {50, 100, 200}, {0, 0, 0, -0.1, 0.3, 0, 1, 1, 1, 0.8, 1.2, 1}, {10, 105, 205}},
    {"greyUnchanged", {80, 80, 80}, {0.3, -0.2, 0.1, 0.4, -0.5, 0.2, 0.1, 2, 0.3, 1.5, 0, 2}, {80, 80, 80}},
    {"neutralIsIdentity", {12, 250, 99}, {0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1}, {12, 250, 99}},
};

void PrintTo(const AdjustCase& c, std::ostream* os)
{
    *os << c.name;
}

class ColorAdjustmentCase : public ::testing::TestWithParam<AdjustCase> {};

// The float version, which the pipeline runs, agrees with the double one.
TEST_P(ColorAdjustmentCase, MatchesHandComputedValuesInDoubleAndFloat)
{
    const AdjustCase& c = GetParam();
    double v[3] = {c.in[0], c.in[1], c.in[2]};
    float f[3] = {float(c.in[0]), float(c.in[1]), float(c.in[2])}, pf[12];
    for (int i = 0; i < 12; ++i)
        pf[i] = static_cast<float>(c.p[i]);
    ColorAdjustment::apply(v, c.p);
    ColorAdjustment::apply<float>(f, pf);
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(v[i], c.expected[i], 1e-9) << "channel " << i;
        EXPECT_NEAR(f[i], c.expected[i], 1e-3) << "channel " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, ColorAdjustmentCase, ::testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(ColorAdjustment, IsHomogeneousOfDegreeOne)
{
    const ColorAdjustment::Params p{{0.1, -0.2, 0.05, 0.3, -0.1, 0.2, 0.9, 1.1, 1.2, 0.8, 1.0, 1.3}};
    double a[3] = {40, 90, 20}, b[3] = {80, 180, 40};
    ColorAdjustment::apply(a, p);
    ColorAdjustment::apply(b, p);
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(2 * a[i], b[i], 1e-9);
}

}  // namespace
