#include "ui/about_window.h"

#include <cstdio>

#include "foundation/globals.h"
#include "ostrel_version.h"
#include "runtime/automation_error.h"
#include "runtime/convert.h"
#include "runtime/format.h"
#include "ui/display_error.h"
#include "ui/language_font.h"
#include "ui/language_text.h"
#include "ui/resource_id_numbers.h"

namespace ostrel {

namespace {

constexpr const char* kSysInfoKey = "SOFTWARE\\Microsoft\\Shared Tools\\MSINFO";
constexpr const char* kSysInfoValue = "PATH";
constexpr const char* kSysInfoLocationKey = "SOFTWARE\\Microsoft\\Shared Tools Location";
constexpr const char* kSysInfoLocationValue = "MSINFO";
constexpr const char* kSysInfoProgram = "\\MSINFO32.EXE";

constexpr uint32_t kRegSz = 1;
constexpr uint32_t kRegDword = 4;
constexpr uint32_t kValueBufferSize = 1024;

constexpr int32_t kWindowNormalFocus = 1;  // vbNormalFocus
constexpr int32_t kOkOnly = 0;             // vbOKOnly: no icon
constexpr uint32_t kBlack = 0x000000;

Control designControl(const char* name, ControlKind kind, const char* text, int32_t left,
                      int32_t top, int32_t width, int32_t height, int32_t tabIndex) {
    Control control;
    control.name = name;
    control.kind = kind;
    control.text = text;
    control.left = left;
    control.top = top;
    control.width = width;
    control.height = height;
    control.tabIndex = tabIndex;
    control.font = Font{};
    return control;
}

// Hex(Asc(c)): upper case, no padding.
std::string hexOf(unsigned char code) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%X", static_cast<unsigned>(code));
    return digits;
}

}  // namespace

Form frmAboutDesign() {
    Form form;
    form.name = "frmAbout";
    form.caption = "About MyApp";
    form.clientWidth = 5625;
    form.clientHeight = 1635;
    form.left = 2340;
    form.top = 1935;

    Control picIcon =
        designControl("picIcon", ControlKind::PictureBox, "", 3240, 120, 2250, 840, 1);
    picIcon.autoSize = true;
    Control cmdOK =
        designControl("cmdOK", ControlKind::CommandButton, "OK", 1507, 1170, 1260, 345, 0);
    cmdOK.isDefault = true;
    cmdOK.isCancel = true;
    Control cmdSysInfo = designControl("cmdSysInfo", ControlKind::CommandButton, "&System Info...",
                                       2872, 1170, 1245, 345, 2);
    Control lblTitle =
        designControl("lblTitle", ControlKind::Label, "Application Title", 270, 195, 2745, 225, 3);
    lblTitle.foreColor = kBlack;
    Control lblVersion =
        designControl("lblVersion", ControlKind::Label, "Version", 270, 435, 2745, 225, 4);

    form.controls = {picIcon, cmdOK, cmdSysInfo, lblTitle, lblVersion};
    return form;
}

Form frmAboutLoad(int32_t dotsPerInch) {
    using namespace ResourceIDNumbers;
    Form form = frmAboutDesign();
    const clsLanguageText& texts = gobjLanguageText();

    // Any blank between the two halves belongs to text 312.
    form.caption = texts.GetText(kAboutCaption) + texts.GetText(kApplicationName);
    form.icon = texts.GetPicture(kFormIcon);

    Control& picIcon = form.control("picIcon");
    picIcon.picture = texts.GetPicture(kLogo);
    // The box takes its picture's size.
    picIcon.width = picIcon.picture->widthPx * kTwipsPerInch / dotsPerInch;
    picIcon.height = picIcon.picture->heightPx * kTwipsPerInch / dotsPerInch;

    form.control("lblVersion").text = "V" + std::to_string(kVersionMajor) + "." +
                                      std::to_string(kVersionMinor) + "." +
                                      std::to_string(kVersionRevision);
    form.control("lblTitle").text = texts.GetText(kApplicationName);
    form.control("cmdSysInfo").text = texts.GetText(kSystemInfoCaption);
    form.control("cmdOK").text = texts.GetText(kOKCaption);

    // Last, so that it covers every control with its final text.
    gsubApplyLanguageFont(form);
    return form;
}

bool GetKeyValue(int32_t hive, const std::string& keyName, const std::string& valueName,
                 std::string& value) {
    platform::AnsiRegistryPort& registry = requirePort(apartment().ports.ansiRegistry);
    int64_t key = 0;
    // Asks for write access on purpose: where the user may not write to the
    // hive the open fails and the tool counts as unavailable.
    if (registry.openKeyEx(hive, keyName, kSysInfoKeyAccess, key) == 0) {
        std::string buffer(kValueBufferSize, '\0');
        uint32_t size = kValueBufferSize;
        uint32_t type = 0;
        if (registry.queryValueEx(key, valueName, type, buffer, size) == 0) {
            // Mid$(buffer, size, 1): there is no character 0, and with no trap
            // here the error leaves the key open.
            if (size == 0) raise(kErrInvalidCall);
            const bool endsInNul = size <= buffer.size() && buffer[size - 1] == '\0';
            const std::string kept = buffer.substr(0, endsInNul ? size - 1 : size);
            if (type == kRegSz) {
                value = registry.fromAnsi(kept);
            } else if (type == kRegDword) {
                // Kept as it always was: the cut NUL and the unpadded digits
                // don't give every number back.
                for (auto at = kept.rbegin(); at != kept.rend(); ++at) {
                    value += hexOf(static_cast<unsigned char>(*at));
                }
                const std::string hex = "&h" + value;
                value = isNumeric(hex) ? formatNumber(toDouble(hex), "",
                                                      requirePort(apartment().ports.locale).facts())
                                       : hex;
            }
            // Any other type leaves value as the caller passed it.
            registry.closeKey(key);
            return true;
        }
    }
    value.clear();
    // Also when the open failed and the handle is still 0.
    registry.closeKey(key);
    return false;
}

void StartSysInfo() {
    OstrelGlobals& g = apartment();
    try {
        std::string sysInfoPath;
        bool found = GetKeyValue(kHkeyLocalMachine, kSysInfoKey, kSysInfoValue, sysInfoPath);
        // A path from the first key is taken as it stands, whether the file is there or not.
        if (!found && GetKeyValue(kHkeyLocalMachine, kSysInfoLocationKey, kSysInfoLocationValue,
                                  sysInfoPath)) {
            // The folder's text and the literal, not a joined path.
            const std::string candidate = sysInfoPath + kSysInfoProgram;
            found = requirePort(g.ports.fileSystem).fileExists(candidate);
            if (found) sysInfoPath = candidate;
        }
        if (found) {
            requirePort(g.ports.processes).startProgram(sysInfoPath, kWindowNormalFocus);
            return;
        }
    } catch (...) {
        // Whatever failed, the user hears the one message below.
    }
    gsubMsgBox(kSysInfoUnavailable, kOkOnly);
}

bool frmAboutClick(std::string_view controlName) {
    if (controlName == "cmdOK") return true;
    if (controlName == "cmdSysInfo") StartSysInfo();
    return false;
}

void gsubShowAbout(int64_t ownerWindow) {
    platform::WindowPort& window = requirePort(apartment().ports.windowing);
    const Form form = frmAboutLoad(window.dotsPerInch());
    window.showModal(form, ownerWindow, frmAboutClick);
}

}  // namespace ostrel
