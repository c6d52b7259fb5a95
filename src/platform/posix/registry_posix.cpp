// Linux has no registry of its own: the process starts with one that holds
// only the network keys, made from the live system on the first open under
// them, and the tool layers .reg files (or its sample) into it. When files
// are named the tool reads them alone, and nothing is synthesised. Only the
// synthesis is guarded: files are layered in before any thread reads.
#include "platform/posix/registry_posix.h"

#include <mutex>

#include "platform/adapters.h"
#include "platform/common/registry_tree.h"
#include "platform/posix/network_keys_posix.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

bool underNetworkKeys(int32_t hive, std::string_view path) {
    if (hive != kHiveLocalMachine) return false;
    const std::string folded = lowerCase(path);
    for (std::string_view root : {"software\\microsoft\\windows nt\\currentversion\\networkcards",
                                  "system\\currentcontrolset\\services\\tcpip"}) {
        if (folded.starts_with(root)) return true;
    }
    return false;
}

class LiveRegistry final : public RegFileRegistry {
  public:
    std::unique_ptr<RegistryKey> open(int32_t hive, std::string_view path, int32_t access,
                                      int32_t& errorCode) override {
        if (underNetworkKeys(hive, path)) {
            std::call_once(synthesised_, [this] {
                try {
                    loadKeys([](RegistryLayer& keys) { addNetworkKeys(keys, liveNetworkFacts()); });
                } catch (...) {
                    // Nothing of the machine could be told: the keys stay missing.
                }
            });
        }
        return RegFileRegistry::open(hive, path, access, errorCode);
    }

  private:
    std::once_flag synthesised_;
};

}  // namespace

RegFileRegistry& liveRegistry() {
    static LiveRegistry registry;
    return registry;
}

RegistryPort& systemRegistry() {
    return liveRegistry();
}

}  // namespace ostrel::platform
