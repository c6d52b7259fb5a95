// wncServices: the About window.
#include "com/services_object.h"
#include "ui/about_window.h"

namespace ostrel::com {

HRESULT ServicesObject::ShowAbout(LONG OwnerHwnd) {
    // A window handle is 32 bits wide in both builds; sign-extended as the system does.
    return call([&] { gsubShowAbout(static_cast<int64_t>(OwnerHwnd)); });
}

}  // namespace ostrel::com
