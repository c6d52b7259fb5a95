// The four entry points of Ostrel.dll; each forwards to its part of src/com.

#include "com/class_factory.h"
#include "com/module.h"
#include "com/registration.h"

STDAPI DllRegisterServer() {
    return ostrel::com::registerServer();
}

STDAPI DllUnregisterServer() {
    return ostrel::com::unregisterServer();
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID riid, LPVOID* object) {
    return ostrel::com::getClassObject(clsid, riid, object);
}

STDAPI DllCanUnloadNow() {
    return ostrel::com::moduleInUse() ? S_FALSE : S_OK;
}
