// A fresh apartment for one test: this thread's globals are replaced by new
// ones working through fakes, the real file system and a temporary folder
// that stands for ProgramData. The destructor leaves fresh globals on the
// real ports behind, so no test sees another's state.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <type_traits>

#include "fakes/fake_ports.h"
#include "foundation/globals.h"
#include "platform/common/registry_regfile.h"
#include "platform/ports.h"

namespace ostrel::fakes {

// UTF-8 text and paths, both ways, so tests work the same on Windows.
std::filesystem::path pathOf(std::string_view utf8);
std::string utf8Of(const std::filesystem::path& path);
// Whole files as bytes; readBytes gives "" for a missing file.
std::string readBytes(const std::filesystem::path& path);
void writeBytes(const std::filesystem::path& path, std::string_view bytes);

class TestApartment {
  public:
    // Installs the globals at once on the fakes below, an empty .reg registry
    // and the platform's own file system and XML document object; ProgramData
    // is the temporary folder, the component folder the test program's (where
    // the language file lies).
    TestApartment();
    ~TestApartment();
    TestApartment(const TestApartment&) = delete;
    TestApartment& operator=(const TestApartment&) = delete;

    // Layers .reg text over the registry (see RegFileRegistry::loadText).
    void loadRegistry(std::string_view regText) { registry.loadText(regText, "test registry"); }
    // Replaces this thread's globals by fresh ones on `ports` (after a test
    // has nulled a port, for instance): state back to not started.
    void install() { apartment() = OstrelGlobals(ports); }
    // Puts `port` (nullptr: none) in the slot of `ports` and installs them.
    template <class Port>
    void use(Port* platform::Ports::*slot, std::type_identity_t<Port>* port) {
        ports.*slot = port;
        install();
    }

    // ProgramData\QUORL, created; and files in it.
    std::string dataFolder() const;
    std::string dataFile(std::string_view name) const {
        return utf8Of(pathOf(dataFolder()) / pathOf(name));
    }
    // The marker that switches the log on.
    void writeMarker() const { writeBytes(pathOf(dataFile("debug_ot")), ""); }
    // ot_settings.xml in the data folder, as given.
    void writeSettings(std::string_view xml) const {
        writeBytes(pathOf(dataFile("ot_settings.xml")), xml);
    }

    FakeClock clock;
    CapturingDebugStream debugStream;
    CapturingMessageBox messageBox;
    FakeEnvironment environment;
    FakeLocale locale;
    FakeSystemInfo systemInfo;
    FakeNamedMutex namedMutex;
    FakeProgramSettings programSettings;
    FakeProcesses processes;
    FakeTimeZone timeZone;
    FakePaths paths;
    FakeShell shell;
    FakeHelp help;
    FakeAnsiRegistry ansiRegistry;
    FakeWindowing windowing;
    FakeWmi wmi;
    platform::RegFileRegistry registry;
    std::filesystem::path programData;
    platform::Ports ports;  // what install() puts in place; tests may change it
};

}  // namespace ostrel::fakes
