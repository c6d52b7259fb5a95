// wncServices: the process helpers and the WMI inventory.
#include "com/services_object.h"
#include "machine/processes.h"
#include "machine/wmi_info.h"

namespace ostrel::com {

// The host's variable gets the integer 0 first, then the id, as the routine sets it.
HRESULT ServicesObject::IsProcessRunning(BSTR Name, VARIANT* ProcessId, VARIANT_BOOL* result) {
    if (!ProcessId) return pointerMissing();
    return getValue(result, [&] {
        Variant processId;
        const bool running = mblnIsProcessRunning(fromBstr(Name), processId);
        VARIANT* target = ProcessId;
        while (V_VT(target) == (VT_BYREF | VT_VARIANT) && V_VARIANTREF(target)) {
            target = V_VARIANTREF(target);
        }
        toVariant(processId, *target);
        return toVariantBool(running);
    });
}

HRESULT ServicesObject::RunProgram(BSTR CommandLine, LONG Unused, BSTR ReadyFile,
                                   VARIANT_BOOL* result) {
    return getValue(result, [&] {
        return toVariantBool(
            mfblnRunProgram(fromBstr(CommandLine), Unused, readinessFromFile(fromBstr(ReadyFile))));
    });
}

HRESULT ServicesObject::WmiInfo(BSTR* result) {
    return getText(result, [] { return ostrel::WmiInfo(); });
}

}  // namespace ostrel::com
