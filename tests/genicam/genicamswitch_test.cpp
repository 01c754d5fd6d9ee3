// The GenICam backend stays off unless asked for: colcal run with a tripwire
// preloaded in place of Aravis's interface and discovery functions.
#include "loopbackonly.h"
#include "testprocess.h"

#include <gtest/gtest.h>

#include <QTemporaryDir>

namespace {

// colcal with a tripwire preloaded; a null `genicamEnv` leaves KALTO_GENICAM unset.
TestProcess::Result colcal(const QStringList& args, const QString& genicamEnv = {})
{
    TestProcess p(COLCAL_BINARY);
    p.setEnv("LD_PRELOAD", ARVTRIPWIRE_BINARY);
    // The sanitizer runtime need not come first once something is preloaded.
    p.setEnv("ASAN_OPTIONS", qEnvironmentVariable("ASAN_OPTIONS") + ":verify_asan_link_order=0");
    p.setEnv("KALTO_GENICAM", genicamEnv);
    return p.run(args);
}

// Safe anywhere: without the switch nothing may reach the tripwire, and if
// something did, the tripwire ends it before any packet.
TEST(GenicamSwitchOff, CamerasGrabAndSettingsNeverCallAravisDiscovery)
{
    QTemporaryDir out;
    const QStringList runs[] = {
        {"cameras", "--json"},
        // A full-size first frame under sanitizers on a busy machine takes longer than the default wait.
        {"grab", "--camera", "emu-cmed-0", "--out", out.filePath("frame.png"), "--timeout-ms", "60000"},
        {"settings", "save", "--camera", "emu-cmed-0", out.filePath("camera.pfs")},
    };
    for (const QStringList& args : runs) {
        for (const QString& env : {QString(), QString("0")}) {
            const TestProcess::Result r = colcal(args, env);
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
        const TestProcess::Result r = colcal(c.args, c.env);
        EXPECT_EQ(r.exitCode, 99) << c.args.join(' ').toStdString() << ": " << r.err.toStdString();
        EXPECT_TRUE(r.err.contains("tripwire: arv_")) << r.err.toStdString();
    }
}

}  // namespace
