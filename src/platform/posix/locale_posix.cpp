#include <langinfo.h>
#include <locale.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "platform/adapters.h"

namespace ostrel::platform {

namespace {

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// The user's locale from the environment (LC_ALL, LC_TIME, LANG), read once:
// it can't change while the process runs. Names the core can't hold as
// UTF-8 keep their English form.
LocaleFacts readUserLocale() {
    LocaleFacts facts;
    const locale_t user = ::newlocale(LC_ALL_MASK, "", static_cast<locale_t>(nullptr));
    if (!user) return facts;
    const std::string codeset = ::nl_langinfo_l(CODESET, user);
    const bool utf8 = codeset == "UTF-8" || codeset == "utf8";
    for (int month = 0; month < 12; ++month) {
        const std::string name = ::nl_langinfo_l(ABMON_1 + month, user);
        if (!name.empty() && (utf8 || isAscii(name))) {
            facts.monthAbbreviations[static_cast<size_t>(month)] = name;
        }
    }
    const std::string decimal = ::nl_langinfo_l(RADIXCHAR, user);
    if (!decimal.empty() && (utf8 || isAscii(decimal))) facts.decimalSeparator = decimal;
    ::freelocale(user);
    return facts;
}

class PosixLocale final : public LocalePort {
  public:
    LocaleFacts facts() override {
        static const LocaleFacts user = readUserLocale();
        return user;
    }
    // The messages' locale, as setlocale would pick it: LC_ALL, then
    // LC_MESSAGES, then LANG; the first that is set and not empty.
    std::string uiLanguage() override {
        for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
            const char* value = std::getenv(name);
            if (value && *value) return value;
        }
        return std::string();
    }
};

}  // namespace

LocalePort& systemLocale() {
    static PosixLocale locale;
    return locale;
}

}  // namespace ostrel::platform
