// What regsvr32 writes and removes: for each class its CLSID key (in-process
// server, ThreadingModel=Apartment, ProgID, type library), the ProgID
// Ostrel.<class>, the type library with the Interface keys of its
// interfaces, and the Interface keys of every older identifier. A second
// registration over the first rewrites the same values. The ProgIDs are seen
// by both registry views, so they stay while the other bitness's build is
// registered.
#pragma once

#include "com/ostrel_h.h"

namespace ostrel::com {

// A registration that fails half-way is removed again, and fails.
HRESULT registerServer() noexcept;
// Removes every key registerServer writes; keys already gone are no error,
// any other failure is reported once everything else is removed.
HRESULT unregisterServer() noexcept;

}  // namespace ostrel::com
