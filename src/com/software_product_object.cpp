#include "com/software_product_object.h"

#include "com/interface_ids.h"

namespace ostrel::com {

const ClassIdentity kSoftwareProductIdentity{CLSID_wncSoftwareProduct, IID__wncSoftwareProduct,
                                             kOlderSoftwareProductIids};

HRESULT SoftwareProductObject::put_ApplicationPath(BSTR value) {
    return call([&] { ApplicationPath(fromBstr(value)); });
}
HRESULT SoftwareProductObject::get_ApplicationPath(BSTR* value) {
    return getText(value, [&] { return ApplicationPath(); });
}
HRESULT SoftwareProductObject::put_IconFile(BSTR value) {
    return call([&] { IconFile(fromBstr(value)); });
}
HRESULT SoftwareProductObject::get_IconFile(BSTR* value) {
    return getText(value, [&] { return IconFile(); });
}
HRESULT SoftwareProductObject::put_Label(BSTR value) {
    return call([&] { Label(fromBstr(value)); });
}
HRESULT SoftwareProductObject::get_Label(BSTR* value) {
    return getText(value, [&] { return Label(); });
}
HRESULT SoftwareProductObject::put_PartNumber(BSTR value) {
    return call([&] { PartNumber(fromBstr(value)); });
}
HRESULT SoftwareProductObject::get_PartNumber(BSTR* value) {
    return getText(value, [&] { return PartNumber(); });
}
HRESULT SoftwareProductObject::put_ProductName(BSTR value) {
    return call([&] { ProductName(fromBstr(value)); });
}
HRESULT SoftwareProductObject::get_ProductName(BSTR* value) {
    return getText(value, [&] { return ProductName(); });
}
HRESULT SoftwareProductObject::put_Revision(BSTR value) {
    return call([&] { Revision(fromBstr(value)); });
}
HRESULT SoftwareProductObject::get_Revision(BSTR* value) {
    return getText(value, [&] { return Revision(); });
}
HRESULT SoftwareProductObject::put_ToolTip(BSTR value) {
    return call([&] { ToolTip(fromBstr(value)); });
}
HRESULT SoftwareProductObject::get_ToolTip(BSTR* value) {
    return getText(value, [&] { return ToolTip(); });
}
HRESULT SoftwareProductObject::put_VersionBugFix(short value) {
    return call([&] { VersionBugFix(value); });
}
HRESULT SoftwareProductObject::get_VersionBugFix(short* value) {
    return getValue(value, [&] { return VersionBugFix(); });
}
HRESULT SoftwareProductObject::put_VersionMajor(short value) {
    return call([&] { VersionMajor(value); });
}
HRESULT SoftwareProductObject::get_VersionMajor(short* value) {
    return getValue(value, [&] { return VersionMajor(); });
}
HRESULT SoftwareProductObject::put_VersionMinor(short value) {
    return call([&] { VersionMinor(value); });
}
HRESULT SoftwareProductObject::get_VersionMinor(short* value) {
    return getValue(value, [&] { return VersionMinor(); });
}
HRESULT SoftwareProductObject::Load() {
    return call([&] { wncSoftwareProduct::Load(); });
}
HRESULT SoftwareProductObject::get_BuildID(BSTR* value) {
    return getText(value, [&] { return BuildID(); });
}

}  // namespace ostrel::com
