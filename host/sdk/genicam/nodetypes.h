#pragma once

#include <cstdint>
#include <string>

namespace Kalto {

enum class ENodeType { Float, Integer, Enumeration, Boolean, String, Command };

/// Ordered from least to most access, so the effective mode of a node is the
/// minimum of its static mode and its state-dependent one.
enum class EAccessMode { NA = 0, RO = 1, RW = 2 };

/// One entry of an enumeration node.
struct SEnumEntry {
    std::string symbolic;     ///< name used in feature text and by setEnum
    std::string displayName;  ///< human-readable name; the symbolic when empty
    int64_t value = 0;        ///< integer value of the entry
    bool available = true;
};

const char* NodeTypeName(ENodeType type);

/// A float write as a camera takes it: rounded to the nearest step of
/// `increment` from `min` (0: continuous), then clipped into [min, max].
double ClipFloat(double value, double min, double max, double increment);
/// The same for integers; increments below 2 leave the value as it is.
int64_t ClipInteger(int64_t value, int64_t min, int64_t max, int64_t increment);

}  // namespace Kalto
