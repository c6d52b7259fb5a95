// A registry read from files in the Windows export format (REGEDIT4 and
// "Windows Registry Editor Version 5.00", UTF-16LE with BOM or UTF-8).
// Several files layer in order, later ones winning; sub-keys enumerate in
// case-insensitive ascending order, as Windows reports them.
#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/registry_port.h"

namespace ostrel::platform {

// A file that can't be read or parsed; nothing of it is used.
struct RegFileError : std::runtime_error {
    RegFileError(std::string file, int line, const std::string& message);
    std::string file;
    int line;  // 0 when the file could not be read at all
};

struct RegFileTree;
class RegistryLayer;

class RegFileRegistry : public RegistryPort {
  public:
    RegFileRegistry();
    ~RegFileRegistry() override;

    // Layers one file over what is loaded; throws RegFileError and leaves the
    // registry as it was when the file is bad. The file is read as a stream,
    // so pipes, /dev/stdin and /proc files read their real content.
    void loadFile(const std::string& path);
    // The same for text in memory (built-in samples, tests); name is used in errors.
    void loadText(std::string_view text, const std::string& name);
    // Layers keys made in memory (registry_tree.h): kept when `make` returns,
    // undone when it throws.
    void loadKeys(const std::function<void(RegistryLayer&)>& make);

    std::unique_ptr<RegistryKey> open(int32_t hive, std::string_view path, int32_t access,
                                      int32_t& errorCode) override;

  private:
    void load(std::istream& in, const std::string& name);

    std::shared_ptr<RegFileTree> tree_;
};

}  // namespace ostrel::platform
