#include "product_record.h"

namespace ostrel::cli {

Record productRecord(const wncSoftwareProduct& product) {
    Record record;
    forEachProductField(product, [&](const char* key, const auto& value) { record[key] = value; });
    return record;
}

}  // namespace ostrel::cli
