// inventory: the WMI text block, byte for byte; or, with --json, the objects its
// sections read, which --wmi FILE replays on another machine.
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

#include "commands.h"
#include "foundation/globals.h"
#include "machine/wmi_info.h"

namespace ostrel::cli {

namespace {

int run() {
    if (globalOptions().json) {
        std::unique_ptr<platform::WmiServices> services;
        try {
            services = requirePort(apartment().ports.wmi)
                           .connect("winmgmts:{impersonationLevel=impersonate}!\\\\.\\" +
                                    gfstrGetWmiNamespace());
        } catch (const AutomationError&) {
        }
        if (!services) {
            std::cerr << "ostrel: WMI can't be reached\n";
            return kExitNotObtained;
        }
        std::cout << wmiSavedInventory(*services) << '\n';
        return kExitOk;
    }
    const std::string text = WmiInfo();
    if (text.empty()) {
        std::cerr << "ostrel: WMI can't be reached\n";
        return kExitNotObtained;
    }
#ifdef _WIN32
    std::cout.flush();
    _setmode(_fileno(stdout), _O_BINARY);  // the text has its own CR LF
#endif
    std::cout << text << std::flush;
    return kExitOk;
}

[[maybe_unused]] const bool registered = registerCommand({
    "inventory",
    "Print the WMI inventory text (CR LF line ends); --json: the WMI objects it reads, one array "
    "per class (what --wmi FILE replays); exit 3 when WMI can't be reached",
    {},
    run,
});

}  // namespace

}  // namespace ostrel::cli
