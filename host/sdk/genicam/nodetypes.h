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

}  // namespace Kalto
