// wncPCInfo as hosts see it: the machine facts on _wncPCInfo.
#pragma once

#include "com/automation_object.h"
#include "machine/pc_info.h"

namespace ostrel::com {

extern const ClassIdentity kPCInfoIdentity;

class PCInfoObject final : public AutomationObject<wncPCInfo, _wncPCInfo> {
  public:
    PCInfoObject() : AutomationObject(kPCInfoIdentity) {}

    HRESULT STDMETHODCALLTYPE get_ClientSiteName(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE get_ComputerName(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE get_DomainName(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE get_DomainControllerAddress(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE get_DomainControllerName(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE get_ForestName(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE get_Groups(IDispatch** value) override;
    HRESULT STDMETHODCALLTYPE get_PrimaryDomainController(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE get_SiteName(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE get_UserName(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE IsMemberOfGroup(BSTR* strGroupName, VARIANT_BOOL* result) override;
    HRESULT STDMETHODCALLTYPE DebugPrint() override;
    HRESULT STDMETHODCALLTYPE GetNetworkInfo(VARIANT_BOOL* result) override;
};

}  // namespace ostrel::com
