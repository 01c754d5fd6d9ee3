#pragma once

#include "kalto/kaltoimage.h"

#include <QImage>
#include <QSharedDataPointer>

namespace Plugin {
namespace DataProcessing {

/// A grabbed image as the host passes it around: the SDK image kept for
/// measuring (16-bit RGB) plus an 8-bit display image of the same size
/// (QImage::Format_RGB32, whose bytes are BGRa8 on little-endian machines).
/// Copies are cheap and share both until one is written (pixelData()).
class CImage {
public:
    CImage();
    CImage(const CImage&);
    CImage& operator=(const CImage&);
    ~CImage();

    /// An image carrying `image` as `format` (converted when its own type
    /// differs) and a display image of its size, not yet filled. Invalid when
    /// the SDK image is invalid or cannot be converted.
    static CImage ImageFromKaltoImage(const Kalto::CKaltoImage& image, Kalto::EPixelType format);

    bool isValid() const;
    int width() const;
    int height() const;
    /// Bytes from one display row to the next.
    int lineOffset() const;
    /// The display pixels, writable; detaches from other copies first.
    uchar* pixelData();
    const uchar* constPixelData() const;
    /// Bytes of the display buffer.
    qsizetype sizeBytes() const;
    QImage toQImage() const;
    const Kalto::CKaltoImage& kaltoImage() const;

private:
    struct Data;
    QSharedDataPointer<Data> d;
};

}  // namespace DataProcessing
}  // namespace Plugin
