// The rules of the XML document object that both adapters enforce alike:
// element names, selection paths made of such names, one document element.
// Wine's document object lets all three slip, while the real one refuses
// them, so the Windows adapter checks them before it calls; pugixml knows
// nothing of the object, so the Linux adapter checks them too.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ostrel::platform {

// What a host sees of a refused document call: E_FAIL and the object's text.
inline constexpr int32_t kXmlFailure = static_cast<int32_t>(0x80004005u);
[[noreturn]] void raiseXmlFailure(std::string description);

// Raises for a name that is not a valid element name.
void checkElementName(std::string_view name);
// Raises for a selection path that is not element names joined by '/'.
void checkSelectionPath(std::string_view path);
// Raises when a second document element is appended to a document.
[[noreturn]] void raiseSecondDocumentElement();

}  // namespace ostrel::platform
