// gsubDisplayError: the error box of the windows.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ostrel {

// The box's text: location, then the number and description, in one of
// three shapes by what is given.
std::string displayErrorText(std::string_view vstrLocation, int32_t vlngErrorNumber,
                             std::string_view vstrDescription);

// The run time's MsgBox: a box with no title of its own bears the
// application's title.
void gsubMsgBox(std::string_view text, int32_t style, std::string_view title = {});

// A message box with the application's title; a style of 0 becomes 48
// (exclamation, OK).
void gsubDisplayError(std::string_view vstrLocation, int32_t vlngErrorNumber,
                      std::string_view vstrDescription, int32_t vlngStyle);

}  // namespace ostrel
