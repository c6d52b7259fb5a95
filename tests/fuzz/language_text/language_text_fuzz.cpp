// The language text file on any bytes. A bad file raises 5 with a message
// that names the file and the line; a good one answers every text number
// with or without inserts, and raises 5 for numbers it doesn't have.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_files.h"
#include "runtime/automation_error.h"
#include "ui/language_text.h"

using ostrel::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string file = ostrel::fuzz::writeScratch("Fuzz.en.txt", data, size);
    ostrel::clsLanguageText texts;
    try {
        texts.Initialise("Fuzz", ostrel::fuzz::scratchFolder());
    } catch (const ostrel::AutomationError& error) {
        require(error.number == 5 && error.description.find(" line ") != std::string::npos &&
                    error.description.ends_with(file),
                "a bad text file without file and line: " + error.description);
        return 0;
    }
    for (int32_t number : {0, 1, 2, 3, 9, 10, 42, 100, 1000, -1, INT32_MAX, INT32_MIN}) {
        try {
            (void)texts.GetFormattedText(number, "%1%2", "%%", std::nullopt, "x");
            (void)texts.GetFormattedText(number);
        } catch (const ostrel::AutomationError& error) {
            require(error.number == 5, "a missing text raised " + std::to_string(error.number));
        }
    }
    return 0;
}
