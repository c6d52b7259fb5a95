// A window as the component builds it before the system shows it: the form's
// own properties and its controls in creation order, every measure in twips.
// The window adapter of each platform turns this into a real window.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ui_objects.h"

namespace ostrel {

inline constexpr int32_t kTwipsPerInch = 1440;

// Twips to pixels at a screen's dots per inch, rounded to the nearest pixel
// (15 twips to the pixel at 96).
int32_t twipsToPixels(int32_t twips, int32_t dotsPerInch);

enum class ControlKind { PictureBox, CommandButton, Label };
std::string_view controlKindName(ControlKind kind);

struct Control {
    std::string name;
    ControlKind kind = ControlKind::Label;
    std::string text;  // the caption; a picture box has none
    std::shared_ptr<const Picture> picture;
    int32_t left = 0, top = 0, width = 0, height = 0;  // twips, in the form's client area
    int32_t tabIndex = 0;
    bool autoSize = false;  // a picture box that takes its picture's size
    bool isDefault = false;
    bool isCancel = false;
    std::optional<uint32_t> foreColor;  // 0x00BBGGRR; none: the system's colour
    std::optional<Font> font;           // none: a control that has no font
};

struct Form {
    std::string name;
    std::string caption;
    std::shared_ptr<const Picture> icon;
    // The client area: its size, and its origin on the screen. The window is
    // placed there and nowhere else (not centred).
    int32_t clientWidth = 0, clientHeight = 0;
    int32_t left = 0, top = 0;
    bool fixedDialogBorder = true;
    bool minButton = false, maxButton = false;
    bool showInTaskbar = false;
    Font font;
    std::vector<Control> controls;  // creation order

    // The control of that name; raises 9 when there is none.
    Control& control(std::string_view controlName);
    const Control& control(std::string_view controlName) const;
    // The controls' names by tab order.
    std::vector<std::string> tabOrder() const;
};

// A control's size in pixels: a picture box that sizes itself to its picture
// has the picture's pixels at any resolution; everything else is converted.
int32_t widthInPixels(const Control& control, int32_t dotsPerInch);
int32_t heightInPixels(const Control& control, int32_t dotsPerInch);

}  // namespace ostrel
