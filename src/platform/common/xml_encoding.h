// The encoding a settings file's declaration names, for both XML adapters: a
// file is written in that encoding, so that its values survive any number of
// saves, and never says one encoding while it holds another.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ostrel::platform {

// The text of a file declared Latin-1 or windows-1252 (and without a byte
// order mark) as UTF-8; nullopt for any other file, which the parser reads
// as it is. Bytes that windows-1252 leaves undefined stand for the control
// characters of the same number, as Windows reads them.
std::optional<std::string> decodeDeclaredSingleByte(std::string_view bytes);

// A document written as UTF-8, its declaration (if any) first, as the bytes
// of a file in the encoding the declaration names: Latin-1, windows-1252,
// UTF-16 with a byte order mark (big-endian when the name or bigEndian says
// so), UTF-8. For any other name, or text that the named encoding can't hold,
// UTF-8 under a declaration changed to say so.
std::string encodeAsDeclared(std::string_view utf8, bool bigEndian);

}  // namespace ostrel::platform
