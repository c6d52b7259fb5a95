// clsLanguageText: the language text object, one per apartment. Texts, font
// entries and pictures live in UTF-8 files beside the component (see
// data/Ostrel.en.txt for the format); the English ones are also built in.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/ui_objects.h"
#include "runtime/object.h"

namespace ostrel {

class clsLanguageText : public Object {
  public:
    // Binds the object to the component; repeated with the same values it is
    // harmless and cheap. The third argument is accepted and not used. A
    // translation's missing entries are the English ones, number by number.
    // A text file that can't be read is left out and raises once, naming the
    // file (and line), after the object is bound to the other files and the
    // built-in English texts.
    void Initialise(std::string_view componentName, std::string_view componentFolder,
                    std::optional<std::string_view> third = std::nullopt);
    // Raises 5 for a number that has no text, naming the number.
    std::string GetText(int32_t textNumber) const;
    // The text with up to four inserts placed at %1..%4; an omitted insert leaves its marker empty.
    std::string GetFormattedText(int32_t textNumber,
                                 std::optional<std::string_view> insert1 = std::nullopt,
                                 std::optional<std::string_view> insert2 = std::nullopt,
                                 std::optional<std::string_view> insert3 = std::nullopt,
                                 std::optional<std::string_view> insert4 = std::nullopt) const;
    // Raises 5 for a number with no picture, and for a picture file that
    // can't be read (naming the file).
    std::shared_ptr<const Picture> GetPicture(int32_t pictureNumber) const;
    // Changes the font in place by the numbered font entry; raises 5 for a
    // number with no font entry.
    void ApplyFont(int32_t textNumber, Font& font) const;
    // Replaces both strings whole: suffix1 the language ("de"), suffix2
    // language and region ("de-DE").
    void GetLanguageSuffixes(std::string& suffix1, std::string& suffix2) const;

    // The store's content, as read from one text file.
    struct Store {
        std::map<int32_t, std::string> texts;
        std::map<int32_t, Font> fonts;
        std::map<int32_t, std::string> pictureFiles;  // as written, relative to the folder
    };

  private:
    std::string boundName_;
    std::string boundFolder_;
    bool bound_ = false;
    bool fromBuiltin_ = false;  // bound to the built-in English texts and pictures
    Store store_;
    std::string suffix1_ = "en";
    std::string suffix2_ = "en-US";
    mutable std::map<int32_t, std::shared_ptr<const Picture>> pictures_;
};

// The language text object of this apartment, created on first touch.
clsLanguageText& gobjLanguageText();

}  // namespace ostrel
