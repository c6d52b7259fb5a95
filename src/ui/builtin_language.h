// The English texts and the pictures, built into the artefacts, so that a
// component copied without its data files still starts.
#pragma once

#include <optional>
#include <string_view>

namespace ostrel {

// The content of a data file by its name ("Ostrel.en.txt"); nullopt for a
// file that isn't built in.
std::optional<std::string_view> builtinLanguageFile(std::string_view name);

}  // namespace ostrel
