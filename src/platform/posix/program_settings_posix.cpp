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
// half a file; an advisory lock on a file beside it keeps two savers from
// losing each other's line.
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
#include <string>
#include <vector>

#include "platform/adapters.h"
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

// The file's lines, without their ends; empty when there is no file.
std::vector<std::string> readLines(const std::string& file) {
    std::vector<std::string> lines;
    FILE* in = std::fopen(file.c_str(), "rb");
    if (!in) return lines;
    std::string line;
    for (int c = std::fgetc(in); c != EOF; c = std::fgetc(in)) {
        if (c == '\n') {
            if (!line.empty() && line.back() == '\r') line.pop_back();
            lines.push_back(std::move(line));
            line.clear();
        } else {
            line += static_cast<char>(c);
        }
    }
    if (!line.empty()) lines.push_back(std::move(line));
    std::fclose(in);
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
        const int lockFd = ::open((file + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (lockFd < 0) raise(kErrInvalidCall);
        while (::flock(lockFd, LOCK_EX) != 0 && errno == EINTR) {
        }
        const bool written = rewrite(file, application, section, key, value);
        ::close(lockFd);  // drops the lock
        if (!written) raise(kErrInvalidCall);
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
        std::string temporary = file + ".XXXXXX";
        const int fd = ::mkstemp(temporary.data());
        if (fd < 0) return false;
        std::string content;
        for (const std::string& line : lines) content += line + "\n";
        size_t done = 0;
        while (done < content.size()) {
            const ssize_t n = ::write(fd, content.data() + done, content.size() - done);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) break;
            done += static_cast<size_t>(n);
        }
        const bool ok = done == content.size();  // the rename keeps it whole
        ::close(fd);
        if (!ok || ::rename(temporary.c_str(), file.c_str()) != 0) {
            ::unlink(temporary.c_str());
            return false;
        }
        return true;
    }
};

}  // namespace

ProgramSettingsPort& systemProgramSettings() {
    static IniProgramSettings settings;
    return settings;
}

}  // namespace ostrel::platform
