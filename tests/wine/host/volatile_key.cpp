// Creates a volatile key under HKEY_CLASSES_ROOT, in the view of its own
// bitness: no lasting key can be created under it, so a registration that
// needs one fails half-way there. Usage: volatile_key KEY. Exit code 0 on
// success.
#include <windows.h>

#include <cstdio>

int wmain(int argc, wchar_t** argv) {
    if (argc != 2) return 2;
    HKEY key = nullptr;
    const LSTATUS status =
        RegCreateKeyExW(HKEY_CLASSES_ROOT, argv[1], 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS,
                        nullptr, &key, nullptr);
    if (status != ERROR_SUCCESS) {
        std::fprintf(stderr, "volatile_key: error %ld\n", static_cast<long>(status));
        return 1;
    }
    RegCloseKey(key);
    return 0;
}
