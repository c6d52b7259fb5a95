#include "registry_source.h"

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
}  // namespace

const std::string& registrySource() {
    return source();
}

void setRegistrySource(std::string description) {
    source() = std::move(description);
}

bool loadSampleRegistry() {
#ifdef _WIN32
    return false;
#else
    platform::liveRegistry().loadText(sampleRegistryText(), "built-in sample");
    setRegistrySource("the built-in sample registry (no --registry, no OSTREL_REGISTRY)");
    return true;
#endif
}

}  // namespace ostrel::cli
