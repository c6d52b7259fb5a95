// The registration table against the type library built from Ostrel.idl:
// the MSI's rows are generated from the table, while regsvr32 registers the
// type library itself, so the two must describe the same library, the same
// automation interfaces and the same creatable classes.
#include <windows.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <tuple>

#include "com/interface_ids.h"
#include "com/registration_table.h"

namespace {

namespace table = ostrel::com::registration;

std::wstring text(const GUID& guid) {
    return table::guidText(ostrel::com::fromIid(guid));
}

std::wstring take(BSTR string) {
    std::wstring out = string ? string : L"";
    SysFreeString(string);
    return out;
}

std::wstring nameOf(ITypeInfo* info) {
    BSTR name = nullptr;
    info->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr);
    return take(name);
}

TEST(RegistrationTable, DescribesTheTypeLibrary) {
    ITypeLib* lib = nullptr;
    ASSERT_EQ(LoadTypeLibEx(L"" OSTREL_TYPE_LIBRARY, REGKIND_NONE, &lib), S_OK);
    const table::TypeLibrary& described = table::typeLibrary();

    TLIBATTR* attr = nullptr;
    ASSERT_EQ(lib->GetLibAttr(&attr), S_OK);
    EXPECT_EQ(text(attr->guid), table::guidText(described.libid));
    EXPECT_EQ(attr->wMajorVerNum, described.major);
    EXPECT_EQ(attr->wMinorVerNum, described.minor);
    EXPECT_EQ(attr->lcid, described.lcid);
    lib->ReleaseTLibAttr(attr);
    BSTR help = nullptr;
    lib->GetDocumentation(-1, nullptr, &help, nullptr, nullptr);
    EXPECT_EQ(take(help), described.name) << "the library's key holds its help string";

    // (identifier, name) of each automation interface, and (class, CLSID,
    // default interface) of each creatable class.
    std::set<std::tuple<std::wstring, std::wstring>> interfaces, describedInterfaces;
    std::set<std::tuple<std::wstring, std::wstring, std::wstring>> classes, describedClasses;
    for (UINT index = 0; index < lib->GetTypeInfoCount(); ++index) {
        ITypeInfo* info = nullptr;
        TYPEATTR* type = nullptr;
        ASSERT_EQ(lib->GetTypeInfo(index, &info), S_OK);
        ASSERT_EQ(info->GetTypeAttr(&type), S_OK);
        const bool automation = type->typekind == TKIND_DISPATCH ||
                                (type->typekind == TKIND_INTERFACE &&
                                 (type->wTypeFlags & (TYPEFLAG_FDUAL | TYPEFLAG_FOLEAUTOMATION)));
        if (automation) interfaces.insert({text(type->guid), nameOf(info)});
        if (type->typekind == TKIND_COCLASS && (type->wTypeFlags & TYPEFLAG_FCANCREATE)) {
            HREFTYPE ref = 0;
            ITypeInfo* face = nullptr;
            TYPEATTR* faceType = nullptr;
            ASSERT_EQ(info->GetRefTypeOfImplType(0, &ref), S_OK);
            ASSERT_EQ(info->GetRefTypeInfo(ref, &face), S_OK);
            ASSERT_EQ(face->GetTypeAttr(&faceType), S_OK);
            classes.insert({nameOf(info), text(type->guid), text(faceType->guid)});
            face->ReleaseTypeAttr(faceType);
            face->Release();
        }
        info->ReleaseTypeAttr(type);
        info->Release();
    }
    lib->Release();

    for (const table::Interface& face : described.interfaces)
        describedInterfaces.insert({table::guidText(face.iid), face.name});
    for (const table::Class& publicClass : table::classes())
        describedClasses.insert({publicClass.name, table::guidText(publicClass.clsid),
                                 table::guidText(publicClass.face.iid)});
    EXPECT_EQ(interfaces, describedInterfaces);
    EXPECT_EQ(classes, describedClasses);
}

}  // namespace
