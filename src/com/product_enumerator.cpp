#include "com/product_enumerator.h"

#include <new>

#include "com/automation_object.h"
#include "com/com_error.h"
#include "com/module.h"

namespace ostrel::com {

ProductEnumerator::ProductEnumerator(std::shared_ptr<const Snapshot> records, ULONG position)
    : records_(std::move(records)), position_(position) {
    lockModule();
}

ProductEnumerator::~ProductEnumerator() {
    unlockModule();
}

HRESULT ProductEnumerator::QueryInterface(REFIID riid, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (!IsEqualIID(riid, IID_IUnknown) && !IsEqualIID(riid, IID_IEnumVARIANT)) {
        return E_NOINTERFACE;
    }
    *object = static_cast<IEnumVARIANT*>(this);
    AddRef();
    return S_OK;
}

ULONG ProductEnumerator::AddRef() {
    return ++refs_;
}

ULONG ProductEnumerator::Release() {
    const ULONG left = --refs_;
    if (left == 0) delete this;
    return left;
}

HRESULT ProductEnumerator::Next(ULONG wanted, VARIANT* items, ULONG* fetched) {
    if (fetched) *fetched = 0;
    if (wanted == 0) return S_OK;
    if (!items) return pointerMissing();
    // Several at once need somewhere to say how many came.
    if (wanted > 1 && !fetched) return E_INVALIDARG;
    ULONG count = 0;
    try {
        while (count < wanted && position_ < records_->size()) {
            // The pointer first: the slot names a dispatch pointer only once it holds one.
            IDispatch* record = handOut<IDispatch>((*records_)[position_].get());
            VariantInit(&items[count]);
            V_DISPATCH(&items[count]) = record;
            V_VT(&items[count]) = VT_DISPATCH;
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

HRESULT ProductEnumerator::Skip(ULONG count) {
    const ULONG left = static_cast<ULONG>(records_->size()) - position_;
    if (count > left) {
        position_ = static_cast<ULONG>(records_->size());
        return S_FALSE;
    }
    position_ += count;
    return S_OK;
}

HRESULT ProductEnumerator::Reset() {
    position_ = 0;
    return S_OK;
}

HRESULT ProductEnumerator::Clone(IEnumVARIANT** copy) {
    if (!copy) return pointerMissing();
    *copy = new (std::nothrow) ProductEnumerator(records_, position_);
    return *copy ? S_OK : E_OUTOFMEMORY;
}

}  // namespace ostrel::com
