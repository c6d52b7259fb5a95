// What regsvr32 writes and removes: for each class its CLSID key (in-process
// server, ThreadingModel=Apartment, ProgID, type library), the ProgID
// Ostrel.<class>, the type library with the Interface keys of its
// interfaces, and the Interface keys of every older identifier. A second
// registration over the first rewrites the same values.
#pragma once

#include "com/ostrel_h.h"

namespace ostrel::com {

HRESULT registerServer() noexcept;
// Removes every key registerServer writes; keys already gone are no error.
HRESULT unregisterServer() noexcept;

}  // namespace ostrel::com
