// The keys of a registry in memory, sub-keys in case-insensitive order as
// Windows reports them, changed in layers: a layer (a .reg file, or keys made
// in memory) changes the tree as it goes and is undone unless it is
// committed, so a bad file leaves nothing behind.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry_port.h"

namespace ostrel::platform {

// Registry value types, as the export format numbers them in hex(n).
inline constexpr uint32_t kRegSz = 1;
inline constexpr uint32_t kRegExpandSz = 2;
inline constexpr uint32_t kRegBinary = 3;
inline constexpr uint32_t kRegDword = 4;
inline constexpr uint32_t kRegMultiSz = 7;

// How two names order as the registry compares them, by their upper-cased
// forms: <0, 0 or >0.
int compareNames(std::string_view a, std::string_view b);

// Calls step for each non-empty segment of a backslash-separated path.
template <class Step>
bool forEachSegment(std::string_view path, Step&& step) {
    while (!path.empty()) {
        const std::size_t cut = path.find('\\');
        const std::string_view segment = path.substr(0, cut);
        if (!segment.empty() && !step(segment)) return false;
        if (cut == std::string_view::npos) break;
        path.remove_prefix(cut + 1);
    }
    return true;
}

// A value as a layer sets it. Types 1, 2 and 7 hold UTF-8 text (7: its
// entries with a NUL between them and none at the end); every other type
// its raw bytes (a dword: four, least significant first).
struct StagedValue {
    std::string name;
    bool erase = false;
    uint32_t type = kRegSz;
    std::string data;
};

// A dword's four bytes, least significant first.
std::string dwordBytes(uint32_t number);

struct RegFileTree;
std::shared_ptr<RegFileTree> newRegFileTree();

// The key at hive\path, held alive however later layers change the tree;
// null with the system's error code (2: no such key, 6: no such hive).
std::unique_ptr<RegistryKey> openKey(RegFileTree& tree, int32_t hive, std::string_view path,
                                     int32_t& errorCode);

class RegistryLayer {
  public:
    explicit RegistryLayer(RegFileTree& tree);
    // Undoes every change unless the layer was committed.
    ~RegistryLayer();
    RegistryLayer(const RegistryLayer&) = delete;
    RegistryLayer& operator=(const RegistryLayer&) = delete;

    // [hive\path] makes the key and takes the values that follow; [-hive\path]
    // deletes it.
    void section(int32_t hive, std::string_view path, bool erase);
    void value(StagedValue&& staged);
    void commit();

    // For keys made in memory: a key, then its values.
    void key(int32_t hive, std::string_view path) { section(hive, path, false); }
    void stringValue(std::string_view name, std::string_view text);
    void multiStringValue(std::string_view name, const std::vector<std::string>& entries);
    void dwordValue(std::string_view name, uint32_t number);

  private:
    class Changes;
    std::unique_ptr<Changes> changes_;
};

}  // namespace ostrel::platform
