// wncServices: network adapters, the inventory text and the process helpers.
#include "com/services_object.h"

namespace ostrel::com {

HRESULT ServicesObject::NetworkCards(IDispatch**) {
    return E_NOTIMPL;
}
HRESULT ServicesObject::Adapters(IDispatch**) {
    return E_NOTIMPL;
}
HRESULT ServicesObject::InterfaceData(BSTR, IDispatch**) {
    return E_NOTIMPL;
}
HRESULT ServicesObject::WmiInfo(BSTR*) {
    return E_NOTIMPL;
}
HRESULT ServicesObject::IsProcessRunning(BSTR, VARIANT*, VARIANT_BOOL*) {
    return E_NOTIMPL;
}
HRESULT ServicesObject::RunProgram(BSTR, LONG, BSTR, VARIANT_BOOL*) {
    return E_NOTIMPL;
}

}  // namespace ostrel::com
