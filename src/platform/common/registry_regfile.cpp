// A registry read from .reg export files. A file is read as a stream, a
// line at a time (text_lines.h), and each line applied to the tree as it is
// read, in one layer that is undone when the file turns out bad.
#include "platform/common/registry_regfile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <istream>
#include <new>
#include <streambuf>
#include <system_error>
#include <utility>

#include "platform/common/registry_tree.h"
#include "platform/common/text_lines.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

// The system's registry takes no deeper key.
constexpr int kMaxKeyDepth = 512;

// A string value read back from the registry ends at its first NUL.
std::string cutAtNul(std::string text) {
    const std::size_t nul = text.find('\0');
    if (nul != std::string::npos) text.resize(nul);
    return text;
}

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

std::string_view trimLeft(std::string_view s) {
    while (!s.empty() && isBlank(s.front())) s.remove_prefix(1);
    return s;
}

std::string_view trimRight(std::string_view s) {
    while (!s.empty() && (isBlank(s.back()) || s.back() == '\r')) s.remove_suffix(1);
    return s;
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

struct HiveName {
    std::string_view name;
    int32_t hive;
};

constexpr std::array<HiveName, 5> kHiveNames = {{
    {"HKEY_CLASSES_ROOT", kHiveClassesRoot},
    {"HKEY_CURRENT_USER", kHiveCurrentUser},
    {"HKEY_LOCAL_MACHINE", kHiveLocalMachine},
    {"HKEY_USERS", kHiveUsers},
    {"HKEY_CURRENT_CONFIG", kHiveCurrentConfig},
}};

class Parser {
  public:
    Parser(TextLines& lines, RegistryLayer& load) : lines_(lines), load_(load) {}

    void parse() {
        std::string_view line;
        bool headerSeen = false;
        while (nextLine(line)) {
            line = trimLeft(trimRight(line));
            if (!headerSeen) {
                if (line.empty()) continue;
                if (line == "Windows Registry Editor Version 5.00") {
                    unicode_ = true;
                } else if (line != "REGEDIT4") {
                    fail(
                        "not a registry file: the first line must be \"REGEDIT4\" or "
                        "\"Windows Registry Editor Version 5.00\"");
                }
                headerSeen = true;
                continue;
            }
            if (line.empty() || line.front() == ';') continue;
            if (line.front() == '[') {
                section(line);
            } else if (line.front() == '"' || line.front() == '@') {
                value(line);
            } else {
                fail("expected [key], \"name\"=value or @=value");
            }
        }
        if (!headerSeen) fail("the file is empty");
    }

  private:
    // The line stays valid until the next call.
    bool nextLine(std::string_view& line) {
        if (!lines_.next(line_)) return false;
        line = line_;
        return true;
    }

    [[noreturn]] void fail(std::string message) const {
        throw TextError{lines_.number(), std::move(message)};
    }

    void section(std::string_view line) {
        const std::size_t close = line.rfind(']');
        if (close == std::string_view::npos) fail("a key name must end with ']'");
        if (!trimLeft(line.substr(close + 1)).empty()) fail("unexpected text after ']'");
        std::string_view path = line.substr(1, close - 1);
        // The system's key names end at a NUL: one inside a name names no key.
        if (path.find('\0') != std::string_view::npos)
            fail("a key name can't hold a NUL character");
        bool erase = false;
        if (!path.empty() && path.front() == '-') {
            erase = true;
            path.remove_prefix(1);
        }
        const std::size_t cut = path.find('\\');
        const std::string_view hiveName = path.substr(0, cut);
        const auto hive =
            std::find_if(kHiveNames.begin(), kHiveNames.end(),
                         [&](const HiveName& h) { return compareNames(h.name, hiveName) == 0; });
        if (hive == kHiveNames.end()) fail("unknown root key \"" + std::string(hiveName) + "\"");
        const std::string_view below =
            cut == std::string_view::npos ? std::string_view() : path.substr(cut + 1);
        if (erase && below.find_first_not_of('\\') == std::string_view::npos) {
            fail("a root key can't be deleted");
        }
        int depth = 0;
        if (!forEachSegment(below, [&](std::string_view) { return ++depth <= kMaxKeyDepth; })) {
            fail("a key path is more than " + std::to_string(kMaxKeyDepth) + " levels deep");
        }
        load_.section(hive->hive, below, erase);
        inKey_ = true;
    }

    void value(std::string_view line) {
        if (!inKey_) fail("a value before the first [key]");
        StagedValue staged;
        std::string_view rest = line;
        if (rest.front() == '@') {
            rest.remove_prefix(1);
        } else {
            staged.name = quoted(rest);
        }
        rest = trimLeft(rest);
        if (rest.empty() || rest.front() != '=') fail("expected '=' after the value name");
        rest = trimLeft(rest.substr(1));
        data(rest, staged);
        load_.value(std::move(staged));
    }

    // A quoted string at the front of text, unescaped; text moves past it.
    // \\ and \" are the format's escapes; a backslash before anything else is
    // kept as written, which is what a hand-written path like "C:\Temp" means.
    std::string quoted(std::string_view& text) const {
        std::string out;
        std::size_t i = 1;
        for (;;) {
            std::size_t stop = i;
            while (stop < text.size() && text[stop] != '\\' && text[stop] != '"') ++stop;
            if (stop == text.size()) fail("a string is missing its closing '\"'");
            out.append(text.substr(i, stop - i));
            if (text[stop] == '"') {
                text.remove_prefix(stop + 1);
                return out;
            }
            if (stop + 1 < text.size() && (text[stop + 1] == '\\' || text[stop + 1] == '"')) {
                out += text[stop + 1];
                i = stop + 2;
            } else {
                out += '\\';
                i = stop + 1;
            }
        }
    }

    void expectEnd(std::string_view rest) const {
        rest = trimLeft(rest);
        if (!rest.empty() && rest.front() != ';') fail("unexpected text after the value");
    }

    void data(std::string_view rest, StagedValue& staged) {
        if (rest.empty()) fail("a value has no data");
        if (rest.front() == '"') {
            staged.type = kRegSz;
            staged.data = quoted(rest);
            expectEnd(rest);
        } else if (rest.front() == '-') {
            staged.erase = true;
            expectEnd(rest.substr(1));
        } else if (rest.starts_with("dword:")) {
            rest.remove_prefix(6);
            uint32_t number = 0;
            std::size_t digits = 0;
            for (; digits < rest.size() && hexDigit(rest[digits]) >= 0; ++digits) {
                if (digits == 8) fail("a dword has more than 8 hex digits");
                number = (number << 4) | static_cast<uint32_t>(hexDigit(rest[digits]));
            }
            if (digits == 0) fail("a dword needs hex digits");
            expectEnd(rest.substr(digits));
            staged.type = kRegDword;
            staged.data = dwordBytes(number);
        } else if (rest.starts_with("hex")) {
            rest.remove_prefix(3);
            staged.type = kRegBinary;
            if (!rest.empty() && rest.front() == '(') {
                const std::size_t close = rest.find(')');
                if (close == std::string_view::npos || close == 1 || close > 9) {
                    fail("expected hex(type):");
                }
                uint32_t type = 0;
                for (std::size_t k = 1; k < close; ++k) {
                    const int digit = hexDigit(rest[k]);
                    if (digit < 0) fail("a value type must be hex digits");
                    type = (type << 4) | static_cast<uint32_t>(digit);
                }
                staged.type = type;
                rest.remove_prefix(close + 1);
            }
            if (rest.empty() || rest.front() != ':') fail("expected ':' after hex");
            rest.remove_prefix(1);
            staged.data = hexBytes(rest);
            decodeHexText(staged);
        } else {
            fail("unknown value data");
        }
    }

    // Comma-separated hex bytes; a trailing backslash continues the list on
    // the next line.
    std::string hexBytes(std::string_view rest) {
        std::string bytes;
        bytes.reserve(rest.size() / 3 + 1);
        for (;;) {
            rest = trimLeft(trimRight(rest));
            if (rest.empty()) return bytes;
            if (rest == "\\") {
                const int continued = lines_.number();
                std::string_view next;
                if (!nextLine(next) || trimLeft(trimRight(next)).empty()) {
                    throw TextError{continued,
                                    "a hex list ends in '\\' with no line to continue it"};
                }
                rest = next;
                continue;
            }
            if (rest.front() == ';') return bytes;
            const int high = hexDigit(rest.front());
            if (high < 0) fail("expected a hex byte");
            int byte = high;
            std::size_t used = 1;
            if (rest.size() > 1 && hexDigit(rest[1]) >= 0) {
                byte = byte * 16 + hexDigit(rest[1]);
                used = 2;
            }
            bytes += static_cast<char>(byte);
            rest = trimLeft(rest.substr(used));
            if (!rest.empty() && rest.front() == ',') {
                rest.remove_prefix(1);
            } else if (!rest.empty() && rest.front() != '\\' && rest.front() != ';') {
                fail("expected ',' between hex bytes");
            }
        }
    }

    // String types given as bytes: UTF-16LE in version 5 files, ANSI in REGEDIT4.
    void decodeHexText(StagedValue& staged) const {
        if (staged.type != kRegSz && staged.type != kRegExpandSz && staged.type != kRegMultiSz) {
            return;
        }
        std::string text = unicode_ ? fromUtf16Bytes(staged.data) : decodeAnsi(staged.data);
        if (staged.type == kRegMultiSz) {
            while (!text.empty() && text.back() == '\0') text.pop_back();
            staged.data = std::move(text);
        } else {
            staged.data = cutAtNul(std::move(text));
        }
    }

    TextLines& lines_;
    RegistryLayer& load_;
    std::string line_;
    bool unicode_ = false;
    bool inKey_ = false;
};

std::string whatOf(const std::string& file, int line, const std::string& message) {
    if (line <= 0) return file + ": " + message;
    return file + ":" + std::to_string(line) + ": " + message;
}

}  // namespace

RegFileError::RegFileError(std::string fileName, int lineNumber, const std::string& message)
    : std::runtime_error(whatOf(fileName, lineNumber, message)),
      file(std::move(fileName)),
      line(lineNumber) {}

RegFileRegistry::RegFileRegistry() : tree_(newRegFileTree()) {}

RegFileRegistry::~RegFileRegistry() = default;

void RegFileRegistry::loadFile(const std::string& path) {
    // The name is UTF-8; through a path, Windows opens it by its wide form.
    const std::filesystem::path file(std::u8string(path.begin(), path.end()));
    std::error_code ignored;
    if (std::filesystem::is_directory(file, ignored)) throw RegFileError(path, 0, "is a directory");
    errno = 0;
    std::ifstream in(file, std::ios::binary);
    if (!in) throw RegFileError(path, 0, "can't open the file" + systemReason(errno));
    load(in, path);
}

void RegFileRegistry::loadText(std::string_view text, const std::string& name) {
    // The text read in place, as a stream over it.
    struct TextBuffer : std::streambuf {
        explicit TextBuffer(std::string_view text) {
            char* begin = const_cast<char*>(text.data());
            setg(begin, begin, begin + text.size());
        }
    } buffer(text);
    std::istream in(&buffer);
    load(in, name);
}

void RegFileRegistry::load(std::istream& in, const std::string& name) {
    RegistryLayer changes(*tree_);
    TextLines lines(in);
    try {
        Parser(lines, changes).parse();
        changes.commit();
    } catch (const TextError& failure) {
        throw RegFileError(name, failure.line, failure.message);
    } catch (const std::bad_alloc&) {
        throw RegFileError(name, lines.number(), "not enough memory to hold the file's keys");
    }
}

void RegFileRegistry::loadKeys(const std::function<void(RegistryLayer&)>& make) {
    RegistryLayer changes(*tree_);
    make(changes);
    changes.commit();
}

std::unique_ptr<RegistryKey> RegFileRegistry::open(int32_t hive, std::string_view path,
                                                   int32_t /*access: files are read-only*/,
                                                   int32_t& errorCode) {
    return openKey(*tree_, hive, path, errorCode);
}

}  // namespace ostrel::platform
