// wncSoftwareProduct as hosts see it: one product record on
// _wncSoftwareProduct, answering its nine older identifiers too.
#pragma once

#include "catalogue/software_product.h"
#include "com/automation_object.h"

namespace ostrel::com {

extern const ClassIdentity kSoftwareProductIdentity;

class SoftwareProductObject final
    : public AutomationObject<wncSoftwareProduct, _wncSoftwareProduct> {
  public:
    SoftwareProductObject() : AutomationObject(kSoftwareProductIdentity) {}

    HRESULT STDMETHODCALLTYPE put_ApplicationPath(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_ApplicationPath(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_IconFile(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_IconFile(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_Label(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_Label(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_PartNumber(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_PartNumber(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_ProductName(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_ProductName(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_Revision(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_Revision(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_ToolTip(BSTR value) override;
    HRESULT STDMETHODCALLTYPE get_ToolTip(BSTR* value) override;
    HRESULT STDMETHODCALLTYPE put_VersionBugFix(short value) override;
    HRESULT STDMETHODCALLTYPE get_VersionBugFix(short* value) override;
    HRESULT STDMETHODCALLTYPE put_VersionMajor(short value) override;
    HRESULT STDMETHODCALLTYPE get_VersionMajor(short* value) override;
    HRESULT STDMETHODCALLTYPE put_VersionMinor(short value) override;
    HRESULT STDMETHODCALLTYPE get_VersionMinor(short* value) override;
    HRESULT STDMETHODCALLTYPE Load() override;
    HRESULT STDMETHODCALLTYPE get_BuildID(BSTR* value) override;
};

}  // namespace ostrel::com
