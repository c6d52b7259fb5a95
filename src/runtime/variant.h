// The automation run time's Variant: what WMI values, keyed-list indexes and
// process ids travel in.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "runtime/object.h"

namespace ostrel {

struct EmptyValue {
    friend bool operator==(EmptyValue, EmptyValue) { return true; }
};
struct NullValue {
    friend bool operator==(NullValue, NullValue) { return true; }
};
// A calendar value: whole part days since 30 Dec 1899, fraction the time of day.
struct DateValue {
    double value = 0.0;
    friend bool operator==(DateValue, DateValue) = default;
};

class Variant {
  public:
    using Storage = std::variant<EmptyValue, NullValue, bool, int16_t, int32_t, double, DateValue,
                                 std::string, Ref<Object>>;

    Variant() = default;
    Variant(EmptyValue) {}
    Variant(NullValue v) : value_(v) {}
    Variant(bool v) : value_(v) {}
    Variant(int16_t v) : value_(v) {}
    Variant(int32_t v) : value_(v) {}
    Variant(double v) : value_(v) {}
    Variant(DateValue v) : value_(v) {}
    Variant(std::string v) : value_(std::move(v)) {}
    Variant(const char* v) : value_(std::string(v)) {}
    Variant(std::string_view v) : value_(std::string(v)) {}
    Variant(Ref<Object> v) : value_(std::move(v)) {}

    bool isEmpty() const { return std::holds_alternative<EmptyValue>(value_); }
    bool isNull() const { return std::holds_alternative<NullValue>(value_); }
    bool isString() const { return std::holds_alternative<std::string>(value_); }
    bool isObject() const { return std::holds_alternative<Ref<Object>>(value_); }
    // Numeric kinds: bool, the integers, double and date, as the run time counts them.
    bool isNumber() const;

    const Storage& storage() const { return value_; }
    template <class T>
    const T* getIf() const {
        return std::get_if<T>(&value_);
    }

    friend bool operator==(const Variant& a, const Variant& b) = default;

  private:
    Storage value_;
};

}  // namespace ostrel
