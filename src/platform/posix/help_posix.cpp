#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>
#include <string>

#include "platform/adapters.h"
#include "runtime/automation_error.h"

extern char** environ;

namespace ostrel::platform {

namespace {

// No help viewers here: the desktop opens the file with what the user has
// chosen for its kind, and says so when it can't.
void openWithDesktop(std::string_view file) {
    std::string path(file);
    char program[] = "xdg-open";
    char* argv[] = {program, path.data(), nullptr};
    pid_t child = 0;
    const int failed = ::posix_spawnp(&child, program, nullptr, nullptr, argv, environ);
    if (failed == ENOENT) {
        raise(kErrFileNotFound, "There is no xdg-open to open the help file " + path);
    }
    if (failed != 0) raise(kErrPermissionDenied, "xdg-open could not be started for " + path);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        raise(kErrInvalidCall, "xdg-open could not open the help file " + path);
    }
}

class DesktopHelp final : public HelpPort {
  public:
    void htmlHelp(std::string_view file, int32_t, int32_t) override { openWithDesktop(file); }
    void winHelp(std::string_view file, int32_t) override { openWithDesktop(file); }
};

}  // namespace

HelpPort& systemHelp() {
    static DesktopHelp help;
    return help;
}

}  // namespace ostrel::platform
