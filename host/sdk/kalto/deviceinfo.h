#pragma once

#include <string>

namespace Kalto {

/// What a transport layer tells about a device before it is opened.
struct SDeviceInfo {
    std::string id;              ///< unique over all transport layers
    std::string modelName;
    std::string vendorName;
    std::string serialNumber;
    std::string userDefinedName;
    std::string transportLayer;  ///< name of the transport layer that found it
};

}  // namespace Kalto
