// The GenICam backend stays off unless asked for: colcal run with a tripwire
// preloaded in place of Aravis's interface and discovery functions.
#include "loopbackonly.h"

#include <gtest/gtest.h>

#include <QProcess>
#include <QTemporaryDir>

namespace {

struct Outcome {
    int exitCode;
    QString err;
};

Outcome colcal(const QStringList& args, const QString& genicamEnv = {})
{
    QTemporaryDir data;
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("XDG_DATA_HOME", data.path());
    env.insert("LD_PRELOAD", COLCAL_ARV_TRIPWIRE);
    // The sanitizer runtime need not come first once something is preloaded.
    env.insert("ASAN_OPTIONS", env.value("ASAN_OPTIONS") + ":verify_asan_link_order=0");
    if (genicamEnv.isNull())
        env.remove("KALTO_GENICAM");
    else
        env.insert("KALTO_GENICAM", genicamEnv);
    p.setProcessEnvironment(env);
    p.start(COLCAL_BINARY, args);
    EXPECT_TRUE(p.waitForFinished(120000));
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, QString::fromUtf8(p.readAllStandardError())};
}

// Safe anywhere: without the switch nothing may reach the tripwire, and if
// something did, the tripwire ends it before any packet.
TEST(GenicamSwitchOff, CamerasGrabAndSettingsNeverCallAravisDiscovery)
{
    QTemporaryDir out;
    const QStringList runs[] = {
        {"cameras", "--json"},
        {"grab", "--camera", "emu-cmed-0", "--out", out.filePath("frame.png")},
        {"settings", "save", "--camera", "emu-cmed-0", out.filePath("camera.pfs")},
    };
    for (const QStringList& args : runs) {
        for (const QString& env : {QString(), QString("0")}) {
            const Outcome r = colcal(args, env);
            EXPECT_EQ(r.exitCode, 0) << args.join(' ').toStdString() << ": " << r.err.toStdString();
            EXPECT_FALSE(r.err.contains("tripwire")) << r.err.toStdString();
        }
    }
}

// The other half, which shows the tripwire catches what it should: with the
// switch, the first Aravis call made is one of those. In the loopback-only
// namespace (label genicam) in case the tripwire were not loaded.
TEST(GenicamSwitchOn, TheSwitchAnywhereOrTheEnvironmentEnablesAravis)
{
    KALTO_SKIP_UNLESS_LOOPBACK_ONLY();
    struct Case {
        QStringList args;
        QString env;
    };
    const Case cases[] = {{{"--genicam", "cameras"}, {}}, {{"cameras", "--genicam", "--json"}, {}}, {{"cameras"}, "1"}};
    for (const Case& c : cases) {
        const Outcome r = colcal(c.args, c.env);
        EXPECT_EQ(r.exitCode, 99) << c.args.join(' ').toStdString() << ": " << r.err.toStdString();
        EXPECT_TRUE(r.err.contains("tripwire: arv_")) << r.err.toStdString();
    }
}

}  // namespace
