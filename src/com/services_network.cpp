// wncServices: the network adapter inventory. The interface data reaches
// the host as the system's own Scripting.Dictionary, filled in order.
#include "com/names_object.h"
#include "com/services_object.h"
#include "machine/network.h"
#include "platform/windows/com_call_win32.h"

namespace ostrel::com {

namespace {

// A Scripting.Dictionary made by its ProgID, holding the entries in order;
// its keys compare case-sensitively, as a new dictionary's do.
IDispatch* toScriptingDictionary(const Dictionary& data) {
    CLSID clsid{};
    platform::checkHresult(CLSIDFromProgID(L"Scripting.Dictionary", &clsid));
    ComPtr<IDispatch> dictionary;
    platform::checkHresult(
        platform::createInstance(clsid, IID_IDispatch, reinterpret_cast<void**>(dictionary.put())));
    OLECHAR addName[] = L"Add";
    LPOLESTR names[] = {addName};
    DISPID add = 0;
    platform::checkHresult(
        dictionary->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &add));
    for (const auto& [key, item] : data) {
        // Arguments go in reverse: the item first, then the key.
        ScopedVariant arguments[2];
        toVariant(item, *arguments[0].get());
        toVariant(Variant(key), *arguments[1].get());
        VARIANT values[2] = {*arguments[0], *arguments[1]};
        DISPPARAMS params{values, nullptr, 2, 0};
        platform::checkHresult(dictionary->Invoke(add, IID_NULL, LOCALE_USER_DEFAULT,
                                                  DISPATCH_METHOD, &params, nullptr, nullptr,
                                                  nullptr));
    }
    return dictionary.copy();
}

}  // namespace

HRESULT ServicesObject::NetworkCards(_wncNames** result) {
    return getValue(result, [&] { return handOutNames(gfcolGetNetworkCards()); });
}

HRESULT ServicesObject::Adapters(_wncNames** result) {
    return getValue(result, [&] { return handOutNames(gfcolGetAdapters()); });
}

// Nothing when the routine gives null.
HRESULT ServicesObject::InterfaceData(BSTR Name, IDispatch** result) {
    return getValue(result, [&]() -> IDispatch* {
        const Ref<Dictionary> data = gfdicGetInterfaceData(fromBstr(Name));
        return data ? toScriptingDictionary(*data) : nullptr;
    });
}

}  // namespace ostrel::com
