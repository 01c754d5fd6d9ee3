// kalto-gev-camera as a client sees it: a child process reached over GigE
// Vision on loopback with plain Aravis, compared with the in-process emulator.

// Aravis (GLib) first: its headers use names Qt defines as macros ("signals").
#include <arv.h>

#include "chartsampler.h"
#include "emulatedcamera.h"
#include "gevcameraprocess.h"
#include "loopbackonly.h"
#include "testapp.h"

#include "genicam/nodemap.h"
#include "kalto/grabresultdata.h"

#include <QProcess>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <set>
#include <thread>

namespace {

using Kalto::ENodeType;

constexpr int kWidth = 480;  // small frames keep the sanitizer build quick
constexpr int kHeight = 300;

// What a client may write now: the node's access mode and its lock.
bool writable(ArvGcNode* n)
{
    auto* f = ARV_GC_FEATURE_NODE(n);
    const ArvGcAccessMode mode = arv_gc_feature_node_get_actual_access_mode(f);
    return (mode == ARV_GC_ACCESS_MODE_RW || mode == ARV_GC_ACCESS_MODE_WO) && !arv_gc_feature_node_is_locked(f, nullptr);
}

std::string errorText(GError* e)
{
    std::string s = e ? e->message : "no error";
    g_clear_error(&e);
    return s;
}

class GevCameraTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        KALTO_SKIP_UNLESS_LOOPBACK_ONLY();
        TestApp::freshDataHome();
        m_serial = "T" + std::to_string(::getpid());
        ASSERT_TRUE(m_server.start(m_serial)) << m_server.error();
        m_id = m_server.id();
        EXPECT_EQ(m_id, "Kalto-kA1920-40gcMED Emulator-" + m_serial);

        arv_update_device_list();
        GError* error = nullptr;
        m_camera = arv_camera_new(m_id.c_str(), &error);
        ASSERT_NE(m_camera, nullptr) << errorText(error);
        m_device = arv_camera_get_device(m_camera);
    }

    void TearDown() override
    {
        g_clear_object(&m_camera);
        EXPECT_TRUE(m_server.stop()) << "kalto-gev-camera did not end cleanly on SIGTERM";
    }

    ArvGcNode* node(const std::string& name) { return arv_device_get_feature(m_device, name.c_str()); }

    void setString(const char* name, const char* value)
    {
        GError* e = nullptr;
        arv_device_set_string_feature_value(m_device, name, value, &e);
        ASSERT_EQ(e, nullptr) << name << ": " << errorText(e);
    }
    void setFloat(const char* name, double value)
    {
        GError* e = nullptr;
        arv_device_set_float_feature_value(m_device, name, value, &e);
        ASSERT_EQ(e, nullptr) << name << ": " << errorText(e);
    }
    double getFloat(const char* name)
    {
        GError* e = nullptr;
        const double v = arv_device_get_float_feature_value(m_device, name, &e);
        EXPECT_EQ(e, nullptr) << name << ": " << errorText(e);
        return v;
    }
    void execute(const char* name)
    {
        GError* e = nullptr;
        arv_device_execute_command(m_device, name, &e);
        ASSERT_EQ(e, nullptr) << name << ": " << errorText(e);
    }

    // One frame over the stream channel, as the emulator's Frame.
    Frame grab()
    {
        GError* e = nullptr;
        Frame f;
        ArvStream* stream = arv_camera_create_stream(m_camera, nullptr, nullptr, &e);
        EXPECT_NE(stream, nullptr) << errorText(e);
        if (!stream)
            return f;
        const gint payload = arv_camera_get_payload(m_camera, nullptr);
        for (int i = 0; i < 2; ++i)
            arv_stream_push_buffer(stream, arv_buffer_new(static_cast<size_t>(payload), nullptr));
        setString("AcquisitionMode", "SingleFrame");
        execute("AcquisitionStart");
        ArvBuffer* buffer = arv_stream_timeout_pop_buffer(stream, 30 * 1000 * 1000);
        execute("AcquisitionStop");
        EXPECT_NE(buffer, nullptr) << "no frame within 30 s";
        if (buffer && arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS) {
            size_t size = 0;
            const auto* p = static_cast<const uint8_t*>(arv_buffer_get_data(buffer, &size));
            f.width = arv_buffer_get_image_width(buffer);
            f.height = arv_buffer_get_image_height(buffer);
            f.format = static_cast<Kalto::EPixelType>(arv_buffer_get_image_pixel_format(buffer));
            f.data.assign(p, p + size);
        } else if (buffer) {
            ADD_FAILURE() << "buffer status " << arv_buffer_get_status(buffer);
        }
        g_clear_object(&buffer);
        g_object_unref(stream);
        return f;
    }

    // Auto functions off and a small frame, written the same way into the
    // GigE Vision camera and an in-process emulated camera.
    void settle(Kalto::CNodeMap* local)
    {
        const std::pair<const char*, const char*> enums[] = {
            {"ExposureAuto", "Off"}, {"GainAuto", "Off"}, {"BalanceWhiteAuto", "Off"}, {"TonalRangeAuto", "Off"}};
        for (const auto& [name, value] : enums) {
            setString(name, value);
            if (local)
                local->setEnum(name, value);
        }
        GError* e = nullptr;
        arv_device_set_integer_feature_value(m_device, "Width", kWidth, &e);
        arv_device_set_integer_feature_value(m_device, "Height", kHeight, &e);
        ASSERT_EQ(e, nullptr) << errorText(e);
        if (local) {
            local->setInteger("Width", kWidth);
            local->setInteger("Height", kHeight);
        }
    }

    GevCameraProcess m_server;
    std::string m_serial, m_id;
    ArvCamera* m_camera = nullptr;
    ArvDevice* m_device = nullptr;
};

CameraModel medicalModel()
{
    return CameraModel::defaults().front();
}

TEST_F(GevCameraTest, ReportsItsModelAndSfncVersion)
{
    GError* e = nullptr;
    EXPECT_STREQ(arv_camera_get_model_name(m_camera, &e), "kA1920-40gcMED Emulator");
    EXPECT_STREQ(arv_camera_get_device_serial_number(m_camera, &e), m_serial.c_str());
    EXPECT_EQ(arv_device_get_integer_feature_value(m_device, "DeviceSFNCVersionMajor", &e), 2);
    EXPECT_EQ(arv_device_get_integer_feature_value(m_device, "DeviceSFNCVersionMinor", &e), 3);
    EXPECT_EQ(arv_device_get_integer_feature_value(m_device, "DeviceSFNCVersionSubMinor", &e), 0);
    EXPECT_EQ(arv_device_get_integer_feature_value(m_device, "DeviceColorPipelineVersion", &e), 1);
    EXPECT_EQ(e, nullptr) << errorText(e);

    // Ctrl-C stops it as cleanly as SIGTERM (which every other test uses).
    g_clear_object(&m_camera);
    QProcess& server = m_server.process();
    ::kill(static_cast<pid_t>(server.processId()), SIGINT);
    ASSERT_TRUE(server.waitForFinished(20000));
    EXPECT_EQ(server.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(server.exitCode(), 0);
}

// Every feature of emu-cmed-0 is there with its type, range, increment,
// entries, selector and (static) writability; the values agree too, since
// both start from the same factory state.
TEST_F(GevCameraTest, FeaturesAgreeWithTheEmulatedMedicalCamera)
{
    EmulatedCamera reference(medicalModel());
    Kalto::CNodeMap& map = reference.nodeMap();
    const std::set<std::string> differ = {"DeviceModelName", "DeviceSerialNumber"};
    // On the bootstrap registers, which fix their lengths.
    const std::set<std::string> bootstrap = {"DeviceVendorName", "DeviceModelName", "DeviceSerialNumber"};
    for (const std::string& name : map.nodeNames()) {
        SCOPED_TRACE(name);
        ArvGcNode* n = node(name);
        ASSERT_NE(n, nullptr) << "missing";
        ASSERT_TRUE(ARV_IS_GC_FEATURE_NODE(n));
        GError* e = nullptr;
        const bool selected = !map.selectorOf(name).empty();
        switch (map.nodeType(name)) {
        case ENodeType::Float: {
            ASSERT_TRUE(ARV_IS_GC_FLOAT(n));
            auto* f = ARV_GC_FLOAT(n);
            EXPECT_NEAR(arv_gc_float_get_min(f, &e), map.floatMin(name), 1e-9);
            EXPECT_NEAR(arv_gc_float_get_max(f, &e), map.floatMax(name), 1e-9);
            if (map.floatIncrement(name) > 0)
                EXPECT_NEAR(arv_gc_float_get_inc(f, &e), map.floatIncrement(name), 1e-12);
            if (!selected && name != "ResultingFrameRate")
                EXPECT_NEAR(arv_gc_float_get_value(f, &e), map.getFloat(name), 1e-9);
            const std::string unit = arv_gc_float_get_unit(f) ? arv_gc_float_get_unit(f) : "";
            EXPECT_EQ(unit, map.floatUnit(name));
            break;
        }
        case ENodeType::Integer: {
            ASSERT_TRUE(ARV_IS_GC_INTEGER(n));
            auto* i = ARV_GC_INTEGER(n);
            EXPECT_EQ(arv_gc_integer_get_min(i, &e), map.integerMin(name));
            EXPECT_EQ(arv_gc_integer_get_max(i, &e), map.integerMax(name));
            EXPECT_EQ(arv_gc_integer_get_inc(i, &e), map.integerIncrement(name));
            EXPECT_EQ(arv_gc_integer_get_value(i, &e), map.getInteger(name));
            break;
        }
        case ENodeType::Enumeration: {
            ASSERT_TRUE(ARV_IS_GC_ENUMERATION(n));
            std::vector<std::pair<std::string, int64_t>> served, expected;
            for (const GSList* l = arv_gc_enumeration_get_entries(ARV_GC_ENUMERATION(n)); l; l = l->next)
                served.emplace_back(arv_gc_feature_node_get_name(ARV_GC_FEATURE_NODE(l->data)),
                                    arv_gc_enum_entry_get_value(ARV_GC_ENUM_ENTRY(l->data), &e));
            for (const auto& en : map.enumEntries(name))
                expected.emplace_back(en.symbolic, en.value);
            std::sort(served.begin(), served.end());
            std::sort(expected.begin(), expected.end());
            EXPECT_EQ(served, expected);
            std::vector<std::string> selects;
            for (const GSList* l = arv_gc_selector_get_selected_features(ARV_GC_SELECTOR(n)); l; l = l->next)
                selects.emplace_back(arv_gc_feature_node_get_name(ARV_GC_FEATURE_NODE(l->data)));
            EXPECT_EQ(selects, map.selectedFeatures(name));
            EXPECT_EQ(arv_gc_enumeration_get_string_value(ARV_GC_ENUMERATION(n), &e), map.getEnum(name));
            break;
        }
        case ENodeType::Boolean:
            ASSERT_TRUE(ARV_IS_GC_BOOLEAN(n));
            EXPECT_EQ(arv_gc_boolean_get_value(ARV_GC_BOOLEAN(n), &e) != FALSE, map.getBool(name));
            break;
        case ENodeType::String:
            ASSERT_TRUE(ARV_IS_GC_STRING(n));
            if (!bootstrap.count(name))
                EXPECT_EQ(arv_gc_string_get_max_length(ARV_GC_STRING(n), &e),
                          static_cast<gint64>(map.stringMaxLength(name)));
            if (!differ.count(name))
                EXPECT_EQ(std::string(arv_gc_string_get_value(ARV_GC_STRING(n), &e)), map.getString(name));
            break;
        case ENodeType::Command:
            ASSERT_TRUE(ARV_IS_GC_COMMAND(n));
            break;
        }
        EXPECT_EQ(e, nullptr) << errorText(e);
        EXPECT_EQ(writable(n), map.isWritable(name));
    }
}

TEST_F(GevCameraTest, FrameShowsTheChartAsTheInProcessCameraRendersIt)
{
    EmulatedCamera local(medicalModel());
    settle(&local.nodeMap());
    local.open();
    const Frame remote = grab();
    ASSERT_EQ(remote.width, kWidth);
    ASSERT_EQ(remote.height, kHeight);
    ASSERT_EQ(remote.format, Kalto::PixelType_RGB8packed);
    ASSERT_EQ(remote.data.size(), size_t(kWidth * kHeight * 3));

    std::mutex m;
    std::condition_variable cv;
    Kalto::CGrabResultPtr result;
    local.setFrameSink([&](const Kalto::CGrabResultPtr& r) {
        std::lock_guard<std::mutex> lock(m);
        result = r;
        cv.notify_all();
    });
    local.startAcquisition(Kalto::EAcquisitionMode::SingleFrame);
    {
        std::unique_lock<std::mutex> lock(m);
        ASSERT_TRUE(cv.wait_for(lock, std::chrono::seconds(30), [&] { return result.IsValid(); }));
    }
    local.stopAcquisition();
    local.setFrameSink({});
    Frame here;
    here.width = kWidth;
    here.height = kHeight;
    here.format = result->GetPixelType();
    const auto* p = static_cast<const uint8_t*>(result->GetBuffer());
    here.data.assign(p, p + result->GetPayloadSize());

    const ChartFit::Chart a = ChartSampler::measure(remote, medicalModel().scene);
    const ChartFit::Chart b = ChartSampler::measure(here, medicalModel().scene);
    // The chart is there: white well above black, and the greys descend.
    EXPECT_GT(a(18, 1), a(23, 1) + 100);
    for (long k = 19; k < 23; ++k)
        EXPECT_GT(a(k, 1), a(k + 1, 1)) << "grey patch " << k;
    for (long k = 0; k < 24; ++k)
        for (long c = 0; c < 3; ++c)
            EXPECT_NEAR(a(k, c), b(k, c), 2.0) << "patch " << k << " channel " << c;
}

TEST_F(GevCameraTest, WhiteBalanceWriteChangesTheFrame)
{
    settle(nullptr);
    const ChartFit::Chart before = ChartSampler::measure(grab(), medicalModel().scene);
    setString("BalanceRatioSelector", "Blue");
    const double blue = getFloat("BalanceRatio");
    setFloat("BalanceRatio", blue * 0.5);
    const ChartFit::Chart after = ChartSampler::measure(grab(), medicalModel().scene);
    // A mid grey: blue falls clearly; the camera's colour matrix takes less
    // blue away from red and green, so they do not fall.
    EXPECT_LT(after(21, 2), before(21, 2) * 0.85);
    EXPECT_GE(after(21, 0), before(21, 0) - 1);
    EXPECT_GE(after(21, 1), before(21, 1) - 1);
}

TEST_F(GevCameraTest, WritesAreRoundedAndClippedAndLocksFollowAutoFunctions)
{
    setString("BalanceWhiteAuto", "Off");
    setString("BalanceRatioSelector", "Red");
    setFloat("BalanceRatio", 1.23456);
    EXPECT_DOUBLE_EQ(getFloat("BalanceRatio"), 316.0 / 256);  // the increment is 1/256
    setFloat("BalanceRatio", 100.0);
    EXPECT_DOUBLE_EQ(getFloat("BalanceRatio"), 8.0);  // clipped by the device
    setString("BalanceRatioSelector", "Green");
    EXPECT_DOUBLE_EQ(getFloat("BalanceRatio"), 1.0);  // other entries untouched

    ArvGcNode* exposure = node("ExposureTime");
    setString("ExposureAuto", "Continuous");
    EXPECT_FALSE(writable(exposure));
    setString("ExposureAuto", "Off");
    EXPECT_TRUE(writable(exposure));
    ArvGcNode* save = node("UserSetSave");
    setString("UserSetSelector", "Default");
    EXPECT_FALSE(writable(save));
    setString("UserSetSelector", "UserSet2");
    EXPECT_TRUE(writable(save));
}

TEST_F(GevCameraTest, UserSetSaveAndLoadRoundTrip)
{
    setString("GammaSelector", "User");
    setFloat("Gamma", 1.5);
    setString("UserSetSelector", "UserSet1");
    execute("UserSetSave");
    setFloat("Gamma", 0.4);
    setString("LightSourceSelector", "Tungsten2800K");
    execute("UserSetLoad");
    EXPECT_DOUBLE_EQ(getFloat("Gamma"), 1.5);
    GError* e = nullptr;
    EXPECT_STREQ(arv_device_get_string_feature_value(m_device, "LightSourceSelector", &e), "Daylight5000K");
    EXPECT_EQ(arv_device_get_integer_feature_value(m_device, "UserSetSave_Reg", &e), 0) << "command done";
    setString("UserSetSelector", "Default");
    execute("UserSetLoad");
    EXPECT_DOUBLE_EQ(getFloat("Gamma"), 0.7);  // the factory's
    EXPECT_EQ(e, nullptr) << errorText(e);
}

// The 12288-character LUT text takes many packets: the camera acts on the
// whole of it, and a table that does not parse leaves the old one in place.
TEST_F(GevCameraTest, LongStringArrivesWholeAndABadOneIsRejected)
{
    GError* e = nullptr;
    const std::string factory = arv_device_get_string_feature_value(m_device, "LUTValueAll", &e);
    ASSERT_EQ(factory.size(), 4096u * 3) << errorText(e);
    std::string identity;
    static const char* hex = "0123456789ABCDEF";
    for (int i = 0; i < 4096; ++i)
        identity += {hex[(i >> 8) & 15], hex[(i >> 4) & 15], hex[i & 15]};
    arv_device_set_string_feature_value(m_device, "LUTValueAll", identity.c_str(), &e);
    ASSERT_EQ(e, nullptr) << errorText(e);
    EXPECT_EQ(arv_device_get_string_feature_value(m_device, "LUTValueAll", &e), identity);
    GError* ignored = nullptr;
    arv_device_set_integer_feature_value(m_device, "LUTIndex", 4000, &ignored);
    g_clear_error(&ignored);
    EXPECT_EQ(arv_device_get_integer_feature_value(m_device, "LUTValue", &e), 4000);

    arv_device_set_string_feature_value(m_device, "LUTValueAll", "FFF000", &ignored);
    g_clear_error(&ignored);
    EXPECT_EQ(arv_device_get_string_feature_value(m_device, "LUTValueAll", &e), identity);
    EXPECT_EQ(e, nullptr) << errorText(e);
}

TEST(GevCameraProgram, RefusesBadOptionsWithAReason)
{
    struct Case {
        QStringList args;
        int exitCode;
        const char* says;
    };
    const Case cases[] = {
        {{"--serial", "0123456789abcdefXYZ"}, 1, "serial number needs 1 to 15 characters"},
        {{"--model", QString(40, 'M')}, 1, "model name needs 1 to 31 characters"},
        {{"--interface", "no-such-if0"}, 1, "cannot serve GigE Vision on interface \"no-such-if0\""},
        {{"stray"}, 2, "unexpected argument \"stray\""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args.join(' ').toStdString());
        const TestProcess::Result r = TestProcess(KALTO_GEV_CAMERA_BINARY).run(c.args, {}, 60);
        EXPECT_EQ(r.exitCode, c.exitCode);
        EXPECT_TRUE(r.err.contains(c.says)) << r.err.toStdString();
    }
}

}  // namespace
