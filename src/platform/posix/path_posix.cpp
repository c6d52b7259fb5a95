// Paths on a file system without short names: the long form of an existing
// path is the path itself. UTF-8 is the ANSI code page here.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>

#include "platform/adapters.h"

namespace ostrel::platform {

namespace {

// Writes the text and its NUL into the caller's buffer when both fit, as
// the A calls do: the length written, or the size needed.
uint32_t answer(std::string_view text, std::string& buffer, uint32_t size) {
    const auto needed = static_cast<uint32_t>(text.size() + 1);
    if (needed > size || buffer.size() < needed) return needed;
    std::copy(text.begin(), text.end(), buffer.begin());
    buffer[text.size()] = '\0';
    return needed - 1;
}

class PosixPaths final : public PathPort {
  public:
    uint32_t getLongPathName(std::string_view path, std::string& buffer, uint32_t size) override {
        struct stat info {};
        const std::string name(path);
        if (name.empty() || ::stat(name.c_str(), &info) != 0) return 0;
        return answer(path, buffer, size);
    }

    uint32_t getCurrentDirectory(uint32_t size, std::string& buffer) override {
        std::string folder(256, '\0');
        while (!::getcwd(folder.data(), folder.size())) {
            if (errno != ERANGE) return 0;
            folder.resize(folder.size() * 2);
        }
        folder.resize(folder.find('\0'));
        return answer(folder, buffer, size);
    }

    bool setCurrentDirectory(std::string_view path) override {
        const std::string name(path);
        return ::chdir(name.c_str()) == 0;
    }
};

}  // namespace

PathPort& systemPaths() {
    static PosixPaths paths;
    return paths;
}

}  // namespace ostrel::platform
