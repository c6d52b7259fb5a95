#include "com/class_factory.h"

#include "com/automation_factory.h"
#include "com/com_error.h"
#include "com/module.h"
#include "com/public_classes.h"
#include "component/startup.h"

namespace ostrel::com {

namespace {

class ClassFactory final : public IClassFactory {
  public:
    explicit ClassFactory(const PublicClass& publicClass) : class_(publicClass) {}
    ClassFactory(const ClassFactory&) = delete;
    ClassFactory& operator=(const ClassFactory&) = delete;
    virtual ~ClassFactory() = default;

    bool handles(REFCLSID clsid) const { return IsEqualCLSID(clsid, class_.clsid); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (!IsEqualIID(riid, IID_IUnknown) && !IsEqualIID(riid, IID_IClassFactory)) {
            return E_NOINTERFACE;
        }
        *object = static_cast<IClassFactory*>(this);
        AddRef();
        return S_OK;
    }
    // Static objects: a reference only holds the module.
    ULONG STDMETHODCALLTYPE AddRef() override {
        lockModule();
        return 2;
    }
    ULONG STDMETHODCALLTYPE Release() override {
        unlockModule();
        return 1;
    }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** object) override {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        try {
            pinModule();
            setCatalogueFactory(&automationFactory());
            setPCInfoFactory(&automationFactory());
            // Main reports its own failures and never raises; the object is
            // handed over whatever became of it.
            ensureStarted();
            return class_.create(riid, object);
        } catch (...) {
            return reportError(currentError(), class_.iid);
        }
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        if (lock) {
            lockModule();
        } else {
            unlockModule();
        }
        return S_OK;
    }

  private:
    const PublicClass& class_;
};

}  // namespace

HRESULT getClassObject(REFCLSID clsid, REFIID riid, void** object) noexcept {
    if (!object) return E_POINTER;
    *object = nullptr;
    static ClassFactory factories[] = {
        ClassFactory(publicClasses()[0]), ClassFactory(publicClasses()[1]),
        ClassFactory(publicClasses()[2]), ClassFactory(publicClasses()[3])};
    for (ClassFactory& factory : factories) {
        if (factory.handles(clsid)) return factory.QueryInterface(riid, object);
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

}  // namespace ostrel::com
