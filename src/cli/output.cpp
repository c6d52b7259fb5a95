#include "output.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>

namespace ostrel::cli {

namespace {
std::string textOf(const Record& value) {
    if (value.is_null()) return "Nothing";
    if (value.is_boolean()) return value.get<bool>() ? "True" : "False";
    if (value.is_string()) return value.get<std::string>();
    return value.dump();
}

// The bytes that go out as they are: printable ASCII but the quote and the
// backslash.
constexpr auto kPlain = [] {
    std::array<bool, 256> plain{};
    for (int code = 0x20; code < 0x80; ++code) plain[static_cast<size_t>(code)] = true;
    plain['"'] = plain['\\'] = false;
    return plain;
}();

// Whether any of eight bytes is not plain: below 0x20, above 0x7F, a quote
// or a backslash. Each test flags a byte's high bit.
bool anyNotPlain(uint64_t bytes) {
    constexpr uint64_t kOnes = 0x0101010101010101u;
    constexpr uint64_t kHighs = 0x8080808080808080u;
    const auto anyZero = [](uint64_t word) { return (word - kOnes) & ~word & kHighs; };
    return (((bytes - kOnes * 0x20) & ~bytes) | bytes | anyZero(bytes ^ (kOnes * '"')) |
            anyZero(bytes ^ (kOnes * '\\'))) &
           kHighs;
}

// Where the run of plain bytes from `at` ends: eight at a time while they
// are all plain, every byte of the output being looked at, then byte by byte.
std::size_t plainRunEnd(std::string_view text, std::size_t at) {
    for (uint64_t bytes = 0; at + sizeof bytes <= text.size(); at += sizeof bytes) {
        std::memcpy(&bytes, text.data() + at, sizeof bytes);
        if (anyNotPlain(bytes)) break;
    }
    while (at < text.size() && kPlain[static_cast<unsigned char>(text[at])]) ++at;
    return at;
}

// Appends a JSON string as dump() writes it: quoted, escaped, checked for UTF-8.
void appendQuoted(std::string& out, std::string_view text) {
    out += '"';
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t run = at;
        at = plainRunEnd(text, at);
        out.append(text, run, at - run);
        if (at == text.size()) break;
        if (static_cast<unsigned char>(text[at]) < 0x80) {
            // dump()'s escapes: the short ones where JSON has them, else \u00xx.
            static constexpr char kHex[] = "0123456789abcdef";
            const auto code = static_cast<unsigned char>(text[at++]);
            const char* shortForm = code == '"'    ? "\\\""
                                    : code == '\\' ? "\\\\"
                                    : code == '\b' ? "\\b"
                                    : code == '\f' ? "\\f"
                                    : code == '\n' ? "\\n"
                                    : code == '\r' ? "\\r"
                                    : code == '\t' ? "\\t"
                                                   : nullptr;
            if (shortForm != nullptr) {
                out += shortForm;
            } else {
                out += "\\u00";
                out += kHex[code >> 4];
                out += kHex[code & 0xF];
            }
            continue;
        }
        // Beyond ASCII a character at a time through the library, which
        // raises on text that isn't UTF-8 as dump() does.
        std::size_t end = at + 1;
        while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) ++end;
        const std::string one = Record(std::string(text.substr(at, end - at))).dump();
        out.append(one, 1, one.size() - 2);
        at = end;
    }
    out += '"';
}
}  // namespace

void printRecord(std::ostream& out, const Record& record, bool json) {
    if (json) {
        out << record.dump(2) << '\n';
        return;
    }
    std::size_t width = 0;
    for (const auto& item : record.items()) width = std::max(width, item.key().size());
    for (const auto& item : record.items()) {
        out << item.key() << std::string(width - item.key().size(), ' ') << " : "
            << textOf(item.value()) << '\n';
    }
}

JsonArrayWriter::~JsonArrayWriter() {
    flush();
}

void JsonArrayWriter::flush() {
    out_.write(object_.data(), static_cast<std::streamsize>(complete_));
    object_.erase(0, complete_);
    complete_ = 0;
}

void JsonArrayWriter::beginObject() {
    object_ += anyObject_ ? ",\n  {" : "[\n  {";
    anyObject_ = true;
    anyField_ = false;
}

void JsonArrayWriter::key(std::string_view name) {
    object_ += anyField_ ? ",\n    " : "\n    ";
    appendQuoted(object_, name);
    object_ += ": ";
    anyField_ = true;
}

void JsonArrayWriter::field(std::string_view name, std::string_view text) {
    key(name);
    appendQuoted(object_, text);
}

void JsonArrayWriter::field(std::string_view name, int64_t number) {
    key(name);
    object_ += std::to_string(number);
}

void JsonArrayWriter::endObject() {
    object_ += anyField_ ? "\n  }" : "}";
    complete_ = object_.size();
    // Sent in pieces of some size: a write for each record would cost a
    // system call each.
    if (complete_ >= 64 * 1024) flush();
}

void JsonArrayWriter::finish() {
    flush();
    out_ << (anyObject_ ? "\n]\n" : "[]\n");
}

}  // namespace ostrel::cli
