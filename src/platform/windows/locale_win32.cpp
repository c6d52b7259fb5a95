#include <windows.h>

#include <string>

#include "platform/adapters.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

std::string localeInfo(LCTYPE type) {
    wchar_t buffer[128];
    const int length = GetLocaleInfoW(LOCALE_USER_DEFAULT, type, buffer, 128);
    if (length <= 1) return std::string();
    return fromUtf16(std::u16string_view(reinterpret_cast<const char16_t*>(buffer),
                                         static_cast<size_t>(length - 1)));
}

// Asked each time: the user may change the regional settings while a host runs.
class Win32Locale final : public LocalePort {
  public:
    LocaleFacts facts() override {
        LocaleFacts facts;
        for (size_t month = 0; month < 12; ++month) {
            std::string name = localeInfo(LOCALE_SABBREVMONTHNAME1 + static_cast<LCTYPE>(month));
            if (!name.empty()) facts.monthAbbreviations[month] = std::move(name);
        }
        std::string decimal = localeInfo(LOCALE_SDECIMAL);
        if (!decimal.empty()) facts.decimalSeparator = std::move(decimal);
        return facts;
    }
    // The language of the user's interface (not the regional formats).
    std::string uiLanguage() override {
        wchar_t name[LOCALE_NAME_MAX_LENGTH];
        const LCID lcid = MAKELCID(GetUserDefaultUILanguage(), SORT_DEFAULT);
        const int length = LCIDToLocaleName(lcid, name, LOCALE_NAME_MAX_LENGTH, 0);
        if (length <= 1) return std::string();
        return fromUtf16(std::u16string_view(reinterpret_cast<const char16_t*>(name),
                                             static_cast<size_t>(length - 1)));
    }
};

}  // namespace

LocalePort& systemLocale() {
    static Win32Locale locale;
    return locale;
}

}  // namespace ostrel::platform
