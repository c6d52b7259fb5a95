// completion bash|zsh|fish, and the hidden manual: the tool described from
// the command model that parses its arguments, so neither can drift from it.
#include <iostream>
#include <string>
#include <vector>

#include "commands.h"
#include "ostrel_version.h"

namespace ostrel::cli {

namespace {

std::string shell;

bool shown(const CLI::App* app) {
    return !app->get_group().empty();
}

std::vector<const CLI::App*> shownCommands(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App* sub) { return shown(sub); });
}

// The named options of a command, each as "--name" (or "-n"), with whether it takes a value.
struct OptionName {
    std::string name;
    bool takesValue;
    const CLI::Option* option;
};
std::vector<OptionName> optionNames(const CLI::App& app) {
    std::vector<OptionName> names;
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_positional()) continue;
        const bool value = option->get_type_size() != 0;
        for (const std::string& name : option->get_lnames())
            names.push_back({"--" + name, value, option});
        for (const std::string& name : option->get_snames())
            names.push_back({"-" + name, value, option});
    }
    return names;
}

// Each command with the path of names that leads to it ("" for the tool).
template <class Visit>
void walk(const CLI::App& app, const std::string& path, Visit&& visit) {
    visit(app, path);
    for (const CLI::App* sub : shownCommands(app))
        walk(*sub, path.empty() ? sub->get_name() : path + " " + sub->get_name(), visit);
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

void bash(const CLI::App& model) {
    std::vector<std::string> valueOptions;
    std::cout << "# bash completion of ostrel, made by: ostrel completion bash\n"
                 "_ostrel_words() { # PATH: the commands and options that may follow it\n"
                 "    case \"$1\" in\n";
    walk(model, "", [&](const CLI::App& app, const std::string& path) {
        std::vector<std::string> subs, options;
        for (const CLI::App* sub : shownCommands(app)) subs.push_back(sub->get_name());
        for (const OptionName& option : optionNames(app)) {
            options.push_back(option.name);
            if (option.takesValue) valueOptions.push_back(option.name);
        }
        std::cout << "    '" << path << "') subs='" << joined(subs) << "' opts='" << joined(options)
                  << "' ;;\n";
    });
    const std::vector<std::string> global = [&] {
        std::vector<std::string> names;
        for (const OptionName& option : optionNames(model)) names.push_back(option.name);
        return names;
    }();
    std::cout << "    esac\n}\n"
                 "_ostrel() {\n"
                 "    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} path='' "
                 "subs opts i\n"
                 "    case \"$prev\" in "
              <<
        [&] {
            std::string cases;
            for (const std::string& name : valueOptions) cases += (cases.empty() ? "" : "|") + name;
            return cases;
        }()
              << ") mapfile -t COMPREPLY < <(compgen -f -- \"$cur\"); return ;; esac\n"
                 "    for ((i = 1; i < COMP_CWORD; i++)); do\n"
                 "        _ostrel_words \"$path\"\n"
                 "        [[ \" $subs \" == *\" ${COMP_WORDS[i]} \"* ]] && path=\"${path:+$path "
                 "}${COMP_WORDS[i]}\"\n"
                 "    done\n"
                 "    _ostrel_words \"$path\"\n"
                 "    mapfile -t COMPREPLY < <(compgen -W \"$subs $opts "
              << joined(global)
              << "\" -- \"$cur\")\n"
                 "}\n"
                 "complete -F _ostrel ostrel\n";
}

std::string fishQuoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? std::string("\\'") : std::string(1, c);
    return quoted + "'";
}

void fish(const CLI::App& model) {
    std::cout << "# fish completion of ostrel, made by: ostrel completion fish\n"
                 "complete -c ostrel -f\n";
    walk(model, "", [&](const CLI::App& app, const std::string& path) {
        // fish's test of the words so far: none of the commands yet, or this one
        const std::string condition =
            path.empty() ? "__fish_use_subcommand"
                         : "__fish_seen_subcommand_from " + path.substr(path.rfind(' ') + 1);
        for (const CLI::App* sub : shownCommands(app)) {
            std::cout << "complete -c ostrel -n " << fishQuoted(condition) << " -a "
                      << sub->get_name() << " -d " << fishQuoted(sub->get_description()) << '\n';
        }
        for (const OptionName& option : optionNames(app)) {
            if (!option.name.starts_with("--")) continue;
            std::cout << "complete -c ostrel"
                      << (path.empty() ? "" : " -n " + fishQuoted(condition)) << " -l "
                      << option.name.substr(2) << (option.takesValue ? " -r -F" : "") << " -d "
                      << fishQuoted(option.option->get_description()) << '\n';
        }
    });
}

// Text for roff: backslashes escaped, minus signs as such, no line that
// starts like a request.
std::string roff(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if (c == '\\') {
            out += "\\e";
        } else if (c == '-') {
            out += "\\-";
        } else if (c == '\n') {
            out += "\n.br\n";
        } else {
            out += c;
        }
    }
    if (!out.empty() && (out[0] == '.' || out[0] == '\'')) out.insert(0, "\\&");
    return out;
}

void manualOptions(const CLI::App& app) {
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_lnames() == std::vector<std::string>{"help"}) continue;
        std::cout << ".TP\n";
        if (option->get_positional()) {
            std::cout << ".I " << roff(option->get_name()) << '\n';
        } else {
            std::cout << ".B " << roff(option->get_name(false, true));
            if (option->get_type_size() != 0)
                std::cout << " \\fI" << roff(option->get_type_name()) << "\\fR";
            std::cout << '\n';
        }
        std::cout << roff(option->get_description()) << '\n';
    }
}

void manual(const CLI::App& model) {
    std::cout << ".TH OSTREL 1 \"\" \"ostrel " << kVersionText << "\" \"User Commands\"\n"
              << ".SH NAME\nostrel \\- " << roff(model.get_description()) << '\n'
              << ".SH SYNOPSIS\n.B ostrel\n[\\fIGLOBAL OPTIONS\\fR] \\fICOMMAND\\fR "
                 "[\\fIOPTIONS\\fR] [\\fIGLOBAL OPTIONS\\fR]\n"
              << ".SH DESCRIPTION\nThe command\\-line face of the Ostrel component: it runs the "
                 "component's core as a host and prints what it finds, as text or, with "
                 "\\fB\\-\\-json\\fR, as JSON for scripts. The global options go before or after "
                 "the command.\n"
              << ".SH GLOBAL OPTIONS\n";
    manualOptions(model);
    std::cout << ".SH COMMANDS\n";
    walk(model, "", [&](const CLI::App& app, const std::string& path) {
        if (path.empty()) return;
        std::cout << ".SS \"" << roff(path) << "\"\n" << roff(app.get_description()) << '\n';
        if (!app.get_options([](const CLI::Option* option) {
                    return option->get_lnames() != std::vector<std::string>{"help"};
                })
                 .empty()) {
            std::cout << ".RS\n";
            manualOptions(app);
            std::cout << ".RE\n";
        }
    });
    const auto table = [](const char* title, const auto& rows) {
        std::cout << ".SH " << title << '\n';
        for (const auto& [name, meaning] : rows)
            std::cout << ".TP\n.B " << roff(name) << '\n' << roff(meaning) << '\n';
    };
    table("EXIT STATUS", kExitCodes);
    table("ENVIRONMENT", kEnvironment);
    table("FILES", kFiles);
    std::cout << ".SH SEE ALSO\nThe README of the project: the JSON shape of every command.\n";
}

int completion() {
    if (shell == "bash") bash(commandModel());
    if (shell == "zsh")
        std::cout << "autoload -U +X bashcompinit && bashcompinit\n", bash(commandModel());
    if (shell == "fish") fish(commandModel());
    return kExitOk;
}

[[maybe_unused]] const bool registeredCompletion = registerCommand({
    "completion",
    "Print the completion script of a shell (bash, zsh, fish)",
    [](CLI::App& app) {
        app.add_option("SHELL", shell, "bash, zsh or fish")
            ->required()
            ->check(CLI::IsMember({"bash", "zsh", "fish"}));
    },
    completion,
    false,
});

[[maybe_unused]] const bool registeredManual = registerCommand({
    "manual",
    "Print the manual page (roff)",
    [](CLI::App& app) { app.group(""); },
    [] {
        manual(commandModel());
        return kExitOk;
    },
    false,
});

}  // namespace

}  // namespace ostrel::cli
