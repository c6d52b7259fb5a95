// The language of the texts: OSTREL_LANGUAGE when it is set, else the user's
// interface language. The file names' suffixes come from the same choice.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

struct LanguageChoice {
    std::string language = "en";  // lower case: "de"
    std::string tag =
        "en-US";  // language and region, "de-DE"; the language alone when no region is given
    // The languages of the text files to try, in order: the tag, the
    // language, then English.
    std::vector<std::string> fileLanguages() const;
};

// A language as the user or the system names it ("de_DE.UTF-8@euro",
// "de-de", "DE"); English for nothing, "C", "POSIX" or a name that is no
// language.
LanguageChoice languageChoiceOf(std::string_view name);

// This apartment's choice, through its environment and locale ports.
LanguageChoice chooseLanguage();

}  // namespace ostrel
