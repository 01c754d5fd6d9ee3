#include "cli.h"
#include "commands.h"
#include "emulatedcameras.h"

#include "genicam/inodemap.h"
#include "genicam/sfncversion.h"
#include "kalto/idevice.h"
#include "kalto/transportlayerregistry.h"

#include <QJsonArray>

namespace {

int integerFeature(Kalto::INodeMap& map, const char* name)
{
    return map.hasNode(name) && map.nodeType(name) == Kalto::ENodeType::Integer && map.isReadable(name)
               ? static_cast<int>(map.getInteger(name))
               : -1;
}

}  // namespace

int runCameras(const cli::Args& args)
{
    if (!args.positional().isEmpty())
        throw cli::Error("takes no arguments", cli::BadInput);
    QJsonArray cameras;
    QString table = QString("%1 %2 %3 %4 %5\n").arg("id", -14).arg("model", -30).arg("layer", -10).arg("sfnc", -6).arg("compatible");
    for (const auto& info : EmulatedCameras::all()) {
        const QString id = QString::fromStdString(info.id);
        const QString model = QString::fromStdString(info.modelName);
        QString sfnc;
        int pipeline = -1;
        try {
            auto device = Kalto::CTransportLayerRegistry::instance().createDevice(info.id);
            if (device) {
                Kalto::INodeMap& map = device->nodeMap();
                sfnc = Kalto::SfncVersion(map).toString();
                pipeline = integerFeature(map, "DeviceColorPipelineVersion");
            }
        } catch (const std::exception& e) {
            std::fprintf(stderr, "colcal cameras: %s: %s\n", qPrintable(id), e.what());
        }
        const bool compatible = EmulatedCameras::isCompatible(model, pipeline);
        QJsonObject o{{"id", id}, {"model", model}, {"transportLayer", QString::fromStdString(info.transportLayer)},
                      {"serialNumber", QString::fromStdString(info.serialNumber)},
                      {"sfncVersion", sfnc.isEmpty() ? QJsonValue() : QJsonValue(sfnc)},
                      {"colorPipelineVersion", pipeline >= 0 ? QJsonValue(pipeline) : QJsonValue()},
                      {"compatible", compatible}};
        cameras.append(o);
        table += QString("%1 %2 %3 %4 %5\n").arg(id, -14).arg(model, -30)
                     .arg(QString::fromStdString(info.transportLayer), -10).arg(sfnc.isEmpty() ? "-" : sfnc, -6)
                     .arg(compatible ? "yes" : "no");
    }
    if (args.flag("json"))
        cli::printJson({{"cameras", cameras}});
    else
        cli::print(table);
    return cli::Ok;
}
