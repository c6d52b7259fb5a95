#ifdef _WIN32
#include <windows.h>
#endif

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "fakes/error_number.h"
#include "fakes/test_apartment.h"
#include "foundation/globals.h"
#include "ostrel_version.h"
#include "platform/adapters.h"
#include "ui/about_window.h"
#include "ui/language_font.h"
#include "ui/language_text.h"

namespace ostrel {
namespace {

using fakes::errorNumberOf;
using fakes::pathOf;
using fakes::utf8Of;

// The English texts the window needs; a test replaces a line.
const std::vector<std::string> kTexts = {
    "108=Ostrel",
    "131=OK",
    "279=0",
    "font 280=Arial;10;bold",
    "312=About ",
    "313=&System Info...",
    "picture 286=Ostrel.286.ico",
    "picture 314=Ostrel.314.bmp",
};

class AboutWindow : public ::testing::Test {
  protected:
    // Binds the apartment's language store to a text file made of kTexts
    // with the `changed` line put in place of the one of the same key.
    void bindTexts(const std::string& changed = "") {
        // A folder of its own each time: binding to the same one again reads nothing.
        const auto folder = fx.programData / ("texts" + std::to_string(++binds_));
        std::filesystem::create_directories(folder);
        for (const char* picture : {"Ostrel.286.ico", "Ostrel.314.bmp"}) {
            std::filesystem::copy_file(pathOf(fx.environment.folder) / picture, folder / picture);
        }
        std::string content = changed + "\n";
        const std::string key = changed.substr(0, changed.find('='));
        for (const std::string& line : kTexts) {
            if (line.substr(0, line.find('=')) != key) content += line + "\n";
        }
        fakes::writeBytes(folder / "Ostrel.en.txt", content);
        fx.environment.variables["OSTREL_LANGUAGE"] = "en";
        gobjLanguageText().Initialise("Ostrel", utf8Of(folder));
    }

    // A registry value for the system-information keys.
    void value(const std::string& key, const std::string& name, uint32_t type, std::string bytes) {
        fx.ansiRegistry.keys["80000002\\" + key][name] = {type, std::move(bytes)};
    }

    fakes::TestApartment fx;

  private:
    int binds_ = 0;
};

const std::string kToolKey = "SOFTWARE\\Microsoft\\Shared Tools\\MSINFO";
const std::string kFolderKey = "SOFTWARE\\Microsoft\\Shared Tools Location";

TEST_F(AboutWindow, LoadSetsTextsPicturesVersionAndFontLast) {
    bindTexts();
    const Form form = frmAboutLoad(120);
    EXPECT_EQ(form.caption, "About Ostrel");
    ASSERT_TRUE(form.icon);
    EXPECT_EQ(form.icon->kind, Picture::Kind::Icon);
    EXPECT_EQ(form.control("lblTitle").text, "Ostrel");
    EXPECT_EQ(form.control("cmdOK").text, "OK");
    EXPECT_EQ(form.control("cmdSysInfo").text, "&System Info...");
    EXPECT_EQ(form.control("lblVersion").text, std::string("V") + kVersionText);
    // The logo is 150 x 56 pixels at any resolution; its twips follow the screen's.
    const Control& logo = form.control("picIcon");
    ASSERT_TRUE(logo.picture);
    EXPECT_EQ(logo.width, 1800);
    EXPECT_EQ(logo.height, 672);
    // Font entry 280 reached every control, the form's own font stays.
    for (const Control& control : form.controls) {
        EXPECT_EQ(control.font->name, "Arial") << control.name;
        EXPECT_TRUE(control.font->bold) << control.name;
    }
    EXPECT_EQ(form.font.name, Font{}.name);

    EXPECT_EQ(form.tabOrder(), (std::vector<std::string>{"cmdOK", "picIcon", "cmdSysInfo",
                                                         "lblTitle", "lblVersion"}));
    EXPECT_TRUE(form.control("cmdOK").isDefault && form.control("cmdOK").isCancel);
    EXPECT_EQ(twipsToPixels(form.left, 96), 156);
    EXPECT_EQ(twipsToPixels(form.clientWidth, 96), 375);
    EXPECT_EQ(twipsToPixels(1507, 96), 100);
}

TEST_F(AboutWindow, CaptionIsTheNameAloneWithAnEmptyText312AndLoadHasNoTrap) {
    bindTexts("312=");
    EXPECT_EQ(frmAboutLoad().caption, "Ostrel");
    bindTexts("picture 286=missing.ico");
    EXPECT_EQ(errorNumberOf([] { frmAboutLoad(); }), 53);
}

TEST_F(AboutWindow, LanguageFontNeedsANumericCharacterSet) {
    const std::pair<const char*, bool> cases[] = {
        {"279=", false}, {"279=abc", false}, {"279= 161 ", true}};
    for (const auto& [text279, applied] : cases) {
        SCOPED_TRACE(text279);
        bindTexts(text279);
        Form form = frmAboutDesign();
        // A control without a font in the middle: passed over without a word.
        Control timer;
        timer.name = "tmrNone";
        form.controls.insert(form.controls.begin() + 2, timer);
        form.font.name = "Form Font";
        gsubApplyLanguageFont(form);
        for (const Control& control : form.controls) {
            if (!control.font) continue;
            EXPECT_EQ(control.font->name, applied ? "Arial" : "MS Sans Serif") << control.name;
            EXPECT_EQ(control.font->charset, applied ? 161 : 0) << control.name;
        }
        EXPECT_FALSE(form.controls[2].font);
        EXPECT_EQ(form.font.name, "Form Font");
    }
}

TEST_F(AboutWindow, GetKeyValueCutsAndConvertsTheBuffer) {
    struct Case {
        const char* what;
        uint32_t type;
        std::string bytes;
        std::string given;  // value on the way in
        bool result;
        std::string value;
    };
    const std::string full(1024, 'x');
    const std::vector<Case> cases = {
        {"string with its NUL", 1, std::string("C:\\Tools\\msinfo.exe\0", 20), "x", true,
         "C:\\Tools\\msinfo.exe"},
        {"string without a NUL", 1, "abc", "", true, "abc"},
        {"exactly 1024 bytes, last not NUL", 1, full, "", true, full},
        {"1025 bytes", 1, full + "x", "given", false, ""},
        // The digits, last byte first and unpadded, don't give the number back.
        {"number: trailing NUL cut", 4, std::string("\x10\x00\x00\x00", 4), "", true, "16"},
        {"number of four bytes", 4, std::string("\x01\x02\x03\x04", 4), "", true, "17185"},
        {"number appended to what was given", 4, std::string("\x01\x00", 2), "1", true, "17"},
        {"other type: value as given", 3, "\x01\x02", "given", true, "given"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        fx.ansiRegistry = {};
        value(kToolKey, "PATH", c.type, c.bytes);
        std::string result = c.given;
        EXPECT_EQ(GetKeyValue(kHkeyLocalMachine, kToolKey, "PATH", result), c.result);
        EXPECT_EQ(result, c.value);
        EXPECT_TRUE(fx.ansiRegistry.openHandles.empty()) << "the key is closed";
        EXPECT_EQ(fx.ansiRegistry.calls.front(), "open 80000002\\" + kToolKey + " 2003F");
    }
}

TEST_F(AboutWindow, GetKeyValueFailurePaths) {
    // A missing key: value emptied, and the handle that was never opened closed.
    std::string result = "given";
    EXPECT_FALSE(GetKeyValue(kHkeyLocalMachine, kToolKey, "PATH", result));
    EXPECT_EQ(result, "");
    EXPECT_EQ(fx.ansiRegistry.calls.back(), "close 0");

    // Size 0 has no character to test: the error leaves the key open.
    value(kToolKey, "PATH", 1, "");
    EXPECT_EQ(errorNumberOf([&] { GetKeyValue(kHkeyLocalMachine, kToolKey, "PATH", result); }), 5);
    EXPECT_EQ(fx.ansiRegistry.openHandles.size(), 1u);
}

TEST_F(AboutWindow, StartSysInfoFindsTheToolOrSaysItIsUnavailable) {
    const std::string folder = fx.dataFolder();
    fakes::writeBytes(pathOf(folder + "\\MSINFO32.EXE"), "");
    const std::string tool = folder + "\\MSINFO32.EXE @1";
    // The first key's PATH (nullopt: no key) of its type, the second key's
    // folder; what is started ("": the message instead).
    struct Case {
        const char* what;
        std::optional<std::string> path;
        uint32_t type;
        std::optional<std::string> location;
        bool refused, startFails;
        std::string started;
    };
    const std::optional<std::string> kNone;
    const std::vector<std::string> kNothing,
        kUnavailable = {"Ostrel|0|System Information Is Unavailable At This Time"};
    const std::vector<Case> cases = {
        {"a missing file: start fails, second key untried", "C:\\missing.exe", 1, folder, false,
         true, ""},
        {"started unquoted, normal window, focus", "C:\\A B\\x.exe", 1, kNone, false, false,
         "C:\\A B\\x.exe @1"},
        {"second key's folder with the tool in it", kNone, 1, folder, false, false, tool},
        {"first key refused (write access asked)", "C:\\x.exe", 1, folder, true, false, tool},
        {"second key's folder without the tool", kNone, 1, "C:\\nowhere", false, false, ""},
        {"both keys missing", kNone, 1, kNone, false, false, ""},
        {"first value of another type: empty path fails", "\x01", 3, kNone, false, true, ""},
        {"first value of size 0: error in GetKeyValue", "", 1, kNone, false, false, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        fx.ansiRegistry = {};
        fx.processes.started.clear();
        fx.processes.startFails = c.startFails;
        fx.messageBox.shown.clear();
        if (c.path) value(kToolKey, "PATH", c.type, *c.path);
        if (c.location) value(kFolderKey, "MSINFO", 1, *c.location);
        if (c.refused) fx.ansiRegistry.refused.insert("80000002\\" + kToolKey);

        StartSysInfo();

        const bool shown = c.started.empty();
        EXPECT_EQ(fx.processes.started, shown ? kNothing : std::vector{c.started});
        EXPECT_EQ(fx.messageBox.boxes(), shown ? kUnavailable : kNothing);
        const auto& calls = fx.ansiRegistry.calls;
        const bool secondKeyRead = std::any_of(calls.begin(), calls.end(), [](const auto& call) {
            return call.find(kFolderKey) != std::string::npos;
        });
        EXPECT_TRUE(!c.startFails || !c.path || !secondKeyRead);
    }
}

TEST_F(AboutWindow, ShowAboutLoadsShowsAndHandlesTheButtons) {
    bindTexts();
    fx.windowing.dpi = 144;
    fx.windowing.clicks = {"cmdSysInfo", "lblTitle", "cmdOK", "cmdSysInfo"};
    gsubShowAbout(0x1234);
    ASSERT_EQ(fx.windowing.owners, std::vector<int64_t>{0x1234}) << "shown once, over its owner";
    EXPECT_EQ(fx.windowing.shown[0].control("picIcon").width, 1500) << "loaded, 150 px at 144 dpi";
    // System Info shows its message and keeps the window; OK unloads it.
    EXPECT_EQ(fx.windowing.unloadedBy, (std::vector<bool>{false, false, true}));
    EXPECT_EQ(fx.messageBox.shown.size(), 1u);
}

#ifdef _WIN32
// GetKeyValue through the system's own A-form calls, on a volatile key of
// the current user that the test makes and removes.
TEST(AnsiRegistryAdapter, GetKeyValueReadsTheSystemRegistry) {
    fakes::TestApartment fx;
    fx.use(&platform::Ports::ansiRegistry, &platform::systemAnsiRegistry());
    const auto currentUser = static_cast<int32_t>(0x80000001u);
    const char* const testKey = "Software\\QUORL-about-test";
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, testKey, 0, nullptr, REG_OPTION_VOLATILE,
                              KEY_ALL_ACCESS, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    // The A-form call adds the NUL that a string stored without one lacks
    // (Wine does; 1024 bytes without one then no longer fit), so the longest
    // string read whole here is 1023 bytes.
    const std::string full(1023, 'x');
    const std::string longer(1025, 'x');
    const DWORD number = 0x10;
    const wchar_t wide[] = L"Gr\u00fc\u00dfe";
    RegSetValueExA(key, "Sz", 0, REG_SZ, reinterpret_cast<const BYTE*>("C:\\Tools"), 9);
    RegSetValueExA(key, "Full", 0, REG_SZ, reinterpret_cast<const BYTE*>(full.data()), 1023);
    RegSetValueExA(key, "Longer", 0, REG_SZ, reinterpret_cast<const BYTE*>(longer.data()), 1025);
    RegSetValueExA(key, "Number", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), 4);
    RegSetValueExW(key, L"Wide", 0, REG_SZ, reinterpret_cast<const BYTE*>(wide), sizeof wide);

    // In turn on one value, which a failed read empties; the wide text
    // through the ANSI code page and back.
    std::string value;
    std::vector<std::string> read;
    for (const char* name : {"Sz", "Full", "Longer", "Number", "Wide"}) {
        const bool found = GetKeyValue(currentUser, testKey, name, value);
        read.push_back((found ? "" : "missing ") + value);
    }
    EXPECT_EQ(read, (std::vector<std::string>{"C:\\Tools", full, "missing ", "16", "Grüße"}));
    EXPECT_FALSE(GetKeyValue(currentUser, "Software\\QUORL-no-such-key", "Sz", value));

    RegCloseKey(key);
    RegDeleteKeyA(HKEY_CURRENT_USER, testKey);
}
#endif

}  // namespace
}  // namespace ostrel
