// The language's character set and font on a window's controls.
#pragma once

#include "platform/form.h"

namespace ostrel {

// Sets each control's character set to text 279 and applies font entry 280
// to it, last thing when a window loads. Never reports anything: text 279
// missing or not numeric leaves every font as it is, and a control without
// a font is passed over. The form's own font is not touched.
void gsubApplyLanguageFont(Form& form);

}  // namespace ostrel
