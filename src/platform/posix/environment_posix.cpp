#include <dlfcn.h>
#include <limits.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "platform/adapters.h"

namespace ostrel::platform {

namespace {

// The file this code was loaded from: the shared object, or the program itself.
std::string moduleFile() {
    Dl_info info{};
    if (::dladdr(reinterpret_cast<void*>(&moduleFile), &info) != 0 && info.dli_fname &&
        info.dli_fname[0] == '/') {
        return info.dli_fname;
    }
    // The main program is named as it was started, maybe relative to a
    // directory we have since left.
    char buffer[PATH_MAX];
    const ssize_t n = ::readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    return n > 0 ? std::string(buffer, static_cast<size_t>(n)) : std::string();
}

class PosixEnvironment final : public EnvironmentPort {
  public:
    std::optional<std::string> variable(std::string_view name) override {
        const char* value = std::getenv(std::string(name).c_str());
        if (!value) return std::nullopt;
        return std::string(value);
    }

    // The component's file can't move while the process lives: resolved once.
    std::string componentFolder() override {
        static const std::string folder = resolvedFolder();
        return folder;
    }

  private:
    static std::string resolvedFolder() {
        std::string file = moduleFile();
        // Data files lie beside the real artefact, not beside a link to it.
        if (char* real = ::realpath(file.c_str(), nullptr)) {
            file = real;
            std::free(real);
        }
        const size_t cut = file.rfind('/');
        if (cut == std::string::npos) return std::string();
        const std::string folder = cut == 0 ? std::string("/") : file.substr(0, cut);
        return installedDataFolder(folder).value_or(folder);
    }

    // Installed under a prefix (bin/ostrel), the data files lie in
    // share/ostrel beside bin rather than beside the program.
    static std::optional<std::string> installedDataFolder(const std::string& folder) {
        struct stat info {};
        if (::stat((folder + "/Ostrel.en.txt").c_str(), &info) == 0) return std::nullopt;
        std::string shared = folder + "/../share/ostrel";
        if (::stat(shared.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) return std::nullopt;
        if (char* real = ::realpath(shared.c_str(), nullptr)) {
            shared = real;
            std::free(real);
        }
        return shared;
    }
};

}  // namespace

EnvironmentPort& systemEnvironment() {
    static PosixEnvironment environment;
    return environment;
}

}  // namespace ostrel::platform
