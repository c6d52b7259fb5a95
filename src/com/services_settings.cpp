// wncServices: application settings and the named lock.
#include "com/services_object.h"
#include "foundation/named_mutex.h"
#include "foundation/settings.h"

namespace ostrel::com {

HRESULT ServicesObject::GetApplicationSetting(BSTR Application, BSTR Section, BSTR Key,
                                              BSTR Default, BSTR* result) {
    return getText(result, [&] {
        return gfstrGetApplicationSetting(fromBstr(Application), fromBstr(Section), fromBstr(Key),
                                          fromBstr(Default));
    });
}

HRESULT ServicesObject::SaveApplicationSetting(BSTR Application, BSTR Section, BSTR Key,
                                               BSTR Value) {
    return call([&] {
        gsubSaveApplicationSetting(fromBstr(Application), fromBstr(Section), fromBstr(Key),
                                   fromBstr(Value));
    });
}

HRESULT ServicesObject::GetMutex(BSTR Name, LONG TimeoutMs, LONG* result) {
    return getValue(result, [&] { return ostrel::GetMutex(fromBstr(Name), TimeoutMs); });
}

// The host's variable is 0 afterwards, as the routine leaves it.
HRESULT ServicesObject::ReleaseMutexHandle(LONG* Handle, VARIANT_BOOL* result) {
    if (!Handle) return pointerMissing();
    return getValue(result, [&] {
        int32_t handle = *Handle;
        const bool released = ostrel::ReleaseMutexHandle(handle);
        *Handle = handle;
        return toVariantBool(released);
    });
}

}  // namespace ostrel::com
