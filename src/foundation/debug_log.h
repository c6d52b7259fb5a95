// The diagnostic log: every report goes to the debugger stream, and to
// "ot.log" in the data folder when the marker "debug_ot" was there at start.
#pragma once

#include <cstdint>
#include <string_view>

#include "foundation/globals.h"

namespace ostrel {

// Start-up of diagnostics (Main calls it with "" and 0, which it ignores).
void gsubInitDebug(std::string_view ignoredText = {}, int32_t ignoredNumber = 0);
// Names the log, trims an oversized one, writes the banner. Only gsubInitDebug calls it.
void gsubStartLog();
// The one way to report. Never fails to its caller.
void gsubDebugPrint(std::string_view text);

// The flag and the verbosity that call sites read directly.
inline bool gblnDebug() {
    return apartment().gblnDebug;
}
inline int32_t glngDebugLevel() {
    return apartment().glngDebugLevel;
}

}  // namespace ostrel
