#pragma once

#include "kalto/pixeltype.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Kalto {

/// One grab result as a device fills it before handing it out; read-only
/// afterwards (results are shared between threads through CGrabResultPtr).
class CGrabResultData {
public:
    CGrabResultData();

    bool GrabSucceeded() const { return m_succeeded; }
    uint32_t GetErrorCode() const { return m_errorCode; }
    const std::string& GetErrorDescription() const { return m_errorDescription; }
    const void* GetBuffer() const { return m_buffer.get(); }
    size_t GetPayloadSize() const { return m_payloadSize; }
    uint32_t GetWidth() const { return m_width; }
    uint32_t GetHeight() const { return m_height; }
    EPixelType GetPixelType() const { return m_pixelType; }
    size_t GetPaddingX() const { return m_paddingX; }
    uint64_t GetImageNumber() const { return m_imageNumber; }
    uint64_t GetTimeStamp() const { return m_timeStampNs; }  ///< nanoseconds

    /// Marks the grab successful with the given pixels; throws when the buffer is
    /// smaller than the geometry needs or the pixel type is unknown.
    void SetImage(std::shared_ptr<const void> buffer, size_t bufferSize, EPixelType type,
                  uint32_t width, uint32_t height, size_t paddingX = 0);
    void SetImage(std::vector<uint8_t> pixels, EPixelType type, uint32_t width, uint32_t height,
                  size_t paddingX = 0);
    /// Marks the grab failed; code 0 is replaced by 1 (0 means success).
    void SetError(uint32_t code, std::string description);
    void SetImageNumber(uint64_t number) { m_imageNumber = number; }
    void SetTimeStamp(uint64_t nanoseconds) { m_timeStampNs = nanoseconds; }

private:
    bool m_succeeded = false;
    uint32_t m_errorCode = 0;
    std::string m_errorDescription;
    std::shared_ptr<const void> m_buffer;
    size_t m_payloadSize = 0;
    uint32_t m_width = 0;
    uint32_t m_height = 0;
    EPixelType m_pixelType = PixelType_Undefined;
    size_t m_paddingX = 0;
    uint64_t m_imageNumber = 0;
    uint64_t m_timeStampNs = 0;
};

}  // namespace Kalto
