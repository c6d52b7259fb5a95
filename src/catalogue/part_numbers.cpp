#include "catalogue/part_numbers.h"

#include <memory>
#include <optional>
#include <string>

#include "foundation/builtin_data.h"
#include "foundation/debug_log.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "runtime/automation_error.h"
#include "runtime/text.h"

namespace ostrel {

namespace {

constexpr std::string_view kTableFile = "part-numbers.txt";
constexpr std::string_view kTableVariable = "OSTREL_PART_NUMBERS";

struct TableFile {
    std::string path;
    bool named = false;  // by the variable
};

// The table's file: the variable when it is set and not empty, else the file
// beside the component.
TableFile tableFile() {
    platform::EnvironmentPort* environment = apartment().ports.environment;
    if (!environment) return {std::string(kTableFile)};
    if (std::optional<std::string> named = environment->variable(kTableVariable);
        named && !named->empty()) {
        return {*named, true};
    }
    return {fileSystem().BuildPath(environment->componentFolder(), kTableFile)};
}

// The table of this apartment, built at the first look-up.
struct TableSlot : ApartmentSlot {
    std::unique_ptr<PartNumberTable> table;
};

}  // namespace

std::string normalisePartNumber(std::string_view partNumber) {
    return lowerCase(trimBlanks(partNumber));
}

PartNumberTable PartNumberTable::parse(std::string_view text) {
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    PartNumberTable table;
    while (!text.empty()) {
        const size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        std::string row = normalisePartNumber(line);
        if (row.empty() || row.front() == '#') continue;
        const size_t hash = FoldedIndex::hashOf(row);
        if (table.find(row, hash) != FoldedIndex::kNoSlot) continue;
        table.index_.reserve(table.rows_.size() + 1);
        table.rows_.push_back(std::move(row));
        table.index_.insert(hash, table.rows_.size());
    }
    return table;
}

PartNumberTable PartNumberTable::load() {
    std::string file;
    try {
        const TableFile table = tableFile();
        file = table.path;
        // A component copied without its data files takes the table it was
        // built with; a file named by the variable must be there.
        if (!table.named && !fileSystem().FileExists(file)) {
            if (const auto builtin = builtinDataFile(kTableFile)) return parse(*builtin);
        }
        return parse(fileSystem().ReadAll(file));
    } catch (...) {
        const AutomationError error = currentError();
        gsubDebugPrint("[gfblnIsKnownPartNumber] No part number is known: the table \"" + file +
                       "\" can't be read (" + std::to_string(error.number) + "-" +
                       error.description + ")");
        return {};
    }
}

bool gfblnIsKnownPartNumber(std::string_view vstrPartNumber) {
    try {
        std::unique_ptr<PartNumberTable>& table = apartmentSlot<TableSlot>().table;
        if (!table) table = std::make_unique<PartNumberTable>(PartNumberTable::load());
        const std::string partNumber = normalisePartNumber(vstrPartNumber);
        return !partNumber.empty() && table->contains(partNumber);
    } catch (...) {
        return false;
    }
}

}  // namespace ostrel
