#include "catalogue/toolbar.h"

#include <string>

#include "catalogue/software_product.h"
#include "foundation/debug_log.h"
#include "foundation/file_system_object.h"
#include "foundation/wnc_registry.h"
#include "platform/registry_port.h"
#include "runtime/automation_error.h"
#include "runtime/text.h"

namespace ostrel {

std::string ToolbarKey(std::string_view vstrPartNumber) {
    try {
        WNCRegistry enumerator;
        WNCRegistry reader;
        if (!enumerator.TryOpenKey(platform::kHiveLocalMachine, kToolbarKeyPath, kKeyRead, 0)) {
            return {};
        }
        std::string name;
        if (!enumerator.EnumFirstSubKey(name)) name.clear();
        for (;;) {
            // Kept: the name is trimmed before use, so a sub-key whose name
            // ends in blanks can't be opened here, and a blank name ends the walk.
            name = trimBlanks(name);
            if (name.empty()) return {};
            if (reader.TryOpenKey(platform::kHiveLocalMachine, buildKeyPath(kToolbarKeyPath, name),
                                  kKeyRead, 0)) {
                // Unlike the catalogue's walk: the stored value as it stands,
                // no "Temp" skipped, no question whether the number is known.
                const std::string partNumber = gfstrGetRegValue(&reader, "PartNumber", "");
                if (!partNumber.empty() && equalsText(partNumber, vstrPartNumber)) return name;
            }
            if (!enumerator.EnumNextSubKey(name)) name.clear();
        }
    } catch (...) {
        const AutomationError error = currentError();
        gsubDebugPrint("ERROR: " + std::to_string(error.number) + "-" + error.description);
        return {};
    }
}

std::string gfstrGetInstallDir() {
    try {
        WNCRegistry registry;
        if (!registry.TryOpenKey(platform::kHiveLocalMachine, "SOFTWARE\\QUORL", kKeyRead, 0)) {
            return {};
        }
        return gfstrGetRegValue(&registry, "InstallDir", "");
    } catch (...) {
        return {};
    }
}

}  // namespace ostrel
