// The A forms of the path and directory calls: text crosses them in the
// ANSI code page, so characters outside it do not survive.
#include <windows.h>

#include <string>

#include "platform/adapters.h"
#include "platform/windows/ansi_win32.h"

namespace ostrel::platform {

namespace {

// The caller's buffer in the ANSI code page and back, NULs and all.
class AnsiBuffer {
  public:
    AnsiBuffer(std::string& buffer, uint32_t size) : buffer_(buffer), ansi_(toAnsi(buffer)) {
        if (ansi_.size() < size) ansi_.resize(size, '\0');
    }
    char* data() { return ansi_.data(); }
    // Copies back what the call wrote, when it wrote, and gives its length
    // in the caller's UTF-8: the call counts ANSI bytes.
    uint32_t result(uint32_t answer, uint32_t size) {
        if (answer == 0 || answer >= size) return answer;
        buffer_ = fromAnsi(ansi_);
        return static_cast<uint32_t>(fromAnsi(std::string_view(ansi_).substr(0, answer)).size());
    }

  private:
    std::string& buffer_;
    std::string ansi_;
};

class Win32Paths final : public PathPort {
  public:
    uint32_t getLongPathName(std::string_view path, std::string& buffer, uint32_t size) override {
        const std::string name = toAnsi(path);
        AnsiBuffer ansi(buffer, size);
        return ansi.result(GetLongPathNameA(name.c_str(), ansi.data(), size), size);
    }

    uint32_t getCurrentDirectory(uint32_t size, std::string& buffer) override {
        AnsiBuffer ansi(buffer, size);
        return ansi.result(GetCurrentDirectoryA(size, ansi.data()), size);
    }

    bool setCurrentDirectory(std::string_view path) override {
        const std::string name = toAnsi(path);
        return SetCurrentDirectoryA(name.c_str()) != FALSE;
    }
};

}  // namespace

PathPort& systemPaths() {
    static Win32Paths paths;
    return paths;
}

}  // namespace ostrel::platform
