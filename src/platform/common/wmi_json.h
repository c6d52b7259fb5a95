// A saved inventory standing in for WMI (the tool's --wmi FILE): one JSON
// object whose members are classes, each an array of objects, each object
// the properties an inventory read. A class that is absent gives a null result
// set; a property that is absent fails at its read; null, numbers, strings and
// booleans are the values. Win32_LogonSession objects may carry "Accounts", an
// array of the account objects associated with the session; without it the
// session's associators query gives a null result set.
#pragma once

#include <istream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/common/wmi_records.h"

namespace ostrel::platform {

// A file that can't be read or isn't such an inventory; names the file and the line.
struct WmiJsonError : std::runtime_error {
    WmiJsonError(std::string file, int line, const std::string& message);
    std::string file;
    int line;  // 0 when the file could not be read at all
};

class WmiJsonProvider final : public WmiPort {
  public:
    // The largest file read: an inventory is a few kilobytes.
    static constexpr std::size_t kMaxBytes = 16u << 20;

    WmiJsonProvider();
    ~WmiJsonProvider() override;
    // Replaces what was loaded; throws WmiJsonError and keeps it when the file is bad.
    // Read as a stream, so pipes and /dev/stdin give their content.
    void loadFile(const std::string& path);
    void loadText(std::string_view text, const std::string& name);
    // The file stands for the machine: every moniker resolves to it.
    std::unique_ptr<WmiServices> connect(std::string_view moniker) override;

    struct Classes;  // what was loaded

  private:
    std::shared_ptr<const Classes> classes_;
};

}  // namespace ostrel::platform
