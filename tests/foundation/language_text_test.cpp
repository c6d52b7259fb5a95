#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "fakes/error_number.h"
#include "fakes/test_apartment.h"
#include "runtime/automation_error.h"
#include "ui/language_text.h"

namespace ostrel {
namespace {

using fakes::pathOf;
using fakes::utf8Of;
using fakes::writeBytes;

using fakes::errorNumberOf;

class LanguageText : public ::testing::Test {
  protected:
    // A component "Demo" whose English texts are `content`, in a folder whose
    // name isn't ASCII, as a user's profile folder may be.
    std::string writeTexts(std::string_view content) {
        std::filesystem::create_directories(textFolder());
        writeBytes(textFolder() / "Demo.en.txt", content);
        return utf8Of(textFolder());
    }
    std::filesystem::path textFolder() const { return fx.programData / pathOf("Bibliothèque"); }

    fakes::TestApartment fx;
    clsLanguageText text;
};

TEST_F(LanguageText, ReadsTheStoreFormat) {
    const std::string folder = writeTexts(
        "\xEF\xBB\xBF# comment\r\n"
        "\r\n"
        "   # indented comment\n"
        "1=plain\r\n"
        " 2 =  blanks kept\n"
        "3=a=b\n"
        "4=line\\none\\ttab \\\\ Grüße");
    text.Initialise("Demo", folder);
    EXPECT_EQ(text.GetText(1), "plain");
    EXPECT_EQ(text.GetText(2), "  blanks kept");
    EXPECT_EQ(text.GetText(3), "a=b");
    EXPECT_EQ(text.GetText(4), "line\r\none\ttab \\ Grüße");
    EXPECT_EQ(errorNumberOf([&] { text.GetText(5); }), 5);
}

TEST_F(LanguageText, PlacesInsertsInOnePass) {
    text.Initialise("Demo", writeTexts("1=%2 before %1, %3%4.\n"
                                       "2=100%% of %1 at 5% (%5)\n"));
    EXPECT_EQ(text.GetFormattedText(1, "a", "b", "c", "d"), "b before a, cd.");
    EXPECT_EQ(text.GetFormattedText(1, "a"), " before a, .") << "omitted inserts are empty";
    EXPECT_EQ(text.GetFormattedText(1, "%2", "%1"), "%1 before %2, .")
        << "an insert's own markers stay";
    EXPECT_EQ(text.GetFormattedText(2, "x"), "100% of x at 5% (%5)");
    EXPECT_EQ(errorNumberOf([&] { text.GetFormattedText(3, "a"); }), 5);
}

TEST_F(LanguageText, RejectsABrokenFile) {
    for (const char* broken : {"no equals sign\n", "x=text\n", "1=a\n1=b\n", "1=bad \\q\n",
                               "=empty number\n", "99999999999=too big\n"}) {
        clsLanguageText fresh;
        const std::string folder = writeTexts(broken);
        EXPECT_EQ(errorNumberOf([&] { fresh.Initialise("Demo", folder); }), 5) << broken;
    }
}

TEST_F(LanguageText, RepeatedInitialiseIsCheapAndAFailureIsReportedOnce) {
    const std::string folder = writeTexts("1=first\n");
    text.Initialise("Demo", folder);
    // Not read again: the same values bind nothing new.
    writeTexts("1=changed\n");
    text.Initialise("Demo", folder, "third");
    EXPECT_EQ(text.GetText(1), "first");

    const std::string elsewhere = utf8Of(fx.programData / "none");
    try {
        text.Initialise("Demo", elsewhere);
        ADD_FAILURE() << "a missing file raises";
    } catch (const AutomationError& error) {
        EXPECT_EQ(error.number, 53);
        EXPECT_EQ(error.description,
                  "File not found: " + utf8Of(fx.programData / "none" / "Demo.en.txt"));
    }
    EXPECT_NO_THROW(text.Initialise("Demo", elsewhere)) << "reported once, not on every record";

    // Other values bind anew.
    writeBytes(textFolder() / "Other.en.txt", "1=other\n");
    text.Initialise("Other", folder);
    EXPECT_EQ(text.GetText(1), "other");
}

}  // namespace
}  // namespace ostrel
