// libFuzzer target: a settings text as a person might hand it in, through the
// feature-persistence parser of a camera's node map, the settings filter and
// the results parser of the report.
#include "calibrationresult.h"

#include "emulatedcamera.h"
#include "cameramodel.h"
#include "genicam/featurepersistence.h"

#include <QCoreApplication>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace {

EmulatedCamera& camera()
{
    // One powered-up camera for the whole run: loading must leave it usable
    // whatever the text, so reusing it is part of what is tested.
    static std::unique_ptr<EmulatedCamera> instance = [] {
        qputenv("XDG_DATA_HOME", "/tmp/colcal-fuzz-flash");
        return std::make_unique<EmulatedCamera>(CameraModel::defaults().front());
    }();
    return *instance;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    Kalto::CFeaturePersistence::Load(camera().nodeMap(), text);

    // Stored settings go through the filter and, in GetResultsJson, the
    // results parser. The same text as actual settings as well would run the
    // same code on the same input again and halve the rate.
    QString settings = QString::fromUtf8(reinterpret_cast<const char*>(data), int(size));
    CalibrationResult result("fuzz");
    result.SetStoredSettings(settings);
    result.GetResultsJson();
    return 0;
}
