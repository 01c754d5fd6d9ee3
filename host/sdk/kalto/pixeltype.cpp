#include "kalto/pixeltype.h"

#include <cstring>

namespace Kalto {

namespace {
struct TypeInfo {
    EPixelType type;
    const char* name;
    uint32_t depth;
};
constexpr TypeInfo kTypes[] = {
    {PixelType_Mono8, "Mono8", 8},           {PixelType_Mono12, "Mono12", 12},
    {PixelType_Mono16, "Mono16", 16},        {PixelType_BayerRG8, "BayerRG8", 8},
    {PixelType_BayerRG12, "BayerRG12", 12},  {PixelType_RGB8packed, "RGB8", 8},
    {PixelType_BGR8packed, "BGR8", 8},       {PixelType_BGRA8packed, "BGRa8", 8},
    {PixelType_RGB16packed, "RGB16", 16},
};

const TypeInfo* find(EPixelType type)
{
    for (const TypeInfo& t : kTypes)
        if (t.type == type)
            return &t;
    return nullptr;
}
}  // namespace

uint32_t BitPerPixel(EPixelType type)
{
    return find(type) ? (static_cast<uint32_t>(type) >> 16) & 0xff : 0;
}

uint32_t BitDepth(EPixelType type)
{
    const TypeInfo* t = find(type);
    return t ? t->depth : 0;
}

bool IsMono(EPixelType type)
{
    return type == PixelType_Mono8 || type == PixelType_Mono12 || type == PixelType_Mono16;
}

bool IsBayer(EPixelType type)
{
    return type == PixelType_BayerRG8 || type == PixelType_BayerRG12;
}

bool IsColor(EPixelType type)
{
    return type == PixelType_RGB8packed || type == PixelType_BGR8packed ||
           type == PixelType_BGRA8packed || type == PixelType_RGB16packed;
}

const char* PixelTypeName(EPixelType type)
{
    const TypeInfo* t = find(type);
    return t ? t->name : "Undefined";
}

EPixelType PixelTypeFromName(const char* name)
{
    for (const TypeInfo& t : kTypes)
        if (name && std::strcmp(name, t.name) == 0)
            return t.type;
    return PixelType_Undefined;
}

}  // namespace Kalto
