// wncPCInfo: the snapshot of the machine taken at construction, and the
// apartment's shared instance.
#include "machine/pc_info.h"

#include <string>

#include "foundation/debug_log.h"
#include "foundation/globals.h"
#include "runtime/text.h"

namespace ostrel {

namespace {

// Size of OSVERSIONINFOEXA, as GetVersionExA expects it in the record.
constexpr int32_t kVersionRecordSize = 156;
constexpr int32_t kComputerNamePhysicalDnsFullyQualified = 7;
constexpr int32_t kNameSamCompatible = 2;
constexpr int32_t kNameCanonical = 7;
// The name calls get a buffer of 256 NULs and are told one less.
constexpr std::size_t kNameBufferLength = 256;
constexpr uint32_t kNameBufferSize = kNameBufferLength - 1;

platform::SystemInfoPort* systemInfoPort() {
    return apartment().ports.systemInfo;
}

std::string mfstrGetComputerName() {
    platform::SystemInfoPort* port = systemInfoPort();
    if (port == nullptr) return {};
    std::string buffer(kNameBufferLength, '\0');
    uint32_t size = kNameBufferSize;
    // No second format and no larger buffer: a name that doesn't fit stays empty.
    if (!port->computerNameEx(kComputerNamePhysicalDnsFullyQualified, buffer, size)) return {};
    return gfstrTrimAtNull(buffer);
}

std::string mfstrGetUserName() {
    std::string name;
    if (platform::SystemInfoPort* port = systemInfoPort()) {
        std::string buffer(kNameBufferLength, '\0');
        uint32_t size = kNameBufferSize;
        if (port->userNameEx(kNameCanonical, buffer, size)) {
            name = gfstrTrimAtNull(buffer);
        } else {
            buffer.assign(kNameBufferLength, '\0');
            size = kNameBufferSize;
            // kept: the sense is inverted here. Success throws the answer away and
            // failure keeps the buffer, so a local account ends up with USERNAME.
            if (port->userNameEx(kNameSamCompatible, buffer, size)) {
                name.clear();
            } else {
                name = gfstrTrimAtNull(buffer);
            }
        }
    }
    if (!name.empty()) return name;
    platform::EnvironmentPort* environment = apartment().ports.environment;
    if (environment == nullptr) return {};
    return environment->variable("USERNAME").value_or(std::string());
}

}  // namespace

wncPCInfo::wncPCInfo() {
    version_ = platform::OsVersionRecord{};
    version_.dwOSVersionInfoSize = kVersionRecordSize;
    platform::SystemInfoPort* port = systemInfoPort();
    // The result is not looked at: a failed call leaves the fields 0.
    if (port != nullptr) static_cast<void>(port->getVersionEx(version_));

    ComputerName_ = mfstrGetComputerName();
    UserName_ = mfstrGetUserName();

    // GetNativeSystemInfo doesn't exist before XP, so only ask for it from there on.
    const bool xpOrHigher = IsXPOrHigher();
    if (port != nullptr) {
        if (xpOrHigher) {
            port->getNativeSystemInfo(system_);
        } else {
            port->getSystemInfo(system_);
        }
    }

    if (glngDebugLevel() > 10) {
        msubLogVersionInfo();
        if (glngDebugLevel() > 1000) msubLogProcessorInfo();
    }
}

// These three answer the same whatever the machine: hosts rely on it.
bool wncPCInfo::IsMemberOfGroup(std::string& /*strGroupName*/) const {
    return false;
}
void wncPCInfo::DebugPrint() const {}
bool wncPCInfo::GetNetworkInfo() const {
    return false;
}

bool wncPCInfo::IsNTPlatform() const {
    const bool result = version_.dwPlatformId == 2;
    if (result && gblnDebug()) gsubDebugPrint("Is NT platform");
    return result;
}

// Deliberately no platform test: any system reporting 4.0 counts.
bool wncPCInfo::IsNT4() const {
    return version_.dwMajorVersion == 4 && version_.dwMinorVersion == 0;
}

bool wncPCInfo::IsX64Based() const {
    const bool result = system_.wProcessorArchitecture == 9;
    if (result && gblnDebug()) gsubDebugPrint("OS is X64 based");
    return result;
}

bool wncPCInfo::IsXPOrHigher() const {
    const bool result = version_.dwMajorVersion > 5 ||
                        (version_.dwMajorVersion == 5 && version_.dwMinorVersion >= 1);
    if (result && gblnDebug()) gsubDebugPrint("OS is XP or higher");
    return result;
}

bool wncPCInfo::IsXPEmbedded() const {
    const bool result = (version_.wSuiteMask & 64) == 64;
    if (result && gblnDebug()) gsubDebugPrint("OS is XP embedded");
    return result;
}

void wncPCInfo::msubLogVersionInfo() {
    gsubDebugPrint("Version: Major: " + std::to_string(version_.dwMajorVersion) +
                   " Minor: " + std::to_string(version_.dwMinorVersion) +
                   " Build: " + std::to_string(version_.dwBuildNumber));
    // The record keeps the cut text from here on.
    version_.szCSDVersion = gfstrTrimAtNull(version_.szCSDVersion);
    if (!version_.szCSDVersion.empty()) gsubDebugPrint("CSDVersion: " + version_.szCSDVersion);
    gsubDebugPrint("ServicePack: Major: " + std::to_string(version_.wServicePackMajor) +
                   " Minor: " + std::to_string(version_.wServicePackMinor));
    gsubDebugPrint("ProductType: " + std::to_string(version_.wProductType) +
                   " PlatformId: " + std::to_string(version_.dwPlatformId) +
                   " Suite: " + std::to_string(version_.wSuiteMask));
}

void wncPCInfo::msubLogProcessorInfo() const {
    gsubDebugPrint("Processor Architecture: " + std::to_string(system_.wProcessorArchitecture) +
                   " Type: " + std::to_string(system_.dwProcessorType) +
                   " Level: " + std::to_string(system_.wProcessorLevel) +
                   " Revision: " + std::to_string(system_.wProcessorRevision));
    gsubDebugPrint("Number Processors: " + std::to_string(system_.dwNumberOfProcessors) +
                   " ActiveProcessorMask: " + std::to_string(system_.dwActiveProcessorMask));
}

namespace {

struct SharedSlot : ApartmentSlot {
    Ref<wncPCInfo> shared;
    PCInfoFactory* factory = nullptr;
};

}  // namespace

Ref<wncPCInfo>& gobjPCInfo() {
    return apartmentSlot<SharedSlot>().shared;
}

void setPCInfoFactory(PCInfoFactory* factory) {
    apartmentSlot<SharedSlot>().factory = factory;
}

Ref<wncPCInfo> gfobjGetPCInfo() {
    Ref<wncPCInfo>& shared = gobjPCInfo();
    if (!shared) shared = newPCInfo();
    return shared;
}

void gsubReleasePCInfo() {
    gobjPCInfo().reset();
}

Ref<wncPCInfo> newPCInfo() {
    if (PCInfoFactory* factory = apartmentSlot<SharedSlot>().factory) return factory->newPCInfo();
    return makeRef<wncPCInfo>();
}

}  // namespace ostrel
