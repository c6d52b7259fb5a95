// wncSoftwareProducts as hosts see it: the catalogue on _wncSoftwareProducts,
// with Item as default member and NewEnum for For Each.
#pragma once

#include "catalogue/software_products.h"
#include "com/automation_object.h"

namespace ostrel::com {

extern const ClassIdentity kSoftwareProductsIdentity;

class SoftwareProductsObject final
    : public AutomationObject<wncSoftwareProducts, _wncSoftwareProducts> {
  public:
    SoftwareProductsObject() : AutomationObject(kSoftwareProductsIdentity) {}

    HRESULT STDMETHODCALLTYPE get_Item(VARIANT* vntIndexKey, _wncSoftwareProduct** item) override;
    HRESULT STDMETHODCALLTYPE get_Count(LONG* count) override;
    HRESULT STDMETHODCALLTYPE get_NewEnum(IUnknown** enumerator) override;
    HRESULT STDMETHODCALLTYPE Add(BSTR* ProductName, BSTR* sKey,
                                  _wncSoftwareProduct** item) override;
    HRESULT STDMETHODCALLTYPE Remove(VARIANT* vntIndexKey) override;
    HRESULT STDMETHODCALLTYPE ReadAll() override;
    HRESULT STDMETHODCALLTYPE SaveAll() override;
};

}  // namespace ostrel::com
