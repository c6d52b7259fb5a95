#include "fuzz_files.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "fakes/test_apartment.h"

namespace ostrel::fuzz {

namespace {

struct Scratch {
    Scratch() {
        const std::filesystem::path base = std::filesystem::is_directory("/dev/shm")
                                               ? std::filesystem::path("/dev/shm")
                                               : std::filesystem::temp_directory_path();
        folder = (base / ("ostrel-fuzz-" + std::to_string(::getpid()))).string();
        std::filesystem::create_directories(folder);
    }
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    std::string folder;
};

}  // namespace

const std::string& scratchFolder() {
    static const Scratch scratch;
    return scratch.folder;
}

std::string writeScratch(std::string_view name, const uint8_t* data, size_t size) {
    std::string path = scratchFolder() + "/" + std::string(name);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    out.close();
    require(out.good(), "can't write the scratch file " + path);
    return path;
}

void require(bool condition, std::string_view message) {
    if (condition) return;
    std::fprintf(stderr, "broken promise: %.*s\n", static_cast<int>(message.size()),
                 message.data());
    std::abort();
}

fakes::TestApartment& testApartment() {
    static auto* const fx = new fakes::TestApartment();
    return *fx;
}

}  // namespace ostrel::fuzz
