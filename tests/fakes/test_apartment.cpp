#include "fakes/test_apartment.h"

#include <atomic>
#include <chrono>
#include <fstream>
#include <iterator>
#include <system_error>

#include "foundation/globals.h"
#include "platform/adapters.h"

namespace ostrel::fakes {

namespace {

std::filesystem::path makeTempFolder() {
    static std::atomic<int> counter{0};
    const auto base = std::filesystem::temp_directory_path();
    const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
    for (;;) {
        auto folder = base / ("ostrel-test-" + std::to_string(stamp) + "-" +
                              std::to_string(counter.fetch_add(1)));
        if (std::filesystem::create_directory(folder)) return folder;
    }
}

}  // namespace

TestApartment::TestApartment() : programData(makeTempFolder()) {
    environment.variables["ProgramData"] = utf8Of(programData);
    environment.folder = platform::systemEnvironment().componentFolder();
    ports.registry = &registry;
    ports.debugStream = &debugStream;
    ports.clock = &clock;
    ports.messageBox = &messageBox;
    ports.fileSystem = &platform::systemFileSystem();
    ports.environment = &environment;
    ports.locale = &locale;
    ports.systemInfo = &systemInfo;
    ports.namedMutex = &namedMutex;
    ports.xml = &platform::systemXml();
    ports.programSettings = &programSettings;
    ports.processes = &processes;
    ports.timeZone = &timeZone;
    ports.paths = &paths;
    ports.shell = &shell;
    ports.help = &help;
    ports.ansiRegistry = &ansiRegistry;
    ports.windowing = &windowing;
    ports.wmi = &wmi;
    install();
}

TestApartment::~TestApartment() {
    // Before the fakes go: the globals hold pointers to them.
    apartment() = OstrelGlobals(platform::defaultPorts());
    std::error_code ignored;
    std::filesystem::permissions(programData, std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ignored);
    std::filesystem::remove_all(programData, ignored);
}

std::string TestApartment::dataFolder() const {
    const auto folder = programData / "QUORL";
    std::filesystem::create_directories(folder);
    return utf8Of(folder);
}

std::filesystem::path pathOf(std::string_view utf8) {
    std::u8string text;
    for (char c : utf8) text.push_back(static_cast<char8_t>(c));
    return std::filesystem::path(text);
}

std::string utf8Of(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

std::string readBytes(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void writeBytes(const std::filesystem::path& path, std::string_view bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace ostrel::fakes
