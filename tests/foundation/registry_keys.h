// A key of a registry in a test: found with code 0, missing with 2; and what
// a key holds and the keys below it, as one text to compare whole.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include "platform/common/registry_regfile.h"

namespace ostrel::platform {

inline std::unique_ptr<RegistryKey> openKey(RegFileRegistry& registry, std::string_view path,
                                            int32_t hive = kHiveLocalMachine) {
    int32_t code = -1;
    auto key = registry.open(hive, path, 131097, code);
    EXPECT_EQ(code, key ? 0 : 2) << path;
    return key;
}

// "name=value; ..." for these names ("@" the default value): a string as it
// reads, a dword as #n, "-" when it is neither; "no key" for a missing key.
inline std::string valuesOf(const std::unique_ptr<RegistryKey>& key,
                            std::initializer_list<std::string_view> names) {
    if (!key) return "no key";
    std::string out;
    for (const std::string_view name : names) {
        const auto text = key->stringValue(name);
        const auto number = key->dwordValue(name);
        out += (out.empty() ? "" : "; ") + std::string(name.empty() ? "@" : name) + "=" +
               text.value_or("") + (number ? "#" + std::to_string(*number) : "") +
               (text || number ? "" : "-");
    }
    return out;
}

// The keys below path as listed, each followed by its own in brackets.
inline std::string keysOf(RegFileRegistry& registry, const std::string& path) {
    const auto key = openKey(registry, path);
    if (!key) return "unopenable";
    std::string out;
    for (uint32_t i = 0; auto name = key->subKeyName(i); ++i) {
        const std::string below = keysOf(registry, path.empty() ? *name : path + "\\" + *name);
        out += (i == 0 ? "" : " ") + *name + (below.empty() ? "" : "(" + below + ")");
    }
    return out;
}

}  // namespace ostrel::platform
