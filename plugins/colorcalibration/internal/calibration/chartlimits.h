#pragma once

/// 0..255 limit of the non-multiplying steps: above 255 is 255, below 0 is 0.
inline double limitTo255(double v)
{
    if (v > 255.0)
        return 255.0;
    if (v < 0.0)
        return 0.0;
    return v;
}
