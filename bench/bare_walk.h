// The bare walk the catalogue benchmarks set ReadAll beside: open each
// sub-key of the Toolbar key and read its eleven values, building no record.
#pragma once

#include <cstddef>
#include <string>

#include "catalogue/software_product.h"
#include "foundation/file_system_object.h"
#include "foundation/wnc_registry.h"
#include "platform/registry_port.h"

namespace ostrel::bench {

// Sub-keys read; `sink` keeps the reads from being optimised away.
inline int bareWalk(size_t& sink) {
    WNCRegistry enumerator;
    WNCRegistry reader;
    enumerator.TryOpenKey(platform::kHiveLocalMachine, kToolbarKeyPath, kKeyRead, 0);
    int subKeys = 0;
    std::string name;
    for (bool more = enumerator.EnumFirstSubKey(name); more;
         more = enumerator.EnumNextSubKey(name)) {
        if (!reader.TryOpenKey(platform::kHiveLocalMachine, buildKeyPath(kToolbarKeyPath, name),
                               kKeyRead, 0)) {
            continue;
        }
        for (const char* value : {"DisplayName", "ApplicationPath", "PartNumber"}) {
            sink += gfstrGetRegValue(&reader, value, "").size();
        }
        for (const char* value :
             {"VersionMajor", "VersionMinor", "VersionRevisionMajor", "VersionRevisionMinor"}) {
            sink += static_cast<size_t>(gflngGetRegValue(&reader, value, 0));
        }
        for (const char* value : {"Label", "IconFile", "Revision", "Tooltip"}) {
            sink += gfstrGetRegValue(&reader, value, "0").size();
        }
        ++subKeys;
    }
    return subKeys;
}

}  // namespace ostrel::bench
