#pragma once

#include <QVersionNumber>

namespace Kalto {

class INodeMap;

/// The SFNC version a device declares in DeviceSFNCVersionMajor, Minor and
/// SubMinor; null when one of them is missing, no integer or not readable.
QVersionNumber SfncVersion(const INodeMap& map);

}  // namespace Kalto
