#include "ui/localised_files.h"

#include "foundation/debug_log.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "runtime/text.h"
#include "ui/language_text.h"

namespace ostrel {

namespace {

constexpr int32_t kHelpDisplayTopic = 0;  // HH_DISPLAY_TOPIC
constexpr int32_t kHelpIndex = 3;         // the common dialog's help command for the index

}  // namespace

std::string gfstrGetLocalisedFileName(std::string_view vstrBaseFile, SuffixForm form) {
    // Kept: callers hand over strings of blanks, which the object replaces whole.
    std::string strSuffix1(10, ' ');
    std::string strSuffix2(10, ' ');
    gobjLanguageText().GetLanguageSuffixes(strSuffix1, strSuffix2);

    FileSystemObject& fso = fileSystem();
    const std::string strFolder = fso.GetParentFolderName(vstrBaseFile);
    const std::string strBase = fso.GetBaseName(vstrBaseFile);
    const std::string strExtension = fso.GetExtensionName(vstrBaseFile);
    const std::string_view joiner = form == SuffixForm::Underscore ? "_" : "";
    // The second suffix first, deliberately; a file without an extension
    // still gets the dot, as it always has.
    for (const std::string* suffix : {&strSuffix2, &strSuffix1}) {
        const std::string strCandidate =
            fso.BuildPath(strFolder, strBase + std::string(joiner) + *suffix + "." + strExtension);
        if (fso.FileExists(strCandidate)) return strCandidate;
    }
    return std::string();
}

void msubSetLocalisedHelpFile(std::string_view vstrHelpFileName, HelpMenuEntry& helpEntry) {
    OstrelGlobals& g = apartment();
    const std::string folder = g.ports.environment ? g.ports.environment->componentFolder() : "";
    const std::string strBaseHelpFile = fileSystem().BuildPath(folder, vstrHelpFileName);
    if (gblnDebug()) gsubDebugPrint("BaseHelpFile = " + strBaseHelpFile);

    if (!strBaseHelpFile.empty()) {
        const std::string strHelpFile =
            gfstrGetLocalisedFileName(strBaseHelpFile, SuffixForm::Direct);
        if (!strHelpFile.empty()) {
            g.helpFile = strHelpFile;
            if (gblnDebug()) gsubDebugPrint("HelpFile = " + strHelpFile);
        }
    }
    helpEntry.Enabled = !g.helpFile.empty();
}

void msubShowHelpFile(HelpMenuEntry& helpEntry) {
    const std::string& helpFile = apartment().helpFile;
    if (helpFile.empty()) {
        helpEntry.Enabled = false;
        return;
    }
    platform::HelpPort& help = requirePort(apartment().ports.help);
    if (lowerCase(fileSystem().GetExtensionName(helpFile)) == "chm") {
        help.htmlHelp(helpFile, kHelpDisplayTopic, 0);
    } else {
        help.winHelp(helpFile, kHelpIndex);
    }
}

}  // namespace ostrel
