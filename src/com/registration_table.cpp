#include "com/registration_table.h"

#include <cwchar>

namespace ostrel::com::registration {

namespace {

// In the order the type library declares them.
constexpr std::array<Interface, 5> kInterfaces = {{
    {L"_wncSoftwareProduct",
     {0x5ADF2596, 0xD03A, 0x4EF5, {0x9D, 0x57, 0x84, 0x64, 0xF5, 0x1F, 0x0C, 0x4F}}},
    {L"_wncSoftwareProducts",
     {0xF730CAFB, 0x2787, 0x4495, {0xBB, 0x6B, 0x48, 0xEE, 0xB3, 0x7E, 0x55, 0x78}}},
    {L"_wncPCInfo", {0xF96FF7B4, 0x5178, 0x4FBE, {0xB0, 0xFB, 0x36, 0x61, 0xD8, 0xF2, 0x27, 0x1B}}},
    {L"_wncServices",
     {0x832A1432, 0x3B07, 0x43E3, {0xB0, 0x24, 0xC4, 0x23, 0x89, 0xCE, 0xCB, 0xD0}}},
    // The collection of names the services hand out; not creatable.
    {L"_wncNames", {0xF0BFFD2F, 0x8E59, 0x4842, {0xAF, 0x59, 0x4F, 0xED, 0xDC, 0x93, 0xB1, 0x26}}},
}};

constexpr std::array<Class, 4> kClasses = {{
    {L"wncSoftwareProducts",
     {0x9EF49E03, 0x09E0, 0x47D1, {0xB3, 0x6C, 0xD2, 0x09, 0xFB, 0xBB, 0xCC, 0x02}},
     kInterfaces[1],
     {}},
    {L"wncSoftwareProduct",
     {0xDD4285A3, 0xED52, 0x4D2D, {0x85, 0x50, 0x40, 0x3E, 0xBF, 0x73, 0x7B, 0x9F}},
     kInterfaces[0],
     kOlderSoftwareProductIids},
    {L"wncPCInfo",
     {0x3E2DB102, 0xCC0D, 0x49E3, {0x9A, 0xC8, 0x9B, 0xBC, 0x62, 0x65, 0xBC, 0xDA}},
     kInterfaces[2],
     kOlderPCInfoIids},
    {L"wncServices",
     {0x15A10C40, 0x191D, 0x4F35, {0xB4, 0x34, 0x7C, 0x97, 0x3B, 0x54, 0x57, 0x37}},
     kInterfaces[3],
     {}},
}};

constexpr TypeLibrary kTypeLibrary = {
    L"Ostrel", {0x3E2EAAB4, 0x65B9, 0x49E3, {0x91, 0x7A, 0xE1, 0xD5, 0x92, 0x33, 0x1B, 0xAB}},
    14,        15,
    0x409,     kInterfaces};

// The automation marshaller: every interface, older identifiers included,
// is marshalled through the type library.
constexpr const wchar_t* kAutomationProxyStub = L"{00020424-0000-0000-C000-000000000046}";

// Hexadecimal, as the type library keys spell versions and locales.
std::wstring hex(unsigned long number) {
    wchar_t text[16] = {};
    std::swprintf(text, 16, L"%lx", number);
    return text;
}

// The Interface key of an identifier, named after its interface, and its sub-keys.
void addInterface(std::vector<Key>& keys, const Guid& iid, const wchar_t* name, Writer writer) {
    const TypeLibrary& lib = kTypeLibrary;
    const std::wstring key = L"Interface\\" + guidText(iid);
    keys.push_back({key, {{L"", name}}, writer, true});
    keys.push_back({key + L"\\ProxyStubClsid", {{L"", kAutomationProxyStub}}, writer});
    keys.push_back({key + L"\\ProxyStubClsid32", {{L"", kAutomationProxyStub}}, writer});
    keys.push_back(
        {key + L"\\TypeLib",
         {{L"", guidText(lib.libid)}, {L"Version", hex(lib.major) + L"." + hex(lib.minor)}},
         writer});
}

}  // namespace

std::wstring guidText(const Guid& guid) {
    wchar_t text[40] = {};
    std::swprintf(text, 40, L"{%08lX-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                  static_cast<unsigned long>(guid.data1), guid.data2, guid.data3, guid.data4[0],
                  guid.data4[1], guid.data4[2], guid.data4[3], guid.data4[4], guid.data4[5],
                  guid.data4[6], guid.data4[7]);
    return text;
}

std::span<const Class> classes() {
    return kClasses;
}

const TypeLibrary& typeLibrary() {
    return kTypeLibrary;
}

std::vector<Key> keys(std::wstring_view serverPath, std::wstring_view serverFolder,
                      Bitness bitness) {
    const TypeLibrary& lib = kTypeLibrary;
    const std::wstring libId = guidText(lib.libid);
    const std::wstring path(serverPath);
    std::vector<Key> keys;

    // What the type library's registration writes.
    for (const Interface& face : lib.interfaces) {
        addInterface(keys, face.iid, face.name, Writer::typeLibrary);
    }
    const std::wstring library = L"TypeLib\\" + libId;
    const std::wstring version = library + L"\\" + hex(lib.major) + L"." + hex(lib.minor);
    const std::wstring locale = version + L"\\" + hex(lib.lcid);
    keys.push_back({library, {}, Writer::typeLibrary});
    keys.push_back({version, {{L"", lib.name}}, Writer::typeLibrary});
    keys.push_back({locale, {}, Writer::typeLibrary});
    keys.push_back({locale + (bitness == Bitness::x64 ? L"\\win64" : L"\\win32"),
                    {{L"", path}},
                    Writer::typeLibrary});
    // The library's flags as registered: it has a disk image.
    keys.push_back({version + L"\\FLAGS", {{L"", L"8"}}, Writer::typeLibrary});
    // Kept by the system from the first registration of this version.
    keys.push_back(
        {version + L"\\HELPDIR", {{L"", std::wstring(serverFolder)}}, Writer::typeLibrary});

    // The server's own.
    for (const Class& publicClass : kClasses) {
        const std::wstring progId = std::wstring(L"Ostrel.") + publicClass.name;
        const std::wstring clsid = guidText(publicClass.clsid);
        const std::wstring clsidKey = L"CLSID\\" + clsid;
        keys.push_back({progId, {{L"", progId}}, Writer::serverShared, true});
        keys.push_back({progId + L"\\Clsid", {{L"", clsid}}, Writer::serverShared});
        keys.push_back({clsidKey, {{L"", progId}}, Writer::server, true});
        keys.push_back({clsidKey + L"\\InprocServer32",
                        {{L"", path}, {L"ThreadingModel", L"Apartment"}},
                        Writer::server});
        keys.push_back({clsidKey + L"\\ProgID", {{L"", progId}}, Writer::server});
        keys.push_back({clsidKey + L"\\VERSION",
                        {{L"", std::to_wstring(lib.major) + L"." + std::to_wstring(lib.minor)}},
                        Writer::server});
        keys.push_back({clsidKey + L"\\TypeLib", {{L"", libId}}, Writer::server});
        keys.push_back({clsidKey + L"\\Programmable", {}, Writer::server});
        for (const Guid& older : publicClass.olderIids) {
            addInterface(keys, older, publicClass.face.name, Writer::server);
            keys.push_back({L"Interface\\" + guidText(older) + L"\\Forward",
                            {{L"", guidText(publicClass.face.iid)}},
                            Writer::server});
        }
    }
    return keys;
}

}  // namespace ostrel::com::registration
