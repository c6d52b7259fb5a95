// The older per-user settings store on Linux, in place of the registry tree
// that the language run time keeps for program settings: one INI file per
// user, ${XDG_CONFIG_HOME:-$HOME/.config}/QUORL/program-settings.ini.
//
//   [APPLICATION\SECTION]
//   KEY=VALUE
//
// UTF-8, one group per application and section, one line per key. Names
// compare without regard to case, as registry names do. Text is written as
// it stands except for the characters the format itself uses: '%', line
// ends, and '=', '[', ']', ';', '#' and '\' in names, written as %XX. Lines that start
// with ';' or '#' are comments; lines that can't be read are kept as they
// are. A save reads the file, changes one line and writes the whole file to
// a temporary file that is renamed over the old one, so a crash never leaves
// half a file (own_file_posix.h: never through a link, never over a file
// this user may not write, the mode kept); an advisory lock on a file beside
// it keeps two savers from losing each other's line.
//
// No INI library is used: the ones at hand trim values and read ';' inside a
// value as a comment, and a stored string must come back exactly as it went in.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "platform/adapters.h"
#include "platform/own_file.h"
#include "platform/posix/own_file_posix.h"
#include "runtime/automation_error.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

std::string configFolder() {
    const char* config = std::getenv("XDG_CONFIG_HOME");
    if (config && *config == '/') return std::string(config) + "/QUORL";
    const char* home = std::getenv("HOME");
    return std::string(home ? home : "") + "/.config/QUORL";
}

std::string encode(std::string_view text, std::string_view special) {
    std::string out;
    for (const char c : text) {
        if (c == '%' || c == '\n' || c == '\r' || special.find(c) != std::string_view::npos) {
            char hex[4];
            std::snprintf(hex, sizeof hex, "%%%02X", static_cast<unsigned char>(c));
            out += hex;
        } else {
            out += c;
        }
    }
    return out;
}

std::string decode(std::string_view text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size() &&
            std::isxdigit(static_cast<unsigned char>(text[i + 1])) &&
            std::isxdigit(static_cast<unsigned char>(text[i + 2]))) {
            out += static_cast<char>(std::stoi(std::string(text.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            out += text[i];
        }
    }
    return out;
}

std::string groupLine(std::string_view application, std::string_view section) {
    return "[" + encode(application, "=[]\\") + "\\" + encode(section, "=[]\\") + "]";
}

// The file's lines, without their ends; empty when there is no file. A link,
// a pipe or an oversized file raises, naming it (own_file.h).
std::vector<std::string> readLines(const std::string& file) {
    std::vector<std::string> lines;
    const std::optional<std::string> content = readOwnFile(file, kMaxSettingsFileBytes);
    if (!content) return lines;
    std::string_view rest(*content);
    while (!rest.empty()) {
        const size_t end = rest.find('\n');
        std::string_view line = rest.substr(0, end);
        if (end == std::string_view::npos) {
            rest = {};  // the last line, without an end: kept as it stands
        } else {
            rest.remove_prefix(end + 1);
            if (line.ends_with('\r')) line.remove_suffix(1);
        }
        lines.emplace_back(line);
    }
    return lines;
}

struct Position {
    bool groupFound = false;
    size_t groupEnd = 0;  // where a new key of the group goes
    bool keyFound = false;
    size_t keyLine = 0;
};

// Where the group and the key stand in the lines. Names compare as the
// registry compares them, ignoring case.
Position locate(const std::vector<std::string>& lines, std::string_view application,
                std::string_view section, std::string_view key) {
    Position at;
    const std::string group = groupLine(application, section);
    bool inGroup = false;
    for (size_t i = 0; i < lines.size(); ++i) {
        const std::string& line = lines[i];
        if (!line.empty() && line.front() == '[') {
            inGroup = !at.groupFound && equalsText(line, group);
            if (inGroup) {
                at.groupFound = true;
                at.groupEnd = i + 1;
            }
            continue;
        }
        if (!inGroup) continue;
        if (line.empty() || line.front() == ';' || line.front() == '#') continue;
        at.groupEnd = i + 1;
        const size_t equals = line.find('=');
        if (equals != std::string::npos && !at.keyFound &&
            equalsText(decode(std::string_view(line).substr(0, equals)), key)) {
            at.keyFound = true;
            at.keyLine = i;
        }
    }
    return at;
}

class IniProgramSettings final : public ProgramSettingsPort {
  public:
    std::string get(std::string_view application, std::string_view section, std::string_view key,
                    std::string_view defaultValue) override {
        const std::vector<std::string> lines = readLines(fileName());
        const Position at = locate(lines, application, section, key);
        if (!at.keyFound) return std::string(defaultValue);
        const std::string& line = lines[at.keyLine];
        return decode(std::string_view(line).substr(line.find('=') + 1));
    }

    void save(std::string_view application, std::string_view section, std::string_view key,
              std::string_view value) override {
        // SaveSetting refuses an empty application, section or key.
        if (application.empty() || section.empty() || key.empty()) raise(kErrInvalidCall);
        const std::string folder = configFolder();
        if (::mkdir((folder.substr(0, folder.rfind('/'))).c_str(), 0700) != 0 && errno != EEXIST)
            raise(kErrInvalidCall);
        if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) raise(kErrInvalidCall);

        const std::string file = fileName();
        struct Lock {
            int fd;
            ~Lock() { ::close(fd); }  // drops the lock
        } lock{::open((file + ".lock").c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0600)};
        if (lock.fd < 0) raise(kErrInvalidCall);
        while (::flock(lock.fd, LOCK_EX) != 0 && errno == EINTR) {
        }
        if (!rewrite(file, application, section, key, value)) raise(kErrInvalidCall);
    }

  private:
    static std::string fileName() { return configFolder() + "/program-settings.ini"; }

    static bool rewrite(const std::string& file, std::string_view application,
                        std::string_view section, std::string_view key, std::string_view value) {
        std::vector<std::string> lines = readLines(file);
        const Position at = locate(lines, application, section, key);
        const std::string entry = encode(key, "=[];#") + "=" + encode(value, "");
        if (at.keyFound) {
            lines[at.keyLine] = entry;
        } else if (at.groupFound) {
            lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(at.groupEnd), entry);
        } else {
            if (!lines.empty() && !lines.back().empty()) lines.emplace_back();
            lines.push_back(groupLine(application, section));
            lines.push_back(entry);
        }
        std::string content;
        for (const std::string& line : lines) content += line + "\n";
        return replaceOwnFile(file, content, 0600) == 0;
    }
};

}  // namespace

ProgramSettingsPort& systemProgramSettings() {
    static IniProgramSettings settings;
    return settings;
}

}  // namespace ostrel::platform
