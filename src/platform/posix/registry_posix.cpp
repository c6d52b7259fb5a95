// Linux has no registry of its own: the process starts with an empty one,
// and the tool layers .reg files into a registry of its own making.
#include "platform/adapters.h"
#include "platform/common/registry_regfile.h"

namespace ostrel::platform {

RegistryPort& systemRegistry() {
    static RegFileRegistry registry;
    return registry;
}

}  // namespace ostrel::platform
