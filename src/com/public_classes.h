// The four creatable classes and how the class factory makes one (what
// registration writes for each: registration_table.h).
#pragma once

#include "com/ostrel_h.h"

#include <array>

namespace ostrel::com {

struct PublicClass {
    const CLSID& clsid;
    const IID& iid;  // the default interface
    // A new object of the class through this apartment's factory, queried for riid.
    HRESULT (*create)(REFIID riid, void** object);
};

const std::array<PublicClass, 4>& publicClasses();

}  // namespace ostrel::com
