#include "emulatedfeatures.h"

#include "emulatedcamera.h"
#include "emulatorlog.h"
#include "nonvolatilememory.h"

#include "genicam/featurepersistence.h"
#include "genicam/runtimeexception.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>

using Kalto::EAccessMode;
using Kalto::SEnumEntry;

namespace {

const std::vector<std::string> kColours = {"Red", "Yellow", "Green", "Cyan", "Blue", "Magenta"};
const std::vector<std::string> kGains = {"Gain00", "Gain01", "Gain02", "Gain10", "Gain11",
                                         "Gain12", "Gain20", "Gain21", "Gain22"};
const std::vector<std::string> kUserSets = {"Default", "UserSet1", "UserSet2", "UserSet3"};

// Colour matrices the camera applies for its light-source presets (rows sum to 1).
constexpr std::array<double, 9> kDaylightMatrix{{1.55, -0.40, -0.15, -0.30, 1.50, -0.20, -0.05, -0.45, 1.50}};
constexpr std::array<double, 9> kTungstenMatrix{{1.80, -0.60, -0.20, -0.35, 1.60, -0.25, -0.10, -0.70, 1.80}};

std::vector<SEnumEntry> entries(const std::vector<std::string>& names)
{
    std::vector<SEnumEntry> e;
    for (size_t i = 0; i < names.size(); ++i)
        e.push_back({names[i], std::string(), static_cast<int64_t>(i), true});
    return e;
}

std::vector<SEnumEntry> autoModes()
{
    return entries({"Off", "Once", "Continuous"});
}

std::string lutToText(const std::vector<uint16_t>& lut)
{
    static const char* hex = "0123456789ABCDEF";
    std::string s;
    s.reserve(lut.size() * 3);
    for (uint16_t v : lut) {
        s.push_back(hex[(v >> 8) & 0xf]);
        s.push_back(hex[(v >> 4) & 0xf]);
        s.push_back(hex[v & 0xf]);
    }
    return s;
}

// Empty when `s` is a whole table; otherwise what is wrong with it.
std::string lutFromText(const std::string& s, std::vector<uint16_t>& lut)
{
    if (s.size() != 4096 * 3)
        return std::to_string(s.size()) + " characters where 4096 values of three hex digits take 12288";
    std::vector<uint16_t> out(4096);
    for (size_t i = 0; i < 4096; ++i) {
        int v = 0;
        for (size_t k = 0; k < 3; ++k) {
            const char c = s[3 * i + k];
            int d;
            if (c >= '0' && c <= '9') d = c - '0';
            else if (c >= 'A' && c <= 'F') d = c - 'A' + 10;
            else if (c >= 'a' && c <= 'f') d = c - 'a' + 10;
            else return "value " + std::to_string(i) + " is not three hex digits";
            v = v * 16 + d;
        }
        out[i] = static_cast<uint16_t>(v);
    }
    lut.swap(out);
    return {};
}

std::vector<uint16_t> factoryLut()
{
    // A gentle S-curve, as a user might have left it for a punchier picture.
    std::vector<uint16_t> lut(4096);
    for (int i = 0; i < 4096; ++i) {
        const double x = i / 4095.0;
        const double s = x * x * (3.0 - 2.0 * x);
        lut[i] = static_cast<uint16_t>(std::lround(4095.0 * (0.7 * x + 0.3 * s)));
    }
    return lut;
}

}  // namespace

struct EmulatedFeatures::Impl {
    Impl(const CameraModel& m, const std::atomic<bool>& isConnected)
        : model(m), memory(m.id), connected(isConnected)
    {
    }

    CameraModel model;
    NonVolatileMemory memory;
    const std::atomic<bool>& connected;
    Kalto::CNodeMap map{"Device"};
    std::string factoryText;
    std::vector<uint16_t> lut = factoryLut();
    bool syncing = false;

    /// The tonal range the auto function found, written by the delivery
    /// thread and read by whoever resolves the settings.
    mutable std::mutex tonalMutex;
    double tonalLow = 0.0, tonalHigh = 1.0;

    bool sfnc2() const { return model.generation == CameraModel::Generation::Sfnc2; }
    const char* exposureName() const { return sfnc2() ? "ExposureTime" : "ExposureTimeAbs"; }
    const char* balanceName() const { return sfnc2() ? "BalanceRatio" : "BalanceRatioAbs"; }
    const char* presetName() const { return sfnc2() ? "LightSourceSelector" : "OstLightSourcePreset"; }
    const char* adjustSelector() const { return sfnc2() ? "ColorAdjustmentSelector" : "OstColorAdjustmentSelector"; }
    const char* adjustHue() const { return sfnc2() ? "ColorAdjustmentHue" : "OstColorAdjustmentHue"; }
    const char* adjustSaturation() const { return sfnc2() ? "ColorAdjustmentSaturation" : "OstColorAdjustmentSaturation"; }

    double frameRate() const
    {
        return std::min(EmulatedCamera::kMaxFramesPerSecond, 1e6 / map.getFloat(exposureName()));
    }

    double gainDb() const
    {
        return sfnc2() ? map.getFloat("Gain") : map.getInteger("GainRaw") * 0.001;
    }

    EAccessMode access(const std::string& name) const
    {
        if (!connected)
            return EAccessMode::NA;
        if (name == exposureName() && map.getEnum("ExposureAuto") != "Off")
            return EAccessMode::RO;
        if ((name == "Gain" || name == "GainRaw") && map.getEnum("GainAuto") != "Off")
            return EAccessMode::RO;
        if ((name == "BalanceRatio" || name == "BalanceRatioAbs" || name == "BalanceRatioRaw") &&
            map.getEnum("BalanceWhiteAuto") != "Off")
            return EAccessMode::RO;
        if (name == "UserSetSave" && map.getEnum("UserSetSelector") == "Default")
            return EAccessMode::RO;
        return EAccessMode::RW;
    }

    void build();
    void addDeviceInformation();
    void addImageFormat();
    void addExposureAndGain();
    void addColourFeatures();
    void addToneFeatures();
    void addUserSets();
    void setFactoryState();
    void installCallbacks();
    void powerUp();
    void loadText(const std::string& text, const char* what);
    void userSetLoad();
    void userSetSave();
    PipelineSettings resolve() const;
    void runAutoFunctions(const FrameStats& stats);
};

void EmulatedFeatures::Impl::build()
{
    addDeviceInformation();
    addImageFormat();
    addExposureAndGain();
    addColourFeatures();
    addToneFeatures();
    addUserSets();
    for (const auto& name : map.nodeNames())
        map.setAccessFunction(name, [this, name] { return access(name); });
}

void EmulatedFeatures::Impl::addDeviceInformation()
{
    auto& m = map;
    m.addString("DeviceVendorName", "Kalto");
    m.addString("DeviceModelName", model.modelName);
    m.addString("DeviceSerialNumber", model.serialNumber);
    m.addString("DeviceUserID", "", 64);
    m.addInteger("DeviceColorPipelineVersion", 0, 16, 1, model.colorPipelineVersion);
    m.addInteger("DeviceSFNCVersionMajor", 0, 99, 1, model.sfncMajor);
    m.addInteger("DeviceSFNCVersionMinor", 0, 99, 1, model.sfncMinor);
    m.addInteger("DeviceSFNCVersionSubMinor", 0, 99, 1, model.sfncSubMinor);
    for (const char* ro : {"DeviceVendorName", "DeviceModelName", "DeviceSerialNumber",
                           "DeviceColorPipelineVersion", "DeviceSFNCVersionMajor",
                           "DeviceSFNCVersionMinor", "DeviceSFNCVersionSubMinor"})
        m.setAccessMode(ro, EAccessMode::RO);
}

void EmulatedFeatures::Impl::addImageFormat()
{
    auto& m = map;
    m.addInteger("WidthMax", model.width, model.width, 1, model.width);
    m.addInteger("HeightMax", model.height, model.height, 1, model.height);
    m.setAccessMode("WidthMax", EAccessMode::RO);
    m.setAccessMode("HeightMax", EAccessMode::RO);
    m.addInteger("Width", 64, model.width, 8, model.width);
    m.addInteger("Height", 64, model.height, 2, model.height);
    std::vector<SEnumEntry> formats = {
        {"Mono8", "", Kalto::PixelType_Mono8, true},       {"Mono12", "", Kalto::PixelType_Mono12, true},
        {"RGB8", "", Kalto::PixelType_RGB8packed, true},   {"BGR8", "", Kalto::PixelType_BGR8packed, true},
        {"BayerRG8", "", Kalto::PixelType_BayerRG8, true}, {"BayerRG12", "", Kalto::PixelType_BayerRG12, true}};
    m.addEnumeration("PixelFormat", formats, "RGB8");
    m.addEnumeration("TestImageSelector", entries({"Off", "Testimage1", "Testimage2"}), "Off");
    m.addEnumeration("TestPattern", entries({"Off", "GreyHorizontalRamp", "ColorBars"}), "Off");
    m.addEnumeration("AcquisitionMode", entries({"Continuous", "SingleFrame"}), "Continuous");
    m.addFloat("ResultingFrameRate", 0.0, 1000.0, 0.0, EmulatedCamera::kMaxFramesPerSecond, "Hz");
    m.setAccessMode("ResultingFrameRate", EAccessMode::RO);
}

// Auto functions come before what they drive, so that loading settings
// switches them off before the manual values arrive.
void EmulatedFeatures::Impl::addExposureAndGain()
{
    auto& m = map;
    const bool s2 = sfnc2();
    m.addEnumeration("ExposureAuto", autoModes(), "Off");
    m.addEnumeration("GainAuto", autoModes(), "Off");
    m.addEnumeration("BalanceWhiteAuto", autoModes(), "Off");
    m.addFloat("AutoTargetBrightness", 0.1, 0.9, 0.01, 0.4);
    if (s2) {
        m.addFloat("AutoExposureTimeLowerLimit", 20.0, 1000000.0, 1.0, 100.0, "us");
        m.addFloat("AutoExposureTimeUpperLimit", 20.0, 1000000.0, 1.0, 100000.0, "us");
        m.addFloat("AutoGainLowerLimit", 0.0, 24.0, 0.01, 0.0, "dB");
        m.addFloat("AutoGainUpperLimit", 0.0, 24.0, 0.01, 24.0, "dB");
        m.addFloat("ExposureTime", 20.0, 1000000.0, 1.0, 10000.0, "us");
        m.addFloat("Gain", 0.0, 24.0, 0.01, 0.0, "dB");
    } else {
        m.addFloat("AutoExposureTimeAbsLowerLimit", 20.0, 1000000.0, 1.0, 100.0, "us");
        m.addFloat("AutoExposureTimeAbsUpperLimit", 20.0, 1000000.0, 1.0, 100000.0, "us");
        // In tenths of a dB, the unit GainRaw / 100 gives.
        m.addInteger("AutoGainRawLowerLimit", 0, 240, 1, 0);
        m.addInteger("AutoGainRawUpperLimit", 0, 240, 1, 240);
        m.addFloat("ExposureTimeAbs", 20.0, 1000000.0, 1.0, 10000.0, "us");
        m.addInteger("GainRaw", 0, 24000, 1, 0);  // 0.001 dB per step
    }
}

void EmulatedFeatures::Impl::addColourFeatures()
{
    auto& m = map;
    const bool s2 = sfnc2();
    m.addEnumeration("BlackLevelSelector", entries({"All"}), "All");
    if (s2)
        m.addFloat("BlackLevel", 0.0, 255.0, 0.25, 0.0, "DN12");
    else
        m.addInteger("BlackLevelRaw", 0, 255, 1, 0);
    m.setSelectedBy(s2 ? "BlackLevel" : "BlackLevelRaw", "BlackLevelSelector");

    m.addEnumeration("BalanceRatioSelector", entries({"Red", "Green", "Blue"}), "Red");
    m.addFloat(balanceName(), 0.0, 8.0, model.balanceIncrement, 1.0);
    m.setSelectedBy(balanceName(), "BalanceRatioSelector");
    if (!s2) {
        const int64_t steps = std::lround(1.0 / model.balanceIncrement);
        m.addInteger("BalanceRatioRaw", 0, 8 * steps, 1, steps);
        m.setSelectedBy("BalanceRatioRaw", "BalanceRatioSelector");
        m.setPersistent("BalanceRatioRaw", false);
    }

    m.addEnumeration("DemosaicingMode", entries({"Simple", "BaselineHQ"}), "Simple");

    if (s2)
        m.addEnumeration("LightSourceSelector", entries({"Off", "Custom", "Daylight5000K", "Tungsten2800K"}), "Off");
    else
        m.addEnumeration("OstLightSourcePreset", entries({"Off", "Daylight5000K", "Tungsten2800K"}), "Off");
    m.addEnumeration("ColorTransformationValueSelector", entries(kGains), "Gain00");
    m.addFloat("ColorTransformationValue", -4.0, 4.0, model.matrixIncrement, 1.0);
    m.setSelectedBy("ColorTransformationValue", "ColorTransformationValueSelector");
    for (const auto& g : kGains)
        m.storeFloatFor("ColorTransformationValue", g, g[4] == g[5] ? 1.0 : 0.0);

    m.addEnumeration(adjustSelector(), entries(kColours), "Red");
    if (!s2)
        m.addBoolean("OstColorAdjustmentEnable", true);
    m.addFloat(adjustHue(), -4.0, 4.0, model.adjustIncrement, 0.0);
    m.addFloat(adjustSaturation(), 0.0, 2.0, model.adjustIncrement, 1.0);
    m.setSelectedBy(adjustHue(), adjustSelector());
    m.setSelectedBy(adjustSaturation(), adjustSelector());
    if (!s2) {
        const int64_t steps = std::lround(1.0 / model.adjustIncrement);
        m.addInteger("OstColorAdjustmentHueRaw", -4 * steps, 4 * steps, 1, 0);
        m.addInteger("OstColorAdjustmentSaturationRaw", 0, 2 * steps, 1, steps);
        m.setSelectedBy("OstColorAdjustmentHueRaw", adjustSelector());
        m.setSelectedBy("OstColorAdjustmentSaturationRaw", adjustSelector());
        m.setPersistent("OstColorAdjustmentHueRaw", false);
        m.setPersistent("OstColorAdjustmentSaturationRaw", false);
    }
}

void EmulatedFeatures::Impl::addToneFeatures()
{
    auto& m = map;
    m.addFloat("OstHue", -180.0, 180.0, 0.5, 0.0, "deg");
    m.addFloat("OstSaturation", 0.0, 2.0, 0.01, 1.0);
    m.addFloat("OstBrightness", -1.0, 1.0, 0.01, 0.0);
    m.addFloat("OstContrast", -1.0, 1.0, 0.01, 0.0);
    m.addEnumeration("OstContrastMode", entries({"Linear", "SCurve"}), "Linear");
    m.addEnumeration("TonalRangeEnable", entries({"Off", "On"}), "Off");
    m.addEnumeration("TonalRangeAuto", autoModes(), "Off");

    m.addEnumeration("GammaSelector", entries({"User", "sRGB"}), "User");
    m.addBoolean("GammaEnable", false);
    m.addFloat("Gamma", 0.25, 4.0, 0.01, 1.0);

    m.addEnumeration("LUTSelector", entries({"Luminance"}), "Luminance");
    m.addBoolean("LUTEnable", false);
    m.addInteger("LUTIndex", 0, 4095, 1, 0);
    m.addInteger("LUTValue", 0, 4095, 1, lut[0]);
    m.setPersistent("LUTIndex", false);
    m.setPersistent("LUTValue", false);
    m.addString("LUTValueAll", lutToText(lut), 4096 * 3);

    m.addBoolean("ProcessedRawEnable", false);
}

void EmulatedFeatures::Impl::addUserSets()
{
    auto& m = map;
    m.addEnumeration("UserSetSelector", entries(kUserSets), "Default");
    m.addCommand("UserSetLoad", [this] { userSetLoad(); });
    m.addCommand("UserSetSave", [this] { userSetSave(); });
    m.addEnumeration("UserSetDefault", entries(kUserSets), "Default");
    m.setPersistent("UserSetSelector", false);
    m.setPersistent("UserSetDefault", false);
}


// What a camera fresh from a user's desk looks like: everything that shapes
// colour or tone is doing something.
void EmulatedFeatures::Impl::setFactoryState()
{
    auto& m = map;
    const bool s2 = sfnc2();
    // The calibratable models deliver processed colour; the legacy model, which
    // the calibration does not support, sends raw Bayer data.
    m.setEnum("PixelFormat", model.colorPipelineVersion != 1 ? "BayerRG12" : (s2 ? "RGB8" : "BGR8"));
    m.setEnum("DemosaicingMode", "BaselineHQ");
    m.setFloat(exposureName(), 8000.0);
    m.setEnum("ExposureAuto", "Continuous");
    m.setEnum("GainAuto", "Continuous");
    m.setEnum("BalanceWhiteAuto", "Continuous");
    if (s2)
        m.setFloat("BlackLevel", 24.0);
    else
        m.setInteger("BlackLevelRaw", 24);
    m.setEnum(presetName(), "Daylight5000K");
    const double user[9] = {1.4, -0.3, -0.1, -0.2, 1.35, -0.15, 0.0, -0.4, 1.4};
    for (size_t i = 0; i < kGains.size(); ++i)
        m.storeFloatFor("ColorTransformationValue", kGains[i], user[i]);
    const double hue[6] = {0.05, 0.0, -0.05, 0.0, 0.1, 0.0};
    const double sat[6] = {1.1, 1.0, 1.15, 1.0, 1.05, 0.95};
    for (size_t i = 0; i < kColours.size(); ++i) {
        m.setEnum(adjustSelector(), kColours[i]);
        m.setFloat(adjustHue(), hue[i]);
        m.setFloat(adjustSaturation(), sat[i]);
    }
    m.setEnum(adjustSelector(), "Red");
    m.setFloat("OstHue", 4.0);
    m.setFloat("OstSaturation", 1.2);
    m.setFloat("OstBrightness", 0.03);
    m.setFloat("OstContrast", 0.1);
    m.setEnum("TonalRangeEnable", "On");
    m.setEnum("TonalRangeAuto", "Continuous");
    m.setEnum("GammaSelector", "User");
    m.setBool("GammaEnable", true);
    m.setFloat("Gamma", 0.7);
    m.setBool("LUTEnable", true);
}

void EmulatedFeatures::Impl::installCallbacks()
{
    auto& m = map;
    auto guarded = [this](auto fn) {
        return [this, fn](const std::string&) {
            if (syncing)
                return;
            syncing = true;
            try {
                fn();
            } catch (...) {
                syncing = false;
                throw;
            }
            syncing = false;
        };
    };
    m.addChangeCallback("LUTIndex", guarded([this] {
        map.storeInteger("LUTValue", lut[static_cast<size_t>(map.getInteger("LUTIndex"))]);
    }));
    m.addChangeCallback("LUTValue", guarded([this] {
        lut[static_cast<size_t>(map.getInteger("LUTIndex"))] = static_cast<uint16_t>(map.getInteger("LUTValue"));
        map.storeString("LUTValueAll", lutToText(lut));
    }));
    m.addChangeCallback("LUTValueAll", guarded([this] {
        const std::string wrong = lutFromText(map.getString("LUTValueAll"), lut);
        if (!wrong.empty()) {
            map.storeString("LUTValueAll", lutToText(lut));  // the camera keeps its table and says so
            KALTO_THROW_RUNTIME("LUTValueAll rejected: " + wrong);
        }
        map.storeInteger("LUTValue", lut[static_cast<size_t>(map.getInteger("LUTIndex"))]);
    }));
    if (!sfnc2()) {
        // Each SFNC 1.x value has a raw twin counting steps of its increment.
        auto twin = [&](const char* value, const char* raw, double increment) {
            const double steps = std::round(1.0 / increment);
            m.addChangeCallback(value, guarded([this, value, raw, steps] {
                map.storeInteger(raw, std::llround(map.getFloat(value) * steps));
            }));
            m.addChangeCallback(raw, guarded([this, value, raw, steps] {
                map.storeFloat(value, map.getInteger(raw) / steps);
            }));
        };
        twin("BalanceRatioAbs", "BalanceRatioRaw", model.balanceIncrement);
        twin("OstColorAdjustmentHue", "OstColorAdjustmentHueRaw", model.adjustIncrement);
        twin("OstColorAdjustmentSaturation", "OstColorAdjustmentSaturationRaw", model.adjustIncrement);
    }
    m.addChangeCallback(exposureName(), [this](const std::string&) {
        map.storeFloat("ResultingFrameRate", frameRate());
    });
    m.addChangeCallback("UserSetDefault", guarded([this] {
        memory.setStartupSet(map.getEnum("UserSetDefault"));
    }));
}

void EmulatedFeatures::Impl::powerUp()
{
    build();
    installCallbacks();
    setFactoryState();
    factoryText = Kalto::CFeaturePersistence::Save(map);
    memory.load();
    const std::string startup = memory.startupSet();
    syncing = true;
    if (std::find(kUserSets.begin(), kUserSets.end(), startup) != kUserSets.end())
        map.setEnum("UserSetDefault", startup);
    syncing = false;
    if (startup != "Default" && memory.hasSet(startup))
        loadText(memory.set(startup), "start-up user set");
}

void EmulatedFeatures::Impl::loadText(const std::string& text, const char* what)
{
    const Kalto::SLoadReport report = Kalto::CFeaturePersistence::Load(map, text);
    for (const auto& r : report.rejected)
        qCWarning(emulatorLog, "%s: line %zu (%s) rejected: %s", what, r.lineNumber, r.feature.c_str(), r.reason.c_str());
}

void EmulatedFeatures::Impl::userSetLoad()
{
    const std::string name = map.getEnum("UserSetSelector");
    const std::string text = name == "Default" || !memory.hasSet(name) ? factoryText : memory.set(name);
    loadText(text, ("UserSetLoad " + name).c_str());
}

void EmulatedFeatures::Impl::userSetSave()
{
    const std::string name = map.getEnum("UserSetSelector");
    if (name == "Default")
        KALTO_THROW_RUNTIME("UserSetSave: the Default user set is read-only");
    try {
        memory.storeSet(name, Kalto::CFeaturePersistence::Save(map));
    } catch (const std::exception& e) {
        KALTO_THROW_RUNTIME(std::string("UserSetSave: ") + e.what());
    }
}

PipelineSettings EmulatedFeatures::Impl::resolve() const
{
    std::lock_guard<std::recursive_mutex> lock(map.mutex());
    PipelineSettings s;
    s.exposureUs = map.getFloat(exposureName());
    s.gainDb = gainDb();
    s.blackLevelDn = sfnc2() ? map.getFloat("BlackLevel") : static_cast<double>(map.getInteger("BlackLevelRaw"));
    const char* ch[3] = {"Red", "Green", "Blue"};
    for (int c = 0; c < 3; ++c)
        s.balance[c] = map.getFloatFor(balanceName(), ch[c]);
    const std::string preset = map.getEnum(presetName());
    if (preset == "Daylight5000K") {
        s.matrix = kDaylightMatrix;
    } else if (preset == "Tungsten2800K") {
        s.matrix = kTungstenMatrix;
    } else {
        for (size_t i = 0; i < kGains.size(); ++i)
            s.matrix[i] = map.getFloatFor("ColorTransformationValue", kGains[i]);
    }
    s.colorAdjustEnable = sfnc2() || map.getBool("OstColorAdjustmentEnable");
    for (size_t i = 0; i < kColours.size(); ++i) {
        s.colorAdjust[i] = map.getFloatFor(adjustHue(), kColours[i]);
        s.colorAdjust[i + 6] = map.getFloatFor(adjustSaturation(), kColours[i]);
    }
    s.hueDeg = map.getFloat("OstHue");
    s.saturation = map.getFloat("OstSaturation");
    s.brightness = map.getFloat("OstBrightness");
    s.contrast = map.getFloat("OstContrast");
    s.contrastMode = map.getEnum("OstContrastMode") == "Linear" ? ContrastMode::Linear : ContrastMode::SCurve;
    s.tonalRange = map.getEnum("TonalRangeEnable") == "On";
    {
        std::lock_guard<std::mutex> state(tonalMutex);
        s.tonalLow = tonalLow;
        s.tonalHigh = tonalHigh;
    }
    s.gammaEnable = map.getBool("GammaEnable");
    s.gammaCurve = map.getEnum("GammaSelector") == "sRGB" ? GammaCurve::SRGB : GammaCurve::User;
    s.gamma = map.getFloat("Gamma");
    s.lutEnable = map.getBool("LUTEnable");
    s.lut = lut;
    s.format = static_cast<Kalto::EPixelType>(map.getEnumValue("PixelFormat"));
    s.demosaicing = map.getEnum("DemosaicingMode") == "Simple" ? Demosaicing::Simple : Demosaicing::Bilinear;
    s.processedRaw = map.getBool("ProcessedRawEnable");
    const std::string pattern = map.getEnum("TestPattern"), image = map.getEnum("TestImageSelector");
    if (pattern == "GreyHorizontalRamp" || image == "Testimage1")
        s.testPattern = TestPattern::GreyRamp;
    else if (pattern == "ColorBars" || image == "Testimage2")
        s.testPattern = TestPattern::ColorBars;
    return s;
}

void EmulatedFeatures::Impl::runAutoFunctions(const FrameStats& stats)
{
    std::lock_guard<std::recursive_mutex> lock(map.mutex());
    const std::string ea = map.getEnum("ExposureAuto"), ga = map.getEnum("GainAuto");
    const std::string wa = map.getEnum("BalanceWhiteAuto"), ta = map.getEnum("TonalRangeAuto");
    if (ea != "Off" || ga != "Off") {
        const double target = map.getFloat("AutoTargetBrightness");
        const double level = std::max(1e-4, stats.meanLevel);
        const double error = target / level;
        // Damped, so that the loop settles instead of ringing.
        double factor = std::min(4.0, std::max(0.25, std::pow(error, 0.8)));
        const bool settled = std::fabs(error - 1.0) < 0.04;
        if (!settled) {
            const char* exp = exposureName();
            const double eLo = map.getFloat(sfnc2() ? "AutoExposureTimeLowerLimit" : "AutoExposureTimeAbsLowerLimit");
            const double eHi = map.getFloat(sfnc2() ? "AutoExposureTimeUpperLimit" : "AutoExposureTimeAbsUpperLimit");
            const double gLo = sfnc2() ? map.getFloat("AutoGainLowerLimit") : map.getInteger("AutoGainRawLowerLimit") / 10.0;
            const double gHi = sfnc2() ? map.getFloat("AutoGainUpperLimit") : map.getInteger("AutoGainRawUpperLimit") / 10.0;
            auto setGain = [&](double db) {
                db = std::min(gHi, std::max(gLo, db));
                if (sfnc2())
                    map.storeFloat("Gain", db);
                else
                    map.storeInteger("GainRaw", std::llround(db * 1000.0));
            };
            double gain = gainDb();
            // Darker: take gain back first; brighter: exposure first.
            if (factor < 1.0 && ga != "Off" && gain > gLo) {
                const double wanted = gain + 20.0 * std::log10(factor);
                setGain(wanted);
                factor /= std::pow(10.0, (gainDb() - gain) / 20.0);
                gain = gainDb();
            }
            if (ea != "Off") {
                const double e = map.getFloat(exp);
                const double wanted = std::min(eHi, std::max(eLo, e * factor));
                const double stored = map.storeFloat(exp, wanted);
                factor /= stored / e;
            }
            if (ga != "Off" && std::fabs(factor - 1.0) > 1e-3)
                setGain(gain + 20.0 * std::log10(factor));
        } else {
            if (ea == "Once")
                map.storeEnum("ExposureAuto", "Off");
            if (ga == "Once")
                map.storeEnum("GainAuto", "Off");
        }
    }
    if (wa != "Off") {
        const double mx = std::max({stats.meanRaw[0], stats.meanRaw[1], stats.meanRaw[2]});
        if (mx > 1.0) {
            const char* ch[3] = {"Red", "Green", "Blue"};
            for (int c = 0; c < 3; ++c)
                map.storeFloatFor(balanceName(), ch[c], mx / std::max(1e-3, stats.meanRaw[c]));
        }
        if (wa == "Once")
            map.storeEnum("BalanceWhiteAuto", "Off");
    }
    if (ta != "Off") {
        std::lock_guard<std::mutex> state(tonalMutex);
        tonalLow = stats.lowLevel;
        tonalHigh = std::max(stats.lowLevel + 0.05, stats.highLevel);
        if (ta == "Once")
            map.storeEnum("TonalRangeAuto", "Off");
    }
}

EmulatedFeatures::EmulatedFeatures(const CameraModel& model, const std::atomic<bool>& connected)
    : d(new Impl(model, connected))
{
    d->powerUp();
}

EmulatedFeatures::~EmulatedFeatures() = default;

Kalto::CNodeMap& EmulatedFeatures::map()
{
    return d->map;
}

const Kalto::CNodeMap& EmulatedFeatures::map() const
{
    return d->map;
}

PipelineSettings EmulatedFeatures::resolve() const
{
    return d->resolve();
}

void EmulatedFeatures::runAutoFunctions(const FrameStats& stats)
{
    d->runAutoFunctions(stats);
}

double EmulatedFeatures::frameRate() const
{
    std::lock_guard<std::recursive_mutex> lock(d->map.mutex());
    return d->frameRate();
}

QString EmulatedFeatures::memoryPath() const
{
    return d->memory.path();
}
