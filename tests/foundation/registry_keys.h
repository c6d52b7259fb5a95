// A key of a registry in a test: found with code 0, missing with 2.
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

}  // namespace ostrel::platform
