// What --version prints: "ostrel 14.15.0 (77bc752, Release, x86_64-linux-gnu)",
// the version, the commit built, the build type and the target.
#pragma once

#include <string>

namespace ostrel::cli {

std::string versionLine();

// Defined in the file the build writes (cmake/build_commit.cmake).
const char* buildCommit();

}  // namespace ostrel::cli
