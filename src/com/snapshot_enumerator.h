// The enumerator NewEnum hands out: the items of a list in order as they
// were when it was made, with Next, Skip, Reset and Clone. One template for
// every list a host walks with For Each (records, names).
#pragma once

#include "com/ostrel_h.h"

#include <memory>
#include <new>
#include <string>
#include <vector>

#include "catalogue/software_product.h"
#include "com/com_error.h"
#include "com/module.h"
#include "runtime/object.h"

namespace ostrel::com {

// One item into an empty VARIANT (a record as its dispatch pointer, a name as
// a BSTR); raises when it can't.
void putItem(const Ref<wncSoftwareProduct>& record, VARIANT& slot);
void putItem(const std::string& name, VARIANT& slot);

template <class Item>
class SnapshotEnumerator final : public IEnumVARIANT {
  public:
    using Snapshot = std::vector<Item>;

    // Starts with one host reference.
    explicit SnapshotEnumerator(std::shared_ptr<const Snapshot> items, ULONG position = 0)
        : items_(std::move(items)), position_(position) {
        lockModule();
    }
    SnapshotEnumerator(const SnapshotEnumerator&) = delete;
    SnapshotEnumerator& operator=(const SnapshotEnumerator&) = delete;
    virtual ~SnapshotEnumerator() { unlockModule(); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (!IsEqualIID(riid, IID_IUnknown) && !IsEqualIID(riid, IID_IEnumVARIANT)) {
            return E_NOINTERFACE;
        }
        *object = static_cast<IEnumVARIANT*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++refs_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --refs_;
        if (left == 0) delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE Next(ULONG wanted, VARIANT* items, ULONG* fetched) override {
        if (fetched) *fetched = 0;
        if (wanted == 0) return S_OK;
        if (!items) return pointerMissing();
        // Several at once need somewhere to say how many came.
        if (wanted > 1 && !fetched) return E_INVALIDARG;
        ULONG count = 0;
        try {
            while (count < wanted && position_ < items_->size()) {
                VariantInit(&items[count]);
                putItem((*items_)[position_], items[count]);
                ++position_;
                ++count;
            }
        } catch (...) {
            for (ULONG i = 0; i < count; ++i) VariantClear(&items[i]);
            return E_UNEXPECTED;
        }
        if (fetched) *fetched = count;
        return count == wanted ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
        const ULONG left = static_cast<ULONG>(items_->size()) - position_;
        if (count > left) {
            position_ = static_cast<ULONG>(items_->size());
            return S_FALSE;
        }
        position_ += count;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Reset() override {
        position_ = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** copy) override {
        if (!copy) return pointerMissing();
        *copy = new (std::nothrow) SnapshotEnumerator(items_, position_);
        return *copy ? S_OK : E_OUTOFMEMORY;
    }

  private:
    ULONG refs_ = 1;
    std::shared_ptr<const Snapshot> items_;
    ULONG position_;
};

using ProductEnumerator = SnapshotEnumerator<Ref<wncSoftwareProduct>>;

}  // namespace ostrel::com
