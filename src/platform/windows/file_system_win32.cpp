// Files through the wide Win32 calls; log lines go out in the ANSI code page.
#include <windows.h>

#include <string>

#include "platform/adapters.h"
#include "platform/own_file.h"
#include "platform/windows/ansi_win32.h"
#include "runtime/text.h"

namespace ostrel::platform {

namespace {

DWORD attributes(std::string_view path) {
    if (path.empty()) return INVALID_FILE_ATTRIBUTES;
    const std::u16string wide = toUtf16(path);
    return GetFileAttributesW(reinterpret_cast<const wchar_t*>(wide.c_str()));
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
        std::string line = toAnsi(utf8Text);
        line += "\r\n";
        return appendOwnFile(path, line);
    }

    std::optional<std::string> readTextFile(std::string_view path) override {
        return readOwnFile(path, kMaxDataFileBytes);
    }
};

}  // namespace

FileSystemPort& systemFileSystem() {
    static Win32FileSystem fileSystem;
    return fileSystem;
}

}  // namespace ostrel::platform
