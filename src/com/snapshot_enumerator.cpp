#include "com/snapshot_enumerator.h"

#include "com/automation_object.h"
#include "com/automation_types.h"

namespace ostrel::com {

void putItem(const Ref<wncSoftwareProduct>& record, VARIANT& slot) {
    // The pointer first: the slot names a dispatch pointer only once it holds one.
    V_DISPATCH(&slot) = handOut<IDispatch>(record.get());
    V_VT(&slot) = VT_DISPATCH;
}

void putItem(const std::string& name, VARIANT& slot) {
    V_BSTR(&slot) = toBstr(name);
    V_VT(&slot) = VT_BSTR;
}

}  // namespace ostrel::com
