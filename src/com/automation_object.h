// The automation face of a core class: the class itself, with its dual
// interface, ISupportErrorInfo and IProvideClassInfo added. The count is the
// core object's own, so a reference held by the core (a collection's record,
// the apartment's machine facts) and one held by a host keep the same
// object; the identity a host sees is the core's identity.
#pragma once

#include "com/ostrel_h.h"

#include <span>
#include <string>
#include <utility>

#include "com/automation_types.h"
#include "com/com_error.h"
#include "com/dispatch.h"
#include "com/module.h"
#include "runtime/object.h"

namespace ostrel::com {

struct ClassIdentity {
    const CLSID& clsid;
    const IID& iid;              // the newest identifier, the one the type library knows
    std::span<const IID> older;  // answered with the same pointer
};

template <class Core, class Interface>
class AutomationObject : public Core,
                         public Interface,
                         public ISupportErrorInfo,
                         public IProvideClassInfo {
  public:
    explicit AutomationObject(const ClassIdentity& identity) : identity_(identity) {}

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        if (!object) return pointerMissing();
        *object = nullptr;
        if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IDispatch) || answers(riid)) {
            *object = static_cast<Interface*>(this);
        } else if (IsEqualIID(riid, IID_ISupportErrorInfo)) {
            *object = static_cast<ISupportErrorInfo*>(this);
        } else if (IsEqualIID(riid, IID_IProvideClassInfo)) {
            *object = static_cast<IProvideClassInfo*>(this);
        } else {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    // Host references hold the module; the core's own references don't,
    // so the apartment's shared objects never keep the DLL loaded.
    ULONG STDMETHODCALLTYPE AddRef() override {
        if (hostRefs_++ == 0) lockModule();
        return this->addRef();
    }
    ULONG STDMETHODCALLTYPE Release() override {
        if (hostRefs_ == 0) return this->refCount();  // a host releasing what it never held
        if (--hostRefs_ == 0) unlockModule();
        return this->release();
    }

    // IDispatch
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        if (!count) return pointerMissing();
        *count = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
        if (!info) return pointerMissing();
        *info = nullptr;
        if (index != 0) return DISP_E_BADINDEX;
        return typeInfoOf(identity_.iid, info);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) override {
        if (!IsEqualIID(riid, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
        return dispatchGetIDsOfNames(identity_.iid, names, count, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID riid, LCID, WORD flags,
                                     DISPPARAMS* params, VARIANT* result, EXCEPINFO* excepInfo,
                                     UINT* argErr) override {
        if (!IsEqualIID(riid, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
        return dispatchInvoke(identity_.iid, static_cast<Interface*>(this), member, flags, params,
                              result, excepInfo, argErr);
    }

    // ISupportErrorInfo
    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID riid) override {
        return answers(riid) ? S_OK : S_FALSE;
    }

    // IProvideClassInfo: what lets a host name the class (TypeName).
    HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo** info) override {
        return typeInfoOf(identity_.clsid, info);
    }

  protected:
    ~AutomationObject() override = default;

    // A method body: no exception leaves, an error becomes its HRESULT.
    template <class Body>
    HRESULT call(Body&& body) noexcept {
        return guarded(identity_.iid, std::forward<Body>(body));
    }

    // A property read into an out-parameter, which is set even on failure.
    template <class Get>
    HRESULT getText(BSTR* value, Get&& get) noexcept {
        if (!value) return pointerMissing();
        *value = nullptr;
        return call([&] { *value = toBstr(get()); });
    }
    template <class Out, class Get>
    HRESULT getValue(Out* value, Get&& get) noexcept {
        if (!value) return pointerMissing();
        *value = Out{};
        return call([&] { *value = get(); });
    }

  private:
    bool answers(REFIID riid) const {
        if (IsEqualIID(riid, identity_.iid)) return true;
        for (const IID& older : identity_.older) {
            if (IsEqualIID(riid, older)) return true;
        }
        return false;
    }

    const ClassIdentity& identity_;
    ULONG hostRefs_ = 0;  // apartment threaded: only the owning thread counts
};

// The interface of a core object that the automation factory made, AddRef'd
// for a host; null for null. Raises 51 for an object that has no automation
// face, which the factory of the DLL never makes.
template <class Interface>
Interface* handOut(Object* object) {
    if (!object) return nullptr;
    auto* face = dynamic_cast<Interface*>(object);
    if (!face) raise(51);
    face->AddRef();
    return face;
}

}  // namespace ostrel::com
