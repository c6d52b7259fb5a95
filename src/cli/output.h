// What the commands print: one record either as aligned "Key : value" lines
// or, for scripts, as one JSON object with the same keys in the same order.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace ostrel::cli {

using Record = nlohmann::ordered_json;

// Text form: keys padded to the longest, booleans as True/False, null as Nothing.
void printRecord(std::ostream& out, const Record& record, bool json);

// A command's result on stdout: the record as JSON under --json, else the
// text as one line. Answers the exit code, for `return emit(...)`.
int emit(const Record& record, std::string_view text, int exitCode);

// Rows of cells, the columns two blanks apart and aligned by display width.
void printTable(std::ostream& out, const std::vector<std::vector<std::string>>& rows);

// The columns a UTF-8 text takes on a terminal: combining marks none, East
// Asian wide and full-width characters two, everything else one.
std::size_t displayWidth(std::string_view text);

// A JSON array of flat objects written as it goes, laid out as Record's
// dump(2) lays it out, so that a long list is never held whole. Text that
// isn't UTF-8 raises as dump() does.
class JsonArrayWriter {
  public:
    explicit JsonArrayWriter(std::ostream& out) : out_(out) {}
    JsonArrayWriter(const JsonArrayWriter&) = delete;
    JsonArrayWriter& operator=(const JsonArrayWriter&) = delete;
    // Sends the whole objects not yet sent; an object left half-written
    // (a field that raised) is dropped.
    ~JsonArrayWriter();
    void beginObject();
    void field(std::string_view key, std::string_view text);
    void field(std::string_view key, int64_t number);
    void endObject();
    // Closes the array and ends the line.
    void finish();

  private:
    void key(std::string_view key);
    void flush();

    std::ostream& out_;
    std::string object_;   // whole objects not yet sent, then the one being written
    size_t complete_ = 0;  // how much of object_ is whole objects
    bool anyObject_ = false;
    bool anyField_ = false;
};

}  // namespace ostrel::cli
