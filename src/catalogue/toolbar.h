// The two look-ups around the Toolbar key that stand beside the catalogue:
// a product's sub-key from its part number, and the family's installation
// folder.
#pragma once

#include <string>
#include <string_view>

namespace ostrel {

// The name of the first sub-key (in the registry's order) whose "PartNumber"
// equals the argument, ignoring case; empty when there is none. Never raises.
std::string ToolbarKey(std::string_view vstrPartNumber);

// "InstallDir" of "SOFTWARE\QUORL" as it stands; empty when there is none.
// Never raises.
std::string gfstrGetInstallDir();

}  // namespace ostrel
