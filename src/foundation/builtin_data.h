// The data files built into the artefacts (the English texts, the pictures
// and the part-number table), so that a component copied without its data
// files still starts and still knows the family's products.
#pragma once

#include <optional>
#include <string_view>

namespace ostrel {

// The content of a data file by its name ("Ostrel.en.txt"); nullopt for a
// file that isn't built in.
std::optional<std::string_view> builtinDataFile(std::string_view name);

}  // namespace ostrel
