// language text|suffixes|localised-file|help: the language store as the
// component sees it. text prints a text (with inserts placed when given),
// suffixes the two file-name suffixes a line each, localised-file the
// language's variant of a file (an empty line when there is none), help
// points the help file at the language's variant of FILE in the
// component's folder and opens it.
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "foundation/globals.h"
#include "output.h"
#include "runtime/automation_error.h"
#include "ui/language_text.h"
#include "ui/localised_files.h"

namespace ostrel::cli {

namespace {

int32_t textNumber = 0;
std::vector<std::string> inserts;
std::string file;
bool direct = false;
CLI::App* textCommand = nullptr;
CLI::App* suffixesCommand = nullptr;
CLI::App* localisedCommand = nullptr;

int printSuffixes() {
    std::string suffix1, suffix2;
    gobjLanguageText().GetLanguageSuffixes(suffix1, suffix2);
    return emit(Record{{"Suffixes", {suffix1, suffix2}}}, suffix1 + '\n' + suffix2, kExitOk);
}

int printText() {
    if (inserts.size() > 4) {
        std::cerr << "ostrel: four inserts at most\n";
        return kExitUsage;
    }
    auto insert = [](size_t i) -> std::optional<std::string_view> {
        return i < inserts.size() ? std::optional<std::string_view>(inserts[i]) : std::nullopt;
    };
    const std::string text = inserts.empty()
                                 ? gobjLanguageText().GetText(textNumber)
                                 : gobjLanguageText().GetFormattedText(
                                       textNumber, insert(0), insert(1), insert(2), insert(3));
    return emit(Record{{"Number", textNumber}, {"Text", text}}, text, kExitOk);
}

int printLocalisedFile() {
    const std::string localised =
        gfstrGetLocalisedFileName(file, direct ? SuffixForm::Direct : SuffixForm::Underscore);
    const Record record{{"File", file},
                        {"LocalisedFile", localised.empty() ? Record(nullptr) : Record(localised)}};
    return emit(record, localised, localised.empty() ? kExitNotObtained : kExitOk);
}

int showHelp() {
    HelpMenuEntry entry;
    msubSetLocalisedHelpFile(file, entry);
    if (!entry.Enabled) {
        std::cerr << "ostrel: no help file in this language for " << file << '\n';
        return kExitNotObtained;
    }
    emit(Record{{"HelpFile", apartment().helpFile}}, apartment().helpFile, kExitOk);
    msubShowHelpFile(entry);
    return kExitOk;
}

int run() {
    try {
        if (textCommand->parsed()) return printText();
        if (suffixesCommand->parsed()) return printSuffixes();
        if (localisedCommand->parsed()) return printLocalisedFile();
        return showHelp();
    } catch (const AutomationError& error) {
        std::cerr << "ostrel: error " << error.number << ": " << error.description << '\n';
        return kExitFailure;
    }
}

[[maybe_unused]] const bool registered = registerCommand({
    "language",
    "The language texts, the file-name suffixes, localised files and help",
    [](CLI::App& app) {
        app.require_subcommand(1, 1);
        textCommand = app.add_subcommand("text", "Print the text with that number");
        textCommand->add_option("NUMBER", textNumber, "The text number")->required();
        textCommand->add_option("--insert", inserts, "An insert for %1 to %4, in order (repeat it)")
            ->type_name("TEXT");
        suffixesCommand =
            app.add_subcommand("suffixes", "Print the two file-name suffixes, a line each");
        localisedCommand = app.add_subcommand(
            "localised-file",
            "Print the language's variant of a file (empty, exit 3, when there is none)");
        localisedCommand->add_option("FILE", file, "The file")->required();
        localisedCommand->add_flag("--direct", direct,
                                   "The suffix right behind the name, as help files have it");
        CLI::App* help = app.add_subcommand(
            "help", "Open the language's variant of a help file of the component");
        help->add_option("FILE", file, "The help file's name in the component's folder")
            ->required();
    },
    run,
});

}  // namespace

}  // namespace ostrel::cli
