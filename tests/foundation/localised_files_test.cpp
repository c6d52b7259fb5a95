#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "component/startup.h"
#include "fakes/test_apartment.h"
#include "foundation/debug_log.h"
#include "foundation/globals.h"
#include "ui/display_error.h"
#include "ui/language_text.h"
#include "ui/localised_files.h"

namespace ostrel {
namespace {

using fakes::utf8Of;
using fakes::writeBytes;

// A component folder of its own, with German chosen (suffixes "de" and "de-DE").
class LocalisedFiles : public ::testing::Test {
  protected:
    LocalisedFiles() {
        folder = fx.programData / "component";
        std::filesystem::create_directories(folder);
        for (const char* name : {"Ostrel.en.txt", "Ostrel.de.txt"}) {
            std::filesystem::copy_file(
                std::filesystem::path(fakes::pathOf(fx.environment.folder)) / name, folder / name);
        }
        fx.environment.folder = utf8Of(folder);
        fx.locale.language = "de_DE.UTF-8";
        fx.writeMarker();  // the log on: the help file's steps are written down
        ensureStarted();
    }
    // Creates the named files (and only those) in the folder.
    void create(std::initializer_list<const char*> names) {
        for (const char* name : names) writeBytes(folder / name, "x");
    }
    std::string in(const char* name) const { return utf8Of(folder / name); }

    fakes::TestApartment fx;
    std::filesystem::path folder;
};

TEST_F(LocalisedFiles, TriesSuffix2ThenSuffix1AndNeverThePlainFile) {
    struct Case {
        std::vector<const char*> files;
        const char* underscored;  // what the first form finds
        const char* direct;       // what the second form finds
    } cases[] = {
        {{"Help.chm"}, "", ""},
        {{"Help_de.chm", "Helpde.chm"}, "Help_de.chm", "Helpde.chm"},
        {{"Help_de.chm", "Help_de-DE.chm", "Helpde-DE.chm"}, "Help_de-DE.chm", "Helpde-DE.chm"},
        {{"Help_de-DE.chm", "Helpde.chm"}, "Help_de-DE.chm", "Helpde.chm"},
    };
    for (const Case& c : cases) {
        std::filesystem::remove_all(folder / "help");
        std::filesystem::create_directories(folder / "help");
        for (const char* name : c.files) writeBytes(folder / "help" / name, "x");
        const std::string base = utf8Of(folder / "help" / "Help.chm");
        auto expected = [&](const char* name) {
            return *name ? utf8Of(folder / "help" / name) : std::string();
        };
        EXPECT_EQ(gfstrGetLocalisedFileName(base), expected(c.underscored)) << c.files[0];
        EXPECT_EQ(gfstrGetLocalisedFileName(base, SuffixForm::Direct), expected(c.direct))
            << c.files[0];
    }
}

TEST_F(LocalisedFiles, SetsTheHelpFileAndOpensItByItsKind) {
    HelpMenuEntry entry;
    create({"Guide.chm"});
    msubSetLocalisedHelpFile("Guide.chm", entry);
    EXPECT_FALSE(entry.Enabled) << "only the base file: no help file";
    msubShowHelpFile(entry);
    EXPECT_TRUE(fx.help.calls.empty());

    create({"Guidede.CHM"});
    msubSetLocalisedHelpFile("Guide.CHM", entry);
    EXPECT_TRUE(entry.Enabled);
    msubShowHelpFile(entry);
    ASSERT_EQ(fx.help.calls.size(), 1u);
    EXPECT_EQ(fx.help.calls[0], "html|" + in("Guidede.CHM") + "|0|0")
        << "the case of chm doesn't matter";

    // A name with no variant leaves the help file as it was.
    msubSetLocalisedHelpFile("Other.hlp", entry);
    EXPECT_TRUE(entry.Enabled);
    EXPECT_EQ(apartment().helpFile, in("Guidede.CHM"));

    create({"Oldde-DE.hlp"});
    fx.debugStream.texts.clear();
    msubSetLocalisedHelpFile("Old.hlp", entry);
    EXPECT_EQ(fx.debugStream.texts,
              (std::vector<std::string>{"BaseHelpFile = " + in("Old.hlp") + "\r\n",
                                        "HelpFile = " + in("Oldde-DE.hlp") + "\r\n"}));
    msubShowHelpFile(entry);
    EXPECT_EQ(fx.help.calls.back(), "win|" + in("Oldde-DE.hlp") + "|3");
}

TEST_F(LocalisedFiles, DisplayErrorShapesAndStyle) {
    struct Case {
        int32_t number;
        const char* description;
        int32_t style;
        const char* text;
        int32_t shownStyle;
    } cases[] = {
        {91, "Object not set", 0, "frmAbout.Load\r\n91: Object not set", 48},
        {91, "", 16, "frmAbout.Load\r\n91: ", 16},
        {-2147024894, "x", 0, "frmAbout.Load\r\n-2147024894: x", 48},
        {0, "Nothing to show", 64, "frmAbout.Load\r\n\r\nNothing to show", 64},
        {0, "", 0, "frmAbout.Load", 48},
    };
    for (const Case& c : cases) {
        fx.messageBox.shown.clear();
        gsubDisplayError("frmAbout.Load", c.number, c.description, c.style);
        ASSERT_EQ(fx.messageBox.shown.size(), 1u);
        EXPECT_EQ(fx.messageBox.shown[0].text, c.text);
        EXPECT_EQ(fx.messageBox.shown[0].style, c.shownStyle);
        EXPECT_EQ(fx.messageBox.shown[0].title, "Ostrel");
    }
}

}  // namespace
}  // namespace ostrel
