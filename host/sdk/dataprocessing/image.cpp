#include "dataprocessing/image.h"

#include "kalto/imageformatconverter.h"

#include <exception>

namespace Plugin {
namespace DataProcessing {

struct CImage::Data : QSharedData {
    Kalto::CKaltoImage kalto;
    QImage display;
};

CImage::CImage() : d(new Data) {}
CImage::CImage(const CImage&) = default;
CImage& CImage::operator=(const CImage&) = default;
CImage::~CImage() = default;

CImage CImage::ImageFromKaltoImage(const Kalto::CKaltoImage& image, Kalto::EPixelType format)
{
    CImage out;
    if (!image.IsValid())
        return out;
    if (image.GetPixelType() == format) {
        out.d->kalto = image;
    } else {
        Kalto::CImageFormatConverter converter;
        converter.OutputPixelFormat = format;
        try {
            converter.Convert(out.d->kalto, image);
        } catch (const std::exception&) {
            return CImage();
        }
    }
    out.d->display = QImage(static_cast<int>(image.GetWidth()), static_cast<int>(image.GetHeight()),
                            QImage::Format_RGB32);
    if (out.d->display.isNull())
        return CImage();
    return out;
}

bool CImage::isValid() const { return d->kalto.IsValid() && !d->display.isNull(); }
int CImage::width() const { return d->display.width(); }
int CImage::height() const { return d->display.height(); }
int CImage::lineOffset() const { return d->display.bytesPerLine(); }
uchar* CImage::pixelData() { return d->display.isNull() ? nullptr : d->display.bits(); }
const uchar* CImage::constPixelData() const { return d->display.constBits(); }
qsizetype CImage::sizeBytes() const { return d->display.sizeInBytes(); }
QImage CImage::toQImage() const { return d->display; }
const Kalto::CKaltoImage& CImage::kaltoImage() const { return d->kalto; }

}  // namespace DataProcessing
}  // namespace Plugin
