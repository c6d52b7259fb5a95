#include "foundation/debug_log.h"

#include <cstdint>
#include <optional>
#include <string>

#include "foundation/file_system_object.h"
#include "foundation/settings.h"
#include "ostrel_version.h"
#include "runtime/automation_error.h"
#include "runtime/convert.h"
#include "runtime/format.h"

namespace ostrel {

namespace {

constexpr std::string_view kApplication = "Ostrel";
constexpr std::string_view kSettingsSection = "Settings";
constexpr std::string_view kVerbosityKey = "OutputDebugString";
constexpr std::string_view kVerbosityDefault = "1";
constexpr std::string_view kMarkerName = "debug_ot";
constexpr std::string_view kLogName = "ot.log";
constexpr int64_t kLogLimit = 2097152;  // 0x200000; a file of exactly this size is kept
constexpr std::string_view kStampFormat = "hh:nn:ss dd-mmm-yyyy";
constexpr std::string_view kCrLf = "\r\n";

// Opened, written and closed for each message: no handle is kept between
// two messages, so another process may move or delete the file meanwhile.
void appendLogLine(std::string_view text) {
    const OstrelGlobals& g = apartment();
    if (g.gstrLogFilename.empty()) return;
    std::string line = formatDate(requirePort(g.ports.clock).now(), kStampFormat,
                                  requirePort(g.ports.locale).facts());
    line += ' ';
    line += text;
    fileSystem().AppendLine(g.gstrLogFilename, line);
}

}  // namespace

void gsubInitDebug(std::string_view /*ignoredText*/, int32_t /*ignoredNumber*/) {
    OstrelGlobals& g = apartment();
    // kept: a second start with the flag still set only lowers the level and
    // writes no banner; whoever wants a fresh start clears the flag first.
    if (g.gblnDebug) {
        g.glngDebugLevel = 0;
        return;
    }
    try {
        if (!fileSystem().FileExists(dataFolderFile(kMarkerName))) return;
        g.gblnDebug = true;
        g.glngDebugLevel = 1;
        gsubStartLog();  // so the banner is written at level 1
        // The verbosity: a text that is no number ends here, half on.
        g.glngDebugLevel = toLong(gfstrGetApplicationSetting(kApplication, kSettingsSection,
                                                             kVerbosityKey, kVerbosityDefault));
    } catch (...) {
        // Half on: the log keeps its name, call sites that test the flag go quiet.
        g.gblnDebug = false;
        g.glngDebugLevel = 0;
    }
}

void gsubStartLog() {
    OstrelGlobals& g = apartment();
    try {
        g.gstrLogFilename = dataFolderFile(kLogName);
    } catch (...) {
        g.gstrLogFilename.clear();
        return;
    }

    // The only bound on the log, applied at start only: the whole file goes.
    std::optional<int64_t> size;
    resumeNext([&] {
        if (fileSystem().FileExists(g.gstrLogFilename))
            size = fileSystem().FileSize(g.gstrLogFilename);
    });
    resumeNext([&] {
        if (size && *size > kLogLimit) fileSystem().DeleteFile(g.gstrLogFilename, true);
    });
    resumeNext([&] {
        if (g.gblnDebug) {
            gsubDebugPrint("*** START version: " + std::to_string(kVersionMajor) + "." +
                           std::to_string(kVersionMinor) + "." + std::to_string(kVersionRevision));
        }
    });
}

void gsubDebugPrint(std::string_view text) {
    // The file gets the text unchanged and first; the debugger gets it with a line end ensured.
    resumeNext([&] { appendLogLine(text); });
    std::string strText(text);
    resumeNext([&] {
        if (!strText.ends_with(kCrLf)) strText += kCrLf;
    });
    resumeNext([&] { requirePort(apartment().ports.debugStream).write(strText); });
}

}  // namespace ostrel
