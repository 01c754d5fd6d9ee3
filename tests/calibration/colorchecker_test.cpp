#include "colorchecker.h"

#include <gtest/gtest.h>

TEST(ColorChecker, ReferencePatchesLevelsAndJacobian)
{
    const ColorChecker cc;
    const auto t = cc.GetTargetRgb();
    const struct {
        long patch;
        double rgb[3];
    } published[] = {{18, {232.76, 233.26, 227.91}}, {19, {147.89, 150.94, 151.31}}};
    for (const auto& p : published)
        for (long c = 0; c < 3; ++c)
            EXPECT_EQ(t(p.patch, c), p.rgb[c]) << p.patch << "," << c;
    EXPECT_EQ(cc.GetIndex80percent(), 19u);
    EXPECT_EQ(cc.GetBrightness80percent(false), 150.0);
    EXPECT_EQ(cc.GetBrightness80percent(true), 200.0);
    // Greys really are the grey ramp: each darker than the one before.
    for (long k = 19; k < 24; ++k)
        EXPECT_LT(t(k, 1), t(k - 1, 1));

    // The Jacobian is block diagonal: one full 3 x 3 block per patch.
    const auto j = cc.GetTargetFullJacobian();
    int nonZeroInBlocks = 0;
    for (long r = 0; r < 72; ++r)
        for (long c = 0; c < 72; ++c) {
            if (r / 3 != c / 3)
                EXPECT_EQ(j(r, c), 0.0) << r << "," << c;
            else
                nonZeroInBlocks += j(r, c) != 0.0;
        }
    EXPECT_EQ(nonZeroInBlocks, 24 * 9);
    EXPECT_EQ(j(0, 0), 0.15577);
    EXPECT_EQ(j(71, 71), -1.6723);
}
