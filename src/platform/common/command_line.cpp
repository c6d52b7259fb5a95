#include "platform/common/command_line.h"

namespace ostrel::platform {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

}  // namespace

std::vector<std::string> splitCommandLine(std::string_view line) {
    std::vector<std::string> words;
    size_t at = 0;
    const auto more = [&] { return at < line.size(); };
    // The program: a quote only groups, a backslash is a backslash.
    while (more() && isBlank(line[at])) ++at;
    bool quoted = false;
    std::string program;
    while (more() && (quoted || !isBlank(line[at]))) {
        if (line[at] == '"') {
            quoted = !quoted;
        } else {
            program += line[at];
        }
        ++at;
    }
    words.push_back(std::move(program));
    for (;;) {
        while (more() && isBlank(line[at])) ++at;
        if (!more()) break;
        std::string word;
        quoted = false;
        while (more() && (quoted || !isBlank(line[at]))) {
            if (line[at] == '\\') {
                size_t slashes = 0;
                for (; more() && line[at] == '\\'; ++at) ++slashes;
                const bool beforeQuote = more() && line[at] == '"';
                word.append(beforeQuote ? slashes / 2 : slashes, '\\');
                if (beforeQuote && slashes % 2 == 1) word += line[at++];  // an escaped quote
            } else if (line[at] == '"') {
                if (quoted && at + 1 < line.size() && line[at + 1] == '"') {
                    word += '"';  // "" inside quotes
                    ++at;
                } else {
                    quoted = !quoted;
                }
                ++at;
            } else {
                word += line[at++];
            }
        }
        words.push_back(std::move(word));
    }
    return words;
}

}  // namespace ostrel::platform
