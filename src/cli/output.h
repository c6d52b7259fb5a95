// What the commands print: one record either as aligned "Key : value" lines
// or, for scripts, as one JSON object with the same keys in the same order.
#pragma once

#include <iosfwd>

#include <nlohmann/json.hpp>

namespace ostrel::cli {

using Record = nlohmann::ordered_json;

// Text form: keys padded to the longest, booleans as True/False, null as Nothing.
void printRecord(std::ostream& out, const Record& record, bool json);

}  // namespace ostrel::cli
