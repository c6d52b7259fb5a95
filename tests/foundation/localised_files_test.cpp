#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "component/startup.h"
#include "fakes/test_apartment.h"
#include "foundation/globals.h"
#include "ui/display_error.h"
#include "ui/localised_files.h"

namespace ostrel {
namespace {

using fakes::utf8Of;

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
        const char* shown;  // the style shown, then the text
    } cases[] = {
        {91, "Object not set", 0, "48 frmAbout.Load\r\n91: Object not set"},
        {91, "", 16, "16 frmAbout.Load\r\n91: "},
        {-2147024894, "x", 0, "48 frmAbout.Load\r\n-2147024894: x"},
        {0, "Nothing to show", 64, "64 frmAbout.Load\r\n\r\nNothing to show"},
        {0, "", 0, "48 frmAbout.Load"},
    };
    for (const auto& c : cases) {
        fx.messageBox.shown.clear();
        gsubDisplayError("frmAbout.Load", c.number, c.description, c.style);
        ASSERT_EQ(fx.messageBox.shown.size(), 1u);
        EXPECT_EQ(std::to_string(fx.messageBox.shown[0].style) + " " + fx.messageBox.shown[0].text,
                  c.shown);
    }
}

}  // namespace
}  // namespace ostrel
