#include "version_line.h"

#include "ostrel_version.h"

namespace ostrel::cli {

std::string versionLine() {
    // The build type and the target come from the build (src/cli/CMakeLists.txt).
    return std::string("ostrel ") + kVersionText + " (" + buildCommit() + ", " + OSTREL_BUILD_TYPE +
           ", " + OSTREL_TARGET + ")";
}

}  // namespace ostrel::cli
