#include "ui/language_choice.h"

#include <algorithm>
#include <optional>

#include "foundation/globals.h"
#include "runtime/text.h"

namespace ostrel {

namespace {

bool isLetters(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); });
}

bool isAlphanumeric(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
    });
}

}  // namespace

std::vector<std::string> LanguageChoice::fileLanguages() const {
    std::vector<std::string> languages{tag};
    if (language != tag) languages.push_back(language);
    if (language != "en") languages.push_back("en");
    return languages;
}

LanguageChoice languageChoiceOf(std::string_view name) {
    // POSIX: language[_territory][.codeset][@modifier]; Windows: language-region.
    name = name.substr(0, name.find_first_of(".@"));
    const size_t separator = name.find_first_of("_-");
    const std::string_view language = name.substr(0, separator);
    const std::string_view region =
        separator == std::string_view::npos ? std::string_view() : name.substr(separator + 1);
    LanguageChoice choice;
    if (language.size() < 2 || language.size() > 3 || !isLetters(language)) return choice;
    // A script ("sr-Latn-RS") or a region of digits ("es-419") is kept as written.
    if (separator != std::string_view::npos &&
        (region.empty() || region.size() > 8 ||
         !isAlphanumeric(region.substr(0, region.find('-'))))) {
        return choice;
    }
    choice.language = lowerCase(language);
    choice.tag = choice.language;
    if (!region.empty())
        choice.tag += "-" + (region.size() == 2 ? upperCase(region) : std::string(region));
    return choice;
}

LanguageChoice chooseLanguage() {
    const platform::Ports& ports = apartment().ports;
    std::optional<std::string> name;
    if (ports.environment) name = ports.environment->variable("OSTREL_LANGUAGE");
    if ((!name || name->empty()) && ports.locale) name = ports.locale->uiLanguage();
    return languageChoiceOf(name.value_or(""));
}

}  // namespace ostrel
