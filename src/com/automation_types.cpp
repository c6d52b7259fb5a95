#include "com/automation_types.h"

#include <cstdint>
#include <type_traits>

#include "runtime/automation_error.h"
#include "runtime/text.h"

namespace ostrel::com {

BSTR toBstr(std::string_view utf8) {
    const std::u16string wide = toUtf16(utf8);
    BSTR text = SysAllocStringLen(reinterpret_cast<const OLECHAR*>(wide.data()),
                                  static_cast<UINT>(wide.size()));
    if (!text) raise(kErrOutOfMemory);
    return text;
}

std::string fromBstr(const BSTR text) {
    if (!text) return {};
    return fromUtf16(
        std::u16string_view(reinterpret_cast<const char16_t*>(text), SysStringLen(text)));
}

Variant fromVariant(const VARIANT& value) {
    const VARIANT* v = &value;
    while (V_VT(v) == (VT_BYREF | VT_VARIANT) && V_VARIANTREF(v)) v = V_VARIANTREF(v);

    // Anything else passed by reference (a typed host variable) is read
    // through a plain copy.
    ScopedVariant plain;
    if ((V_VT(v) & VT_BYREF) != 0) {
        if (FAILED(VariantCopyInd(plain.get(), const_cast<VARIANT*>(v)))) return Variant();
        v = plain.get();
    }

    switch (V_VT(v)) {
        case VT_EMPTY:
            return Variant();
        case VT_NULL:
            return Variant(NullValue{});
        case VT_BOOL:
            return Variant(V_BOOL(v) != VARIANT_FALSE);
        case VT_I1:
            return Variant(static_cast<int16_t>(V_I1(v)));
        case VT_UI1:
            return Variant(static_cast<int16_t>(V_UI1(v)));
        case VT_I2:
            return Variant(static_cast<int16_t>(V_I2(v)));
        case VT_UI2:
            return Variant(static_cast<int32_t>(V_UI2(v)));
        case VT_I4:
            return Variant(static_cast<int32_t>(V_I4(v)));
        case VT_INT:
            return Variant(static_cast<int32_t>(V_INT(v)));
        case VT_R4:
            return Variant(static_cast<double>(V_R4(v)));
        case VT_R8:
            return Variant(V_R8(v));
        case VT_DATE:
            return Variant(DateValue{V_DATE(v)});
        case VT_BSTR:
            return Variant(fromBstr(V_BSTR(v)));
        default:
            break;
    }
    // Wider numbers (unsigned, 64-bit, currency, decimal) travel as doubles,
    // which the list rounds and range-checks like any other number.
    // The kind is looked at first: converting an object would run its
    // default member.
    const VARTYPE type = V_VT(v);
    if (type != VT_UI4 && type != VT_UINT && type != VT_I8 && type != VT_UI8 && type != VT_CY &&
        type != VT_DECIMAL) {
        return Variant();
    }
    ScopedVariant number;
    if (FAILED(VariantChangeType(number.get(), const_cast<VARIANT*>(v), 0, VT_R8))) {
        return Variant();
    }
    return Variant(V_R8(number.get()));
}

}  // namespace ostrel::com

namespace ostrel::com {

void toVariant(const Variant& value, VARIANT& out) {
    VARIANT made;
    VariantInit(&made);
    std::visit(
        [&](const auto& v) {
            using T = std::decay_t<decltype(v)>;
            if constexpr (std::is_same_v<T, NullValue>) {
                V_VT(&made) = VT_NULL;
            } else if constexpr (std::is_same_v<T, bool>) {
                V_VT(&made) = VT_BOOL;
                V_BOOL(&made) = toVariantBool(v);
            } else if constexpr (std::is_same_v<T, int16_t>) {
                V_VT(&made) = VT_I2;
                V_I2(&made) = v;
            } else if constexpr (std::is_same_v<T, int32_t>) {
                V_VT(&made) = VT_I4;
                V_I4(&made) = v;
            } else if constexpr (std::is_same_v<T, double>) {
                V_VT(&made) = VT_R8;
                V_R8(&made) = v;
            } else if constexpr (std::is_same_v<T, DateValue>) {
                V_VT(&made) = VT_DATE;
                V_DATE(&made) = v.value;
            } else if constexpr (std::is_same_v<T, std::string>) {
                V_BSTR(&made) = toBstr(v);
                V_VT(&made) = VT_BSTR;
            } else if constexpr (std::is_same_v<T, Ref<Object>>) {
                raise(kErrTypeMismatch);
            }
        },
        value.storage());
    VariantClear(&out);
    out = made;
}

}  // namespace ostrel::com
