#include "kalto/grabresultdata.h"

#include "genicam/runtimeexception.h"
#include "kalto/kaltoimage.h"

namespace Kalto {

CGrabResultData::CGrabResultData() = default;

void CGrabResultData::SetImage(std::shared_ptr<const void> buffer, size_t bufferSize,
                               EPixelType type, uint32_t width, uint32_t height, size_t paddingX)
{
    if (BitPerPixel(type) == 0)
        KALTO_THROW_RUNTIME("Grab result: unknown pixel type");
    const size_t needed = (CKaltoImage::ComputeRowBytes(type, width) + paddingX) * height;
    if (!buffer || bufferSize < needed || width == 0 || height == 0)
        KALTO_THROW_RUNTIME("Grab result: buffer of " + std::to_string(bufferSize) +
                            " bytes does not hold " + std::to_string(width) + "x" +
                            std::to_string(height) + " " + PixelTypeName(type));
    m_buffer = std::move(buffer);
    m_payloadSize = needed;
    m_pixelType = type;
    m_width = width;
    m_height = height;
    m_paddingX = paddingX;
    m_succeeded = true;
    m_errorCode = 0;
    m_errorDescription.clear();
}

void CGrabResultData::SetImage(std::vector<uint8_t> pixels, EPixelType type, uint32_t width,
                               uint32_t height, size_t paddingX)
{
    auto owner = std::make_shared<std::vector<uint8_t>>(std::move(pixels));
    const size_t size = owner->size();
    std::shared_ptr<const void> data(owner, owner->data());
    SetImage(std::move(data), size, type, width, height, paddingX);
}

void CGrabResultData::SetError(uint32_t code, std::string description)
{
    m_succeeded = false;
    m_errorCode = code == 0 ? 1 : code;
    m_errorDescription = std::move(description);
    m_buffer.reset();
    m_payloadSize = 0;
}

}  // namespace Kalto
