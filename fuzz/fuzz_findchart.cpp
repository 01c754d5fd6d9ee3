// libFuzzer target: bytes as an image file handed to `colcal find-chart`,
// through the same decoding (ChartImage::load: Qt's image readers behind the
// size cap and the damaged-file check) and the chart finder on what it gives.
#include "chartimage.h"
#include "cli.h"

#include "chartdiscriminator.h"
#include "colorcorrectionautochartfinder.h"
#include "ctrapezoid.h"

#include <QBuffer>
#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QImageReader>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

// Inputs declaring more pixels than this are skipped before decoding: decoding
// and converting cost time in proportion to the pixels, while the finder works
// on a 640-pixel-wide copy whatever the size. Declared sizes over colcal's own
// cap still go in: colcal refuses them from the header alone, which is cheap
// and worth fuzzing.
constexpr qint64 kMaxFuzzPixels = 640 * 640;

QString inputPath()
{
    // ChartImage reads a file, as colcal does; a tmpfs file keeps that cheap.
    static const QString path = [] {
        const QString dir = QDir("/dev/shm").exists() ? QStringLiteral("/dev/shm") : QDir::tempPath();
        return QStringLiteral("%1/colcal-fuzz-findchart-%2").arg(dir).arg(QCoreApplication::applicationPid());
    }();
    return path;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    // colcal's own set-up: a GUI application for fonts and image plug-ins, on no display.
    qputenv("QT_QPA_PLATFORM", "minimal");
    static QGuiApplication app(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char*>(data), int(size));
    {
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        QImageReader probe(&buffer);
        const QSize declared = probe.size();
        if (declared.isValid() && qint64(declared.width()) * declared.height() > kMaxFuzzPixels &&
            qint64(declared.width()) * declared.height() <= ChartImage::kMaxPixels)
            return -1;  // not kept in the corpus
    }
    {
        QFile file(inputPath());
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
            std::abort();  // the harness's own file, not the input, failed
    }
    try {
        ChartImage image = ChartImage::load(inputPath(), ChartImage::Encoding::ByDepth);
        ColorCorrectionAutoChartFinder finder;
        const ColorCorrectionAutoChartFinderResult found = finder.GetChartPosition(image.display());
        if (found.valid) {
            // What --overlay draws: the 24 patches of the grid found.
            QVector<CTrapezoid> patches;
            ChartDiscriminator discriminator(70);
            discriminator.setGridPosition(CTrapezoid(found.topLeft, found.topRight, found.bottomLeft, found.bottomRight));
            discriminator.getChartPositions(patches);
        }
    } catch (const cli::Error&) {
        // A refused file is an answer, not a fault.
    }
    QFile::remove(inputPath());
    return 0;
}
