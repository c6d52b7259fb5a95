#include "runtime/variant.h"

namespace ostrel {

bool Variant::isNumber() const {
    return std::holds_alternative<bool>(value_) || std::holds_alternative<int16_t>(value_) ||
           std::holds_alternative<int32_t>(value_) || std::holds_alternative<double>(value_) ||
           std::holds_alternative<DateValue>(value_);
}

}  // namespace ostrel
