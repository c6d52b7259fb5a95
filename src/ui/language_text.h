// clsLanguageText: the language text object, one per apartment. Texts live in
// UTF-8 files beside the component (see data/Ostrel.en.txt for the format).
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "runtime/object.h"

namespace ostrel {

class clsLanguageText : public Object {
  public:
    // Binds the object to the component; repeated with the same values it is
    // harmless and cheap. Raises when the texts can't be read.
    void Initialise(std::string_view componentName, std::string_view componentFolder);
    // Raises 5 for a number that has no text.
    std::string GetText(int32_t textNumber) const;
    // The text with up to four inserts placed at %1..%4; an omitted insert leaves its marker empty.
    std::string GetFormattedText(int32_t textNumber,
                                 std::optional<std::string_view> insert1 = std::nullopt,
                                 std::optional<std::string_view> insert2 = std::nullopt,
                                 std::optional<std::string_view> insert3 = std::nullopt,
                                 std::optional<std::string_view> insert4 = std::nullopt) const;

  private:
    std::string boundName_;
    std::string boundFolder_;
    std::map<int32_t, std::string> texts_;
};

}  // namespace ostrel
