// The process's path and directory calls in their ANSI form, with buffers
// the caller makes (runs of NUL) and sizes as the calls take them. Text is
// UTF-8 on this side; the adapter converts at the call.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ostrel::platform {

class PathPort {
  public:
    virtual ~PathPort() = default;
    // GetLongPathNameA: the length written into the buffer (without its
    // NUL, in UTF-8 bytes) when it fits in size; otherwise the size needed, NUL included,
    // and the buffer untouched; 0 for a path that does not exist. Where the
    // file system has no short names the long form is the path itself.
    virtual uint32_t getLongPathName(std::string_view path, std::string& buffer, uint32_t size) = 0;
    // GetCurrentDirectoryA, answering like getLongPathName.
    virtual uint32_t getCurrentDirectory(uint32_t size, std::string& buffer) = 0;
    // SetCurrentDirectoryA: false when refused.
    virtual bool setCurrentDirectory(std::string_view path) = 0;
};

}  // namespace ostrel::platform
