#include "component/startup.h"

#include <string>
#include <string_view>

#include "foundation/debug_log.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "foundation/wnc_registry.h"
#include "machine/pc_info.h"
#include "runtime/automation_error.h"
#include "ui/display_error.h"
#include "ui/language_text.h"
#include "ui/resource_id_numbers.h"

namespace ostrel {

namespace {

constexpr std::string_view kComponentName = "Ostrel";
constexpr int32_t kStyleCriticalStop = 16;

// The box of both traps: critical stop, no title of its own. A box that
// can't be shown is no reason to fail the host's creation.
void showCriticalStop(const std::string& text) noexcept {
    try {
        gsubMsgBox(text, kStyleCriticalStop);
    } catch (...) {
    }
}

std::string componentFolder() {
    auto* environment = apartment().ports.environment;
    return environment ? environment->componentFolder() : std::string();
}

}  // namespace

void Main() {
    OstrelGlobals& g = apartment();
    // Marked at once, so that an object made while Main runs doesn't start it again.
    g.startState = StartState::Started;
    std::string strContext;
    try {
        try {
            gobjLanguageText().Initialise(kComponentName, componentFolder());
        } catch (...) {
            // A damaged language file is told once; English stands in, and
            // start-up goes on.
            showCriticalStop(currentError().description);
        }

        Ref<wncPCInfo> objPCInfo;
        try {
            strContext = "FileSystemObject";
            g.gobjFileSystem = makeRef<FileSystemObject>(g.ports.fileSystem);

            // Nothing is read: a wrapper that can't be made is reported here, by name.
            strContext = "WNCRegistry";
            { WNCRegistry objRegistry; }

            // Diagnostics from here on; the steps above write no log line.
            gsubInitDebug("", 0);

            // Takes the shared machine facts snapshot now; it reads the
            // verbosity, so it comes after the diagnostics.
            strContext = "WNCPCInfo";
            objPCInfo = gfobjGetPCInfo();
        } catch (...) {
            const AutomationError error = currentError();
            g.startState = StartState::Failed;
            try {  // a handler that fails itself has nobody left to tell
                showCriticalStop(gobjLanguageText().GetFormattedText(
                    ResourceIDNumbers::kStartupFailure, strContext, std::to_string(error.number),
                    error.description));
            } catch (...) {
            }
            return;
        }
        objPCInfo.reset();  // the shared instance stays
    } catch (...) {
        g.startState = StartState::Failed;
        showCriticalStop(currentError().description);
    }
}

void ensureStarted() {
    if (apartment().startState == StartState::NotStarted) Main();
}

}  // namespace ostrel
