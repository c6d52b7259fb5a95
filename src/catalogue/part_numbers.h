// The family's table of known part numbers: "part-numbers.txt" beside the
// component (or the file named by OSTREL_PART_NUMBERS; without either, the
// table built in), one part number a line, blank lines and '#' comments
// ignored. Read once per apartment.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "runtime/folded_index.h"

namespace ostrel {

// Trimmed of blanks at both ends, then lower-cased.
std::string normalisePartNumber(std::string_view partNumber);

class PartNumberTable {
  public:
    // Rows of the table's text, normalised.
    static PartNumberTable parse(std::string_view text);
    // The table of this apartment's component; a file that can't be read
    // gives an empty table, and says so once in the log.
    static PartNumberTable load();

    // Takes a normalised part number.
    bool contains(std::string_view normalised) const {
        return find(normalised, FoldedIndex::hashOf(normalised)) != FoldedIndex::kNoSlot;
    }
    size_t size() const { return rows_.size(); }

  private:
    size_t find(std::string_view normalised, size_t hash) const {
        return index_.find(normalised, hash,
                           [this](size_t place) -> std::string_view { return rows_[place - 1]; });
    }

    std::vector<std::string> rows_;  // each once
    FoldedIndex index_;              // refers to a row by its place, from 1
};

// Normalises its argument; False for an empty one, and on any failure.
bool gfblnIsKnownPartNumber(std::string_view vstrPartNumber);

}  // namespace ostrel
