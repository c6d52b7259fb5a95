// WMI on Linux: a provider that answers the inventory's queries from /proc,
// /sys and /etc, each query reading the system afresh. What the system can't
// tell is null, never made up.
//
// Moniker: the local computer ("." or this host's name) and the namespace
// root\cimv2, or none; anything else can't be resolved.
//
// Win32_ComputerSystem, one object
//   Manufacturer, Model  /sys/class/dmi/id/sys_vendor, product_name
//   SystemType           from uname's machine: "x64-based PC", "X86-based PC", "ARM64-based PC";
//                        null for other machines
//   TotalPhysicalMemory  MemTotal of /proc/meminfo in bytes, as a decimal string (WMI hands
//                        its 64-bit numbers to scripts as strings)
//   DNSHostName, name    the host name up to its first dot
//   Domain               the local domain (the host name's own, else resolv.conf's
//                        "domain" or first "search"), null without one
//   Workgroup            null: there is no workgroup
// Win32_BIOS, one object when the firmware tables are there (/sys/class/dmi/id), else none
//   name                 bios_version
//   Manufacturer         bios_vendor
//   SerialNumber         product_serial (readable by root only; null otherwise)
//   BuildNumber, IdentificationCode, version  null
// Win32_Processor, one object per physical package of /proc/cpuinfo
//   name                 "model name"
//   MaxClockSpeed        cpufreq's cpuinfo_max_freq of the package's first processor, in MHz;
//                        without cpufreq (virtual machines) its "cpu MHz" of /proc/cpuinfo,
//                        to the nearest whole MHz; null without either
//   NumberOfCores        "cpu cores"
//   AddressWidth         64 or 32, the system's width (uname's machine)
//   DeviceId             "CPU" and the package's number
//   ProcessorId          x86: CPUID leaf 1, EDX then EAX in hexadecimal, as Windows builds it;
//                        null elsewhere
//   version              null
// Win32_VideoController, one object per PCI display controller (class 03), in bus order
//   name                 vendor and device from the PCI ID database (pci.ids), when installed
//   DriverVersion        the version of the bound driver's module, when it has one
//   VideoProcessor, AdapterRAM, VideoModeDescription  null
// Win32_OperatingSystem, one object
//   name                 PRETTY_NAME of /etc/os-release (else uname's system and release),
//                        "|/|" and the device mounted at / (the system's folder and its device)
//   OSArchitecture       "64-bit" or "32-bit" from uname's machine
//   ServicePackMajorVersion, ServicePackMinorVersion  null
// Win32_LogonSession (the interactive ones), one per local login of the login records (utmp:
// a user process on a terminal or a local display, not one from another host)
//   LogonId              the login process's id
//   its accounts (Win32_LoggedOnUser): the user of that login, as Win32_UserAccount
//     name               the login name
//     Domain             the host name up to its first dot (local accounts)
//     Caption            Domain "\" name
//     FullName           the first field of the account's GECOS (getpwnam); null when empty
//     Description        null
#include <pwd.h>
#include <sys/utsname.h>
#include <unistd.h>
#include <utmpx.h>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/adapters.h"
#include "platform/common/wmi_records.h"
#include "platform/posix/system_info_posix.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

namespace fs = std::filesystem;

const Variant kNull{NullValue{}};

// The first line of a file without its line end; null when it can't be read or is empty.
Variant lineOf(const std::string& path) {
    std::string text = fileText(path.c_str());
    text = text.substr(0, text.find('\n'));
    while (!text.empty() && (text.back() == ' ' || text.back() == '\r')) text.pop_back();
    if (text.empty()) return kNull;
    return Variant(std::move(text));
}

std::string machineName() {
    utsname names{};
    return uname(&names) == 0 ? names.machine : "";
}

bool is64Bit(std::string_view machine) {
    return machine.find("64") != std::string_view::npos || machine == "s390x";
}

std::string shortHostName() {
    const std::string name = hostName();
    return name.substr(0, name.find('.'));
}

Variant textOrNull(std::string text) {
    return text.empty() ? kNull : Variant(std::move(text));
}

WmiRecord computerSystem() {
    const std::string machine = machineName();
    Variant systemType = kNull;
    if (machine == "x86_64") {
        systemType = "x64-based PC";
    } else if (machine.size() == 4 && machine[0] == 'i' && machine.substr(2) == "86") {
        systemType = "X86-based PC";
    } else if (machine == "aarch64") {
        systemType = "ARM64-based PC";
    }
    Variant memory = kNull;
    std::istringstream meminfo(fileText("/proc/meminfo"));
    std::string key;
    unsigned long long kilobytes = 0;
    while (meminfo >> key >> kilobytes) {
        if (key == "MemTotal:") {
            memory = std::to_string(kilobytes * 1024);
            break;
        }
        meminfo.ignore(256, '\n');
    }
    const std::string qualified = qualifiedHostName(hostName(), fileText("/etc/resolv.conf"));
    const std::size_t dot = qualified.find('.');
    const std::string host = shortHostName();
    WmiRecord record;
    record.set("Manufacturer", lineOf("/sys/class/dmi/id/sys_vendor"))
        .set("Model", lineOf("/sys/class/dmi/id/product_name"))
        .set("SystemType", systemType)
        .set("TotalPhysicalMemory", memory)
        .set("DNSHostName", textOrNull(host))
        .set("Domain", dot == std::string::npos ? kNull : textOrNull(qualified.substr(dot + 1)))
        .set("Workgroup", kNull)
        .set("name", textOrNull(host));
    return record;
}

std::vector<WmiRecord> bios() {
    std::vector<WmiRecord> records;
    std::error_code ignored;
    if (!fs::is_directory("/sys/class/dmi/id", ignored)) return records;
    WmiRecord record;
    record.set("name", lineOf("/sys/class/dmi/id/bios_version"))
        .set("BuildNumber", kNull)
        .set("IdentificationCode", kNull)
        .set("Manufacturer", lineOf("/sys/class/dmi/id/bios_vendor"))
        .set("SerialNumber", lineOf("/sys/class/dmi/id/product_serial"))
        .set("version", kNull);
    records.push_back(std::move(record));
    return records;
}

Variant processorId() {
#if defined(__x86_64__) || defined(__i386__)
    unsigned int eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0) {
        std::array<char, 17> text{};
        std::snprintf(text.data(), text.size(), "%08X%08X", edx, eax);
        return Variant(std::string(text.data()));
    }
#endif
    return kNull;
}

}  // namespace

std::map<int, CpuPackage> cpuPackages(std::string_view cpuinfoText) {
    std::map<int, CpuPackage> packages;  // by physical id
    std::istringstream cpuinfo{std::string(cpuinfoText)};
    std::string line;
    int processor = -1, physical = 0;
    Variant name = kNull, cores = kNull, mhz = kNull;
    const auto flush = [&] {
        if (processor < 0) return;
        CpuPackage& package = packages[physical];
        if (package.firstProcessor < 0) package = {processor, name, cores, mhz};
        processor = -1;
        physical = 0;
        name = cores = mhz = kNull;
    };
    while (std::getline(cpuinfo, line)) {
        const std::size_t colon = line.find(':');
        if (colon == std::string::npos) {
            if (line.find_first_not_of(" \t\r") == std::string::npos) flush();
            continue;
        }
        std::string key = line.substr(0, colon);
        while (!key.empty() && (key.back() == ' ' || key.back() == '\t')) key.pop_back();
        const std::string value = trimBlanks(line.substr(colon + 1));
        if (key == "processor") {
            flush();
            processor = std::atoi(value.c_str());
        } else if (key == "physical id") {
            physical = std::atoi(value.c_str());
        } else if (key == "model name") {
            name = textOrNull(value);
        } else if (key == "cpu MHz") {
            const double clock = std::strtod(value.c_str(), nullptr);
            if (clock > 0 && clock < 1e6) mhz = Variant(static_cast<int32_t>(std::lround(clock)));
        } else if (key == "cpu cores") {
            cores = Variant(static_cast<int32_t>(std::atoi(value.c_str())));
        }
    }
    flush();
    return packages;
}

namespace {

std::vector<WmiRecord> processors() {
    const std::map<int, CpuPackage> packages = cpuPackages(fileText("/proc/cpuinfo"));
    const int32_t width = is64Bit(machineName()) ? 64 : 32;
    const Variant id = processorId();
    std::vector<WmiRecord> records;
    int number = 0;
    for (const auto& [physicalId, package] : packages) {
        const Variant maxKHz =
            lineOf("/sys/devices/system/cpu/cpu" + std::to_string(package.firstProcessor) +
                   "/cpufreq/cpuinfo_max_freq");
        Variant maxMHz = package.mhz;
        if (const auto* text = maxKHz.getIf<std::string>()) {
            maxMHz = Variant(static_cast<int32_t>(std::atoll(text->c_str()) / 1000));
        }
        WmiRecord record;
        record.set("name", package.name)
            .set("MaxClockSpeed", maxMHz)
            .set("NumberOfCores", package.cores)
            .set("AddressWidth", Variant(width))
            .set("version", kNull)
            .set("DeviceId", Variant("CPU" + std::to_string(number++)))
            .set("ProcessorId", id);
        records.push_back(std::move(record));
    }
    return records;
}

// "Vendor Device" from the PCI ID database; "" when it isn't installed or doesn't know them.
std::string pciName(std::string_view vendor, std::string_view device) {
    for (const char* path : {"/usr/share/misc/pci.ids", "/usr/share/hwdata/pci.ids"}) {
        std::ifstream in(path);
        if (!in) continue;
        std::string line, vendorName;
        while (std::getline(in, line)) {
            if (line.empty() || line[0] == '#') continue;
            if (line[0] != '\t') {
                if (!vendorName.empty()) break;  // past the vendor's devices
                if (line.size() > 6 && line.compare(0, 4, vendor) == 0) {
                    vendorName = trimBlanks(line.substr(6));
                }
            } else if (!vendorName.empty() && line.size() > 7 && line[1] != '\t' &&
                       line.compare(1, 4, device) == 0) {
                return vendorName + " " + trimBlanks(line.substr(7));
            }
        }
        if (!vendorName.empty()) return vendorName;
    }
    return {};
}

std::vector<WmiRecord> videoControllers() {
    std::vector<fs::path> devices;
    std::error_code error;
    for (fs::directory_iterator it("/sys/bus/pci/devices", error), end; !error && it != end;
         it.increment(error)) {
        if (fileText((it->path() / "class").c_str()).starts_with("0x03")) {
            devices.push_back(it->path());
        }
    }
    std::sort(devices.begin(), devices.end());
    std::vector<WmiRecord> records;
    for (const fs::path& device : devices) {
        const auto id = [&](const char* file) {
            std::string text = fileText((device / file).c_str());
            return text.size() >= 6 ? text.substr(2, 4) : std::string();
        };
        Variant driverVersion = kNull;
        std::error_code ignored;
        const fs::path driver = fs::read_symlink(device / "driver", ignored);
        if (!driver.empty()) {
            driverVersion = lineOf("/sys/module/" + driver.filename().string() + "/version");
        }
        WmiRecord record;
        record.set("name", textOrNull(pciName(id("vendor"), id("device"))))
            .set("VideoProcessor", kNull)
            .set("DriverVersion", driverVersion)
            .set("AdapterRAM", kNull)
            .set("VideoModeDescription", kNull);
        records.push_back(std::move(record));
    }
    return records;
}

WmiRecord operatingSystem() {
    std::string caption;
    std::istringstream release(fileText("/etc/os-release"));
    for (std::string line; std::getline(release, line);) {
        if (!line.starts_with("PRETTY_NAME=")) continue;
        caption = line.substr(12);
        if (caption.size() >= 2 && (caption.front() == '"' || caption.front() == '\'') &&
            caption.back() == caption.front()) {
            caption = caption.substr(1, caption.size() - 2);
        }
    }
    if (caption.empty()) {
        utsname names{};
        if (uname(&names) == 0) caption = std::string(names.sysname) + " " + names.release;
    }
    // The root's device: the mount source of "/" in mountinfo ("... - type source options").
    std::string device;
    std::istringstream mounts(fileText("/proc/self/mountinfo"));
    for (std::string line; std::getline(mounts, line);) {
        std::istringstream fields(line);
        std::string id, parent, numbers, root, point, word;
        if (!(fields >> id >> parent >> numbers >> root >> point) || point != "/") continue;
        while (fields >> word && word != "-") {
        }
        std::string type, source;
        if (fields >> type >> source) device = source;  // the last mount over "/" is the one seen
    }
    WmiRecord record;
    record.set("OSArchitecture", Variant(is64Bit(machineName()) ? "64-bit" : "32-bit"))
        .set("name", Variant(caption + "|/|" + device))
        .set("ServicePackMajorVersion", kNull)
        .set("ServicePackMinorVersion", kNull);
    return record;
}

WmiRecord userAccount(const std::string& user) {
    Variant fullName = kNull;
    std::vector<char> scratch(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwnam_r(user.c_str(), &entry, scratch.data(), scratch.size(), &found) == 0 && found &&
        found->pw_gecos) {
        const std::string gecos = found->pw_gecos;
        fullName = textOrNull(gecos.substr(0, gecos.find(',')));
    }
    const std::string domain = shortHostName();
    WmiRecord record;
    record.set("Caption", Variant(domain + "\\" + user))
        .set("Description", kNull)
        .set("Domain", textOrNull(domain))
        .set("FullName", fullName)
        .set("name", Variant(user));
    return record;
}

std::vector<WmiRecord> logonSessions() {
    std::vector<WmiRecord> records;
    std::vector<std::string> seen;
    setutxent();
    while (const utmpx* login = getutxent()) {
        if (login->ut_type != USER_PROCESS) continue;
        const std::string host(login->ut_host, strnlen(login->ut_host, sizeof login->ut_host));
        if (!host.empty() && host.front() != ':') continue;  // from another host: not interactive
        const std::string id = std::to_string(login->ut_pid);
        if (std::find(seen.begin(), seen.end(), id) != seen.end()) continue;
        seen.push_back(id);
        WmiRecord record;
        record.set("LogonId", Variant(id));
        record.associated.emplace().push_back(userAccount(
            std::string(login->ut_user, strnlen(login->ut_user, sizeof login->ut_user))));
        records.push_back(std::move(record));
    }
    endutxent();
    return records;
}

WmiClassRecords classRecords(std::string_view className) {
    if (equalsText(className, "Win32_ComputerSystem")) return std::vector{computerSystem()};
    if (equalsText(className, "Win32_BIOS")) return bios();
    if (equalsText(className, "Win32_Processor")) return processors();
    if (equalsText(className, "Win32_VideoController")) return videoControllers();
    if (equalsText(className, "Win32_OperatingSystem")) return std::vector{operatingSystem()};
    if (equalsText(className, "Win32_LogonSession")) return logonSessions();
    return std::nullopt;
}

class LinuxWmi final : public WmiPort {
  public:
    std::unique_ptr<WmiServices> connect(std::string_view moniker) override {
        // "winmgmts:{...}!\\COMPUTER\NAMESPACE"
        const std::size_t bang = moniker.find("!\\\\");
        if (!equalsText(moniker.substr(0, 9), "winmgmts:") || bang == std::string_view::npos) {
            return nullptr;
        }
        const std::string_view path = moniker.substr(bang + 3);
        const std::size_t slash = path.find('\\');
        const std::string_view computer = path.substr(0, slash);
        const std::string_view space =
            slash == std::string_view::npos ? std::string_view() : path.substr(slash + 1);
        if (computer != "." && !equalsText(computer, shortHostName())) return nullptr;
        if (!space.empty() && !equalsText(space, "root\\cimv2")) return nullptr;
        return std::make_unique<WmiRecordServices>(classRecords);
    }
};

}  // namespace

WmiPort& systemWmi() {
    static LinuxWmi wmi;
    return wmi;
}

}  // namespace ostrel::platform
