// about: the About window. On Windows it is shown; --json prints it as the
// component builds it (every platform): caption, the controls with their
// kind, text, place and size in twips and in pixels at the screen's
// resolution, the tab order, and the default and cancel buttons.
#include <iostream>

#include "commands.h"
#include "foundation/globals.h"
#include "output.h"
#include "runtime/automation_error.h"
#include "ui/about_window.h"

namespace ostrel::cli {

namespace {

Record box(int32_t left, int32_t top, int32_t width, int32_t height) {
    return Record{{"Left", left}, {"Top", top}, {"Width", width}, {"Height", height}};
}

Record pictureRecord(const std::shared_ptr<const Picture>& picture) {
    if (!picture) return nullptr;
    return Record{{"Kind", picture->kind == Picture::Kind::Icon ? "Icon" : "Bitmap"},
                  {"File", picture->file},
                  {"WidthPx", picture->widthPx},
                  {"HeightPx", picture->heightPx}};
}

Record fontRecord(const std::optional<Font>& font) {
    if (!font) return nullptr;
    return Record{{"Name", font->name},           {"Size", font->size},
                  {"Bold", font->bold},           {"Italic", font->italic},
                  {"Underline", font->underline}, {"Strikethrough", font->strikethrough},
                  {"Charset", font->charset}};
}

const char* buttonWith(const Form& form, bool Control::*role) {
    for (const Control& control : form.controls) {
        if (control.*role) return control.name.c_str();
    }
    return "";
}

Record formRecord(const Form& form, int32_t dpi) {
    const auto px = [dpi](int32_t twips) { return twipsToPixels(twips, dpi); };
    Record record;
    record["Name"] = form.name;
    record["Caption"] = form.caption;
    record["DotsPerInch"] = dpi;
    record["BorderStyle"] = form.fixedDialogBorder ? "Fixed Dialog" : "Sizable";
    record["MinButton"] = form.minButton;
    record["MaxButton"] = form.maxButton;
    record["ShowInTaskbar"] = form.showInTaskbar;
    record["Icon"] = pictureRecord(form.icon);
    record["ClientTwips"] = box(form.left, form.top, form.clientWidth, form.clientHeight);
    record["ClientPixels"] =
        box(px(form.left), px(form.top), px(form.clientWidth), px(form.clientHeight));
    Record controls = Record::array();
    for (const Control& control : form.controls) {
        Record each;
        each["Name"] = control.name;
        each["Kind"] = controlKindName(control.kind);
        each["Text"] = control.text;
        each["TabIndex"] = control.tabIndex;
        each["Twips"] = box(control.left, control.top, control.width, control.height);
        each["Pixels"] = box(px(control.left), px(control.top), widthInPixels(control, dpi),
                             heightInPixels(control, dpi));
        each["Default"] = control.isDefault;
        each["Cancel"] = control.isCancel;
        if (control.foreColor) each["ForeColor"] = *control.foreColor;
        if (control.picture) each["Picture"] = pictureRecord(control.picture);
        each["Font"] = fontRecord(control.font);
        controls.push_back(each);
    }
    record["Controls"] = controls;
    record["TabOrder"] = form.tabOrder();
    record["DefaultButton"] = buttonWith(form, &Control::isDefault);
    record["CancelButton"] = buttonWith(form, &Control::isCancel);
    return record;
}

int run() {
    try {
        if (globalOptions().json) {
            const int32_t dpi = requirePort(apartment().ports.windowing).dotsPerInch();
            std::cout << formRecord(frmAboutLoad(dpi), dpi).dump(2) << '\n';
        } else {
            gsubShowAbout(0);
        }
        return kExitOk;
    } catch (const AutomationError& error) {
        std::cerr << "ostrel: error " << error.number << ": " << error.description << '\n';
        return kExitFailure;
    }
}

[[maybe_unused]] const bool registered = registerCommand({
    "about",
    "Show the About window (Windows); --json prints it as the component builds it",
    {},
    run,
});

}  // namespace

}  // namespace ostrel::cli
