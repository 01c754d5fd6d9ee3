#include "genicam/nodetypes.h"

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

}  // namespace Kalto
