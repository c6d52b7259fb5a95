// wncServices: the About window, time conversion and the path helpers.
#include "com/services_object.h"

namespace ostrel::com {

HRESULT ServicesObject::ShowAbout(LONG) {
    return E_NOTIMPL;
}
HRESULT ServicesObject::ConvertToGMT(DATE, DATE*) {
    return E_NOTIMPL;
}
HRESULT ServicesObject::NowGMT(DATE*) {
    return E_NOTIMPL;
}
HRESULT ServicesObject::ConvertFromGMT(DATE, DATE*) {
    return E_NOTIMPL;
}
HRESULT ServicesObject::GetLongPathFilename(BSTR, BSTR*) {
    return E_NOTIMPL;
}
HRESULT ServicesObject::BrowseForFolder(LONG, BSTR, LONG, BSTR, BSTR*) {
    return E_NOTIMPL;
}
HRESULT ServicesObject::SetCurrentFolder(BSTR, BSTR*) {
    return E_NOTIMPL;
}
HRESULT ServicesObject::DeleteFile(BSTR, VARIANT_BOOL*) {
    return E_NOTIMPL;
}
HRESULT ServicesObject::GetLocalisedFileName(BSTR, BSTR*) {
    return E_NOTIMPL;
}

}  // namespace ostrel::com
