#include "registry_source.h"

#include <iostream>
#include <utility>

#include "platform/common/registry_regfile.h"
#ifndef _WIN32
#include "platform/posix/registry_posix.h"
#endif

namespace ostrel::cli {

namespace {
std::string& source() {
    static std::string description = "the system registry";
    return description;
}
bool sample = false;
}  // namespace

const std::string& registrySource() {
    return source();
}

void setRegistrySource(std::string description) {
    source() = std::move(description);
}

void announceRegistrySource() {
    std::cerr << "Registry: " << registrySource() << '\n';
    if (sample) {
        std::cerr << "ostrel: these are sample products, not this machine's; export the key on "
                     "Windows (regedit /e quorl.reg \"HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\") and "
                     "read it with --registry quorl.reg\n";
    }
}

bool loadSampleRegistry() {
#ifdef _WIN32
    return false;
#else
    platform::liveRegistry().loadText(sampleRegistryText(), "built-in sample");
    setRegistrySource("the built-in sample registry (no --registry, no OSTREL_REGISTRY)");
    sample = true;
    return true;
#endif
}

}  // namespace ostrel::cli
