// The system information calls on Linux: the Windows records and names, as
// close as this system has them.
//
// Hosts were written for Windows and judge a system by its version record,
// so the record describes what they expect of a current system, Windows 10
// (platform 2, version 10.0), and carries the kernel's own release where a
// person reads it: in the build number and the service-pack text. The
// kernel's numbers would be misread (a 4.x kernel is "older than XP", 4.0
// "NT 4").
//
// Version record (GetVersionExA)
//   dwOSVersionInfoSize  must be 148 or 156 on the way in, as Windows insists; else the call fails
//   dwMajorVersion       10
//   dwMinorVersion       0
//   dwBuildNumber        the kernel release as the kernel codes it (LINUX_VERSION_CODE):
//                        major << 16 | minor << 8 | patch (at most 255); "6.1.0-18-amd64": 393472
//   dwPlatformId         2, the NT family
//   szCSDVersion         the kernel's name and release: "Linux 6.1.0-18-amd64"
//   wServicePackMajor/Minor  0
//   wSuiteMask           0: no embedded, terminal or server suite
//   wProductType         1, a workstation
// System record (GetSystemInfo / GetNativeSystemInfo)
//   wProcessorArchitecture  0 x86, 5 ARM, 9 x64, 12 ARM64, 0xFFFF unknown. The native
//                           record reads the machine from uname; the plain one the
//                           architecture this process was built for, so a 32-bit build
//                           on a 64-bit kernel sees x86 there, as under WOW64
//   dwProcessorType      8664 for x64, 586 for x86 (what Windows reports for these); 0 otherwise
//   wProcessorLevel      x86/x64: "cpu family" of /proc/cpuinfo; ARM: "CPU architecture"
//   wProcessorRevision   x86/x64: "model" << 8 | "stepping"; ARM: "CPU variant" << 8 |
//                        "CPU revision"; 0 when /proc/cpuinfo can't tell
//   dwActiveProcessorMask  the system's online processors (/sys/devices/system/cpu/online),
//                        0 to 31: the mask has 32 bits, as for a 32-bit process on Windows
//   dwNumberOfProcessors the processors of that mask. Where the list can't be read, the
//                        online count (sysconf) and a mask of as many processors from 0
// Computer name (GetComputerNameExA)
//   3 and 7 (fully qualified): the host name, qualified by the local domain of
//   /etc/resolv.conf ("domain", else the first "search" entry, the last line
//   winning) unless it has a dot already. No resolver or network lookup: a
//   slow name server delays nothing, and /etc/hosts can't turn the name into
//   "localhost". An empty name fails. Other formats fail.
// User name (GetUserNameExA)
//   There is no directory service, so every format fails. A failing
//   NameSamCompatible (2) call leaves the login name (getpwuid of the effective
//   user, else getlogin_r) in the buffer when USERNAME is unset or empty: the
//   component's inverted reading of that call then takes it, and otherwise falls
//   back to USERNAME as on Windows.
// Buffers behave as on Windows: a name needs its length plus one in the given
// size, else the call fails and the size tells what is needed.
#include "platform/posix/system_info_posix.h"

#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adapters.h"
#include "platform/system_info_port.h"

namespace ostrel::platform {

namespace {

constexpr int16_t kArchX86 = 0;
constexpr int16_t kArchArm = 5;
constexpr int16_t kArchX64 = 9;
constexpr int16_t kArchArm64 = 12;
constexpr int16_t kArchUnknown = -1;  // 0xFFFF
constexpr int32_t kProcessorIntelPentium = 586;
constexpr int32_t kProcessorAmdX8664 = 8664;

int32_t leadingNumber(std::string_view text, std::size_t& pos) {
    int32_t value = 0;
    const char* begin = text.data() + pos;
    const auto [end, ec] = std::from_chars(begin, text.data() + text.size(), value);
    if (ec != std::errc{}) value = 0;
    pos += static_cast<std::size_t>(end - begin);
    return value;
}

int16_t architectureOf(std::string_view machine) {
    if (machine == "x86_64" || machine == "amd64") return kArchX64;
    if (machine.size() == 4 && machine[0] == 'i' && machine.substr(2) == "86") return kArchX86;
    if (machine == "aarch64" || machine == "arm64") return kArchArm64;
    if (machine.substr(0, 3) == "arm") return kArchArm;
    return kArchUnknown;
}

int16_t buildArchitecture() {
#if defined(__x86_64__)
    return kArchX64;
#elif defined(__i386__)
    return kArchX86;
#elif defined(__aarch64__)
    return kArchArm64;
#elif defined(__arm__)
    return kArchArm;
#else
    return kArchUnknown;
#endif
}

std::string trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(" \t\r");
    return std::string(text.substr(first, last - first + 1));
}

// The first processor's entries of /proc/cpuinfo that the record uses.
struct CpuFacts {
    int32_t family = 0, model = 0, stepping = 0;          // x86
    int32_t architecture = 0, variant = 0, revision = 0;  // ARM
};

int32_t numberOf(const std::string& value) {
    // "CPU variant : 0x1" is hexadecimal, the rest decimal.
    const bool hex = value.size() > 2 && value[0] == '0' && (value[1] == 'x' || value[1] == 'X');
    int32_t number = 0;
    const char* begin = value.data() + (hex ? 2 : 0);
    if (std::from_chars(begin, value.data() + value.size(), number, hex ? 16 : 10).ec !=
        std::errc{})
        return 0;
    return number;
}

CpuFacts readCpuInfo() {
    CpuFacts facts;
    std::ifstream in("/proc/cpuinfo");
    std::string line;
    while (std::getline(in, line)) {
        if (trimmed(line).empty()) break;  // end of the first processor
        const auto colon = line.find(':');
        if (colon == std::string::npos) continue;
        const std::string key = trimmed(std::string_view(line).substr(0, colon));
        const int32_t value = numberOf(trimmed(std::string_view(line).substr(colon + 1)));
        if (key == "cpu family")
            facts.family = value;
        else if (key == "model")
            facts.model = value;
        else if (key == "stepping")
            facts.stepping = value;
        else if (key == "CPU architecture")
            facts.architecture = value;
        else if (key == "CPU variant")
            facts.variant = value;
        else if (key == "CPU revision")
            facts.revision = value;
    }
    return facts;
}

}  // namespace

std::string fileText(const char* path) {
    std::ifstream in(path);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

namespace {

void fillSystemRecord(SystemRecord& record, int16_t architecture) {
    record = SystemRecord{};
    record.wProcessorArchitecture = architecture;
    const CpuFacts cpu = readCpuInfo();
    switch (architecture) {
        case kArchX64:
        case kArchX86:
            record.dwProcessorType =
                architecture == kArchX64 ? kProcessorAmdX8664 : kProcessorIntelPentium;
            record.wProcessorLevel = static_cast<int16_t>(cpu.family);
            // The record's WORD, as the run time's signed Integer holds it.
            record.wProcessorRevision = static_cast<int16_t>(
                static_cast<uint16_t>(((cpu.model & 0xFF) << 8) | (cpu.stepping & 0xFF)));
            break;
        case kArchArm64:
        case kArchArm:
            record.wProcessorLevel = static_cast<int16_t>(cpu.architecture);
            record.wProcessorRevision = static_cast<int16_t>(
                static_cast<uint16_t>(((cpu.variant & 0xFF) << 8) | (cpu.revision & 0xFF)));
            break;
        default:
            break;
    }
    uint32_t mask = processorMask(fileText("/sys/devices/system/cpu/online"));
    if (mask == 0) {
        const long online = std::clamp(sysconf(_SC_NPROCESSORS_ONLN), 1L, 32L);
        mask = online == 32 ? ~0u : (1u << online) - 1;
    }
    record.dwActiveProcessorMask = static_cast<int32_t>(mask);
    record.dwNumberOfProcessors = std::popcount(mask);
}

}  // namespace

std::string hostName() {
    std::array<char, 1025> name{};
    if (gethostname(name.data(), name.size() - 1) != 0) return {};
    return std::string(name.data());
}

namespace {

std::string loginName() {
    std::vector<char> scratch(16384);
    passwd entry{};
    passwd* result = nullptr;
    if (getpwuid_r(geteuid(), &entry, scratch.data(), scratch.size(), &result) == 0 &&
        result != nullptr && result->pw_name != nullptr && result->pw_name[0] != '\0') {
        return result->pw_name;
    }
    std::array<char, 256> name{};
    if (getlogin_r(name.data(), name.size()) == 0) return std::string(name.data());
    return {};
}

// Hands a name back the way the A calls do: it needs its length plus one in size.
bool copyOut(const std::string& name, std::string& buffer, uint32_t& size) {
    const std::size_t needed = name.size() + 1;
    if (name.empty() || needed > size) {
        if (!name.empty()) size = static_cast<uint32_t>(needed);
        return false;
    }
    if (buffer.size() < needed) buffer.resize(needed, '\0');
    buffer.replace(0, name.size(), name);
    buffer[name.size()] = '\0';
    size = static_cast<uint32_t>(name.size());
    return true;
}

class PosixSystemInfo final : public SystemInfoPort {
  public:
    bool getVersionEx(OsVersionRecord& record) override {
        if (record.dwOSVersionInfoSize != 148 && record.dwOSVersionInfoSize != 156) return false;
        utsname names{};
        if (uname(&names) != 0) return false;
        record.dwMajorVersion = 10;
        record.dwMinorVersion = 0;
        record.dwBuildNumber = kernelVersionCode(names.release);
        record.dwPlatformId = 2;
        record.szCSDVersion = std::string(names.sysname) + " " + names.release;
        record.szCSDVersion.resize(128, '\0');
        record.szCSDVersion.back() = '\0';
        record.wServicePackMajor = 0;
        record.wServicePackMinor = 0;
        record.wSuiteMask = 0;
        record.wProductType = 1;
        return true;
    }

    void getSystemInfo(SystemRecord& record) override {
        fillSystemRecord(record, buildArchitecture());
    }

    void getNativeSystemInfo(SystemRecord& record) override {
        utsname names{};
        const int16_t architecture =
            uname(&names) == 0 ? architectureOf(names.machine) : buildArchitecture();
        fillSystemRecord(record, architecture);
    }

    bool computerNameEx(int32_t format, std::string& buffer, uint32_t& size) override {
        // Only the fully qualified forms, physical or not, mean anything here.
        if (format != 3 && format != 7) return false;
        return copyOut(qualifiedHostName(hostName(), fileText("/etc/resolv.conf")), buffer, size);
    }

    bool userNameEx(int32_t format, std::string& buffer, uint32_t& size) override {
        if (format == 2) {
            const char* userName = std::getenv("USERNAME");
            if (userName == nullptr || userName[0] == '\0') {
                const std::string login = loginName();
                // The failed call's buffer, as much as fits.
                const std::size_t room = size > 0 ? size - 1 : 0;
                const std::string part = login.substr(0, std::min(room, login.size()));
                if (buffer.size() < part.size() + 1) buffer.resize(part.size() + 1, '\0');
                buffer.replace(0, part.size(), part);
                buffer[part.size()] = '\0';
            }
        }
        return false;
    }
};

}  // namespace

int32_t kernelVersionCode(std::string_view release) {
    std::size_t pos = 0;
    int32_t parts[3] = {0, 0, 0};
    for (int32_t& part : parts) {
        part = leadingNumber(release, pos);
        if (pos >= release.size() || release[pos] != '.') break;
        ++pos;
    }
    return (std::clamp(parts[0], 0, 0x7FFF) << 16) | (std::clamp(parts[1], 0, 255) << 8) |
           std::clamp(parts[2], 0, 255);
}

uint32_t processorMask(std::string_view cpuList) {
    uint32_t mask = 0;
    std::size_t pos = 0;
    while (pos < cpuList.size()) {
        const std::size_t start = pos;
        const int32_t first = leadingNumber(cpuList, pos);
        if (pos == start) break;  // not a number: the list ends
        int32_t last = first;
        if (pos < cpuList.size() && cpuList[pos] == '-') {
            ++pos;
            last = leadingNumber(cpuList, pos);
        }
        for (int32_t cpu = std::max(first, 0); cpu <= std::min(last, 31); ++cpu) {
            mask |= 1u << cpu;
        }
        if (pos >= cpuList.size() || cpuList[pos] != ',') break;
        ++pos;
    }
    return mask;
}

std::string qualifiedHostName(std::string_view hostName, std::string_view resolvConf) {
    if (hostName.empty() || hostName.find('.') != std::string_view::npos) {
        return std::string(hostName);
    }
    std::string domain;
    std::istringstream lines{std::string(resolvConf)};
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string keyword;
        std::string first;
        if ((words >> keyword >> first) && (keyword == "domain" || keyword == "search") &&
            first.front() != '#' && first.front() != ';') {
            domain = first;
        }
    }
    while (!domain.empty() && domain.back() == '.') domain.pop_back();
    return domain.empty() ? std::string(hostName) : std::string(hostName) + "." + domain;
}

SystemInfoPort& systemInfo() {
    static PosixSystemInfo port;
    return port;
}

}  // namespace ostrel::platform
