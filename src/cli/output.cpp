#include "output.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <ostream>
#include <span>
#include <string>

#include "commands.h"

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

// Ranges of code points, first and last.
using Ranges = std::span<const std::array<char32_t, 2>>;

constexpr std::array<char32_t, 2> kCombining[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x05BF, 0x05C7}, {0x0610, 0x061A},
    {0x064B, 0x065F}, {0x0670, 0x0670}, {0x06D6, 0x06ED}, {0x0E31, 0x0E31}, {0x0E34, 0x0E3A},
    {0x0E47, 0x0E4E}, {0x1AB0, 0x1AFF}, {0x1DC0, 0x1DFF}, {0x200B, 0x200F}, {0x20D0, 0x20FF},
    {0xFE00, 0xFE0F}, {0xFE20, 0xFE2F}};
constexpr std::array<char32_t, 2> kWide[] = {
    {0x1100, 0x115F},   {0x2E80, 0x303E},   {0x3041, 0x33FF},  {0x3400, 0x4DBF},
    {0x4E00, 0x9FFF},   {0xA000, 0xA4CF},   {0xAC00, 0xD7A3},  {0xF900, 0xFAFF},
    {0xFE30, 0xFE4F},   {0xFF00, 0xFF60},   {0xFFE0, 0xFFE6},  {0x1F300, 0x1F64F},
    {0x1F900, 0x1F9FF}, {0x20000, 0x2FFFD}, {0x30000, 0x3FFFD}};

bool within(char32_t code, Ranges ranges) {
    return std::any_of(ranges.begin(), ranges.end(),
                       [code](const auto& range) { return code >= range[0] && code <= range[1]; });
}
}  // namespace

std::size_t displayWidth(std::string_view text) {
    std::size_t width = 0;
    for (std::size_t at = 0; at < text.size();) {
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
        const unsigned lead = byte(at);
        const std::size_t length = lead < 0xC0 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        char32_t code = length == 1 ? lead : lead & (0x7Fu >> length);
        std::size_t taken = 1;
        while (taken < length && at + taken < text.size() && (byte(at + taken) & 0xC0) == 0x80)
            code = (code << 6) | (byte(at + taken++) & 0x3Fu);
        if (taken < length) code = lead;  // not UTF-8: a column a byte
        at += taken;
        width += within(code, kCombining) ? 0u : within(code, kWide) ? 2u : 1u;
    }
    return width;
}

void printTable(std::ostream& out, const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t column = 0; column < row.size(); ++column)
            widths[column] = std::max(widths[column], displayWidth(row[column]));
    }
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t column = 0; column < row.size(); ++column) {
            line += row[column];
            if (column + 1 < row.size())
                line += std::string(widths[column] - displayWidth(row[column]) + 2, ' ');
        }
        out << line << '\n';
    }
}

int emit(const Record& record, std::string_view text, int exitCode) {
    if (globalOptions().json) {
        std::cout << record.dump(2) << '\n';
    } else {
        std::cout << text << '\n';
    }
    return exitCode;
}

void printRecord(std::ostream& out, const Record& record, bool json) {
    if (json) {
        out << record.dump(2) << '\n';
        return;
    }
    std::size_t width = 0;
    for (const auto& item : record.items()) width = std::max(width, displayWidth(item.key()));
    for (const auto& item : record.items()) {
        out << item.key() << std::string(width - displayWidth(item.key()), ' ') << " : "
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
