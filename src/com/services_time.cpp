// wncServices: the conversions between local time and GMT.
#include "com/services_object.h"
#include "foundation/time_conversion.h"

namespace ostrel::com {

HRESULT ServicesObject::ConvertToGMT(DATE LocalDate, DATE* result) {
    return getValue(result, [&] { return gfdatConvertToGMT(LocalDate); });
}

HRESULT ServicesObject::NowGMT(DATE* result) {
    return getValue(result, [&] { return gfdatNowGMT(); });
}

HRESULT ServicesObject::ConvertFromGMT(DATE GMTDate, DATE* result) {
    return getValue(result, [&] { return gfdatConvertFromGMT(GMTDate); });
}

}  // namespace ostrel::com
