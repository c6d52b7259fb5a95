// The settings file on any bytes, read and saved through the XML document
// port as a host would: the first bytes are a section, a key and a value
// (each up to a line end), the rest is ot_settings.xml. Whatever the file
// holds, a read answers and a save returns; neither raises to the caller.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fakes/test_apartment.h"
#include "foundation/globals.h"
#include "foundation/settings.h"
#include "fuzz_files.h"
#include "platform/xml_document_port.h"

namespace {

// Up to the next line end; the input moves past it.
std::string_view field(std::string_view& input) {
    const size_t end = input.find('\n');
    const std::string_view taken = input.substr(0, end);
    input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
    return taken;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ostrel::fakes::TestApartment& fx = ostrel::fuzz::testApartment();
    std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string_view section = field(input);
    const std::string_view key = field(input);
    const std::string_view value = field(input);
    fx.writeSettings(input);
    // A new process each time: the document is read again under the lock.
    ostrel::apartment().gobjSettingsDoc.reset();
    (void)ostrel::gfstrGetApplicationSetting("Ostrel", section, key, "default");
    (void)ostrel::gfstrGetApplicationSetting("Ostrel", "Settings", "OutputDebugString", "1");
    ostrel::gsubSaveApplicationSetting("Ostrel", section, key, value);
    // What the fakes wrote down would otherwise grow with every run.
    fx.debugStream.texts.clear();
    fx.namedMutex.calls.clear();
    fx.programSettings.values.clear();
    return 0;
}
