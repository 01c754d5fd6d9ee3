#include "registerlayout.h"

#include "genicam/nodemap.h"

#include <cmath>
#include <sstream>
#include <stdexcept>

using Kalto::EAccessMode;
using Kalto::ENodeType;

namespace {

struct Lock {
    const char* feature;
    const char* by;
    bool whenZero;
};

// The emulated camera turns these read-only while an auto function drives
// them, and refuses to save over the Default user set. A client learns this
// from the description, so the rules are spelled out here for it.
const Lock kLocks[] = {
    {"ExposureTime", "ExposureAuto", false},
    {"Gain", "GainAuto", false},
    {"BalanceRatio", "BalanceWhiteAuto", false},
    {"UserSetSave", "UserSetSelector", true},
};

std::string hex(uint32_t v)
{
    std::ostringstream s;
    s << "0x" << std::hex << std::uppercase << v;
    return s.str();
}

std::string number(double v)
{
    std::ostringstream s;
    s.precision(17);
    s << v;
    return s.str();
}

}  // namespace

RegisterLayout::RegisterLayout(const Kalto::CNodeMap& map) : m_map(map)
{
    std::lock_guard<std::recursive_mutex> lock(map.mutex());
    uint32_t next = kFirstAddress;
    for (const std::string& name : map.nodeNames()) {
        Slot s;
        s.name = name;
        s.selector = map.selectorOf(name);
        if (!s.selector.empty()) {
            int64_t top = 0;
            for (const auto& e : map.enumEntries(s.selector))
                top = std::max(top, e.value);
            s.entries = static_cast<uint32_t>(top + 1);
        }
        const ENodeType type = map.nodeType(name);
        switch (type) {
        case ENodeType::Float: {
            const double inc = map.floatIncrement(name);
            if (inc > 0.0) {
                s.kind = Kind::ScaledFloat;
                s.scale = std::round(1.0 / inc);
                if (std::fabs(s.scale * inc - 1.0) > 1e-9)
                    throw std::runtime_error(name + ": increment " + number(inc) + " is not 1/n");
            } else {
                s.kind = Kind::DoubleFloat;
                s.length = 8;
            }
            break;
        }
        case ENodeType::Integer: s.kind = Kind::Integer; break;
        case ENodeType::Enumeration: s.kind = Kind::Enumeration; break;
        case ENodeType::Boolean: s.kind = Kind::Boolean; break;
        case ENodeType::String:
            s.kind = Kind::String;
            s.length = static_cast<uint32_t>(map.stringMaxLength(name));
            break;
        case ENodeType::Command: s.kind = Kind::Command; break;
        }
        for (const Lock& l : kLocks)
            if (name == l.feature) {
                s.lockedBy = l.by;
                s.lockedWhenZero = l.whenZero;
            }
        // Without a lock rule the mode seen now is the static one.
        s.readOnly = s.lockedBy.empty() && map.accessMode(name) == EAccessMode::RO;
        s.streamable = type != ENodeType::Command && !s.readOnly && map.isPersistent(name);

        if (name == "Width") {
            s.address = kWidthAddress;
        } else if (name == "Height") {
            s.address = kHeightAddress;
        } else if (name == "PixelFormat") {
            s.address = kPixelFormatAddress;
        } else if (name == "DeviceVendorName") {
            s.address = kVendorNameAddress;
            s.length = 32;
        } else if (name == "DeviceModelName") {
            s.address = kModelNameAddress;
            s.length = 32;
        } else if (name == "DeviceSerialNumber") {
            s.address = kSerialNumberAddress;
            s.length = 16;
        } else {
            s.address = next;
            next += (s.length * s.entries + 3) / 4 * 4;
            if (next > kMemorySize)
                throw std::runtime_error("the features need more than the device's " +
                                         std::to_string(kMemorySize) + " bytes of memory");
        }
        m_byAddress[s.address] = m_slots.size();
        m_slots.push_back(s);
    }
}

const RegisterLayout::Slot* RegisterLayout::slotAt(uint32_t address) const
{
    auto it = m_byAddress.upper_bound(address);
    if (it == m_byAddress.begin())
        return nullptr;
    --it;
    const Slot& s = m_slots[it->second];
    return address < s.address + s.length * s.entries ? &s : nullptr;
}

// Pieces of the GenICam description, one node kind each.
namespace {

using Slot = RegisterLayout::Slot;

void writeHeader(std::ostream& x, const std::string& modelName)
{
    x << "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
         "<RegisterDescription ModelName=\"" << modelName << "\" VendorName=\"Kalto\"\n"
         "    ToolTip=\"Emulated colour camera\" StandardNameSpace=\"GEV\"\n"
         "    SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\"\n"
         "    MajorVersion=\"1\" MinorVersion=\"0\" SubMinorVersion=\"0\"\n"
         "    ProductGuid=\"5A3C1E0B-7F24-4C51-9E0D-6B2F0C8A4D11\" VersionGuid=\"0B7E9A62-3D15-4F8C-A1E4-92C6D05B7F30\"\n"
         "    xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n";
}

// One flat category in the node map's order: loading settings walks it,
// and the emulator registers auto functions before what they drive.
void writeCategory(std::ostream& x, const std::vector<Slot>& slots)
{
    x << "  <Category Name=\"Root\" NameSpace=\"Standard\">\n";
    for (const Slot& s : slots)
        x << "    <pFeature>" << s.name << "</pFeature>\n";
    x << "    <pFeature>PayloadSize</pFeature>\n"
         "    <pFeature>AcquisitionStart</pFeature>\n"
         "    <pFeature>AcquisitionStop</pFeature>\n"
         "  </Category>\n";
}

void writeIntReg(std::ostream& x, const std::string& name, const Slot& s, bool isSigned)
{
    x << "  <IntReg Name=\"" << name << "\">\n"
      << "    <Address>" << hex(s.address) << "</Address>\n";
    if (!s.selector.empty())
        x << "    <pIndex Offset=\"" << s.length << "\">" << s.selector << "_Reg</pIndex>\n";
    x << "    <Length>" << s.length << "</Length>\n"
      << "    <AccessMode>" << (s.readOnly ? "RO" : "RW") << "</AccessMode>\n"
      << "    <pPort>Device</pPort>\n"
      << "    <Sign>" << (isSigned ? "Signed" : "Unsigned") << "</Sign>\n"
      << "    <Endianess>BigEndian</Endianess>\n"
      << "  </IntReg>\n";
}

// What every feature node says about its lock, access and persistence.
void writeCommon(std::ostream& x, const Slot& s)
{
    if (!s.lockedBy.empty())
        x << "    <pIsLocked>" << s.name << "_Locked</pIsLocked>\n";
    if (s.readOnly)
        x << "    <ImposedAccessMode>RO</ImposedAccessMode>\n";
    if (s.streamable)
        x << "    <Streamable>Yes</Streamable>\n";
}

// A float with an increment: an integer register of value / increment.
void writeScaledFloat(std::ostream& x, const Slot& s, const Kalto::CNodeMap& map)
{
    const std::string& n = s.name;
    const std::string unit = map.floatUnit(n);
    x << "  <Converter Name=\"" << n << "\" NameSpace=\"Standard\">\n";
    writeCommon(x, s);
    x << "    <FormulaTo>ROUND(FROM*" << number(s.scale) << ")</FormulaTo>\n"
      << "    <FormulaFrom>TO/" << number(s.scale) << ".0</FormulaFrom>\n"
      << "    <pValue>" << n << "_Raw</pValue>\n";
    if (!unit.empty())
        x << "    <Unit>" << unit << "</Unit>\n";
    x << "    <Slope>Increasing</Slope>\n"
      << "    <IsLinear>Yes</IsLinear>\n"
      << "  </Converter>\n"
      << "  <Integer Name=\"" << n << "_Raw\">\n"
      << "    <pValue>" << n << "_Reg</pValue>\n"
      << "    <Min>" << std::llround(map.floatMin(n) * s.scale) << "</Min>\n"
      << "    <Max>" << std::llround(map.floatMax(n) * s.scale) << "</Max>\n"
      << "    <Inc>1</Inc>\n"
      << "  </Integer>\n";
    writeIntReg(x, n + "_Reg", s, true);
}

void writeDoubleFloat(std::ostream& x, const Slot& s, const Kalto::CNodeMap& map)
{
    const std::string& n = s.name;
    x << "  <Float Name=\"" << n << "\" NameSpace=\"Standard\">\n";
    writeCommon(x, s);
    x << "    <pValue>" << n << "_Reg</pValue>\n"
      << "    <Min>" << number(map.floatMin(n)) << "</Min>\n"
      << "    <Max>" << number(map.floatMax(n)) << "</Max>\n";
    if (!map.floatUnit(n).empty())
        x << "    <Unit>" << map.floatUnit(n) << "</Unit>\n";
    x << "  </Float>\n"
      << "  <FloatReg Name=\"" << n << "_Reg\">\n"
      << "    <Address>" << hex(s.address) << "</Address>\n"
      << "    <Length>8</Length>\n"
      << "    <AccessMode>" << (s.readOnly ? "RO" : "RW") << "</AccessMode>\n"
      << "    <pPort>Device</pPort>\n"
      << "    <Endianess>BigEndian</Endianess>\n"
      << "  </FloatReg>\n";
}

void writeInteger(std::ostream& x, const Slot& s, const Kalto::CNodeMap& map)
{
    const std::string& n = s.name;
    x << "  <Integer Name=\"" << n << "\" NameSpace=\"Standard\">\n";
    writeCommon(x, s);
    x << "    <pValue>" << n << "_Reg</pValue>\n"
      << "    <Min>" << map.integerMin(n) << "</Min>\n"
      << "    <Max>" << map.integerMax(n) << "</Max>\n"
      << "    <Inc>" << map.integerIncrement(n) << "</Inc>\n"
      << "  </Integer>\n";
    writeIntReg(x, n + "_Reg", s, true);
}

void writeEnumeration(std::ostream& x, const Slot& s, const Kalto::CNodeMap& map)
{
    const std::string& n = s.name;
    x << "  <Enumeration Name=\"" << n << "\" NameSpace=\"Standard\">\n";
    writeCommon(x, s);
    for (const std::string& f : map.selectedFeatures(n))
        x << "    <pSelected>" << f << "</pSelected>\n";
    for (const auto& e : map.enumEntries(n)) {
        x << "    <EnumEntry Name=\"" << e.symbolic << "\">\n";
        if (!e.displayName.empty())
            x << "      <DisplayName>" << e.displayName << "</DisplayName>\n";
        x << "      <Value>" << e.value << "</Value>\n"
          << "    </EnumEntry>\n";
    }
    x << "    <pValue>" << n << "_Reg</pValue>\n"
      << "  </Enumeration>\n";
    writeIntReg(x, n + "_Reg", s, false);
}

void writeBoolean(std::ostream& x, const Slot& s)
{
    x << "  <Boolean Name=\"" << s.name << "\" NameSpace=\"Standard\">\n";
    writeCommon(x, s);
    x << "    <pValue>" << s.name << "_Reg</pValue>\n"
      << "    <OnValue>1</OnValue>\n"
      << "    <OffValue>0</OffValue>\n"
      << "  </Boolean>\n";
    writeIntReg(x, s.name + "_Reg", s, false);
}

void writeString(std::ostream& x, const Slot& s)
{
    x << "  <StringReg Name=\"" << s.name << "\" NameSpace=\"Standard\">\n";
    writeCommon(x, s);
    x << "    <Address>" << hex(s.address) << "</Address>\n"
      << "    <Length>" << s.length << "</Length>\n"
      << "    <AccessMode>" << (s.readOnly ? "RO" : "RW") << "</AccessMode>\n"
      << "    <pPort>Device</pPort>\n"
      << "  </StringReg>\n";
}

void writeCommand(std::ostream& x, const Slot& s)
{
    x << "  <Command Name=\"" << s.name << "\" NameSpace=\"Standard\">\n";
    writeCommon(x, s);
    x << "    <pValue>" << s.name << "_Reg</pValue>\n"
      << "    <CommandValue>1</CommandValue>\n"
      << "  </Command>\n";
    writeIntReg(x, s.name + "_Reg", s, false);
}

// The lock rule of a feature that has one, as a formula over its enumeration.
void writeLock(std::ostream& x, const Slot& s)
{
    x << "  <IntSwissKnife Name=\"" << s.name << "_Locked\">\n"
      << "    <pVariable Name=\"A\">" << s.lockedBy << "_Reg</pVariable>\n"
      << "    <Formula>" << (s.lockedWhenZero ? "A=0" : "A&gt;0") << "</Formula>\n"
      << "  </IntSwissKnife>\n";
}

// What every GigE Vision client needs beside the colour features, and the end.
void writeAcquisitionAndEnd(std::ostream& x)
{
    x << "  <IntSwissKnife Name=\"PayloadSize\" NameSpace=\"Standard\">\n"
         "    <pVariable Name=\"W\">Width</pVariable>\n"
         "    <pVariable Name=\"H\">Height</pVariable>\n"
         "    <pVariable Name=\"PF\">PixelFormat</pVariable>\n"
         "    <Formula>W*H*((PF&gt;&gt;16)&amp;0xFF)/8</Formula>\n"
         "  </IntSwissKnife>\n"
         "  <Command Name=\"AcquisitionStart\" NameSpace=\"Standard\">\n"
         "    <pValue>Acquisition_Reg</pValue>\n"
         "    <CommandValue>1</CommandValue>\n"
         "  </Command>\n"
         "  <Command Name=\"AcquisitionStop\" NameSpace=\"Standard\">\n"
         "    <pValue>Acquisition_Reg</pValue>\n"
         "    <CommandValue>0</CommandValue>\n"
         "  </Command>\n"
         "  <IntReg Name=\"Acquisition_Reg\">\n"
         "    <Address>" << hex(RegisterLayout::kAcquisitionAddress) << "</Address>\n"
         "    <Length>4</Length>\n"
         "    <AccessMode>RW</AccessMode>\n"
         "    <pPort>Device</pPort>\n"
         "    <Sign>Unsigned</Sign>\n"
         "    <Endianess>BigEndian</Endianess>\n"
         "  </IntReg>\n"
         "  <Integer Name=\"TLParamsLocked\">\n"
         "    <Visibility>Invisible</Visibility>\n"
         "    <Value>0</Value>\n"
         "    <Min>0</Min>\n"
         "    <Max>1</Max>\n"
         "  </Integer>\n"
         "  <Port Name=\"Device\" NameSpace=\"Standard\"/>\n"
         "</RegisterDescription>\n";
}

}  // namespace

std::string RegisterLayout::genicamXml(const std::string& modelName) const
{
    std::lock_guard<std::recursive_mutex> lock(m_map.mutex());
    std::ostringstream x;
    writeHeader(x, modelName);
    writeCategory(x, m_slots);
    for (const Slot& s : m_slots) {
        switch (s.kind) {
        case Kind::ScaledFloat: writeScaledFloat(x, s, m_map); break;
        case Kind::DoubleFloat: writeDoubleFloat(x, s, m_map); break;
        case Kind::Integer: writeInteger(x, s, m_map); break;
        case Kind::Enumeration: writeEnumeration(x, s, m_map); break;
        case Kind::Boolean: writeBoolean(x, s); break;
        case Kind::String: writeString(x, s); break;
        case Kind::Command: writeCommand(x, s); break;
        }
        if (!s.lockedBy.empty())
            writeLock(x, s);
    }
    writeAcquisitionAndEnd(x);
    return x.str();
}
