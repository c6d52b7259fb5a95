#include "ui/display_error.h"

#include "foundation/globals.h"

namespace ostrel {

namespace {

constexpr std::string_view kApplicationTitle = "Ostrel";
constexpr int32_t kStyleExclamation = 48;

}  // namespace

std::string displayErrorText(std::string_view vstrLocation, int32_t vlngErrorNumber,
                             std::string_view vstrDescription) {
    std::string text(vstrLocation);
    if (vlngErrorNumber != 0) {
        text += "\r\n" + std::to_string(vlngErrorNumber) + ": ";
        text += vstrDescription;
    } else if (!vstrDescription.empty()) {
        text += "\r\n\r\n";
        text += vstrDescription;
    }
    return text;
}

void gsubMsgBox(std::string_view text, int32_t style, std::string_view title) {
    requirePort(apartment().ports.messageBox)
        .show(text, style, title.empty() ? kApplicationTitle : title);
}

void gsubDisplayError(std::string_view vstrLocation, int32_t vlngErrorNumber,
                      std::string_view vstrDescription, int32_t vlngStyle) {
    if (vlngStyle == 0) vlngStyle = kStyleExclamation;
    gsubMsgBox(displayErrorText(vstrLocation, vlngErrorNumber, vstrDescription), vlngStyle);
}

}  // namespace ostrel
