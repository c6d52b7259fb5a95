#include "runtime/text.h"

#include <gtest/gtest.h>

#include "runtime/automation_error.h"

namespace ostrel {
namespace {

TEST(Text, CaseMappingBeyondAscii) {
    // upper, lower: each pair must map both ways
    const std::pair<const char*, const char*> pairs[] = {
        {"ABC XYZ 09", "abc xyz 09"},
        {"ÀÉÎÕÜÇÑØÞŸ", "àéîõüçñøþÿ"},
        {"ĀĂĄĆČĎĘĞĹĽŁŃŇŐŒŘŚŠŢŤŮŰŹŻŽȘȚǍ", "āăąćčďęğĺľłńňőœřśšţťůűźżžșțǎ"},
        {"ΑΒΓΔΩΆΈΉΊΌΎΏΪΫΣ", "αβγδωάέήίόύώϊϋσ"},
        {"АБВЯЁЂЏҐӁӐӘ", "абвяёђџґӂӑә"},
        {"ẠỲ", "ạỳ"},
        {"×÷ß1-_€ŉ", "×÷ß1-_€ŉ"},      // not letters, or no single-letter partner
        {"Q\xFFR\xC3", "q\xFFr\xC3"},  // bytes that are not UTF-8 pass through
        {"\xE2\x82Z", "\xE2\x82z"},
    };
    for (const auto& [upper, lower] : pairs) {
        EXPECT_EQ(lowerCase(upper), lower);
        EXPECT_EQ(upperCase(lower), upper);
    }
    // one-way pairs
    EXPECT_EQ(lowerCase("İ"), "i");
    EXPECT_EQ(upperCase("ı"), "I");
    EXPECT_EQ(upperCase("ς"), "Σ");
    EXPECT_EQ(lowerCase("ẞ"), "ß");
}

TEST(Text, CompareIgnoresCaseAndTrimRemovesBlanksOnly) {
    EXPECT_TRUE(equalsText("PartNo-ÄÖ", "partno-äö"));
    EXPECT_FALSE(equalsText("abc", "abc "));
    EXPECT_LT(compareText("ABC", "abd"), 0);
    EXPECT_LT(compareText("ab", "ABC"), 0);
    EXPECT_LT(compareText("z", "é"), 0);  // code point order, not a locale's
    // Trimming removes blanks only.
    EXPECT_EQ(trimBlanks("  a b  "), "a b");
    EXPECT_EQ(trimBlanks("\ta\t"), "\ta\t");
    EXPECT_EQ(trimBlanks(" a\r\n"), "a\r\n");
    EXPECT_EQ(trimBlanks("    "), "");
}

TEST(Text, JoinPathLikeBuildPath) {
    const struct {
        const char* path;
        const char* name;
        char separator;
        const char* joined;
    } cases[] = {
        {"C:\\Data\\", "Q", '\\', "C:\\Data\\Q"},
        {"C:\\Data", "\\Q", '\\', "C:\\Data\\Q"},
        {"C:\\Data\\", "\\Q", '\\', "C:\\Data\\Q"},
        {"C:/data/", "x", '\\', "C:/data/x"},
        {"C:", "x", '\\', "C:x"},
        {"", "name", '\\', "name"},
        {"path", "", '\\', "path"},
        {"/var\\", "x", '/', "/var\\/x"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(joinPath(c.path, c.name, c.separator), c.joined) << c.path << " + " << c.name;
    }
}

TEST(Text, TrimAtNull) {
    using namespace std::string_literals;
    EXPECT_EQ(gfstrTrimAtNull("abc\0def"s), "abc");
    EXPECT_EQ(gfstrTrimAtNull("\0abc"s), "");
    // the NUL's position is a 16-bit number
    EXPECT_EQ(gfstrTrimAtNull(std::string(32766, 'a') + '\0').size(), 32766u);
    EXPECT_THROW(gfstrTrimAtNull(std::string(32767, 'a') + '\0'), AutomationError);
    EXPECT_EQ(gfstrTrimAtNull(std::string(40000, 'a')).size(), 40000u);
    // counted in UTF-16 units: 16383 two-byte letters are 16383 units
    EXPECT_NO_THROW(gfstrTrimAtNull(std::string(16383 * 2, 'a').replace(0, 2, "é") + '\0'));
}

TEST(Text, Utf16RoundTrip) {
    const std::string text = "Aé€𝄞Я";
    const std::u16string wide = toUtf16(text);
    EXPECT_EQ(wide, u"Aé€𝄞Я");
    EXPECT_EQ(fromUtf16(wide), text);
    // invalid input becomes U+FFFD
    EXPECT_EQ(toUtf16("a\xFFz"), u"a\uFFFDz");
    EXPECT_EQ(toUtf16("\xC0\xAF"), u"\uFFFD\uFFFD");            // overlong
    EXPECT_EQ(toUtf16("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD");  // encoded surrogate
    EXPECT_EQ(toUtf16("\xE2\x82"), u"\uFFFD");                  // cut short
    EXPECT_EQ(fromUtf16(std::u16string{u'a', char16_t(0xD800), u'z'}), "a\xEF\xBF\xBDz");
    EXPECT_EQ(fromUtf16(std::u16string{char16_t(0xDC00)}), "\xEF\xBF\xBD");
}

}  // namespace
}  // namespace ostrel
