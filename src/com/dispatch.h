// IDispatch through the type library: names and types come from the
// component's own type library (loaded once, a cached type info per
// interface), and Invoke is forgiving with arguments the way VB-style hosts
// expect: a host variable passed by reference (VT_BYREF|VT_VARIANT) is
// accepted for a typed parameter, plain values are accepted for by-reference
// parameters, and an optional parameter left out gets its empty value.
#pragma once

#include "com/ostrel_h.h"

namespace ostrel::com {

// The component's type library (AddRef'd), loaded from the DLL's resource.
HRESULT componentTypeLib(ITypeLib** lib) noexcept;
// The type info of an interface or class of the type library (AddRef'd).
HRESULT typeInfoOf(REFGUID guid, ITypeInfo** info) noexcept;

HRESULT dispatchGetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, DISPID* ids) noexcept;
HRESULT dispatchInvoke(REFIID iid, void* instance, DISPID member, WORD flags, DISPPARAMS* params,
                       VARIANT* result, EXCEPINFO* excepInfo, UINT* argErr) noexcept;

}  // namespace ostrel::com
