#include "com/pc_info_object.h"

#include <string>

#include "com/interface_ids.h"

namespace ostrel::com {

const ClassIdentity kPCInfoIdentity{CLSID_wncPCInfo, IID__wncPCInfo, kOlderPCInfoIids};

HRESULT PCInfoObject::get_ClientSiteName(BSTR* value) {
    return getText(value, [&] { return ClientSiteName(); });
}
HRESULT PCInfoObject::get_ComputerName(BSTR* value) {
    return getText(value, [&] { return ComputerName(); });
}
HRESULT PCInfoObject::get_DomainName(BSTR* value) {
    return getText(value, [&] { return DomainName(); });
}
HRESULT PCInfoObject::get_DomainControllerAddress(BSTR* value) {
    return getText(value, [&] { return DomainControllerAddress(); });
}
HRESULT PCInfoObject::get_DomainControllerName(BSTR* value) {
    return getText(value, [&] { return DomainControllerName(); });
}
HRESULT PCInfoObject::get_ForestName(BSTR* value) {
    return getText(value, [&] { return ForestName(); });
}
HRESULT PCInfoObject::get_Groups(IDispatch** value) {
    return getValue(value, [&] { return handOut<IDispatch>(Groups().get()); });
}
HRESULT PCInfoObject::get_PrimaryDomainController(BSTR* value) {
    return getText(value, [&] { return PrimaryDomainController(); });
}
HRESULT PCInfoObject::get_SiteName(BSTR* value) {
    return getText(value, [&] { return SiteName(); });
}
HRESULT PCInfoObject::get_UserName(BSTR* value) {
    return getText(value, [&] { return UserName(); });
}

HRESULT PCInfoObject::IsMemberOfGroup(BSTR* strGroupName, VARIANT_BOOL* result) {
    if (!strGroupName) return pointerMissing();
    return getValue(result, [&] {
        std::string group = fromBstr(*strGroupName);
        return toVariantBool(wncPCInfo::IsMemberOfGroup(group));
    });
}

HRESULT PCInfoObject::DebugPrint() {
    return call([&] { wncPCInfo::DebugPrint(); });
}

HRESULT PCInfoObject::GetNetworkInfo(VARIANT_BOOL* result) {
    return getValue(result, [&] { return toVariantBool(wncPCInfo::GetNetworkInfo()); });
}

}  // namespace ostrel::com
