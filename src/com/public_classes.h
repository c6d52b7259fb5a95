// The four creatable classes: what registration writes for each and how
// the class factory makes one.
#pragma once

#include "com/ostrel_h.h"

#include <array>
#include <span>

namespace ostrel::com {

struct PublicClass {
    const wchar_t* name;  // the class name; the ProgID is "Ostrel." and the name
    const wchar_t* interfaceName;
    const CLSID& clsid;
    const IID& iid;
    std::span<const IID> olderIids;
    // A new object of the class through this apartment's factory, queried for riid.
    HRESULT (*create)(REFIID riid, void** object);
};

const std::array<PublicClass, 4>& publicClasses();

}  // namespace ostrel::com
