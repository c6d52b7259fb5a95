// wncServices: paths, the folder dialogue, the current folder, deleting a file.
#include "com/services_object.h"
#include "foundation/paths.h"

namespace ostrel::com {

HRESULT ServicesObject::GetLongPathFilename(BSTR PathFilename, BSTR* result) {
    return getText(result, [&] { return gfstrGetLongPathFilename(fromBstr(PathFilename)); });
}

HRESULT ServicesObject::BrowseForFolder(LONG OwnerHwnd, BSTR Title, LONG Options, BSTR Root,
                                        BSTR* result) {
    return getText(result, [&] {
        return gfstrBrowseForFolder(OwnerHwnd, fromBstr(Title), Options, fromBstr(Root));
    });
}

HRESULT ServicesObject::SetCurrentFolder(BSTR NewFolder, BSTR* result) {
    return getText(result, [&] { return gfstrSetCurrentFolder(fromBstr(NewFolder)); });
}

HRESULT ServicesObject::DeleteFile(BSTR PathFilename, VARIANT_BOOL* result) {
    return getValue(result, [&] { return toVariantBool(gfblnDeleteFile(fromBstr(PathFilename))); });
}

}  // namespace ostrel::com
