// settings get|set: the application settings, as the component reads and
// stores them. The routines report nothing to their caller; set watches the
// component's debugger stream for its failure lines, and exits 4 with the
// line on stderr when one came.
#include <algorithm>
#include <iostream>
#include <string>
#include <string_view>

#include "commands.h"
#include "debug_watch.h"
#include "foundation/settings.h"
#include "output.h"

namespace ostrel::cli {

namespace {

std::string application = "Ostrel";
std::string section;
std::string key;
std::string defaultValue;
std::string value;
CLI::App* getCommand = nullptr;

// The lines the component writes, at any verbosity, when a value went
// nowhere: the lock not had, or the save failed. (An element it could not
// make is no such line: the value then goes to the older store.)
bool isFailureLine(std::string_view line) {
    return line.starts_with("Failed ") || line.starts_with("[GetMutex]") ||
           line.starts_with("[gsubSaveApplicationSetting]");
}

int run() {
    Record record{{"Application", application}, {"Section", section}, {"Key", key}};
    if (getCommand && getCommand->parsed()) {
        record["Value"] = gfstrGetApplicationSetting(application, section, key, defaultValue);
        return emit(record, record["Value"].get<std::string>(), kExitOk);
    }
    const DebugWatch watch;
    gsubSaveApplicationSetting(application, section, key, value);
    const auto& lines = watch.lines();
    const auto failure = std::find_if(lines.begin(), lines.end(), isFailureLine);
    record["Value"] = value;
    record["Stored"] = failure == lines.end();
    if (failure != lines.end()) std::cerr << "ostrel: not stored: " << *failure << '\n';
    if (globalOptions().json) std::cout << record.dump(2) << '\n';
    return failure == lines.end() ? kExitOk : kExitNotDone;
}

void addAddress(CLI::App& app) {
    app.add_option("--app", application, "The application (default: Ostrel)")->type_name("APP");
    app.add_option("SECTION", section, "The section (the file's document element)")->required();
    app.add_option("KEY", key, "The key (an element below the section)")->required();
}

[[maybe_unused]] const bool registered = registerCommand({
    "settings",
    "Read or store an application setting (ot_settings.xml, then the older per-user store)",
    [](CLI::App& app) {
        app.require_subcommand(1, 1);
        getCommand = app.add_subcommand("get", "Print the value of a setting");
        addAddress(*getCommand);
        getCommand->add_option("--default", defaultValue, "What a missing setting gives")
            ->type_name("TEXT");
        CLI::App* set = app.add_subcommand("set",
                                           "Store the value of a setting; exit 4 with the reason "
                                           "on stderr when it was not stored");
        addAddress(*set);
        set->add_option("VALUE", value, "The value to store")->required();
    },
    run,
});

}  // namespace

}  // namespace ostrel::cli
