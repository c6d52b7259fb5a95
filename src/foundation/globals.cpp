#include "foundation/globals.h"

#include "catalogue/part_numbers.h"
#include "foundation/file_system_object.h"
#include "foundation/startup.h"
#include "machine/pc_info.h"
#include "ui/language_text.h"

namespace ostrel {

// Defined here, where the types behind the references are complete.
OstrelGlobals::OstrelGlobals() : OstrelGlobals(platform::defaultPorts()) {}
OstrelGlobals::OstrelGlobals(platform::Ports p) : ports(p) {}
OstrelGlobals::OstrelGlobals(OstrelGlobals&&) noexcept = default;
OstrelGlobals& OstrelGlobals::operator=(OstrelGlobals&&) noexcept = default;
OstrelGlobals::~OstrelGlobals() = default;

OstrelGlobals& apartment() {
    // One set per thread: each apartment that uses the component has its own.
    thread_local OstrelGlobals globals;
    return globals;
}

clsLanguageText& gobjLanguageText() {
    Ref<clsLanguageText>& text = apartment().languageText;
    if (!text) text = makeRef<clsLanguageText>();
    return *text;
}

void ensureStarted() {
    if (apartment().startState == StartState::NotStarted) Main();
}

}  // namespace ostrel
