// help [COMMAND...]: the help of the tool or of one of its commands, and the
// answer to a command that doesn't exist.
#include <algorithm>
#include <iostream>
#include <numeric>
#include <string>
#include <vector>

#include "commands.h"

namespace ostrel::cli {

namespace {

std::vector<std::string> topic;

// The edits that turn one word into the other.
std::size_t editDistance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (from[i - 1] != to[j - 1])});
            diagonal = above;
        }
    }
    return row[to.size()];
}

int run() {
    const CLI::App* command = &commandModel();
    std::string path = command->get_name();  // as the usage line shows it
    for (const std::string& word : topic) {
        const CLI::App* sub = nullptr;
        for (const CLI::App* each : command->get_subcommands({})) {
            if (each->get_name() == word) sub = each;
        }
        if (!sub) return unknownCommand(*command, word);
        path += " " + word;
        command = sub;
    }
    // Through the formatter: the app's help() would describe this command, help.
    std::cout << command->get_formatter()->make_help(command, path, CLI::AppFormatMode::Normal);
    return kExitOk;
}

[[maybe_unused]] const bool registered = registerCommand({
    "help",
    "Print the help of the tool, or of a command",
    [](CLI::App& app) { app.add_option("COMMAND", topic, "The command (and its sub-command)"); },
    run,
    false,
});

}  // namespace

int unknownCommand(const CLI::App& parent, const std::string& word) {
    std::string closest;
    std::size_t best = 3;  // further than two edits is no likely slip
    for (const CLI::App* sub : parent.get_subcommands({})) {
        const std::string& name = sub->get_name();
        const std::size_t distance =
            name.starts_with(word) ? std::size_t{1} : editDistance(word, name);
        if (distance < best) {
            best = distance;
            closest = name;
        }
    }
    std::cerr << "ostrel: unknown command '" << word << "'";
    if (!closest.empty()) std::cerr << " (did you mean '" << closest << "'?)";
    std::cerr << '\n';
    return kExitUsage;
}

}  // namespace ostrel::cli
