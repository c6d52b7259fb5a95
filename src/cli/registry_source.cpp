#include "registry_source.h"

#include <utility>

#include "platform/common/registry_regfile.h"

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

bool loadSampleRegistry([[maybe_unused]] platform::RegFileRegistry& registry) {
#ifdef _WIN32
    return false;
#else
    registry.loadText(sampleRegistryText(), "built-in sample");
    setRegistrySource("the built-in sample registry (no --registry, no OSTREL_REGISTRY)");
    return true;
#endif
}

}  // namespace ostrel::cli
