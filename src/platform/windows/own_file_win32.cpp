#include <windows.h>

#include <memory>
#include <type_traits>

#include "platform/own_file.h"
#include "platform/windows/own_file_win32.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

struct HandleCloser {
    void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};
using UniqueHandle = std::unique_ptr<std::remove_pointer_t<HANDLE>, HandleCloser>;

// The reparse point itself is opened, never what it points to; a folder opens
// too (backup semantics), and a pipe or a device without waiting: the checks
// below then refuse them.
UniqueHandle openOwn(std::string_view path, DWORD access, DWORD share, DWORD disposition) {
    if (path.empty()) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return nullptr;
    }
    const std::u16string wide = toUtf16(path);
    HANDLE handle = CreateFileW(
        reinterpret_cast<const wchar_t*>(wide.c_str()), access, share, nullptr, disposition,
        FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    return UniqueHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

// Why an opened file is not one of ours; nullptr when it is.
const char* whyNotPlain(HANDLE file, uint64_t& size) {
    if (GetFileType(file) != FILE_TYPE_DISK) return "is not a regular file";
    BY_HANDLE_FILE_INFORMATION info{};
    if (!GetFileInformationByHandle(file, &info)) return "can't be read";
    if (info.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) return "is a symbolic link";
    if (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) return "is a folder";
    if (info.nNumberOfLinks > 1) return "has several hard links";
    size = (static_cast<uint64_t>(info.nFileSizeHigh) << 32) | info.nFileSizeLow;
    return nullptr;
}

}  // namespace

std::optional<std::string> readOwnFile(std::string_view path, uint64_t maxBytes) {
    const std::string name(path);
    const UniqueHandle file = openOwn(path, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
    if (!file) {
        const DWORD error = GetLastError();
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return std::nullopt;
        throw OwnFileRefused(name, "can't be read (system error " + std::to_string(error) + ")");
    }
    uint64_t size = 0;
    if (const char* why = whyNotPlain(file.get(), size)) throw OwnFileRefused(name, why);
    const std::string tooLarge = "is larger than " + std::to_string(maxBytes) + " bytes";
    if (size > maxBytes) throw OwnFileRefused(name, tooLarge);
    std::string content;
    char buffer[65536];
    for (;;) {
        DWORD read = 0;
        if (!ReadFile(file.get(), buffer, sizeof buffer, &read, nullptr))
            throw OwnFileRefused(name, "can't be read");
        if (read == 0) break;
        // A file that grows while it is read is held to the cap too.
        if (content.size() + read > maxBytes) throw OwnFileRefused(name, tooLarge);
        content.append(buffer, read);
    }
    return content;
}

namespace {

bool writeAll(HANDLE file, std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD written = 0;
        if (!WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
            written == 0) {
            return false;
        }
        bytes.remove_prefix(written);
    }
    return true;
}

}  // namespace

bool appendOwnFile(std::string_view path, std::string_view bytes) {
    // Shared for reading only: a second writer finds the file open and loses its line.
    const UniqueHandle file = openOwn(path, FILE_APPEND_DATA, FILE_SHARE_READ, OPEN_ALWAYS);
    uint64_t size = 0;
    if (!file || whyNotPlain(file.get(), size)) return false;
    return writeAll(file.get(), bytes);
}

DWORD replaceOwnFile(std::string_view target, std::string_view content) {
    const UniqueHandle file =
        openOwn(target, GENERIC_WRITE | FILE_READ_ATTRIBUTES, FILE_SHARE_READ, OPEN_ALWAYS);
    if (!file) return GetLastError();
    uint64_t size = 0;
    if (whyNotPlain(file.get(), size)) return ERROR_ACCESS_DENIED;
    if (writeAll(file.get(), content) && SetEndOfFile(file.get())) return ERROR_SUCCESS;
    const DWORD error = GetLastError();
    return error ? error : ERROR_WRITE_FAULT;
}

}  // namespace ostrel::platform
