#include "ui/language_font.h"

#include <string>

#include "foundation/globals.h"
#include "runtime/automation_error.h"
#include "runtime/convert.h"
#include "ui/language_text.h"
#include "ui/resource_id_numbers.h"

namespace ostrel {

namespace {

// A control's font reached by name: a control that has none doesn't support it.
Font& fontOf(Control& control) {
    if (!control.font) raise(kErrNoMember);
    return *control.font;
}

}  // namespace

void gsubApplyLanguageFont(Form& form) {
    // Resume next throughout: each failing step is skipped, the next one runs.
    std::string characterSet;
    resumeNext(
        [&] { characterSet = gobjLanguageText().GetText(ResourceIDNumbers::kCharacterSet); });
    if (!isNumeric(characterSet)) return;

    for (Control& control : form.controls) {
        resumeNext([&] { fontOf(control).charset = toLong(characterSet); });
        resumeNext(
            [&] { gobjLanguageText().ApplyFont(ResourceIDNumbers::kFontEntry, fontOf(control)); });
    }
}

}  // namespace ostrel
