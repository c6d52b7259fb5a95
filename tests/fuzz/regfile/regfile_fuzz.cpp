// The .reg reader on any bytes: a UTF-16LE file with its BOM, UTF-8 or ANSI
// text, version 5 or REGEDIT4. A bad file fails with a RegFileError that names
// the file and the line; every key of a good one can be walked and opened by
// the names the walk reports. (A key written twice, then deleted, within one
// file covers the layering.)
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_files.h"
#include "platform/common/registry_regfile.h"

namespace {

using ostrel::fuzz::require;
using namespace ostrel::platform;

constexpr int32_t kRead = 131097;  // KEY_READ

// Opens each sub-key by the name its parent reports and reads a value or
// two. Bounded, so that a deep tree doesn't turn each run into a long walk.
void walk(RegFileRegistry& registry, int32_t hive, const std::string& path, int& budget) {
    int32_t code = -1;
    const auto key = registry.open(hive, path, kRead, code);
    require(key != nullptr && code == 0, "a reported key can't be opened: " + path);
    (void)key->stringValue("");
    (void)key->dwordValue("");
    for (uint32_t i = 0; budget > 0; ++i, --budget) {
        const auto name = key->subKeyName(i);
        if (!name) break;
        require(!name->empty() && name->find('\\') == std::string::npos,
                "a sub-key name that is no path segment under " + path);
        (void)key->stringValue(*name);
        (void)key->dwordValue(*name);
        walk(registry, hive, path.empty() ? *name : path + "\\" + *name, budget);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string file = ostrel::fuzz::writeScratch("fuzz.reg", data, size);
    RegFileRegistry registry;
    try {
        registry.loadFile(file);
    } catch (const RegFileError& error) {
        const std::string what = error.what();
        // An empty file has no line to name; every other error names one.
        const bool wholeFile = what == file + ": the file is empty";
        require(
            error.file == file && what.starts_with(file + ":") && (error.line >= 1 || wholeFile),
            "a parse error without file and line: " + what);
        return 0;
    }
    for (int32_t hive :
         {kHiveClassesRoot, kHiveCurrentUser, kHiveLocalMachine, kHiveUsers, kHiveCurrentConfig}) {
        int budget = 8;
        walk(registry, hive, "", budget);
    }
    return 0;
}
