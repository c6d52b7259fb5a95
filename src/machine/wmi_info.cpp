// The WMI inventory. Every section reads all of its properties by name before
// it writes anything, so a property the system's class lacks ends the section
// through its failure path; those reads stay even where the text never shows
// the value.
#include "machine/wmi_info.h"

#include <array>
#include <memory>
#include <vector>

#include "foundation/debug_log.h"
#include "foundation/globals.h"
#include "foundation/wnc_registry.h"
#include "runtime/automation_error.h"
#include "runtime/convert.h"
#include "runtime/format.h"
#include "runtime/text.h"

namespace ostrel {

namespace {

using platform::WmiObject;
using platform::WmiServices;

constexpr std::string_view kLineEnd = "\r\n";
constexpr int32_t kHiveLocalMachine = 2;
constexpr double kBytesPerGigabyte = 1073741824.0;

constexpr std::array<std::string_view, 8> kComputerProperties{
    "Manufacturer", "Model",  "SystemType", "TotalPhysicalMemory",
    "DNSHostName",  "Domain", "Workgroup",  "name"};
constexpr std::array<std::string_view, 6> kBiosProperties{
    "name", "BuildNumber", "IdentificationCode", "Manufacturer", "SerialNumber", "version"};
constexpr std::array<std::string_view, 7> kProcessorProperties{
    "name", "MaxClockSpeed", "NumberOfCores", "AddressWidth", "version", "DeviceId", "ProcessorId"};
constexpr std::array<std::string_view, 5> kVideoProperties{
    "name", "VideoProcessor", "DriverVersion", "AdapterRAM", "VideoModeDescription"};
constexpr std::array<std::string_view, 4> kOsProperties{
    "OSArchitecture", "name", "ServicePackMajorVersion", "ServicePackMinorVersion"};
constexpr std::array<std::string_view, 1> kLogonSessionProperties{"LogonId"};
constexpr std::array<std::string_view, 5> kAccountProperties{"Caption", "Description", "Domain",
                                                             "FullName", "name"};

constexpr std::array<WmiClassReading, 6> kReadings{{
    {"Win32_ComputerSystem", "Select * from Win32_ComputerSystem", kComputerProperties},
    {"Win32_BIOS", "Select * from Win32_BIOS", kBiosProperties},
    {"Win32_Processor", "Select * from Win32_Processor", kProcessorProperties},
    {"Win32_VideoController", "Select * from Win32_VideoController", kVideoProperties},
    {"Win32_OperatingSystem", "Select * from Win32_OperatingSystem", kOsProperties},
    {"Win32_LogonSession", "Select * from Win32_LogonSession Where LogonType = 2",
     kLogonSessionProperties},
}};
enum Reading { kComputer, kBios, kProcessor, kVideo, kOs, kLogonSession };

// All of one object's properties of a section, read in order.
template <std::size_t N>
std::array<Variant, N> readAll(WmiObject& object, const std::array<std::string_view, N>& names) {
    std::array<Variant, N> values;
    for (std::size_t i = 0; i < N; ++i) values[i] = object.property(names[i]);
    return values;
}

// The section's query; null for a null result set.
std::unique_ptr<platform::WmiResultSet> query(WmiServices& services, Reading reading) {
    return services.execQuery(kReadings[reading].query);
}

void appendIfAny(std::string& text, std::string_view separator, std::string_view value) {
    if (value.empty()) return;
    text += separator;
    text += value;
}

// The failure line of a section, written at any verbosity.
void logFailure(std::string_view routine) {
    const AutomationError error = currentError();
    gsubDebugPrint(std::string(routine) + " ERR(" + std::to_string(error.number) + ") " +
                   error.description);
}

// A value joined into text as '&' joins it: Null adds nothing.
std::string joinedText(const Variant& value) {
    return value.isNull() ? std::string() : toText(value);
}

// Split: the parts between the separators; none at all for empty text.
std::vector<std::string> splitText(std::string_view text, char separator) {
    std::vector<std::string> parts;
    if (text.empty()) return parts;
    for (std::size_t start = 0;;) {
        const std::size_t end = text.find(separator, start);
        parts.emplace_back(text.substr(start, end - start));
        if (end == std::string_view::npos) return parts;
        start = end + 1;
    }
}

// The line end after the objects of a section, when they said anything.
std::string& closed(std::string& text) {
    if (!text.empty()) text += kLineEnd;
    return text;
}

}  // namespace

std::string mfstrWmiString(const Variant& value) {
    std::string result;
    resumeNext([&] {
        if (!value.isNull() && !value.isEmpty()) result = trimBlanks(toText(value));
    });
    return result;
}

int32_t mflngWmiLong(const Variant& value) {
    int32_t result = 0;
    resumeNext([&] {
        if (!value.isNull() && !value.isEmpty() && isNumeric(value)) result = toLong(value);
    });
    return result;
}

double mfdblWmiDouble(const Variant& value) {
    double result = 0.0;
    resumeNext([&] {
        if (!value.isNull() && !value.isEmpty() && isNumeric(value)) result = toDouble(value);
    });
    return result;
}

std::span<const WmiClassReading> wmiInventoryReadings() {
    return kReadings;
}

std::span<const std::string_view> wmiAccountProperties() {
    return kAccountProperties;
}

std::string wmiLogonAccountsQuery(const Variant& logonId) {
    return "Associators of {Win32_LogonSession.LogonId=" + joinedText(logonId) + "} " +
           "Where AssocClass=Win32_LoggedOnUser Role=Dependent";
}

std::string gfstrGetWmiNamespace() {
    try {
        WNCRegistry registry;
        std::string strNamespace;
        if (registry.TryOpenKey(kHiveLocalMachine, "Software\\Microsoft\\WBEM\\Scripting",
                                kKeyQueryValue, 0)) {
            if (!registry.GetStringValue("Default Namespace", strNamespace)) strNamespace.clear();
        }
        return strNamespace;
    } catch (...) {
        return std::string();
    }
}

std::string WmiInfo() {
    std::string text;
    try {
        const std::string strComputer = ".";
        // No default namespace is assumed: without one the moniker ends in the backslash.
        const std::string strMoniker = "winmgmts:{impersonationLevel=impersonate}!\\\\" +
                                       strComputer + "\\" + gfstrGetWmiNamespace();
        const std::unique_ptr<WmiServices> services =
            requirePort(apartment().ports.wmi).connect(strMoniker);
        if (!services) return text;
        const LocaleFacts locale = requirePort(apartment().ports.locale).facts();
        text +=
            "//" +
            formatDate(requirePort(apartment().ports.clock).now(), "yyyy-mmm-dd hh:nn:ss", locale) +
            std::string(kLineEnd);
        // kept: the prefix goes in also before a section with nothing to say,
        // so an empty one leaves a bare "//" and the next follows on its line
        text += "//" + GetWmiComputerInfo(services.get());
        text += "//" + GetWmiBiosInfo(services.get());
        text += "//" + GetWmiProcessorInfo(services.get());
        text += "//" + GetWmiVideoProcessor(services.get());
        text += "//" + GetWmiOSInfo(services.get());
        text += GetWmiUserAccountInfo(services.get());  // it writes its own prefixes
        return text;
    } catch (...) {
        return text;  // nothing is logged
    }
}

std::string GetWmiComputerInfo(WmiServices* services) {
    std::string text;
    try {
        if (!services) return text;
        const auto set = query(*services, kComputer);
        if (!set) return "Win32_ComputerSystem not supported" + std::string(kLineEnd);
        while (const auto object = set->next()) {
            const auto values = readAll(*object, kComputerProperties);
            const std::string strManufacturer = mfstrWmiString(values[0]);
            const std::string strModel = mfstrWmiString(values[1]);
            const std::string strSystemType = mfstrWmiString(values[2]);
            const double dblTotalPhysicalMemory = mfdblWmiDouble(values[3]);
            const std::string strDNSHostName = mfstrWmiString(values[4]);
            const std::string strDomain = mfstrWmiString(values[5]);
            const std::string strWorkgroup = mfstrWmiString(values[6]);
            const std::string strName = mfstrWmiString(values[7]);
            if (strManufacturer.empty()) continue;
            text += strManufacturer;
            appendIfAny(text, ", ", strModel);
            appendIfAny(text, ", ", strSystemType);
            text += ", " +
                    formatNumber(dblTotalPhysicalMemory / kBytesPerGigabyte, "0.0",
                                 requirePort(apartment().ports.locale).facts()) +
                    "GB";
            if (!strName.empty()) {
                text += ", ";
                // kept: the test looks at Workgroup but the text shows Domain, so a
                // workgroup machine ends in "name."; the line break of the other case too
                if (!strDomain.empty() || !strWorkgroup.empty()) {
                    text += strName + "." + strDomain;
                } else {
                    text += std::string(kLineEnd) + strName;
                }
            }
            text += "  ";
        }
        return closed(text);
    } catch (...) {
        logFailure("GetWmiComputerInfo");
        return text;
    }
}

std::string GetWmiBiosInfo(WmiServices* services) {
    std::string text;
    try {
        if (!services) return text;
        const auto set = query(*services, kBios);
        if (!set) return "Win32_BIOS not supported" + std::string(kLineEnd);
        while (const auto object = set->next()) {
            const auto values = readAll(*object, kBiosProperties);
            const std::string strName = mfstrWmiString(values[0]);
            const std::string strBuildNumber = mfstrWmiString(values[1]);
            const std::string strIdentificationCode = mfstrWmiString(values[2]);
            const std::string strManufacturer = mfstrWmiString(values[3]);
            const std::string strSerialNumber = mfstrWmiString(values[4]);
            if (strName.empty()) continue;
            text += strName;
            appendIfAny(text, ", ", strManufacturer);
            appendIfAny(text, ", ", strBuildNumber);
            appendIfAny(text, ", ", strSerialNumber);
            appendIfAny(text, ", ", strIdentificationCode);
            text += "  ";
        }
        return closed(text);
    } catch (...) {
        logFailure("GetWmiBiosInfo");
        return text;
    }
}

std::string GetWmiProcessorInfo(WmiServices* services) {
    std::string text;
    try {
        if (!services) return text;
        const auto set = query(*services, kProcessor);
        if (!set) return "Win32_Processor not supported" + std::string(kLineEnd);
        while (const auto object = set->next()) {
            const auto values = readAll(*object, kProcessorProperties);
            const std::string strName = mfstrWmiString(values[0]);
            const int32_t lngMaxClockSpeed = mflngWmiLong(values[1]);
            const std::string strProcessorId = mfstrWmiString(values[6]);
            if (strName.empty()) continue;
            // kept: the label is always CPU_0, however many processors there are
            text += "CPU_" + std::string("0") + " " + strName;
            appendIfAny(text, ", ", strProcessorId);
            text += ", " + std::to_string(lngMaxClockSpeed) + "Mhz" + "  ";
        }
        return closed(text);
    } catch (...) {
        logFailure("GetWmiProcessorInfo");
        return text;
    }
}

std::string GetWmiVideoProcessor(WmiServices* services) {
    std::string text;
    try {
        if (!services) return text;
        const auto set = query(*services, kVideo);
        if (!set) return text;
        int16_t intCount = 0;
        while (const auto object = set->next()) {
            const auto values = readAll(*object, kVideoProperties);
            const std::string strName = mfstrWmiString(values[0]);
            const std::string strVideoProcessor = mfstrWmiString(values[1]);
            const std::string strDriverVersion = mfstrWmiString(values[2]);
            if (!strName.empty()) {
                text += "Video_" + std::to_string(intCount) + " " + strName;
                appendIfAny(text, ", ", strVideoProcessor);
                appendIfAny(text, ", ", strDriverVersion);
                text += "  ";
            }
            // kept: a card without a name uses up its number too
            intCount = narrowToInteger(intCount + 1);
        }
        return closed(text);
    } catch (...) {
        logFailure("GetWmiVideoProcessor");
        return text;
    }
}

std::string GetWmiOSInfo(WmiServices* services) {
    std::string text;
    try {
        if (!services) return text;
        const auto set = query(*services, kOs);
        if (!set) return text;
        while (const auto object = set->next()) {
            const auto values = readAll(*object, kOsProperties);
            const std::string strOSArchitecture = mfstrWmiString(values[0]);
            const std::string strName = mfstrWmiString(values[1]);
            const int16_t intServicePackMajor = narrowToInteger(mflngWmiLong(values[2]));
            const int16_t intServicePackMinor = narrowToInteger(mflngWmiLong(values[3]));
            // caption|folder|device: all three parts must be there
            const std::vector<std::string> parts = splitText(strName, '|');
            if (parts.size() < 3) raise(kErrSubscript);
            const std::string strCaption = trimBlanks(parts[0]);
            const std::string strFolder = trimBlanks(parts[1]);
            const std::string strDevice = trimBlanks(parts[2]);
            if (strCaption.empty()) continue;
            text += strCaption;
            appendIfAny(text, ", ", strOSArchitecture);
            if (intServicePackMajor > 0) {
                text += ", SP " + std::to_string(intServicePackMajor);
                if (intServicePackMinor > 0) text += "." + std::to_string(intServicePackMinor);
            }
            if (!strFolder.empty()) {
                text += ", " + strFolder;
                if (!strDevice.empty()) text += " (" + strDevice + ")";
            } else if (!strDevice.empty()) {
                text += ", " + strDevice;
            }
            text += " ";  // one blank here, unlike the other sections
        }
        return closed(text);
    } catch (...) {
        logFailure("GetWmiOSInfo");
        return text;
    }
}

std::string GetWmiUserAccountInfo(WmiServices* services) {
    std::string text;
    AutomationError error(0, std::string());
    try {
        // No test for a missing services object: the query fails as on Nothing.
        if (!services) raise(kErrObjectNotSet);
        const auto sessions = query(*services, kLogonSession);
        if (!sessions) {
            text += "//Win32_LogonSession not supported" + std::string(kLineEnd);
        } else {
            while (const auto session = sessions->next()) {
                const auto accounts =
                    services->execQuery(wmiLogonAccountsQuery(session->property("LogonId")));
                if (!accounts) continue;
                // kept: the count is of the sessions, not of the accounts
                text += "//Win32_LogonSession USER count:" + std::to_string(sessions->count()) +
                        std::string(kLineEnd);
                while (const auto account = accounts->next()) {
                    const auto values = readAll(*account, kAccountProperties);
                    const std::string strDomain = mfstrWmiString(values[2]);
                    const std::string strFullName = mfstrWmiString(values[3]);
                    const std::string strName = mfstrWmiString(values[4]);
                    if (strFullName.empty()) continue;
                    // kept: an account with a full name replaces all that stood before
                    text = "//" + strFullName;
                    appendIfAny(text, ", ", strName);
                    appendIfAny(text, ", ", strDomain);
                    text += kLineEnd;
                }
            }
        }
    } catch (...) {
        error = currentError();
    }
    // Written on the normal path too, then as "ERR(0) ".
    gsubDebugPrint("GetWmiUserAccountInfo ERR(" + std::to_string(error.number) + ") " +
                   error.description);
    return text;
}

}  // namespace ostrel
