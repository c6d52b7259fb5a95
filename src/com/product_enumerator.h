// The enumerator NewEnum hands out: the records in list order as they were
// when it was made, with Next, Skip, Reset and Clone.
#pragma once

#include "com/ostrel_h.h"

#include <memory>
#include <vector>

#include "catalogue/software_product.h"
#include "runtime/object.h"

namespace ostrel::com {

class ProductEnumerator final : public IEnumVARIANT {
  public:
    using Snapshot = std::vector<Ref<wncSoftwareProduct>>;

    // Starts with one host reference.
    explicit ProductEnumerator(std::shared_ptr<const Snapshot> records, ULONG position = 0);
    ProductEnumerator(const ProductEnumerator&) = delete;
    ProductEnumerator& operator=(const ProductEnumerator&) = delete;
    virtual ~ProductEnumerator();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    HRESULT STDMETHODCALLTYPE Next(ULONG wanted, VARIANT* items, ULONG* fetched) override;
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override;
    HRESULT STDMETHODCALLTYPE Reset() override;
    HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** copy) override;

  private:
    ULONG refs_ = 1;
    std::shared_ptr<const Snapshot> records_;
    ULONG position_;
};

}  // namespace ostrel::com
