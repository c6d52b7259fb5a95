// Which registry this run of the tool reads, as the commands tell it in their
// first line, and the built-in sample registry used on Linux when none is named.
#pragma once

#include <string>
#include <string_view>

namespace ostrel::cli {

// "the system registry" until the tool's main says otherwise.
const std::string& registrySource();
void setRegistrySource(std::string description);

// "Registry: ..." on stderr, so that stdout holds only the result; with the
// built-in sample, also that it is one and how to read a real export.
void announceRegistrySource();

// Linux: loads the built-in sample of a QUORL family into the system's
// registry (where the live network keys are) and answers true. Windows reads
// its real registry, and this answers false.
bool loadSampleRegistry();

// The built-in sample, in the .reg export format.
std::string_view sampleRegistryText();

}  // namespace ostrel::cli
