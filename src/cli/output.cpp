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

}  // namespace ostrel::cli
