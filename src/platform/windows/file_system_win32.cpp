// Files through the wide Win32 calls; log lines go out in the ANSI code page.
#include <windows.h>

#include <memory>
#include <string>
#include <type_traits>

#include "platform/adapters.h"
#include "platform/windows/ansi_win32.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

struct HandleCloser {
    void operator()(HANDLE handle) const noexcept { CloseHandle(handle); }
};
using UniqueHandle = std::unique_ptr<std::remove_pointer_t<HANDLE>, HandleCloser>;

UniqueHandle openFile(std::string_view path, DWORD access, DWORD share, DWORD disposition) {
    const std::u16string wide = toUtf16(path);
    HANDLE handle = CreateFileW(reinterpret_cast<const wchar_t*>(wide.c_str()), access, share,
                                nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    return UniqueHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

DWORD attributes(std::string_view path) {
    if (path.empty()) return INVALID_FILE_ATTRIBUTES;
    const std::u16string wide = toUtf16(path);
    return GetFileAttributesW(reinterpret_cast<const wchar_t*>(wide.c_str()));
}

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

class Win32FileSystem final : public FileSystemPort {
  public:
    char separator() const override { return '\\'; }

    bool fileExists(std::string_view path) override {
        const DWORD found = attributes(path);
        return found != INVALID_FILE_ATTRIBUTES && !(found & FILE_ATTRIBUTE_DIRECTORY);
    }

    bool folderExists(std::string_view path) override {
        const DWORD found = attributes(path);
        return found != INVALID_FILE_ATTRIBUTES && (found & FILE_ATTRIBUTE_DIRECTORY);
    }

    std::optional<int64_t> fileSize(std::string_view path) override {
        const std::u16string wide = toUtf16(path);
        WIN32_FILE_ATTRIBUTE_DATA data{};
        if (path.empty() ||
            !GetFileAttributesExW(reinterpret_cast<const wchar_t*>(wide.c_str()),
                                  GetFileExInfoStandard, &data) ||
            (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) {
            return std::nullopt;
        }
        return static_cast<int64_t>((static_cast<uint64_t>(data.nFileSizeHigh) << 32) |
                                    data.nFileSizeLow);
    }

    bool deleteFile(std::string_view path, bool force) override {
        const DWORD found = attributes(path);
        if (found == INVALID_FILE_ATTRIBUTES || (found & FILE_ATTRIBUTE_DIRECTORY)) return false;
        const std::u16string wide = toUtf16(path);
        const auto* name = reinterpret_cast<const wchar_t*>(wide.c_str());
        if (found & FILE_ATTRIBUTE_READONLY) {
            if (!force) return false;
            SetFileAttributesW(name, found & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
        }
        return DeleteFileW(name) != 0;
    }

    bool appendLine(std::string_view path, std::string_view utf8Text) override {
        // Shared for reading only: a second writer finds the file open and loses its line.
        const UniqueHandle file = openFile(path, FILE_APPEND_DATA, FILE_SHARE_READ, OPEN_ALWAYS);
        if (!file) return false;
        std::string line = toAnsi(utf8Text);
        line += "\r\n";
        return writeAll(file.get(), line);
    }

    std::optional<std::string> readTextFile(std::string_view path) override {
        const UniqueHandle file = openFile(path, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
        if (!file) return std::nullopt;
        std::string content;
        char buffer[65536];
        for (;;) {
            DWORD read = 0;
            if (!ReadFile(file.get(), buffer, sizeof buffer, &read, nullptr)) return std::nullopt;
            if (read == 0) break;
            content.append(buffer, read);
        }
        return content;
    }
};

}  // namespace

FileSystemPort& systemFileSystem() {
    static Win32FileSystem fileSystem;
    return fileSystem;
}

}  // namespace ostrel::platform
