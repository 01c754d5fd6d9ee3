#include "cli.h"
#include "commands.h"
#include "emulatedcameras.h"

#include "core/savefile.h"

#include "kalto/grabresultdata.h"
#include "kalto/idevice.h"
#include "kalto/imageformatconverter.h"
#include "kalto/kaltoimage.h"

#include <QImage>

#include <chrono>
#include <condition_variable>
#include <mutex>

int runGrab(const cli::Args& args)
{
    if (!args.positional().isEmpty() || !args.has("out"))
        throw cli::Error("usage: grab [--camera ID] --out FRAME.png", cli::BadInput);
    const QString id = args.value("camera", "emu-cmed-0");
    bool ok = false;
    const int timeoutMs = args.value("timeout-ms", "10000").toInt(&ok);
    if (!ok || timeoutMs <= 0)
        throw cli::Error("--timeout-ms needs a positive number", cli::BadInput);

    auto device = EmulatedCameras::open(id);
    std::mutex mutex;
    std::condition_variable cv;
    Kalto::CGrabResultPtr result;
    device->setFrameSink([&](const Kalto::CGrabResultPtr& r) {
        std::lock_guard<std::mutex> lock(mutex);
        if (!result)
            result = r;
        cv.notify_all();
    });
    device->startAcquisition(Kalto::EAcquisitionMode::SingleFrame);
    {
        std::unique_lock<std::mutex> lock(mutex);
        cv.wait_for(lock, std::chrono::milliseconds(timeoutMs), [&] { return result.IsValid(); });
    }
    device->stopAcquisition();
    device->setFrameSink(nullptr);
    device->close();
    if (!result)
        throw cli::Error(QString("camera %1 delivered no frame within %2 ms").arg(id).arg(timeoutMs), cli::Failed);
    if (!result->GrabSucceeded())
        throw cli::Error(QString("grab failed: %1").arg(QString::fromStdString(result->GetErrorDescription())), cli::Failed);

    Kalto::CImageFormatConverter converter;
    converter.OutputPixelFormat = Kalto::PixelType_BGRA8packed;
    Kalto::CKaltoImage bgra;
    converter.Convert(bgra, result);
    const QImage image(static_cast<const uchar*>(bgra.GetBuffer()), static_cast<int>(bgra.GetWidth()),
                       static_cast<int>(bgra.GetHeight()), static_cast<int>(bgra.GetStride()), QImage::Format_RGB32);
    const QString out = args.value("out");
    QString error;
    if (!Core::saveFile(out, [&image](QIODevice& device) { return image.save(&device, "PNG"); }, &error))
        throw cli::Error(QString("cannot write %1: %2").arg(out, error), cli::Failed);

    const QString format = Kalto::PixelTypeName(result->GetPixelType());
    if (args.flag("json"))
        cli::printJson({{"camera", id}, {"out", out}, {"width", image.width()}, {"height", image.height()},
                        {"pixelFormat", format}});
    else
        cli::print(QString("%1: %2x%3 %4 frame written to %5\n").arg(id).arg(image.width()).arg(image.height()).arg(format, out));
    return cli::Ok;
}
