#include "com/names_object.h"

#include "com/snapshot_enumerator.h"

namespace ostrel::com {

const ClassIdentity kNamesIdentity{CLSID_wncNames, IID__wncNames, {}};

HRESULT NamesObject::get_Item(VARIANT Index, BSTR* item) {
    // A missing key raises 5, a missing position 9, as the list does.
    return getText(item, [&] { return names_.item(fromVariant(Index)); });
}

HRESULT NamesObject::get_Count(LONG* count) {
    return getValue(count, [&] { return static_cast<LONG>(names_.count()); });
}

HRESULT NamesObject::get_NewEnum(IUnknown** enumerator) {
    return getValue(enumerator, [&]() -> IUnknown* {
        auto snapshot = std::make_shared<std::vector<std::string>>();
        for (const auto& entry : names_) snapshot->push_back(entry.item);
        return new SnapshotEnumerator<std::string>(std::move(snapshot));
    });
}

_wncNames* handOutNames(KeyedList<std::string> names) {
    const Ref<NamesObject> list(new NamesObject(std::move(names)));
    return handOut<_wncNames>(list.get());
}

}  // namespace ostrel::com
