// Text helpers with the run time's meaning: comparison that ignores case,
// lower-casing that works beyond ASCII, Trim that removes blanks only.
// All text is UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace ostrel {

// LCase: every letter to lower case, non-ASCII letters (Latin, Greek,
// Cyrillic) included; bytes that are not valid UTF-8 are kept as they are.
std::string lowerCase(std::string_view text);
std::string upperCase(std::string_view text);

// vbTextCompare: negative, zero or positive; equalsText is compareText == 0.
int compareText(std::string_view a, std::string_view b);
bool equalsText(std::string_view a, std::string_view b);

// Trim, LTrim, RTrim: blanks (U+0020) only, not tabs or line ends.
std::string trimBlanks(std::string_view text);

// The file system object's BuildPath: joins a path and a name with one
// separator, adding none when the path already ends with one or the name
// starts with one. An empty path gives the name; an empty name the path.
std::string joinPath(std::string_view path, std::string_view name, char separator);

// Text up to its first NUL character: what a fixed system buffer holds.
std::string gfstrTrimAtNull(std::string_view buffer);

// UTF-8 and UTF-16 at the edges (hosts, Windows adapters).
std::u16string toUtf16(std::string_view utf8);
std::string fromUtf16(std::u16string_view utf16);

}  // namespace ostrel
