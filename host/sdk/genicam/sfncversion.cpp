#include "genicam/sfncversion.h"

#include "genicam/inodemap.h"

#include <QVector>

#include <mutex>

namespace Kalto {

QVersionNumber SfncVersion(const INodeMap& map)
{
    std::lock_guard<std::recursive_mutex> lock(map.mutex());
    QVector<int> parts;
    for (const char* f : {"DeviceSFNCVersionMajor", "DeviceSFNCVersionMinor", "DeviceSFNCVersionSubMinor"}) {
        if (!map.hasNode(f) || map.nodeType(f) != ENodeType::Integer || !map.isReadable(f))
            return {};
        parts << static_cast<int>(map.getInteger(f));
    }
    return QVersionNumber(parts);
}

}  // namespace Kalto
