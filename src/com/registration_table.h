// What registering Ostrel.dll writes under HKEY_CLASSES_ROOT, as plain data:
// DllRegisterServer writes its own keys from it, the MSI's registry rows are
// generated from it on the build machine (packaging/wxs.cpp), and a test
// checks its type-library part against the type library itself. Standard
// C++ only, no system header: it builds for Windows and natively alike.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel::com::registration {

// Laid out as the system's GUID.
struct Guid {
    std::uint32_t data1;
    std::uint16_t data2;
    std::uint16_t data3;
    std::array<std::uint8_t, 8> data4;
};

// "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}", upper case, as the registry holds it.
std::wstring guidText(const Guid& guid);

// _wncPCInfo before its last change.
inline constexpr std::array<Guid, 1> kOlderPCInfoIids = {{
    {0xAFBB1CFD, 0x5CFA, 0x46EE, {0xA3, 0x9F, 0x09, 0xFF, 0x2B, 0xCF, 0x52, 0xCC}},
}};

// _wncSoftwareProduct, oldest first.
inline constexpr std::array<Guid, 9> kOlderSoftwareProductIids = {{
    {0x20CFA9FE, 0x4058, 0x4CD2, {0x8D, 0xB5, 0xB7, 0xDD, 0xA5, 0xA7, 0xD3, 0x90}},
    {0xC4753E71, 0x68D2, 0x48D0, {0x83, 0xB9, 0x30, 0x9F, 0x72, 0xC1, 0x6B, 0x80}},
    {0x7D7F0E86, 0xA961, 0x4295, {0x95, 0x86, 0xF0, 0x14, 0xAB, 0x18, 0x72, 0x5F}},
    {0xADD4F1AA, 0x38B7, 0x424F, {0xAD, 0x04, 0x4B, 0xE8, 0xAD, 0x87, 0x16, 0x01}},
    {0x77D4A628, 0x7265, 0x410B, {0x9E, 0x09, 0xEC, 0x47, 0x9A, 0xAC, 0x46, 0x2B}},
    {0x72002B29, 0xEC56, 0x11D6, {0x86, 0x0A, 0x00, 0x50, 0x8B, 0x62, 0x79, 0x27}},
    {0x1C53F141, 0x137B, 0x4BF3, {0xA4, 0x41, 0xFA, 0xDA, 0x90, 0x11, 0xE2, 0xB0}},
    {0x432279C8, 0xF5DC, 0x4905, {0xB4, 0x5D, 0xAE, 0xF9, 0xF6, 0x35, 0x51, 0x8D}},
    {0xF06D94C2, 0xD8E6, 0x4F9B, {0x92, 0x90, 0x60, 0x8F, 0xCE, 0x04, 0xD3, 0xB2}},
}};

// An automation interface of the type library.
struct Interface {
    const wchar_t* name;
    Guid iid;
};

// A creatable class; its ProgID is "Ostrel." and its name.
struct Class {
    const wchar_t* name;
    Guid clsid;
    Interface face;  // the default interface
    std::span<const Guid> olderIids;
};

struct TypeLibrary {
    const wchar_t* name;  // the help string, as the library's key shows it
    Guid libid;
    std::uint16_t major, minor;
    std::uint32_t lcid;
    // Every automation interface the library describes: its registration
    // writes an Interface key for each.
    std::span<const Interface> interfaces;
};

std::span<const Class> classes();
const TypeLibrary& typeLibrary();

enum class Bitness { x64, x86 };

// Who writes a key, and so in which registry view it lands.
enum class Writer {
    server,        // DllRegisterServer, in the view of its own bitness
    serverShared,  // DllRegisterServer, in the part both views see (the ProgIDs)
    typeLibrary,   // the system's RegisterTypeLib, in both views
};

struct Value {
    std::wstring name;  // empty: the default value
    std::wstring data;
};

struct Key {
    std::wstring path;          // under HKEY_CLASSES_ROOT
    std::vector<Value> values;  // none: the key alone
    Writer writer;
    // The whole tree is the component's: unregistration deletes it.
    bool tree = false;
};

// Every key registering the server at serverPath (in folder serverFolder)
// writes, parents before their sub-keys, values in the order written.
std::vector<Key> keys(std::wstring_view serverPath, std::wstring_view serverFolder,
                      Bitness bitness);

}  // namespace ostrel::com::registration
