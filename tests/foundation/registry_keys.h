// Looking at a registry in tests: a key, its sub-keys, the error of a load.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/common/registry_regfile.h"

namespace ostrel::platform {

inline std::unique_ptr<RegistryKey> openKey(RegFileRegistry& registry, std::string_view path,
                                            int32_t hive = kHiveLocalMachine) {
    int32_t code = -1;
    auto key = registry.open(hive, path, 131097, code);
    EXPECT_EQ(code, key ? 0 : 2) << path;
    return key;
}

inline std::vector<std::string> subKeys(const RegistryKey& key) {
    std::vector<std::string> names;
    for (uint32_t i = 0; auto name = key.subKeyName(i); ++i) names.push_back(*name);
    return names;
}

// The message of the RegFileError that `load` throws, or "" when it throws none.
template <class Load>
inline std::string errorOf(Load load) {
    try {
        load();
    } catch (const RegFileError& error) {
        return error.what();
    }
    return "";
}

}  // namespace ostrel::platform
