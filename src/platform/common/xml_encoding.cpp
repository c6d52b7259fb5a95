#include "platform/common/xml_encoding.h"

#include <algorithm>
#include <iterator>

#include "runtime/text.h"

namespace ostrel::platform {

namespace {

// windows-1252 from 0x80 to 0x9F; everywhere else it is Latin-1.
constexpr char16_t kWindows1252High[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

enum class Encoding { kUtf8, kLatin1, kWindows1252, kUtf16Le, kUtf16Be, kOther };

// Where the encoding's name stands in the declaration that starts the text.
struct Named {
    size_t at = 0, size = 0;
    Encoding encoding = Encoding::kOther;
};

std::optional<Named> declaredEncoding(std::string_view text) {
    if (!text.starts_with("<?xml")) return std::nullopt;
    const std::string_view declaration = text.substr(0, text.find("?>"));
    const size_t key = declaration.find("encoding");
    const size_t open = declaration.find_first_of("\"'", key);
    if (key == std::string_view::npos || open == std::string_view::npos) return std::nullopt;
    const size_t close = declaration.find(declaration[open], open + 1);
    if (close == std::string_view::npos) return std::nullopt;
    Named named{open + 1, close - open - 1};
    const std::string name = lowerCase(text.substr(named.at, named.size));
    if (name == "utf-8") named.encoding = Encoding::kUtf8;
    if (name == "iso-8859-1" || name == "latin1") named.encoding = Encoding::kLatin1;
    if (name == "windows-1252" || name == "cp1252") named.encoding = Encoding::kWindows1252;
    if (name == "utf-16" || name == "utf-16le") named.encoding = Encoding::kUtf16Le;
    if (name == "utf-16be") named.encoding = Encoding::kUtf16Be;
    return named;
}

std::optional<std::string> toSingleByte(std::string_view utf8, bool windows1252) {
    std::string bytes;
    for (const char16_t unit : toUtf16(utf8)) {
        const bool sameNumber =
            windows1252 ? unit < 0x80 || (unit >= 0xA0 && unit <= 0xFF) : unit <= 0xFF;
        const auto* high =
            std::find(std::begin(kWindows1252High), std::end(kWindows1252High), unit);
        if (sameNumber) {
            bytes += static_cast<char>(unit);
        } else if (windows1252 && high != std::end(kWindows1252High)) {
            bytes += static_cast<char>(0x80 + (high - std::begin(kWindows1252High)));
        } else {
            return std::nullopt;
        }
    }
    return bytes;
}

}  // namespace

std::optional<std::string> decodeDeclaredSingleByte(std::string_view bytes) {
    const std::optional<Named> named = declaredEncoding(bytes);
    if (!named ||
        (named->encoding != Encoding::kLatin1 && named->encoding != Encoding::kWindows1252)) {
        return std::nullopt;
    }
    std::u16string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        const bool high = named->encoding == Encoding::kWindows1252 && byte >= 0x80 && byte < 0xA0;
        text += high ? kWindows1252High[byte - 0x80] : char16_t{byte};
    }
    return fromUtf16(text);
}

std::string encodeAsDeclared(std::string_view utf8, bool bigEndian) {
    const std::optional<Named> named = declaredEncoding(utf8);
    if (!named) return std::string(utf8);
    switch (named->encoding) {
        case Encoding::kUtf8:
            return std::string(utf8);
        case Encoding::kUtf16Le:
        case Encoding::kUtf16Be: {
            const bool big = bigEndian || named->encoding == Encoding::kUtf16Be;
            std::string bytes = big ? "\xFE\xFF" : "\xFF\xFE";
            for (const char16_t unit : toUtf16(utf8)) {
                const char low = static_cast<char>(unit & 0xFF),
                           high = static_cast<char>(unit >> 8);
                bytes += big ? std::string{high, low} : std::string{low, high};
            }
            return bytes;
        }
        case Encoding::kLatin1:
        case Encoding::kWindows1252:
            if (auto bytes = toSingleByte(utf8, named->encoding == Encoding::kWindows1252))
                return *bytes;
            break;
        case Encoding::kOther:
            break;
    }
    std::string text(utf8);
    return text.replace(named->at, named->size, "UTF-8");
}

}  // namespace ostrel::platform
