#include "emulatedcameras.h"

#include "cli.h"

#include "arvtransportlayer.h"
#include "emulatortransportlayer.h"
#include "kalto/idevice.h"
#include "kalto/transportlayerregistry.h"

#include <QRegularExpression>

namespace {
bool g_genicam = false;
}

void EmulatedCameras::setGenicamEnabled(bool enabled)
{
    g_genicam = enabled;
}

void EmulatedCameras::ensureRegistered()
{
    EmulatorTransportLayer::registerDefault();
    if (g_genicam)
        ArvTransportLayer::registerDefault();
}

std::vector<Kalto::SDeviceInfo> EmulatedCameras::all()
{
    ensureRegistered();
    return Kalto::CTransportLayerRegistry::instance().enumerateDevices();
}

std::shared_ptr<Kalto::IDevice> EmulatedCameras::open(const QString& id)
{
    ensureRegistered();
    auto device = Kalto::CTransportLayerRegistry::instance().createDevice(id.toStdString());
    if (!device) {
        QStringList known;
        for (const auto& i : all())
            known << QString::fromStdString(i.id);
        throw cli::Error(QString("no camera \"%1\" (known: %2)").arg(id, known.join(", ")), cli::BadInput);
    }
    device->open();
    return device;
}

bool EmulatedCameras::isCompatible(const QString& modelName, int colorPipelineVersion)
{
    if (modelName.contains("cMED"))
        return true;
    static const QRegularExpression custom(
        "([a-z0-9]){2}([AL]){1}([0-9]){1,4}([-]){1}([0-9])+([cgu]){1}([c]){1}([A-Z])+");
    const bool isCustom = custom.match(modelName).hasMatch() || modelName.contains("Emulation");
    return isCustom && colorPipelineVersion == 1;
}
