// Text helpers with the run time's meaning: comparison that ignores case,
// lower-casing that works beyond ASCII, Trim that removes blanks only.
// All text is UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace ostrel {

// LCase: every letter to lower case, non-ASCII letters (Latin, Greek,
// Cyrillic, Armenian) included; bytes that are not valid UTF-8 are kept as
// they are. One letter maps to one letter, by a fixed table that does not
// depend on the platform or the locale.
std::string lowerCase(std::string_view text);
std::string upperCase(std::string_view text);

// vbTextCompare: -1, 0 or 1; equalsText is compareText == 0. The order is
// that of the lower-cased texts' code points, the same on every machine,
// not the user's collation.
int compareText(std::string_view a, std::string_view b);
bool equalsText(std::string_view a, std::string_view b);

// Trim, LTrim, RTrim: blanks (U+0020) only, not tabs or line ends.
std::string trimBlanks(std::string_view text);

// The file system object's BuildPath: joins a path and a name with one
// separator, adding none when the path already ends with one or the name
// starts with one, and dropping one when both have it. An empty path gives
// the name; an empty name the path. With '\\' as separator '/' counts as
// one too, and a bare drive ("C:") takes none.
std::string joinPath(std::string_view path, std::string_view name, char separator);

// Text up to its first NUL character: what a fixed system buffer holds.
// A NUL beyond UTF-16 position 32767 raises 6, as the routine always has.
std::string gfstrTrimAtNull(std::string_view buffer);

// True when the bytes are well-formed UTF-8 (no overlong forms, no
// surrogates, nothing beyond U+10FFFF, no sequence cut short).
bool isValidUtf8(std::string_view text);

// UTF-8 and UTF-16 at the edges (hosts, Windows adapters). Invalid input
// becomes U+FFFD.
std::u16string toUtf16(std::string_view utf8);
std::string fromUtf16(std::u16string_view utf16);
// UTF-16 as bytes in a file, little- or big-endian, without its byte order
// mark; an odd last byte is ignored.
std::string fromUtf16Bytes(std::string_view bytes, bool bigEndian = false);

}  // namespace ostrel
