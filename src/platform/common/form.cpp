#include "platform/form.h"

#include <algorithm>

#include "runtime/automation_error.h"

namespace ostrel {

int32_t twipsToPixels(int32_t twips, int32_t dotsPerInch) {
    const int64_t scaled = static_cast<int64_t>(twips) * dotsPerInch;
    const int64_t half = kTwipsPerInch / 2;
    return static_cast<int32_t>(scaled >= 0 ? (scaled + half) / kTwipsPerInch
                                            : -((-scaled + half) / kTwipsPerInch));
}

std::string_view controlKindName(ControlKind kind) {
    switch (kind) {
        case ControlKind::PictureBox:
            return "PictureBox";
        case ControlKind::CommandButton:
            return "CommandButton";
        case ControlKind::Label:
            return "Label";
    }
    return "Control";
}

Control& Form::control(std::string_view controlName) {
    for (Control& each : controls) {
        if (each.name == controlName) return each;
    }
    raise(kErrSubscript);
}

const Control& Form::control(std::string_view controlName) const {
    return const_cast<Form&>(*this).control(controlName);
}

std::vector<std::string> Form::tabOrder() const {
    std::vector<const Control*> ordered;
    for (const Control& each : controls) ordered.push_back(&each);
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const Control* a, const Control* b) { return a->tabIndex < b->tabIndex; });
    std::vector<std::string> names;
    for (const Control* each : ordered) names.push_back(each->name);
    return names;
}

int32_t widthInPixels(const Control& control, int32_t dotsPerInch) {
    if (control.autoSize && control.picture) return control.picture->widthPx;
    return twipsToPixels(control.width, dotsPerInch);
}

int32_t heightInPixels(const Control& control, int32_t dotsPerInch) {
    if (control.autoSize && control.picture) return control.picture->heightPx;
    return twipsToPixels(control.height, dotsPerInch);
}

}  // namespace ostrel
