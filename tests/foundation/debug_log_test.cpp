#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "fakes/test_apartment.h"
#include "foundation/debug_log.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"

namespace ostrel {
namespace {

using fakes::pathOf;
using fakes::readBytes;
using fakes::writeBytes;

const std::string kBanner = "*** START version: 14.15.0\r\n";
const std::string kStamp = "14:07:09 05-Mar-2024 ";  // where the fake clock stands

class DebugLog : public ::testing::Test {
  protected:
    // The verbosity the log starts at unless a test says otherwise.
    DebugLog() {
        fx.writeSettings("<Settings><OutputDebugString>1</OutputDebugString></Settings>");
    }

    // What Main does before diagnostics start: the file system object exists.
    void startDiagnostics() {
        apartment().gobjFileSystem = makeRef<FileSystemObject>(fx.ports.fileSystem);
        gsubInitDebug("", 0);
    }
    std::filesystem::path logFile() const { return pathOf(fx.dataFile("ot.log")); }

    fakes::TestApartment fx;
};

TEST_F(DebugLog, WithoutMarkerOnlyTheDebuggerHearsAndAnOldLogStays) {
    const std::string oldLog(3 * 1024 * 1024, 'x');
    writeBytes(logFile(), oldLog);
    // A folder of the marker's name doesn't count.
    std::filesystem::create_directory(pathOf(fx.dataFile("debug_ot")));
    startDiagnostics();
    gsubDebugPrint("hello");

    EXPECT_FALSE(gblnDebug());
    EXPECT_EQ(glngDebugLevel(), 0);
    EXPECT_EQ(readBytes(logFile()), oldLog);
    EXPECT_EQ(fx.debugStream.texts, std::vector<std::string>{"hello\r\n"});
}

TEST_F(DebugLog, MarkerStartsTheLogWithABannerAndStampedLinesOnce) {
    fx.writeMarker();
    fx.locale.localeFacts.monthAbbreviations[2] = "Mrz";
    startDiagnostics();

    // The file gets the text as it is, the debugger a line end after it.
    fx.clock.time = {2024, 3, 5, 9, 2, 3};
    gsubDebugPrint("[gfstrDemo] ERROR: File not found");
    gsubDebugPrint("");
    gsubDebugPrint("ends\r\n");
    EXPECT_EQ(readBytes(logFile()), "14:07:09 05-Mrz-2024 " + kBanner +
                                        "09:02:03 05-Mrz-2024 [gfstrDemo] ERROR: File not found\r\n"
                                        "09:02:03 05-Mrz-2024 \r\n"
                                        "09:02:03 05-Mrz-2024 ends\r\n\r\n");
    EXPECT_EQ(fx.debugStream.texts,
              (std::vector<std::string>{kBanner, "[gfstrDemo] ERROR: File not found\r\n", "\r\n",
                                        "ends\r\n"}));

    // A second start with the flag set only lowers the level: no new banner.
    gsubInitDebug("", 0);
    EXPECT_TRUE(gblnDebug());
    EXPECT_EQ(glngDebugLevel(), 0);
    EXPECT_EQ(fx.debugStream.texts.size(), 4u);
}

// The real files, but no file can be deleted.
struct UndeletableFiles : platform::FileSystemPort {
    explicit UndeletableFiles(platform::FileSystemPort& files) : real(files) {}
    char separator() const override { return real.separator(); }
    bool fileExists(std::string_view path) override { return real.fileExists(path); }
    bool folderExists(std::string_view path) override { return real.folderExists(path); }
    std::optional<int64_t> fileSize(std::string_view path) override { return real.fileSize(path); }
    bool deleteFile(std::string_view, bool) override { return false; }
    bool appendLine(std::string_view path, std::string_view text) override {
        return real.appendLine(path, text);
    }
    std::optional<std::string> readTextFile(std::string_view path) override {
        return real.readTextFile(path);
    }
    platform::FileSystemPort& real;
};

TEST_F(DebugLog, OversizedLogIsDeletedAtStartAndTheBoundItselfIsKept) {
    fx.writeMarker();
    writeBytes(logFile(), std::string(2097152, 'k'));
    startDiagnostics();
    EXPECT_EQ(readBytes(logFile()), std::string(2097152, 'k') + kStamp + kBanner);

    fx.install();
    writeBytes(logFile(), std::string(2097153, 'd'));
    std::filesystem::permissions(logFile(), std::filesystem::perms::all,
                                 std::filesystem::perm_options::remove);  // read-only goes too
    startDiagnostics();
    EXPECT_EQ(readBytes(logFile()), kStamp + kBanner);

    // One that can't be deleted gets the banner appended all the same.
    fx.install();
    const std::string oversized(2097153, 'u');
    writeBytes(logFile(), oversized);
    UndeletableFiles undeletable(*fx.ports.fileSystem);
    apartment().gobjFileSystem = makeRef<FileSystemObject>(&undeletable);
    gsubInitDebug("", 0);
    EXPECT_EQ(readBytes(logFile()), oversized + kStamp + kBanner);
}

TEST_F(DebugLog, VerbosityComesFromTheSettingsFileAfterTheBanner) {
    const std::string settings = fx.dataFile("ot_settings.xml");
    const struct {
        const char* verbosity;  // OutputDebugString in ot_settings.xml, or null for no file
        bool flag;
        int32_t level;
    } cases[] = {
        {"1001", true, 1001},
        {"0", true, 0},  // kept: "0" leaves diagnostics on, only nothing behind a threshold shows
        {"", false, 0},  // no number: half on, the banner already written
        {"abc", false, 0},
        {nullptr, true, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.verbosity ? c.verbosity : "no file");
        fx.install();
        fx.writeMarker();
        std::filesystem::remove(logFile());
        std::filesystem::remove(pathOf(settings));
        if (c.verbosity) {
            fx.writeSettings(std::string("<Settings><OutputDebugString>") + c.verbosity +
                             "</OutputDebugString></Settings>");
        }
        startDiagnostics();
        EXPECT_EQ(gblnDebug(), c.flag);
        EXPECT_EQ(glngDebugLevel(), c.level);
        EXPECT_EQ(apartment().gstrLogFilename, fx.dataFile("ot.log")) << "the log keeps its name";
        const std::string notFound = "Ostrel settings file not found.  file: " + settings + "\r\n";
        EXPECT_EQ(readBytes(logFile()), kStamp + kBanner + (c.verbosity ? "" : kStamp + notFound));
    }
}

TEST_F(DebugLog, UnsetProgramDataMeansAFolderBelowTheCurrentDirectory) {
    fx.environment.variables.erase("ProgramData");
    const auto previous = std::filesystem::current_path();
    std::filesystem::current_path(fx.programData);
    fx.writeMarker();  // ProgramData\QUORL, which is now .\QUORL as well
    startDiagnostics();
    std::filesystem::current_path(previous);
    EXPECT_EQ(apartment().gstrLogFilename, fileSystem().BuildPath("QUORL", "ot.log"));
    EXPECT_EQ(readBytes(logFile()), kStamp + kBanner);
}

// Every step of the start and of a message may fail; the next one still runs.
TEST_F(DebugLog, FailingStepsArePassedOver) {
    // Without a file system object the log can't be named: no file, no banner.
    apartment().gblnDebug = true;
    apartment().gstrLogFilename = "stale.log";
    gsubStartLog();
    EXPECT_EQ(apartment().gstrLogFilename, "");
    EXPECT_TRUE(fx.debugStream.texts.empty());

    // A log that can't be written loses the line, not the debugger output.
    apartment().gblnDebug = false;
    fx.writeMarker();
    startDiagnostics();
    const auto folder = pathOf(fx.dataFolder());
    std::filesystem::remove_all(folder);
    gsubDebugPrint("lost");
    EXPECT_EQ(fx.debugStream.texts.back(), "lost\r\n");
    EXPECT_FALSE(std::filesystem::exists(folder)) << "a missing folder is never created";

    // The next message tries again from the start; without a debugger stream
    // the file still has it.
    std::filesystem::create_directory(folder);
    apartment().ports.debugStream = nullptr;
    gsubDebugPrint("back");
    EXPECT_EQ(readBytes(logFile()), kStamp + "back\r\n");
}

}  // namespace
}  // namespace ostrel
