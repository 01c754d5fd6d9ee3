#include "cli.h"
#include "commands.h"
#include "emulatedcameras.h"

#include "core/savefile.h"
#include "genicam/featurepersistence.h"
#include "genicam/inodemap.h"
#include "kalto/idevice.h"

#include <QFile>

#include <cstdio>

namespace {

int save(const std::shared_ptr<Kalto::IDevice>& device, const QString& path, bool json)
{
    const std::string text = Kalto::CFeaturePersistence::Save(device->nodeMap());
    if (path == "-") {
        // Standard output carries the settings text alone, so that it can be piped on.
        if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
            throw cli::Error("cannot write standard output", cli::Failed);
        return cli::Ok;
    }
    QString error;
    if (!Core::saveFile(path, QByteArray::fromStdString(text), &error))
        throw cli::Error(QString("cannot write %1: %2").arg(path, error), cli::Failed);
    if (json)
        cli::printJson({{"file", path}, {"bytes", static_cast<qint64>(text.size())}});
    else
        cli::print(QString("settings written to %1\n").arg(path));
    return cli::Ok;
}

int load(const std::shared_ptr<Kalto::IDevice>& device, const QString& path, const QString& userSet, bool json)
{
    const QByteArray text = cli::readSettingsFile(path);
    Kalto::INodeMap& map = device->nodeMap();
    const Kalto::SLoadReport report =
        Kalto::CFeaturePersistence::Load(map, std::string_view(text.constData(), static_cast<size_t>(text.size())));
    for (const auto& r : report.rejected)
        std::fprintf(stderr, "%s:%zu: %s%s%s\n", qPrintable(path), r.lineNumber, r.feature.c_str(),
                     r.feature.empty() ? "" : ": ", r.reason.c_str());
    if (report.rejectedCount > report.rejected.size())
        std::fprintf(stderr, "%s: %zu more lines rejected\n", qPrintable(path),
                     report.rejectedCount - report.rejected.size());
    if (!userSet.isEmpty()) {
        // The emulated camera forgets its live settings when the tool exits;
        // a user set keeps them.
        map.setEnum("UserSetSelector", userSet.toStdString());
        map.execute("UserSetSave");
    }
    if (json)
        cli::printJson({{"file", path}, {"applied", static_cast<qint64>(report.appliedLines)},
                        {"rejected", static_cast<qint64>(report.rejectedCount)}});
    else
        cli::print(QString("%1 lines applied, %2 rejected\n").arg(report.appliedLines).arg(report.rejectedCount));
    return report.ok() ? cli::Ok : cli::Failed;
}

}  // namespace

int runSettings(const cli::Args& args)
{
    const QStringList& pos = args.positional();
    if (pos.size() != 2 || (pos[0] != "save" && pos[0] != "load"))
        throw cli::Error("usage: settings save|load [--camera ID] FILE", cli::BadInput);
    if (pos[0] == "save" && args.has("user-set"))
        throw cli::Error("--user-set only goes with load", cli::BadInput);
    if (pos[0] == "save" && pos[1] == "-" && args.flag("json"))
        throw cli::Error("settings save -: --json and - would both write standard output; choose one", cli::BadInput);
    auto device = EmulatedCameras::open(args.value("camera", "emu-cmed-0"));
    try {
        const int rc = pos[0] == "save" ? save(device, pos[1], args.flag("json"))
                                        : load(device, pos[1], args.value("user-set"), args.flag("json"));
        device->close();
        return rc;
    } catch (...) {
        device->close();
        throw;
    }
}
