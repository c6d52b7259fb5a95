// The parts of the Linux system information adapter that read text, apart
// so that tests can give them any machine's files.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "runtime/variant.h"

namespace ostrel::platform {

// A kernel release ("6.1.0-18-amd64") coded as the kernel codes its own
// version: major << 16 | minor << 8 | patch, each part clamped to its field.
int32_t kernelVersionCode(std::string_view release);

// The processors 0 to 31 of a list in the kernel's form ("0-3,8,10-11").
uint32_t processorMask(std::string_view cpuList);

// The host name, qualified by the domain of a resolv.conf text ("domain",
// else the first "search" entry; the last such line wins) unless it has a
// dot already.
std::string qualifiedHostName(std::string_view hostName, std::string_view resolvConf);

// The first processor of each physical package in a /proc/cpuinfo text, by
// physical id: its "model name", "cpu cores" and "cpu MHz" (whole), null
// where the text is silent.
struct CpuPackage {
    int firstProcessor = -1;
    Variant name, cores, mhz;
};
std::map<int, CpuPackage> cpuPackages(std::string_view cpuinfo);

// A whole text file; "" when it can't be read.
std::string fileText(const char* path);

// The system's host name as gethostname gives it; "" when it fails.
std::string hostName();

}  // namespace ostrel::platform
