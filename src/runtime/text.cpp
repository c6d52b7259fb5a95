#include "runtime/text.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "runtime/automation_error.h"

namespace ostrel {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// One UTF-8 sequence read from the front of a text. A bad sequence reports
// the bytes of its longest valid-looking start (at least one), so the
// caller can keep or replace them as a unit.
struct Decoded {
    char32_t code = 0;
    size_t length = 1;
    bool valid = false;
};

Decoded decodeUtf8(std::string_view text, size_t at) {
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(at);
    if (lead < 0x80) return {lead, 1, true};

    size_t need = 0;
    char32_t code = 0;
    unsigned char low = 0x80, high = 0xBF;  // the range allowed for the second byte
    if (lead >= 0xC2 && lead <= 0xDF) {
        need = 1;
        code = lead & 0x1Fu;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        need = 2;
        code = lead & 0x0Fu;
        if (lead == 0xE0) low = 0xA0;   // no overlong forms
        if (lead == 0xED) high = 0x9F;  // no surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        need = 3;
        code = lead & 0x07u;
        if (lead == 0xF0) low = 0x90;
        if (lead == 0xF4) high = 0x8F;  // nothing above U+10FFFF
    } else {
        return {};
    }

    size_t length = 1;
    for (size_t k = 0; k < need; ++k) {
        const size_t i = at + length;
        if (i >= text.size()) return {0, length, false};
        const unsigned char next = byte(i);
        const unsigned char lo = k == 0 ? low : 0x80;
        const unsigned char hi = k == 0 ? high : 0xBF;
        if (next < lo || next > hi) return {0, length, false};
        code = (code << 6) | (next & 0x3Fu);
        ++length;
    }
    return {code, length, true};
}

void appendUtf8(std::string& out, char32_t code) {
    const auto put = [&](uint32_t bits) { out.push_back(static_cast<char>(bits)); };
    const auto c = static_cast<uint32_t>(code);
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | (c >> 6));
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | (c >> 12));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | (c >> 18));
        put(0x80 | ((c >> 12) & 0x3F));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

// The simple one-to-one case pairs of the scripts our texts use, as rules:
// upper-case letters first..last (every one, or every other one when step
// is 2) become lower case by adding delta. Some pairs map one way only,
// as Unicode has them (dotted capital I lowers to i, but i uppers to I).
// Written out here so that Linux and Windows fold alike, whatever the locale.
enum Direction : uint8_t { kToLower = 1, kToUpper = 2, kBoth = 3 };
struct CaseRule {
    char32_t first, last;
    int32_t delta;
    uint8_t step;
    Direction direction;
};

constexpr std::array<CaseRule, 42> kCaseRules{{
    {0x0041, 0x005A, 32, 1, kBoth},               // Basic Latin
    {0x00C0, 0x00D6, 32, 1, kBoth},               // Latin-1 Supplement
    {0x00D8, 0x00DE, 32, 1, kBoth},               //   (U+00D7 is the multiplication sign)
    {0x0178, 0x0178, 0x00FF - 0x0178, 1, kBoth},  // Y with diaeresis
    {0x0100, 0x012F, 1, 2, kBoth},                // Latin Extended-A
    {0x0130, 0x0130, 0x0069 - 0x0130, 1, kToLower},
    {0x0049, 0x0049, 0x0131 - 0x0049, 1, kToUpper},  // dotless i uppers to I
    {0x0132, 0x0137, 1, 2, kBoth},
    {0x0139, 0x0148, 1, 2, kBoth},
    {0x014A, 0x0177, 1, 2, kBoth},
    {0x0179, 0x017E, 1, 2, kBoth},
    {0x0053, 0x0053, 0x017F - 0x0053, 1, kToUpper},  // long s uppers to S
    {0x01CD, 0x01DC, 1, 2, kBoth},                   // Latin Extended-B, the regular runs
    {0x01DE, 0x01EF, 1, 2, kBoth},
    {0x01F8, 0x021F, 1, 2, kBoth},  //   Romanian comma letters among them
    {0x0222, 0x0233, 1, 2, kBoth},
    {0x0386, 0x0386, 0x03AC - 0x0386, 1, kBoth},  // Greek, with tonos
    {0x0388, 0x038A, 0x03AD - 0x0388, 1, kBoth},
    {0x038C, 0x038C, 0x03CC - 0x038C, 1, kBoth},
    {0x038E, 0x038F, 0x03CD - 0x038E, 1, kBoth},
    {0x0391, 0x03A1, 32, 1, kBoth},
    {0x03A3, 0x03AB, 32, 1, kBoth},
    {0x03A3, 0x03A3, 0x03C2 - 0x03A3, 1, kToUpper},  // final sigma uppers to capital sigma
    {0x03D8, 0x03EF, 1, 2, kBoth},
    {0x0400, 0x040F, 0x50, 1, kBoth},  // Cyrillic
    {0x0410, 0x042F, 32, 1, kBoth},
    {0x0460, 0x0481, 1, 2, kBoth},
    {0x048A, 0x04BF, 1, 2, kBoth},
    {0x04C0, 0x04C0, 0x04CF - 0x04C0, 1, kBoth},
    {0x04C1, 0x04CE, 1, 2, kBoth},
    {0x04D0, 0x052F, 1, 2, kBoth},
    {0x0531, 0x0556, 0x30, 1, kBoth},                // Armenian
    {0x1E00, 0x1E95, 1, 2, kBoth},                   // Latin Extended Additional
    {0x1E9E, 0x1E9E, 0x00DF - 0x1E9E, 1, kToLower},  // capital sharp s
    {0x1EA0, 0x1EFF, 1, 2, kBoth},
    {0x1F08, 0x1F0F, -8, 1, kBoth},  // Greek Extended, the plain runs
    {0x1F18, 0x1F1D, -8, 1, kBoth},
    {0x1F28, 0x1F2F, -8, 1, kBoth},
    {0x1F38, 0x1F3F, -8, 1, kBoth},
    {0x1F48, 0x1F4D, -8, 1, kBoth},
    {0x1F68, 0x1F6F, -8, 1, kBoth},
    {0xFF21, 0xFF3A, 32, 1, kBoth},  // full-width Latin
}};

char32_t shifted(char32_t code, int32_t delta) {
    return static_cast<char32_t>(static_cast<int32_t>(code) + delta);
}

char32_t toLowerCode(char32_t code) {
    if (code < 0x80) return code >= 'A' && code <= 'Z' ? code + 32 : code;
    for (const CaseRule& rule : kCaseRules) {
        if (!(rule.direction & kToLower)) continue;
        if (code >= rule.first && code <= rule.last && (code - rule.first) % rule.step == 0) {
            return shifted(code, rule.delta);
        }
    }
    return code;
}

char32_t toUpperCode(char32_t code) {
    if (code < 0x80) return code >= 'a' && code <= 'z' ? code - 32 : code;
    for (const CaseRule& rule : kCaseRules) {
        if (!(rule.direction & kToUpper)) continue;
        const char32_t first = shifted(rule.first, rule.delta);
        const char32_t last = shifted(rule.last, rule.delta);
        if (code >= first && code <= last && (code - first) % rule.step == 0) {
            return shifted(code, -rule.delta);
        }
    }
    return code;
}

template <bool kLower>
char32_t mapCode(char32_t code) {
    return kLower ? toLowerCode(code) : toUpperCode(code);
}

template <bool kLower>
std::string mapCase(std::string_view text) {
    // The ASCII run at the start, most often the whole text, is copied at
    // once and mapped in place in one pass, with no decoding.
    std::string out(text);
    size_t ascii = 0;
    for (; ascii < out.size(); ++ascii) {
        const auto code = static_cast<unsigned char>(out[ascii]);
        if (code >= 0x80) break;
        out[ascii] = static_cast<char>(mapCode<kLower>(code));
    }
    if (ascii == out.size()) return out;
    out.resize(ascii);
    for (size_t at = ascii; at < text.size();) {
        const Decoded d = decodeUtf8(text, at);
        if (d.valid) {
            appendUtf8(out, mapCode<kLower>(d.code));
        } else {
            out.append(text.substr(at, d.length));  // kept as they are
        }
        at += d.length;
    }
    return out;
}

}  // namespace

std::string lowerCase(std::string_view text) {
    return mapCase<true>(text);
}

std::string upperCase(std::string_view text) {
    return mapCase<false>(text);
}

// The lowered texts compare byte by byte, which for UTF-8 is the order of
// the code points: a stable, locale-free order, not the user's collation.
int compareText(std::string_view a, std::string_view b) {
    const auto isAscii = [](std::string_view text) {
        return std::all_of(text.begin(), text.end(),
                           [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    };
    if (isAscii(a) && isAscii(b)) {  // the common case, without copies
        const size_t common = std::min(a.size(), b.size());
        for (size_t i = 0; i < common; ++i) {
            const char32_t x = toLowerCode(static_cast<unsigned char>(a[i]));
            const char32_t y = toLowerCode(static_cast<unsigned char>(b[i]));
            if (x != y) return x < y ? -1 : 1;
        }
        return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
    }
    const int order = lowerCase(a).compare(lowerCase(b));
    return order < 0 ? -1 : (order > 0 ? 1 : 0);
}

bool equalsText(std::string_view a, std::string_view b) {
    return compareText(a, b) == 0;
}

std::string trimBlanks(std::string_view text) {
    const size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return {};
    const size_t last = text.find_last_not_of(' ');
    return std::string(text.substr(first, last - first + 1));
}

// With the backslash as separator the forward slash counts as one too, as
// Windows paths accept both; a bare drive ("C:") takes no separator, which
// names the drive's current folder as the file system object does.
std::string joinPath(std::string_view path, std::string_view name, char separator) {
    if (path.empty()) return std::string(name);
    if (name.empty()) return std::string(path);
    const auto isSeparator = [separator](char c) {
        return c == separator || (separator == '\\' && c == '/');
    };
    const bool pathEnds = isSeparator(path.back());
    const bool nameStarts = isSeparator(name.front());
    std::string joined(path);
    if (pathEnds && nameStarts) {
        joined.pop_back();
    } else if (!pathEnds && !nameStarts) {
        const bool bareDrive = separator == '\\' && path.size() == 2 && path[1] == ':';
        if (!bareDrive) joined.push_back(separator);
    }
    joined.append(name);
    return joined;
}

std::string gfstrTrimAtNull(std::string_view buffer) {
    const size_t nul = buffer.find('\0');
    if (nul == std::string_view::npos) return std::string(buffer);
    // kept: the routine holds the NUL's position (counted in UTF-16 units,
    // from 1) in a 16-bit integer, so a NUL beyond 32767 overflows.
    size_t position = 1;
    for (size_t at = 0; at < nul;) {
        const Decoded d = decodeUtf8(buffer, at);
        position += d.valid && d.code > 0xFFFF ? 2 : 1;
        at += d.valid ? d.length : 1;
    }
    if (position > 32767) raise(kErrOverflow);
    return std::string(buffer.substr(0, nul));
}

std::u16string toUtf16(std::string_view utf8) {
    std::u16string out;
    out.reserve(utf8.size());
    for (size_t at = 0; at < utf8.size();) {
        const Decoded d = decodeUtf8(utf8, at);
        const char32_t code = d.valid ? d.code : kReplacement;
        if (code > 0xFFFF) {
            const char32_t v = code - 0x10000;
            out.push_back(static_cast<char16_t>(0xD800 + (v >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + (v & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(code));
        }
        at += d.length;
    }
    return out;
}

std::string fromUtf16(std::u16string_view utf16) {
    std::string out;
    out.reserve(utf16.size());
    for (size_t at = 0; at < utf16.size(); ++at) {
        const char16_t unit = utf16[at];
        char32_t code = unit;
        if (unit >= 0xD800 && unit <= 0xDBFF && at + 1 < utf16.size() && utf16[at + 1] >= 0xDC00 &&
            utf16[at + 1] <= 0xDFFF) {
            code = 0x10000 + ((static_cast<char32_t>(unit) - 0xD800) << 10) +
                   (static_cast<char32_t>(utf16[at + 1]) - 0xDC00);
            ++at;
        } else if (unit >= 0xD800 && unit <= 0xDFFF) {
            code = kReplacement;  // a surrogate without its partner
        }
        appendUtf8(out, code);
    }
    return out;
}

// Files are mostly ASCII: those units are copied straight, and only runs of
// other characters go through the general conversion.
std::string fromUtf16Bytes(std::string_view bytes, bool bigEndian) {
    const size_t count = bytes.size() / 2;
    const size_t low = bigEndian ? 1 : 0;
    auto unitAt = [&](size_t k) {
        return static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * k + low]) |
                                     (static_cast<unsigned char>(bytes[2 * k + 1 - low]) << 8));
    };
    std::string out(count, '\0');
    size_t used = 0;
    std::u16string run;
    for (size_t k = 0; k < count;) {
        const char16_t unit = unitAt(k);
        if (unit < 0x80) {
            out[used++] = static_cast<char>(unit);
            ++k;
            continue;
        }
        run.clear();
        for (; k < count && unitAt(k) >= 0x80; ++k) run += unitAt(k);
        const std::string converted = fromUtf16(run);
        out.resize(std::max(out.size(), used + converted.size() + (count - k)));
        out.replace(used, converted.size(), converted);
        used += converted.size();
    }
    out.resize(used);
    return out;
}

bool isValidUtf8(std::string_view text) {
    size_t i = 0;
    const size_t n = text.size();
    while (i < n) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c < 0x80) {
            ++i;
            continue;
        }
        size_t extra = 0;
        uint32_t min = 0;
        if ((c & 0xE0) == 0xC0) {
            extra = 1;
            min = 0x80;
        } else if ((c & 0xF0) == 0xE0) {
            extra = 2;
            min = 0x800;
        } else if ((c & 0xF8) == 0xF0) {
            extra = 3;
            min = 0x10000;
        } else {
            return false;
        }
        if (i + extra >= n) return false;
        uint32_t code = c & (0x3Fu >> extra);
        for (size_t k = 1; k <= extra; ++k) {
            const auto d = static_cast<unsigned char>(text[i + k]);
            if ((d & 0xC0) != 0x80) return false;
            code = (code << 6) | (d & 0x3Fu);
        }
        if (code < min || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return false;
        i += extra + 1;
    }
    return true;
}

}  // namespace ostrel
