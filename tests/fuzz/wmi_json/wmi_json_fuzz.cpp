// A saved inventory (--wmi FILE) on any bytes. A bad file fails with a
// WmiJsonError that names the file and, once it has been read, the line; a good
// one answers the inventory's queries, and the inventory built over it starts
// with its stamp and never raises.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fakes/test_apartment.h"
#include "foundation/globals.h"
#include "fuzz_files.h"
#include "machine/wmi_info.h"
#include "platform/common/wmi_json.h"

namespace {

using ostrel::fuzz::require;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ostrel::fakes::TestApartment& fx = ostrel::fuzz::testApartment();
    const std::string file = ostrel::fuzz::writeScratch("fuzz.json", data, size);
    ostrel::platform::WmiJsonProvider saved;
    try {
        saved.loadFile(file);
    } catch (const ostrel::platform::WmiJsonError& error) {
        const std::string what = error.what();
        require(error.file == file && what.starts_with(file + ":") && error.line >= 1,
                "an error without file and line: " + what);
        return 0;
    }
    ostrel::apartment().ports.wmi = &saved;
    const std::string text = ostrel::WmiInfo();
    require(text.starts_with("//2024-Mar-05 14:07:09\r\n"), "no stamp: " + text);
    ostrel::apartment().ports.wmi = &fx.wmi;
    fx.debugStream.texts.clear();
    return 0;
}
