#pragma once

#include <gtest/gtest.h>

#include <ifaddrs.h>
#include <net/if.h>

#include <set>
#include <string>

// GenICam tests may broadcast GigE Vision discovery: they run only where
// loopback is the one interface up (scripts/test.sh runs them in a network
// namespace of their own). The interfaces up besides loopback, empty when safe.
inline std::string interfacesUpBesidesLoopback()
{
    ifaddrs* all = nullptr;
    if (getifaddrs(&all) != 0)
        return "(the interfaces cannot be listed)";
    std::set<std::string> up;
    for (const ifaddrs* a = all; a; a = a->ifa_next)
        if ((a->ifa_flags & IFF_UP) && !(a->ifa_flags & IFF_LOOPBACK))
            up.insert(a->ifa_name);
    freeifaddrs(all);
    std::string names;
    for (const std::string& n : up)
        names += (names.empty() ? "" : ", ") + n;
    return names;
}

#define KALTO_SKIP_UNLESS_LOOPBACK_ONLY()                                                              \
    do {                                                                                               \
        const std::string others = interfacesUpBesidesLoopback();                                      \
        if (!others.empty())                                                                           \
            GTEST_SKIP() << "\n!!!!! NOT RUN: network interfaces besides loopback are up (" << others  \
                         << "); GenICam tests run only in a loopback-only network namespace:\n"        \
                         << "!!!!! unshare -rn sh -c 'ip link set lo up; ctest -L genicam'\n";         \
    } while (0)
