#include "output.h"

#include <algorithm>
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

// A JSON string as dump() writes it: quoted, escaped, checked for UTF-8.
std::string quoted(std::string_view text) {
    std::string out;
    out.reserve(text.size() + 2);
    out += '"';
    // The plain runs go in whole; the few characters that need it are escaped
    // through the library, which also raises on text that isn't UTF-8.
    std::size_t run = 0;
    for (std::size_t at = 0; at <= text.size(); ++at) {
        const auto c = at < text.size() ? static_cast<unsigned char>(text[at]) : 0;
        if (at < text.size() && c >= 0x20 && c != '"' && c != '\\' && c < 0x80) continue;
        out.append(text.substr(run, at - run));
        if (at == text.size()) break;
        std::size_t end = at + 1;
        while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) ++end;
        const std::string one = Record(std::string(text.substr(at, end - at))).dump();
        out.append(one, 1, one.size() - 2);
        run = end;
        at = end - 1;
    }
    out += '"';
    return out;
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

void JsonArrayWriter::beginObject() {
    out_ << (anyObject_ ? ",\n  {" : "[\n  {");
    anyObject_ = true;
    anyField_ = false;
}

void JsonArrayWriter::key(std::string_view name) {
    out_ << (anyField_ ? ",\n    " : "\n    ") << quoted(name) << ": ";
    anyField_ = true;
}

void JsonArrayWriter::field(std::string_view name, std::string_view text) {
    key(name);
    out_ << quoted(text);
}

void JsonArrayWriter::field(std::string_view name, int64_t number) {
    key(name);
    out_ << number;
}

void JsonArrayWriter::endObject() {
    out_ << (anyField_ ? "\n  }" : "}");
}

void JsonArrayWriter::finish() {
    out_ << (anyObject_ ? "\n]\n" : "[]\n");
}

}  // namespace ostrel::cli
