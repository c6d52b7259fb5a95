// The component's debugger stream as the tool sees it: passed on as before
// (--trace shows it), and kept line by line while a command watches, so the
// command can tell what the component reports to no caller.
#pragma once

#include <string>
#include <vector>

namespace ostrel::cli {

// Puts the watcher in front of this apartment's debugger stream.
void watchDebugStream();

// Keeps the lines written while it lives.
class DebugWatch {
  public:
    DebugWatch();
    ~DebugWatch();
    DebugWatch(const DebugWatch&) = delete;
    DebugWatch& operator=(const DebugWatch&) = delete;
    const std::vector<std::string>& lines() const;
};

}  // namespace ostrel::cli
