// What the harnesses share: a scratch folder of this process (in memory when
// /dev/shm is there, as every input goes through a file), the check that
// turns a broken promise into a crash libFuzzer reports, and the apartment
// of fakes the harnesses that need one run in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace ostrel::fakes {
class TestApartment;
}

namespace ostrel::fuzz {

// The folder, created at the first call and removed at exit.
const std::string& scratchFolder();
// Writes the bytes as the file name in the scratch folder; returns its path.
std::string writeScratch(std::string_view name, const uint8_t* data, size_t size);
// Aborts with the message when the condition is false.
void require(bool condition, std::string_view message);
// Made at the first call and never destroyed: at exit this thread's globals
// are gone before the static objects, and the apartment's destructor would
// reach them.
fakes::TestApartment& testApartment();

}  // namespace ostrel::fuzz
