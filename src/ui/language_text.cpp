#include "ui/language_text.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <utility>

#include "runtime/automation_error.h"

namespace ostrel {

namespace {

// The one place the language is picked: English until there are others.
std::string_view languageSuffix() {
    return "en";
}

std::filesystem::path toPath(std::string_view utf8) {
    std::u8string u8;
    u8.reserve(utf8.size());
    for (char c : utf8) u8.push_back(static_cast<char8_t>(c));
    return std::filesystem::path(u8);
}

// The texts file is read before the file system object exists (start-up
// binds the language first), so it is read here directly.
std::optional<std::string> readFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    std::ostringstream content;
    content << in.rdbuf();
    if (in.bad()) return std::nullopt;
    return std::move(content).str();
}

[[noreturn]] void raiseBadLine(const std::filesystem::path& file, int lineNumber) {
    const std::u8string name = file.u8string();
    raise(kErrInvalidCall, "Bad text at line " + std::to_string(lineNumber) + " of " +
                               std::string(name.begin(), name.end()));
}

// \n is a line break (CR LF, as message boxes take it), \t a tab, \\ a backslash.
std::optional<std::string> unescape(std::string_view raw) {
    std::string text;
    text.reserve(raw.size());
    for (size_t i = 0; i < raw.size(); ++i) {
        if (raw[i] != '\\') {
            text += raw[i];
            continue;
        }
        if (++i == raw.size()) return std::nullopt;
        switch (raw[i]) {
            case 'n':
                text += "\r\n";
                break;
            case 't':
                text += '\t';
                break;
            case '\\':
                text += '\\';
                break;
            default:
                return std::nullopt;
        }
    }
    return text;
}

std::map<int32_t, std::string> parseTexts(std::string_view content,
                                          const std::filesystem::path& file) {
    if (content.starts_with("\xEF\xBB\xBF")) content.remove_prefix(3);
    std::map<int32_t, std::string> texts;
    int lineNumber = 0;
    while (!content.empty()) {
        ++lineNumber;
        const size_t end = content.find('\n');
        std::string_view line = content.substr(0, end);
        content.remove_prefix(end == std::string_view::npos ? content.size() : end + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);

        const size_t first = line.find_first_not_of(" \t");
        if (first == std::string_view::npos || line[first] == '#') continue;

        const size_t equals = line.find('=');
        if (equals == std::string_view::npos) raiseBadLine(file, lineNumber);
        std::string_view number = line.substr(0, equals);
        number.remove_prefix(std::min(number.find_first_not_of(" \t"), number.size()));
        number.remove_suffix(number.size() - (number.find_last_not_of(" \t") + 1));
        int32_t textNumber = 0;
        const auto [rest, ec] =
            std::from_chars(number.data(), number.data() + number.size(), textNumber);
        auto text = unescape(line.substr(equals + 1));
        if (number.empty() || ec != std::errc() || rest != number.data() + number.size() || !text ||
            !texts.emplace(textNumber, std::move(*text)).second) {
            raiseBadLine(file, lineNumber);
        }
    }
    return texts;
}

}  // namespace

void clsLanguageText::Initialise(std::string_view componentName, std::string_view componentFolder) {
    // Every product record binds again with the same values: that must cost nothing.
    if (!texts_.empty() && componentName == boundName_ && componentFolder == boundFolder_) return;

    std::filesystem::path file = toPath(componentFolder);
    file /= toPath(std::string(componentName) + "." + std::string(languageSuffix()) + ".txt");
    const auto content = readFile(file);
    if (!content) raise(kErrFileNotFound);
    texts_ = parseTexts(*content, file);
    boundName_ = componentName;
    boundFolder_ = componentFolder;
}

std::string clsLanguageText::GetText(int32_t textNumber) const {
    const auto found = texts_.find(textNumber);
    if (found == texts_.end()) raise(kErrInvalidCall);
    return found->second;
}

std::string clsLanguageText::GetFormattedText(int32_t textNumber,
                                              std::optional<std::string_view> insert1,
                                              std::optional<std::string_view> insert2,
                                              std::optional<std::string_view> insert3,
                                              std::optional<std::string_view> insert4) const {
    const std::string pattern = GetText(textNumber);
    const std::optional<std::string_view> inserts[] = {insert1, insert2, insert3, insert4};
    std::string text;
    text.reserve(pattern.size());
    // One pass: an insert's own markers stay as they are.
    for (size_t i = 0; i < pattern.size(); ++i) {
        const char next = i + 1 < pattern.size() ? pattern[i + 1] : '\0';
        if (pattern[i] == '%' && next >= '1' && next <= '4') {
            text += inserts[next - '1'].value_or(std::string_view());
            ++i;
        } else if (pattern[i] == '%' && next == '%') {
            text += '%';
            ++i;
        } else {
            text += pattern[i];
        }
    }
    return text;
}

}  // namespace ostrel
