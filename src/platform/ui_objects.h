// The font and picture objects the language store hands to windows.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ostrel {

// The font object of a control, changed in place by clsLanguageText::ApplyFont.
struct Font {
    std::string name = "MS Sans Serif";
    double size = 8.25;  // points
    bool bold = false, italic = false, underline = false, strikethrough = false;
    int32_t charset = 0;  // Font.Charset
};

// A picture from the language store: an icon (.ico) or a bitmap (.bmp).
struct Picture {
    enum class Kind { Icon, Bitmap };
    Kind kind;
    std::string file;            // the image file it came from, empty for a built-in one
    std::vector<uint8_t> bytes;  // the whole .ico/.bmp file
    int32_t widthPx = 0, heightPx = 0;
};

}  // namespace ostrel
