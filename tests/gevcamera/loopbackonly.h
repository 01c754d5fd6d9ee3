#pragma once

#include <ifaddrs.h>
#include <net/if.h>

#include <string>

/// Whether GigE Vision may be switched on here: its discovery broadcasts on
/// every interface that is up, and nothing may leave the loopback interface.
namespace LoopbackOnly {

/// The first interface besides loopback that is up; empty when there is none.
inline std::string otherInterfaceUp()
{
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0)
        return "(the interface list cannot be read)";
    std::string other;
    for (const ifaddrs* i = list; i && other.empty(); i = i->ifa_next)
        if ((i->ifa_flags & IFF_UP) && !(i->ifa_flags & IFF_LOOPBACK))
            other = i->ifa_name;
    freeifaddrs(list);
    return other;
}

}  // namespace LoopbackOnly
