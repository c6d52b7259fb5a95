#include "com/software_products_object.h"

#include <memory>
#include <optional>
#include <string>

#include "com/snapshot_enumerator.h"

namespace ostrel::com {

const ClassIdentity kSoftwareProductsIdentity{
    CLSID_wncSoftwareProducts, IID__wncSoftwareProducts, {}};

HRESULT SoftwareProductsObject::get_Item(VARIANT* vntIndexKey, _wncSoftwareProduct** item) {
    if (!vntIndexKey) return pointerMissing();
    return getValue(
        item, [&] { return handOut<_wncSoftwareProduct>(Item(fromVariant(*vntIndexKey)).get()); });
}

HRESULT SoftwareProductsObject::get_Count(LONG* count) {
    return getValue(count, [&] { return static_cast<LONG>(Count()); });
}

HRESULT SoftwareProductsObject::get_NewEnum(IUnknown** enumerator) {
    return getValue(enumerator, [&]() -> IUnknown* {
        auto snapshot = std::make_shared<const ProductEnumerator::Snapshot>(items());
        return new ProductEnumerator(std::move(snapshot));
    });
}

HRESULT SoftwareProductsObject::Add(BSTR* ProductName, BSTR* sKey, _wncSoftwareProduct** item) {
    if (!ProductName) return pointerMissing();
    return getValue(item, [&] {
        // A null pointer is how an early-bound host leaves the key out.
        std::optional<std::string> key;
        if (sKey) key = fromBstr(*sKey);
        return handOut<_wncSoftwareProduct>(
            wncSoftwareProducts::Add(fromBstr(*ProductName), std::move(key)).get());
    });
}

HRESULT SoftwareProductsObject::Remove(VARIANT* vntIndexKey) {
    if (!vntIndexKey) return pointerMissing();
    return call([&] { wncSoftwareProducts::Remove(fromVariant(*vntIndexKey)); });
}

HRESULT SoftwareProductsObject::ReadAll() {
    return call([&] { wncSoftwareProducts::ReadAll(); });
}

HRESULT SoftwareProductsObject::SaveAll() {
    return call([&] { wncSoftwareProducts::SaveAll(); });
}

}  // namespace ostrel::com
