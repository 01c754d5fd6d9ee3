#include "genicam/nodetypes.h"

#include <algorithm>
#include <cmath>

namespace Kalto {

const char* NodeTypeName(ENodeType type)
{
    switch (type) {
    case ENodeType::Float: return "Float";
    case ENodeType::Integer: return "Integer";
    case ENodeType::Enumeration: return "Enumeration";
    case ENodeType::Boolean: return "Boolean";
    case ENodeType::String: return "String";
    case ENodeType::Command: return "Command";
    }
    return "Unknown";
}

double ClipFloat(double v, double min, double max, double inc)
{
    if (inc > 0.0 && std::isfinite(v)) {
        const double steps = std::round((v - min) / inc);
        v = min + steps * inc;
        // Rounding up may leave the range; the last step inside is the answer then.
        if (v > max)
            v = min + std::floor((max - min) / inc) * inc;
    }
    return std::min(std::max(v, min), max);
}

int64_t ClipInteger(int64_t v, int64_t min, int64_t max, int64_t inc)
{
    if (v <= min)
        return min;
    if (v >= max)
        return max;
    if (inc <= 1)
        return v;
    const __int128 offset = static_cast<__int128>(v) - min;
    __int128 steps = (offset + inc / 2) / inc;
    __int128 r = min + steps * inc;
    if (r > max)
        r -= inc;
    return static_cast<int64_t>(r);
}

}  // namespace Kalto
