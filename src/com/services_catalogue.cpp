// wncServices: the two Toolbar look-ups that only the tool could reach before.
#include "catalogue/toolbar.h"
#include "com/services_object.h"

namespace ostrel::com {

const ClassIdentity kServicesIdentity{CLSID_wncServices, IID__wncServices, {}};

HRESULT ServicesObject::ToolbarKey(BSTR PartNumber, BSTR* result) {
    return getText(result, [&] { return ostrel::ToolbarKey(fromBstr(PartNumber)); });
}

HRESULT ServicesObject::InstallDir(BSTR* result) {
    return getText(result, [&] { return gfstrGetInstallDir(); });
}

}  // namespace ostrel::com
