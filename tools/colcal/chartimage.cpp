#include "chartimage.h"

#include "cli.h"
#include "colorspace.h"

#include <QFileInfo>
#include <QImageReader>
#include <QStringList>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace {

// Decoder complaints (a truncated JPEG decodes with a warning and a grey tail)
// are collected while reading so that such a file is refused.
QStringList* g_decoderWarnings = nullptr;
QtMessageHandler g_previousHandler = nullptr;

void collectWarnings(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (g_decoderWarnings && type != QtDebugMsg && type != QtInfoMsg) {
        g_decoderWarnings->append(message.simplified());
        return;
    }
    if (g_previousHandler)
        g_previousHandler(type, context, message);
}

// Some decoders (libpng on a fatal error) write to stderr themselves; the
// reader's error string says the same, so their output is held back while reading.
class QuietStderr {
public:
    QuietStderr()
    {
        std::fflush(stderr);
        m_saved = dup(STDERR_FILENO);
        const int devNull = open("/dev/null", O_WRONLY);
        if (m_saved >= 0 && devNull >= 0)
            dup2(devNull, STDERR_FILENO);
        if (devNull >= 0)
            close(devNull);
    }
    ~QuietStderr()
    {
        std::fflush(stderr);
        if (m_saved >= 0) {
            dup2(m_saved, STDERR_FILENO);
            close(m_saved);
        }
    }
    QuietStderr(const QuietStderr&) = delete;
    QuietStderr& operator=(const QuietStderr&) = delete;

private:
    int m_saved = -1;
};

bool isSixteenBit(QImage::Format f)
{
    return f == QImage::Format_RGBX64 || f == QImage::Format_RGBA64 || f == QImage::Format_RGBA64_Premultiplied ||
           f == QImage::Format_Grayscale16;
}

// Linear 16-bit value to an 8-bit sRGB code.
const std::array<uint8_t, 65536>& linearToSrgb8()
{
    static const std::array<uint8_t, 65536> lut = [] {
        std::array<uint8_t, 65536> t{};
        const ColorSpace cs;
        for (int v = 0; v < 65536; ++v)
            t[size_t(v)] = uint8_t(std::lround(cs.RGB_to_sRGB(v / 65535.0 * 255.0)));
        return t;
    }();
    return lut;
}

}  // namespace

namespace {

bool tooLarge(const QSize& size)
{
    return size.isValid() && qint64(size.width()) * size.height() > ChartImage::kMaxPixels;
}

}  // namespace

ChartImage ChartImage::load(const QString& path, Encoding encoding)
{
    if (!QFileInfo(path).isFile())
        throw cli::Error(QString("%1: no such file").arg(path), cli::BadInput);
    // Decoder complaints start with the header, so they are collected from there on.
    QStringList warnings;
    g_decoderWarnings = &warnings;
    g_previousHandler = qInstallMessageHandler(collectWarnings);
    QImageReader reader(path);
    reader.setAutoTransform(false);
    QSize declared;
    QImage image;
    {
        const QuietStderr quiet;
        declared = reader.size();
        if (!declared.isValid() || (declared.width() > 0 && declared.height() > 0 && !tooLarge(declared)))
            image = reader.read();
    }
    qInstallMessageHandler(g_previousHandler);
    g_decoderWarnings = nullptr;

    if (declared.isValid() && (declared.width() <= 0 || declared.height() <= 0))
        throw cli::Error(QString("%1: image has zero size").arg(path), cli::BadInput);
    // The header is all that was read: a few bytes may declare gigabytes.
    if (tooLarge(declared) || (!image.isNull() && tooLarge(image.size())))
        throw cli::Error(QString("%1: %2 x %3 pixels is more than the %4 megapixels colcal reads")
                             .arg(path).arg(declared.isValid() ? declared.width() : image.width())
                             .arg(declared.isValid() ? declared.height() : image.height())
                             .arg(ChartImage::kMaxPixels / 1000000),
                         cli::BadInput);
    if (image.isNull())
        throw cli::Error(QString("%1: cannot read image: %2").arg(path, reader.errorString()), cli::BadInput);
    if (!warnings.isEmpty())
        throw cli::Error(QString("%1: damaged or truncated image: %2").arg(path, warnings.first()), cli::BadInput);
    if (image.width() <= 0 || image.height() <= 0)
        throw cli::Error(QString("%1: image has zero size").arg(path), cli::BadInput);

    ChartImage out;
    out.m_path = path;
    out.m_bits = isSixteenBit(image.format()) ? 16 : 8;
    out.m_srgb = encoding == Encoding::Srgb || (encoding == Encoding::ByDepth && out.m_bits == 8);

    const QImage rgb64 = image.convertToFormat(QImage::Format_RGBX64);
    const int w = rgb64.width(), h = rgb64.height();
    out.m_sdk.Reset(Kalto::PixelType_RGB16packed, uint32_t(w), uint32_t(h));
    out.m_display = QImage(w, h, QImage::Format_ARGB32);
    const auto& lut = linearToSrgb8();
    for (int y = 0; y < h; ++y) {
        const QRgba64* in = reinterpret_cast<const QRgba64*>(rgb64.constScanLine(y));
        auto* sdkRow = reinterpret_cast<uint8_t*>(out.m_sdk.GetBuffer()) + out.m_sdk.GetStride() * size_t(y);
        QRgb* disp = reinterpret_cast<QRgb*>(out.m_display.scanLine(y));
        for (int x = 0; x < w; ++x) {
            const uint16_t px[3] = {in[x].red(), in[x].green(), in[x].blue()};
            std::memcpy(sdkRow + 6 * size_t(x), px, 6);
            if (out.m_srgb)
                disp[x] = qRgb(in[x].red8(), in[x].green8(), in[x].blue8());
            else
                disp[x] = qRgb(lut[px[0]], lut[px[1]], lut[px[2]]);
        }
    }
    return out;
}
