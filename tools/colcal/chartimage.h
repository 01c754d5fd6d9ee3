#pragma once

#include "kalto/kaltoimage.h"

#include <QImage>
#include <QString>

/// An image file prepared for chart work: an 8-bit sRGB-encoded copy for the
/// chart finder and overlays, and the pixel values as a 16-bit RGB SDK image
/// for sampling.
class ChartImage {
public:
    /// How the file's values relate to light: by bit depth (8-bit files are
    /// sRGB-encoded, 16-bit files linear), or forced either way.
    enum class Encoding { ByDepth, Linear, Srgb };

    /// Reads PNG, JPEG, TIFF ... through Qt's image plug-ins; throws cli::Error
    /// (bad input) naming the file when it cannot be read completely.
    static ChartImage load(const QString& path, Encoding encoding);
    /// Larger images are refused from their header, before decoding: a chart
    /// photo needs a fraction of this, and decoding allocates 18 bytes a pixel.
    static constexpr qint64 kMaxPixels = 100'000'000;

    const QString& path() const { return m_path; }
    QSize size() const { return m_display.size(); }
    int bitsPerChannel() const { return m_bits; }
    /// True when the values are sRGB-encoded and must be linearised.
    bool srgbEncoded() const { return m_srgb; }
    /// 8-bit, sRGB-encoded, ARGB32.
    const QImage& display() const { return m_display; }
    /// RGB16 packed; 8-bit values are spread to 16 bits (v * 257).
    Kalto::CKaltoImage& sdkImage() { return m_sdk; }

private:
    QString m_path;
    int m_bits = 8;
    bool m_srgb = true;
    QImage m_display;
    Kalto::CKaltoImage m_sdk;
};
