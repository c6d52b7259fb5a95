// path long|delete|browse: the path helpers. long prints the long form of a
// path (the path itself for one that does not exist), delete prints True
// when the file is not there afterwards, browse asks for a folder (Linux:
// on the terminal) and prints it, an empty line when cancelled.
#include <iostream>
#include <string>

#include "commands.h"
#include "foundation/paths.h"
#include "output.h"

namespace ostrel::cli {

namespace {

std::string path;
std::string title;
std::string root;
CLI::App* longCommand = nullptr;
CLI::App* deleteCommand = nullptr;

int run() {
    if (longCommand->parsed()) {
        const std::string longPath = gfstrGetLongPathFilename(path);
        return emit(Record{{"Path", path}, {"LongPath", longPath}}, longPath, kExitOk);
    }
    if (deleteCommand->parsed()) {
        const bool gone = gfblnDeleteFile(path);
        return emit(Record{{"File", path}, {"Deleted", gone}}, gone ? "True" : "False",
                    gone ? kExitOk : kExitNotDone);
    }
    const std::string folder = gfstrBrowseForFolder(0, title, kBrowseOptions, root);
    return emit(Record{{"Folder", folder.empty() ? Record(nullptr) : Record(folder)}}, folder,
                kExitOk);
}

[[maybe_unused]] const bool registered = registerCommand({
    "path",
    "The long form of a path, deleting a file, asking the user for a folder",
    [](CLI::App& app) {
        app.require_subcommand(1, 1);
        longCommand = app.add_subcommand("long", "Print the long form of a path");
        longCommand->add_option("PATH", path, "The path")->required();
        deleteCommand = app.add_subcommand(
            "delete",
            "Delete a file (read-only too); print True when it is not there afterwards (else "
            "False, exit 4)");
        deleteCommand->add_option("FILE", path, "The file")->required();
        CLI::App* browse = app.add_subcommand(
            "browse", "Ask for a folder and print it (an empty line when cancelled)");
        browse->add_option("--title", title, "The text above the folders")->type_name("TEXT");
        browse->add_option("--root", root, "The folder to browse from")->type_name("FOLDER");
    },
    run,
});

}  // namespace

}  // namespace ostrel::cli
