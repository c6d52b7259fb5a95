// The class objects behind DllGetClassObject, one per public class. Creating
// an object first makes sure this apartment has started (Main), with the
// automation factory in place, before the first constructor runs.
#pragma once

#include "com/ostrel_h.h"

namespace ostrel::com {

HRESULT getClassObject(REFCLSID clsid, REFIID riid, void** object) noexcept;

}  // namespace ostrel::com
