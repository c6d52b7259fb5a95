// A command line split into words as the Microsoft C run time splits it for
// a program's argv, so that a line means on Linux what it means on Windows.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ostrel::platform {

// Words are separated by blanks and tabs outside quotes. The first word,
// the program, only has quotes that group; later words also read
// backslashes: 2n of them before a quote give n and the quote groups, 2n+1
// give n and a literal quote, and "" inside quotes is a literal quote.
// Nothing is expanded: $HOME, ~ and * stay as they stand.
std::vector<std::string> splitCommandLine(std::string_view line);

}  // namespace ostrel::platform
