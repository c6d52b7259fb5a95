// The part-number table on any bytes: every row that isn't blank or a
// comment is found again by its normalised form, and normalising is stable.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "catalogue/part_numbers.h"
#include "fuzz_files.h"

using ostrel::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    const ostrel::PartNumberTable table = ostrel::PartNumberTable::parse(text);
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    while (!text.empty()) {
        const size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        const std::string row = ostrel::normalisePartNumber(line);
        require(ostrel::normalisePartNumber(row) == row, "normalising twice changes a row");
        if (row.empty() || row.front() == '#') continue;
        require(table.contains(row), "a row is not found again: " + row);
    }
    return 0;
}
