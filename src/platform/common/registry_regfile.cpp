// A registry read from .reg export files. A file is parsed whole into a list
// of staged sections first and merged only when all of it parsed, so a bad
// file leaves nothing behind.
#include "platform/common/registry_regfile.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <new>
#include <utility>
#include <vector>

#include "runtime/text.h"

namespace ostrel::platform {

namespace {

// Registry value types, as the export format numbers them in hex(n).
constexpr uint32_t kRegSz = 1;
constexpr uint32_t kRegExpandSz = 2;
constexpr uint32_t kRegBinary = 3;
constexpr uint32_t kRegDword = 4;
constexpr uint32_t kRegMultiSz = 7;

// System error codes that open() reports.
constexpr int32_t kErrorFileNotFound = 2;
constexpr int32_t kErrorInvalidHandle = 6;

constexpr std::size_t kHiveCount = 6;

struct Value {
    std::string name;
    std::string folded;  // the name upper-cased, kept so that look-ups compare bytes
    uint32_t type = kRegSz;
    // Types 1, 2 and 7 hold UTF-8 text; every other type its raw bytes.
    std::string data;
};

struct Node {
    std::string name;
    std::string folded;  // the name upper-cased, kept so that look-ups compare bytes
    std::vector<std::shared_ptr<Node>> children;  // ordered by upper-cased name
    std::vector<Value> values;
};

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

char asciiUpper(char c) {
    return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}

// The name as the registry compares it: upper-cased.
std::string fold(std::string_view name) {
    std::string out(name.size(), '\0');
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (static_cast<unsigned char>(name[i]) >= 0x80) return upperCase(name);
        out[i] = asciiUpper(name[i]);
    }
    return out;
}

// The position where a child of this folded name is or would go.
std::vector<std::shared_ptr<Node>>::iterator childSlot(Node& node, std::string_view folded) {
    return std::lower_bound(node.children.begin(), node.children.end(), folded,
                            [](const std::shared_ptr<Node>& child, std::string_view key) {
                                return child->folded < key;
                            });
}

const Value* findValue(const Node& node, std::string_view name) {
    if (!isAscii(name)) {
        const std::string folded = fold(name);
        for (const Value& value : node.values) {
            if (value.folded == folded) return &value;
        }
        return nullptr;
    }
    // An ASCII name, the usual kind, is compared without a folded copy.
    const auto sameAsFolded = [name](std::string_view folded) {
        return std::equal(name.begin(), name.end(), folded.begin(), folded.end(),
                          [](char a, char b) { return asciiUpper(a) == b; });
    };
    for (const Value& value : node.values) {
        if (sameAsFolded(value.folded)) return &value;
    }
    return nullptr;
}

// Calls step for each non-empty segment of a backslash-separated path.
template <class Step>
bool forEachSegment(std::string_view path, Step&& step) {
    while (!path.empty()) {
        const std::size_t cut = path.find('\\');
        const std::string_view segment = path.substr(0, cut);
        if (!segment.empty() && !step(segment)) return false;
        if (cut == std::string_view::npos) break;
        path.remove_prefix(cut + 1);
    }
    return true;
}

// ---- text decoding -------------------------------------------------------

bool isValidUtf8(std::string_view text) {
    std::size_t i = 0;
    const std::size_t n = text.size();
    while (i < n) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c < 0x80) {
            ++i;
            continue;
        }
        std::size_t extra = 0;
        uint32_t min = 0;
        if ((c & 0xE0) == 0xC0) {
            extra = 1;
            min = 0x80;
        } else if ((c & 0xF0) == 0xE0) {
            extra = 2;
            min = 0x800;
        } else if ((c & 0xF8) == 0xF0) {
            extra = 3;
            min = 0x10000;
        } else {
            return false;
        }
        if (i + extra >= n) return false;
        uint32_t code = c & (0x3Fu >> extra);
        for (std::size_t k = 1; k <= extra; ++k) {
            const auto d = static_cast<unsigned char>(text[i + k]);
            if ((d & 0xC0) != 0x80) return false;
            code = (code << 6) | (d & 0x3Fu);
        }
        if (code < min || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return false;
        i += extra + 1;
    }
    return true;
}

void appendUtf8(std::string& out, uint32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

// Text in the ANSI code page of the machine that wrote it. Modern tools write
// UTF-8 even into REGEDIT4 files, so valid UTF-8 is taken as it stands and
// anything else is read as Windows-1252.
std::string decodeAnsi(std::string_view bytes) {
    if (isValidUtf8(bytes)) return std::string(bytes);
    static constexpr std::array<uint16_t, 32> kHigh = {
        0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
    std::string out;
    out.reserve(bytes.size() + bytes.size() / 8);
    for (char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        if (b >= 0x80 && b < 0xA0) {
            appendUtf8(out, kHigh[b - 0x80u]);
        } else {
            appendUtf8(out, b);
        }
    }
    return out;
}

// Exports are mostly ASCII: those units are copied straight, and only runs of
// other characters go through the general conversion.
std::string decodeUtf16Le(std::string_view bytes) {
    const std::size_t count = bytes.size() / 2;
    auto unitAt = [&](std::size_t k) {
        return static_cast<char16_t>(static_cast<unsigned char>(bytes[2 * k]) |
                                     (static_cast<unsigned char>(bytes[2 * k + 1]) << 8));
    };
    std::string out(count, '\0');
    std::size_t used = 0;
    std::u16string run;
    for (std::size_t k = 0; k < count;) {
        const char16_t unit = unitAt(k);
        if (unit < 0x80) {
            out[used++] = static_cast<char>(unit);
            ++k;
            continue;
        }
        run.clear();
        for (; k < count && unitAt(k) >= 0x80; ++k) run += unitAt(k);
        const std::string converted = fromUtf16(run);
        out.resize(std::max(out.size(), used + converted.size() + (count - k)));
        out.replace(used, converted.size(), converted);
        used += converted.size();
    }
    out.resize(used);
    return out;
}

// A string value read back from the registry ends at its first NUL.
std::string cutAtNul(std::string text) {
    const std::size_t nul = text.find('\0');
    if (nul != std::string::npos) text.resize(nul);
    return text;
}

// ---- parsing -------------------------------------------------------------

struct StagedValue {
    std::string name;
    bool erase = false;
    uint32_t type = kRegSz;
    std::string data;
};

struct StagedSection {
    int32_t hive = 0;
    std::string path;  // below the hive, as written
    bool erase = false;
    std::vector<StagedValue> values;
};

struct ParseFailure {
    int line;
    std::string message;
};

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

bool asciiEqualsIgnoreCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return asciiUpper(x) == asciiUpper(y);
           });
}

class Parser {
  public:
    explicit Parser(std::string_view text) : rest_(text) {}

    std::vector<StagedSection> parse() {
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
        return std::move(sections_);
    }

  private:
    bool nextLine(std::string_view& line) {
        if (done_) return false;
        ++lineNumber_;
        const std::size_t end = rest_.find('\n');
        line = rest_.substr(0, end);
        if (end == std::string_view::npos) {
            done_ = true;
            rest_ = {};
        } else {
            rest_.remove_prefix(end + 1);
        }
        return true;
    }

    [[noreturn]] void fail(std::string message) const {
        throw ParseFailure{lineNumber_, std::move(message)};
    }

    void section(std::string_view line) {
        const std::size_t close = line.rfind(']');
        if (close == std::string_view::npos) fail("a key name must end with ']'");
        if (!trimLeft(line.substr(close + 1)).empty()) fail("unexpected text after ']'");
        std::string_view path = line.substr(1, close - 1);
        StagedSection staged;
        if (!path.empty() && path.front() == '-') {
            staged.erase = true;
            path.remove_prefix(1);
        }
        const std::size_t cut = path.find('\\');
        const std::string_view hiveName = path.substr(0, cut);
        const auto hive = std::find_if(
            kHiveNames.begin(), kHiveNames.end(),
            [&](const HiveName& h) { return asciiEqualsIgnoreCase(h.name, hiveName); });
        if (hive == kHiveNames.end()) fail("unknown root key \"" + std::string(hiveName) + "\"");
        staged.hive = hive->hive;
        if (cut != std::string_view::npos) staged.path = std::string(path.substr(cut + 1));
        if (staged.erase && staged.path.find_first_not_of('\\') == std::string::npos) {
            fail("a root key can't be deleted");
        }
        sections_.push_back(std::move(staged));
        current_ = &sections_.back();
    }

    void value(std::string_view line) {
        if (current_ == nullptr) fail("a value before the first [key]");
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
        current_->values.push_back(std::move(staged));
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
            staged.data.resize(4);
            for (std::size_t k = 0; k < 4; ++k) {
                staged.data[k] = static_cast<char>((number >> (8 * k)) & 0xFFu);
            }
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
                std::string_view next;
                if (!nextLine(next)) fail("the file ends inside a hex list");
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
        std::string text = unicode_ ? decodeUtf16Le(staged.data) : decodeAnsi(staged.data);
        if (staged.type == kRegMultiSz) {
            while (!text.empty() && text.back() == '\0') text.pop_back();
            staged.data = std::move(text);
        } else {
            staged.data = cutAtNul(std::move(text));
        }
    }

    std::string_view rest_;
    bool done_ = false;
    int lineNumber_ = 0;
    bool unicode_ = false;
    std::vector<StagedSection> sections_;
    StagedSection* current_ = nullptr;
};

// The file's bytes, turned into UTF-8 text in place.
void decodeFile(std::string& bytes) {
    const std::string_view view(bytes);
    if (view.starts_with("\xFF\xFE")) {
        bytes = decodeUtf16Le(view.substr(2));
    } else if (view.starts_with("\xFE\xFF")) {
        throw ParseFailure{1, "UTF-16 big-endian files are not supported"};
    } else {
        if (view.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);
        if (!isValidUtf8(bytes)) bytes = decodeAnsi(bytes);
    }
}

}  // namespace

// ---- the tree ------------------------------------------------------------

struct RegFileRegistry::Tree {
    Tree() {
        for (auto& root : roots) root = std::make_shared<Node>();
    }

    // The slot holding the node at hive\path; null when it is missing and not
    // created. Valid until the tree changes.
    const std::shared_ptr<Node>* descend(int32_t hive, std::string_view path, bool create) {
        const std::shared_ptr<Node>* node = &roots[static_cast<std::size_t>(hive)];
        forEachSegment(path, [&](std::string_view segment) {
            Node& parent = **node;
            const std::string folded = fold(segment);
            auto slot = childSlot(parent, folded);
            if (slot != parent.children.end() && (*slot)->folded == folded) {
                node = &*slot;
            } else if (create) {
                auto child = std::make_shared<Node>();
                child->name = std::string(segment);
                child->folded = folded;
                node = &*parent.children.insert(slot, std::move(child));
            } else {
                node = nullptr;
            }
            return node != nullptr;
        });
        return node;
    }

    void erase(int32_t hive, std::string_view path) {
        const std::size_t cut = path.find_last_not_of('\\');
        if (cut == std::string_view::npos) return;
        path = path.substr(0, cut + 1);
        const std::size_t slash = path.rfind('\\');
        const std::string_view leaf =
            slash == std::string_view::npos ? path : path.substr(slash + 1);
        const auto* parent = descend(
            hive, slash == std::string_view::npos ? std::string_view() : path.substr(0, slash),
            false);
        if (parent == nullptr) return;
        Node& node = **parent;
        const std::string folded = fold(leaf);
        auto slot = childSlot(node, folded);
        if (slot != node.children.end() && (*slot)->folded == folded) {
            node.children.erase(slot);
        }
    }

    static void apply(Node& node, StagedValue&& staged) {
        const std::string folded = fold(staged.name);
        auto found = std::find_if(node.values.begin(), node.values.end(),
                                  [&](const Value& v) { return v.folded == folded; });
        if (staged.erase) {
            if (found != node.values.end()) node.values.erase(found);
        } else if (found != node.values.end()) {
            found->type = staged.type;
            found->data = std::move(staged.data);
        } else {
            node.values.push_back(
                Value{std::move(staged.name), folded, staged.type, std::move(staged.data)});
        }
    }

    void merge(std::vector<StagedSection>&& sections) {
        for (StagedSection& section : sections) {
            if (section.erase) {
                // kept: values listed under a deleted key are skipped, as the importer does
                erase(section.hive, section.path);
                continue;
            }
            Node* node = descend(section.hive, section.path, true)->get();
            node->values.reserve(node->values.size() + section.values.size());
            for (StagedValue& staged : section.values) apply(*node, std::move(staged));
        }
    }

    std::array<std::shared_ptr<Node>, kHiveCount> roots;
};

namespace {

// Holds its node alive, so a key stays readable while later files layer over it.
class RegFileKey final : public RegistryKey {
  public:
    explicit RegFileKey(std::shared_ptr<const Node> node) : node_(std::move(node)) {}

    std::optional<std::string> stringValue(std::string_view name) const override {
        const Value* value = findValue(*node_, name);
        if (value == nullptr || (value->type != kRegSz && value->type != kRegExpandSz)) {
            return std::nullopt;
        }
        return value->data;
    }

    std::optional<int32_t> dwordValue(std::string_view name) const override {
        const Value* value = findValue(*node_, name);
        if (value == nullptr || value->type != kRegDword || value->data.size() != 4) {
            return std::nullopt;
        }
        uint32_t number = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            number |= static_cast<uint32_t>(static_cast<unsigned char>(value->data[k])) << (8 * k);
        }
        return static_cast<int32_t>(number);
    }

    std::optional<std::string> subKeyName(uint32_t index) const override {
        if (index >= node_->children.size()) return std::nullopt;
        return node_->children[index]->name;
    }

  private:
    std::shared_ptr<const Node> node_;
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

RegFileRegistry::RegFileRegistry() : tree_(std::make_shared<Tree>()) {}

RegFileRegistry::~RegFileRegistry() = default;

void RegFileRegistry::loadFile(const std::string& path) {
    // The name is UTF-8; through a path, Windows opens it by its wide form.
    const std::filesystem::path file(std::u8string(path.begin(), path.end()));
    // A folder opens as a stream on Linux, and its "size" is no size.
    std::error_code ignored;
    if (std::filesystem::is_directory(file, ignored)) {
        throw RegFileError(path, 0, "a folder, not a file");
    }
    std::ifstream in(file, std::ios::binary);
    if (!in) throw RegFileError(path, 0, "can't open the file");
    in.seekg(0, std::ios::end);
    const std::streamoff size = in.tellg();
    in.seekg(0, std::ios::beg);
    std::string bytes;
    if (size > 0) {
        try {
            bytes.resize(static_cast<std::size_t>(size));
        } catch (const std::bad_alloc&) {
            throw RegFileError(path, 0, "the file is too large to read");
        }
        in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    if (!in && size > 0) throw RegFileError(path, 0, "can't read the file");
    try {
        decodeFile(bytes);
    } catch (const ParseFailure& failure) {
        throw RegFileError(path, failure.line, failure.message);
    }
    loadText(bytes, path);
}

void RegFileRegistry::loadText(std::string_view text, const std::string& name) {
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    std::vector<StagedSection> sections;
    try {
        sections = Parser(text).parse();
    } catch (const ParseFailure& failure) {
        throw RegFileError(name, failure.line, failure.message);
    }
    tree_->merge(std::move(sections));
}

std::unique_ptr<RegistryKey> RegFileRegistry::open(int32_t hive, std::string_view path,
                                                   int32_t /*access: files are read-only*/,
                                                   int32_t& errorCode) {
    if (hive < 0 || static_cast<std::size_t>(hive) >= kHiveCount || hive == 4) {
        errorCode = kErrorInvalidHandle;
        return nullptr;
    }
    const auto* node = tree_->descend(hive, path, false);
    if (node == nullptr) {
        errorCode = kErrorFileNotFound;
        return nullptr;
    }
    errorCode = 0;
    return std::make_unique<RegFileKey>(*node);
}

}  // namespace ostrel::platform
