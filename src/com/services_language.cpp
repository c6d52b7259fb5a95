// wncServices: the language's variant of a file.
#include "com/services_object.h"
#include "ui/localised_files.h"

namespace ostrel::com {

HRESULT ServicesObject::GetLocalisedFileName(BSTR BaseFile, BSTR* result) {
    return getText(result, [&] { return gfstrGetLocalisedFileName(fromBstr(BaseFile)); });
}

}  // namespace ostrel::com
