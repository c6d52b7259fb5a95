// wncServices: application settings and the named lock.
#include "com/services_object.h"

namespace ostrel::com {

HRESULT ServicesObject::GetApplicationSetting(BSTR, BSTR, BSTR, BSTR, BSTR*) {
    return E_NOTIMPL;
}
HRESULT ServicesObject::SaveApplicationSetting(BSTR, BSTR, BSTR, BSTR) {
    return E_NOTIMPL;
}
HRESULT ServicesObject::GetMutex(BSTR, LONG, LONG*) {
    return E_NOTIMPL;
}
HRESULT ServicesObject::ReleaseMutexHandle(LONG*, VARIANT_BOOL*) {
    return E_NOTIMPL;
}

}  // namespace ostrel::com
