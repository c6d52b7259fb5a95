#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "component/startup.h"
#include "fakes/error_number.h"
#include "fakes/test_apartment.h"
#include "foundation/builtin_data.h"
#include "foundation/globals.h"
#include "ui/display_error.h"
#include "ui/language_text.h"
#include "ui/localised_files.h"
#include "ui/resource_id_numbers.h"

#ifndef _WIN32
#include <sys/stat.h>
#endif

namespace ostrel {
namespace {

using fakes::pathOf;
using fakes::utf8Of;
using fakes::writeBytes;

// The number and description of the error an operation raises.
template <class Operation>
std::string errorTextOf(Operation operation) {
    const AutomationError error = fakes::errorOf(operation);
    return error.number ? std::to_string(error.number) + " " + error.description : "no error";
}

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
    // The error that binding a fresh object to the folder raises; the next
    // binding with the same values raises nothing.
    std::string failure() {
        clsLanguageText fresh;
        const std::string folder = utf8Of(textFolder());
        const std::string first = errorTextOf([&] { fresh.Initialise("Demo", folder); });
        EXPECT_EQ(errorTextOf([&] { fresh.Initialise("Demo", folder); }), "no error")
            << "reported once";
        return first;
    }
    std::string failureOf(std::string_view content) {
        writeTexts(content);
        return failure();
    }

    fakes::TestApartment fx;
    clsLanguageText text;
};

TEST_F(LanguageText, ReadsTheStoreFormat) {
    text.Initialise("Demo", writeTexts("\xEF\xBB\xBF# comment\r\n"
                                       "\r\n"
                                       "   # indented comment\n"
                                       "1=plain\r\n"
                                       " 2 =  blanks kept\n"
                                       "3=a=b\n"
                                       "4=line\\none\ttab \\\\ Grüße\n"
                                       "5=C:\\temp\\ C:\\q\\"));
    // Any other backslash stands as itself.
    EXPECT_EQ((std::vector<std::string>{text.GetText(1), text.GetText(2), text.GetText(3),
                                        text.GetText(4), text.GetText(5)}),
              (std::vector<std::string>{"plain", "  blanks kept", "a=b",
                                        "line\r\none\ttab \\ Grüße", "C:\\temp\\ C:\\q\\"}));
    EXPECT_EQ(errorTextOf([&] { text.GetText(6); }), "5 There is no text number 6");
}

TEST_F(LanguageText, PlacesInsertsInOnePass) {
    text.Initialise("Demo", writeTexts("1=%2 before %1, %3%4.\n"
                                       "2=100%% of %1 at 5% (%5)\n"));
    EXPECT_EQ(text.GetFormattedText(1, "a", "b", "c", "d"), "b before a, cd.");
    EXPECT_EQ(text.GetFormattedText(1, "a"), " before a, .") << "omitted inserts are empty";
    EXPECT_EQ(text.GetFormattedText(1, "%2", "%1"), "%1 before %2, .")
        << "an insert's own markers stay";
    EXPECT_EQ(text.GetFormattedText(2, "x"), "100% of x at 5% (%5)");
    EXPECT_EQ(fakes::errorNumberOf([&] { text.GetFormattedText(3, "a"); }), 5);
}

TEST_F(LanguageText, RejectsABrokenFile) {
    for (const char* broken :
         {"no equals sign\n", "x=text\n", "1=a\n1=b\n", "=empty number\n", "99999999999=too big\n",
          "font 1=Arial\n", "font 1=;8\n", "font 1=Arial;0\n", "font 1=Arial;8;heavy\n",
          "picture 1=logo.png\n", "picture 1=../logo.bmp\n", "picture 1=\n"}) {
        EXPECT_EQ(failureOf(broken).substr(0, 2), "5 ") << broken;
    }
}

TEST_F(LanguageText, RepeatedInitialiseIsCheapAndAMissingFileIsNamed) {
    const std::string folder = writeTexts("1=first\n");
    text.Initialise("Demo", folder);
    // Not read again: the same values bind nothing new.
    writeTexts("1=changed\n");
    text.Initialise("Demo", folder, "third");
    EXPECT_EQ(text.GetText(1), "first");

    EXPECT_EQ(errorTextOf([&] { text.Initialise("Demo", utf8Of(fx.programData / "none")); }),
              "53 File not found: " + utf8Of(fx.programData / "none" / "Demo.en.txt"));

    // Other values bind anew.
    writeBytes(textFolder() / "Other.en.txt", "1=other\n");
    text.Initialise("Other", folder);
    EXPECT_EQ(text.GetText(1), "other");
}

TEST_F(LanguageText, FollowsTheUsersLanguageWithEnglishBehind) {
    // Each translation lacks a text: the next file's text of that number stands in.
    writeTexts("1=English\n2=English 2\n3=English 3\n");
    writeBytes(textFolder() / "Demo.de.txt", "1=Deutsch\n2=Deutsch 2\n");
    writeBytes(textFolder() / "Demo.de-AT.txt", "1=Österreichisch\n");
    const struct {
        const char* override;  // OSTREL_LANGUAGE, nullptr for unset
        const char* system;    // the user's interface language
        const char* outcome;   // texts 1 to 3, then the suffixes
    } cases[] = {
        {nullptr, "de_DE.UTF-8", "Deutsch, Deutsch 2, English 3 / de de-DE"},
        {nullptr, "de-CH", "Deutsch, Deutsch 2, English 3 / de de-CH"},
        {nullptr, "de_AT.UTF-8@euro", "Österreichisch, Deutsch 2, English 3 / de de-AT"},
        {"de", "fr_FR.UTF-8", "Deutsch, Deutsch 2, English 3 / de de"},
        {"de_at", "", "Österreichisch, Deutsch 2, English 3 / de de-AT"},
        {"", "de_DE", "Deutsch, Deutsch 2, English 3 / de de-DE"},  // an empty override: unset
        {nullptr, "fr_FR.UTF-8", "English, English 2, English 3 / en en-US"},
        {nullptr, "en_GB.UTF-8", "English, English 2, English 3 / en en-GB"},
        {nullptr, "", "English, English 2, English 3 / en en-US"},
        {"../../etc", "de_DE", "English, English 2, English 3 / en en-US"},
        {"de-A-/x", "de_DE", "English, English 2, English 3 / en en-US"},  // no folder by a name
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.override ? c.override : "(unset)") + " / " + c.system);
        fx.environment.variables.erase("OSTREL_LANGUAGE");
        if (c.override) fx.environment.variables["OSTREL_LANGUAGE"] = c.override;
        fx.locale.language = c.system;
        clsLanguageText fresh;
        fresh.Initialise("Demo", utf8Of(textFolder()));
        std::string suffix1(100, ' '), suffix2(100, ' ');
        fresh.GetLanguageSuffixes(suffix1, suffix2);
        EXPECT_EQ(fresh.GetText(1) + ", " + fresh.GetText(2) + ", " + fresh.GetText(3) + " / " +
                      suffix1 + " " + suffix2,
                  c.outcome);
    }
}

TEST_F(LanguageText, AppliesFontEntriesAndHandsOutPictures) {
    const std::string folder = writeTexts(
        "font 280=Tahoma; 9.5 ;Bold;italic\n"
        "font 281=Arial;10\n"
        "picture 286=Ostrel.286.ico\n"
        "picture 7=broken.bmp\n"
        "picture 8=gone.ico\n");
    writeBytes(textFolder() / "Ostrel.286.ico", *builtinDataFile("Ostrel.286.ico"));
    writeBytes(textFolder() / "broken.bmp", "BM not really");
    text.Initialise("Demo", folder);

    Font font{.underline = true, .charset = 238};
    text.ApplyFont(ResourceIDNumbers::kFontEntry, font);
    EXPECT_EQ(font.name, "Tahoma");
    EXPECT_EQ(font.size, 9.5);
    EXPECT_TRUE(font.bold && font.italic && !font.underline && !font.strikethrough);
    EXPECT_EQ(font.charset, 238) << "the character set is the caller's";
    text.ApplyFont(281, font);
    EXPECT_FALSE(font.bold);
    EXPECT_EQ(fakes::errorNumberOf([&] { text.ApplyFont(286, font); }), 5);
    EXPECT_EQ(fakes::errorNumberOf([&] { text.GetText(280); }), 5) << "a font entry is no text";

    const auto icon = text.GetPicture(ResourceIDNumbers::kFormIcon);
    EXPECT_EQ(icon->kind, Picture::Kind::Icon);
    EXPECT_EQ(icon->file, utf8Of(textFolder() / "Ostrel.286.ico"));
    EXPECT_EQ(icon->widthPx, 32);
    EXPECT_EQ(text.GetPicture(ResourceIDNumbers::kFormIcon), icon) << "read once";
    EXPECT_EQ(errorTextOf([&] { text.GetPicture(7); }),
              "5 Not a valid picture: " + utf8Of(textFolder() / "broken.bmp"));
    EXPECT_EQ(errorTextOf([&] { text.GetPicture(8); }),
              "53 File not found: " + utf8Of(textFolder() / "gone.ico"));
    EXPECT_EQ(fakes::errorNumberOf([&] { text.GetPicture(108); }), 5);
}

TEST_F(LanguageText, TheComponentsOwnFilesAndTheBuiltInOnes) {
    // Beside the test program: the files the build puts beside the artefacts.
    clsLanguageText beside;
    beside.Initialise("Ostrel", fx.environment.folder);
    const auto logo = beside.GetPicture(ResourceIDNumbers::kLogo);
    EXPECT_FALSE(logo->file.empty());

    // Copied without its data files, for a German user: the same English texts and pictures.
    fx.locale.language = "de_DE.UTF-8";
    clsLanguageText alone;
    alone.Initialise("Ostrel", utf8Of(fx.programData));
    for (int32_t number : {108, 131, 279, 312, 313, 338}) {
        EXPECT_EQ(alone.GetText(number), beside.GetText(number)) << number;
    }
    const auto builtinLogo = alone.GetPicture(ResourceIDNumbers::kLogo);
    EXPECT_EQ(builtinLogo->file, "");
    EXPECT_EQ(builtinLogo->bytes, logo->bytes);
    std::string suffix1, suffix2;
    alone.GetLanguageSuffixes(suffix1, suffix2);
    EXPECT_EQ(suffix1 + " " + suffix2, "en en-US") << "no German file: English, and its suffixes";
}

TEST_F(LanguageText, HostileFilesAreNamedAndReportedOnce) {
    const std::string file = utf8Of(textFolder() / "Demo.en.txt");
    EXPECT_EQ(failureOf("1=fine\n2=cut \xC3"), "5 Not UTF-8 at line 2 of " + file);
    EXPECT_EQ(failureOf("1=over\xC0\xAFlong\n"), "5 Not UTF-8 at line 1 of " + file);
    EXPECT_EQ(failureOf(std::string("1=nul\0byte\n", 12)), "5 Bad text at line 1 of " + file);
    EXPECT_EQ(failureOf("1=a\n2=b\n3\n"), "5 Bad text at line 3 of " + file);

    writeTexts("");
    std::filesystem::resize_file(textFolder() / "Demo.en.txt", 3u << 20);
    EXPECT_EQ(failure(), "5 The language file is larger than 1048576 bytes: " + file);

    std::filesystem::remove(textFolder() / "Demo.en.txt");
    std::filesystem::create_directory(textFolder() / "Demo.en.txt");
    EXPECT_EQ(failure(), "5 The language file is a folder: " + file);
    std::filesystem::remove(textFolder() / "Demo.en.txt");
#ifndef _WIN32
    // A pipe would block the reader for ever.
    ASSERT_EQ(::mkfifo((textFolder() / "Demo.en.txt").c_str(), 0600), 0);
    EXPECT_EQ(failure(), "5 The language file is not a regular file: " + file);
#endif
}

// The test's own folder as the component folder, British English chosen ("en", "en-GB").
class LocalisedFiles : public ::testing::Test {
  protected:
    LocalisedFiles() {
        fx.environment.folder = utf8Of(fx.programData);
        fx.locale.language = "en_GB.UTF-8";
        fx.writeMarker();  // the log on: the help file's steps are written down
        ensureStarted();
    }
    // Creates the named files (and only those) in the folder.
    void create(const std::vector<const char*>& names) {
        for (const char* name : names) fakes::writeBytes(fx.programData / name, "x");
    }
    std::string in(const char* name) const { return utf8Of(fx.programData / name); }

    fakes::TestApartment fx;
};

TEST_F(LocalisedFiles, TriesSuffix2ThenSuffix1AndNeverThePlainFile) {
    const struct {
        std::vector<const char*> files;
        const char* found;  // by the first form | by the second, "-" for none
    } cases[] = {
        {{"Help.chm"}, "- | -"},
        {{"Help_en.chm", "Helpen.chm"}, "Help_en.chm | Helpen.chm"},
        {{"Help_en.chm", "Help_en-GB.chm", "Helpen-GB.chm"}, "Help_en-GB.chm | Helpen-GB.chm"},
        {{"Help_en-GB.chm", "Helpen.chm"}, "Help_en-GB.chm | Helpen.chm"},
    };
    const auto name = [&](const std::string& file) {
        return file.empty() ? "-" : file.substr(in("").size());
    };
    for (const auto& c : cases) {
        create(c.files);
        EXPECT_EQ(name(gfstrGetLocalisedFileName(in("Help.chm"))) + " | " +
                      name(gfstrGetLocalisedFileName(in("Help.chm"), SuffixForm::Direct)),
                  c.found);
        for (const char* file : c.files) std::filesystem::remove(fx.programData / file);
    }
}

TEST_F(LocalisedFiles, SetsTheHelpFileAndOpensItByItsKind) {
    HelpMenuEntry entry;
    create({"Guide.chm"});
    msubSetLocalisedHelpFile("Guide.chm", entry);
    EXPECT_FALSE(entry.Enabled) << "only the base file: no help file";
    msubShowHelpFile(entry);

    create({"Guideen.CHM"});
    msubSetLocalisedHelpFile("Guide.CHM", entry);
    EXPECT_TRUE(entry.Enabled);
    msubShowHelpFile(entry);
    EXPECT_EQ(fx.help.calls, std::vector<std::string>{"html|" + in("Guideen.CHM") + "|0|0"})
        << "the case of chm doesn't matter";

    // A name with no variant leaves the help file as it was.
    msubSetLocalisedHelpFile("Other.hlp", entry);
    EXPECT_TRUE(entry.Enabled);
    EXPECT_EQ(apartment().helpFile, in("Guideen.CHM"));

    create({"Olden-GB.hlp"});
    fx.debugStream.texts.clear();
    msubSetLocalisedHelpFile("Old.hlp", entry);
    EXPECT_EQ(fx.debugStream.texts,
              (std::vector<std::string>{"BaseHelpFile = " + in("Old.hlp") + "\r\n",
                                        "HelpFile = " + in("Olden-GB.hlp") + "\r\n"}));
    msubShowHelpFile(entry);
    EXPECT_EQ(fx.help.calls.back(), "win|" + in("Olden-GB.hlp") + "|3");
}

TEST_F(LocalisedFiles, DisplayErrorShapesAndStyle) {
    const struct {
        int32_t number;
        const char* description;
        int32_t style;
        const char* shown;  // the style shown | the text
    } cases[] = {
        {91, "Object not set", 0, "48|frmAbout.Load\r\n91: Object not set"},
        {91, "", 16, "16|frmAbout.Load\r\n91: "},
        {-2147024894, "x", 0, "48|frmAbout.Load\r\n-2147024894: x"},
        {0, "Nothing to show", 64, "64|frmAbout.Load\r\n\r\nNothing to show"},
        {0, "", 0, "48|frmAbout.Load"},
    };
    for (const auto& c : cases) {
        fx.messageBox.shown.clear();
        gsubDisplayError("frmAbout.Load", c.number, c.description, c.style);
        EXPECT_EQ(fx.messageBox.boxes(),
                  std::vector<std::string>{"Ostrel|" + std::string(c.shown)});
    }
}

}  // namespace
}  // namespace ostrel
