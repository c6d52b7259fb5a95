#include <gmock/gmock.h>
#include <gtest/gtest.h>

#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#endif

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "fakes/test_apartment.h"
#include "foundation/debug_log.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "foundation/named_mutex.h"
#include "foundation/settings.h"
#include "platform/adapters.h"

namespace ostrel {
namespace {

using fakes::pathOf;
using fakes::readBytes;
using fakes::writeBytes;
using Port = platform::NamedMutexPort;
using Calls = std::vector<std::string>;

// The settings routines against the platform's XML document object, a fake
// lock and a fake older store.
class Settings : public ::testing::Test {
  protected:
    Settings() {
        fx.dataFolder();  // made, as a machine with the marker has it
        apartment().gobjFileSystem = makeRef<FileSystemObject>(fx.ports.fileSystem);
    }

    std::string read(std::string_view section, std::string_view key, std::string_view def = "d") {
        return gfstrGetApplicationSetting("App", section, key, def);
    }
    void save(std::string_view section, std::string_view key, std::string_view value) {
        gsubSaveApplicationSetting("App", section, key, value);
    }
    // The file as written, without the line end that some document objects add.
    std::string file() const {
        std::string text = readBytes(pathOf(fx.dataFile("ot_settings.xml")));
        while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
        return text;
    }
    // How many debugger lines start with this text.
    std::ptrdiff_t said(std::string_view start) const {
        return std::ranges::count_if(
            fx.debugStream.texts, [&](const std::string& text) { return text.starts_with(start); });
    }
    // How often reading or saving App:<setting> failed with an error that starts so.
    std::ptrdiff_t failed(std::string_view verb, std::string_view setting,
                          std::string_view error = "") const {
        const std::string routine =
            verb == "read" ? "[gfstrGetApplicationSetting]" : "[gsubSaveApplicationSetting]";
        return said(routine + " Unable to " + std::string(verb) + " App:" + std::string(setting) +
                    " setting.  ERROR: " + std::string(error));
    }
    // A new apartment and an empty older store: the next read loads the file again.
    void restart() {
        fx.install();
        fx.programSettings.values.clear();
        apartment().gobjFileSystem = makeRef<FileSystemObject>(fx.ports.fileSystem);
    }

    fakes::TestApartment fx;
};

TEST_F(Settings, FirstReadLoadsUnderTheLockAndLaterReadsStayInMemory) {
    fx.writeSettings("<?xml version=\"1.0\"?>\n<Settings>\n  <A>one</A>\n</Settings>\n");
    EXPECT_EQ(read("Settings", "A"), "one");
    std::filesystem::remove(pathOf(fx.dataFile("ot_settings.xml")));
    EXPECT_EQ(read("Settings", "A"), "one") << "no second load";
    EXPECT_EQ(fx.namedMutex.calls,
              (Calls{"create QUORL_OSTREL_SETTINGS", "wait 1 3000", "release 1", "close 1"}))
        << "the first load only";

    // A key that isn't in the file asks the older store every time.
    EXPECT_EQ(read("Settings", "B"), "d");
    EXPECT_EQ(read("Settings", "B"), "d");
    EXPECT_EQ(fx.programSettings.reads, 2);
}

TEST_F(Settings, AnOlderValueMovesIntoTheFileUnlessItIsTheDefaultInAnotherCase) {
    fx.programSettings.values["App\\Settings\\Same"] = "DEFAULT";
    EXPECT_EQ(read("Settings", "Same", "default"), "default") << "the default, letter for letter";
    EXPECT_EQ(file(), "") << "nothing saved";

    fx.programSettings.values["App\\Settings\\Moved"] = "older";
    EXPECT_EQ(read("Settings", "Moved"), "older");
    EXPECT_EQ(fx.programSettings.values.count("App\\Settings\\Moved"), 1u) << "left in the store";
    EXPECT_EQ(said("Ostrel settings file not found"), 0) << "only with diagnostics on";
}

TEST_F(Settings, SavesWriteOneSectionWithoutWhiteSpaceAndReloadEachTime) {
    save("Settings", "A", "1");
    save("Settings", "B", "2");
    EXPECT_EQ(file(), "<Settings><A>1</A><B>2</B></Settings>");

    // Another process saved in between: its key is kept.
    fx.writeSettings("<Settings><A>1</A><B>2</B><C>other</C></Settings>");
    save("Settings", "A", "3");
    EXPECT_EQ(file(), "<Settings><A>3</A><B>2</B><C>other</C></Settings>");
    EXPECT_EQ(fx.namedMutex.calls.size(), 12u) << "each save takes and gives back the lock";
}

TEST_F(Settings, DamagedOrWrappedFilesFallBackToTheOlderStore) {
    fx.writeSettings("<Settings><A>1</A>");  // cut short
    fx.programSettings.values["App\\Settings\\A"] = "older";
    EXPECT_EQ(read("Settings", "A"), "older");
    // The move saved it, and that save replaced the damaged file.
    EXPECT_EQ(file(), "<Settings><A>older</A></Settings>");

    restart();
    fx.writeSettings("<Root><Settings><A>1</A></Settings></Root>");
    EXPECT_EQ(read("Settings", "A", "x"), "x");
    save("Settings", "A", "2");
    EXPECT_EQ(fx.programSettings.values["App\\Settings\\A"], "2");

    // A DTD, whatever it declares, makes the file damaged on every platform.
    restart();
    fx.writeSettings("<!DOCTYPE Settings [<!ENTITY e \"inside\">]><Settings><A>&e;</A></Settings>");
    EXPECT_EQ(read("Settings", "A", "x"), "x");
}

// A file is saved in the encoding its declaration names, so that its values
// survive any number of saves of other keys.
TEST_F(Settings, SavesKeepTheEncodingTheFileDeclares) {
    const struct {
        const char* encoding;
        const char* bytes;  // one byte a character, two in UTF-16
        const char* text;
    } declared[] = {
        {"ISO-8859-1", "caf\xE9", "café"},
        {"windows-1252", "\x80 caf\xE9 \x9C\x85\x8A", "€ café œ…Š"},
        {"UTF-16", "caf\xE9", "café"},
    };
    for (const auto& d : declared) {
        SCOPED_TRACE(d.encoding);
        const std::string bom = d.encoding == std::string_view("UTF-16") ? "\xFF\xFE" : "";
        const auto encoded = [&](const std::string& text) {
            std::string bytes;
            for (char c : text) bytes += bom.empty() ? std::string{c} : std::string{c, '\0'};
            return bytes;
        };
        restart();
        fx.writeSettings(bom +
                         encoded(std::string("<?xml version=\"1.0\" encoding=\"") + d.encoding +
                                 "\"?>\r\n<Settings><A>" + d.bytes + "</A></Settings>"));
        for (const char* value : {"1", "2", "3"}) save("Settings", "B", value);
        EXPECT_THAT(file(), testing::StartsWith(bom));
        EXPECT_THAT(file(), testing::HasSubstr(encoded(std::string("<Settings><A>") + d.bytes +
                                                       "</A><B>3</B></Settings>")));
        save("Settings", "C", "€ and ő");  // beyond either single-byte set
        save("Settings", "B", "4");
        restart();
        EXPECT_EQ(read("Settings", "A"), d.text);
        EXPECT_EQ(read("Settings", "C"), "€ and ő");
    }
}

// The values the read path gives are the same on every platform: the
// document object's, which keeps no white space of its own.
TEST_F(Settings, ValuesReadTheSameOnEveryPlatform) {
    const std::pair<const char*, const char*> cases[] = {
        {"<A>  padded \t</A>", "padded"},
        {"<A> a  b\r\n c </A>", "a  b\n c"},
        {"<A>  \n </A>", ""},
        {"<A><![CDATA[ x<y ]]></A>", " x<y "},
        {"<A> <![CDATA[ x ]]> </A>", " x "},
        {"<A>&#233;&#x20AC;&lt;&#32;</A>", "é€<"},
        {"<A>&#32;a&#32;</A>", "a"},
        {"<A> a <!-- c --> b </A>", "a  b"},
    };
    for (const auto& [element, value] : cases) {
        restart();
        fx.writeSettings(std::string("<Settings>") + element + "</Settings>");
        EXPECT_EQ(read("Settings", "A"), value) << element;
    }
}

TEST_F(Settings, FailuresEndInTheirMessagesAndTheDefault) {
    // A key that is no element name: the read fails before the older store.
    EXPECT_EQ(read("Settings", "a b"), "d");
    EXPECT_EQ(failed("read", "Settings[a b]"), 1);
    EXPECT_EQ(fx.programSettings.reads, 0);
    save("Settings", "1x", "v");
    EXPECT_EQ(failed("save", "Settings[1x]"), 1);
    EXPECT_EQ(fx.namedMutex.calls.back(), "close 2") << "the lock is given back after a failure";

    // An older store that refuses the value: the save's own message.
    fx.writeSettings("<Settings/>");
    fx.programSettings.saveFails = true;
    save("Other", "K", "v");
    EXPECT_EQ(failed("save", "Other[K]", "Invalid procedure call or argument\r\n"), 1);
}

TEST_F(Settings, WithoutTheLockAReadGivesTheDefaultAndASaveStoresNothing) {
    fx.writeSettings("<Settings><A>1</A></Settings>");
    fx.programSettings.values["App\\Settings\\A"] = "older";
    fx.namedMutex.waitAnswer = Port::kWaitTimeout;

    save("Settings", "A", "2");
    EXPECT_EQ(said("[gsubSaveApplicationSetting]"), 0) << "the save ends silently";

    EXPECT_EQ(read("Settings", "A"), "d");
    EXPECT_EQ(failed("read", "Settings[A]", "Object variable or With block variable not set\r\n"),
              1);
    EXPECT_EQ(fx.programSettings.reads, 0) << "no older value is looked at";

    // The document is still missing, so the next read tries again.
    fx.namedMutex.waitAnswer = Port::kWaitObtained;
    EXPECT_EQ(read("Settings", "A"), "1");
}

TEST_F(Settings, WithoutAnXmlObjectOrAnOlderStoreNothingRaises) {
    fx.ports.xml = nullptr;
    fx.ports.programSettings = nullptr;
    restart();
    EXPECT_EQ(read("Settings", "A"), "d");
    save("Settings", "A", "v");
    for (const char* verb : {"read", "save"}) {
        EXPECT_EQ(failed(verb, "Settings[A]", "ActiveX component can't create object\r\n"), 1);
    }
}

// The log, whose verbosity the settings file gives.
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
    const Calls& lines() const { return fx.debugStream.texts; }

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
    EXPECT_EQ(lines(), Calls{"hello\r\n"});
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
    EXPECT_EQ(lines(),
              (Calls{kBanner, "[gfstrDemo] ERROR: File not found\r\n", "\r\n", "ends\r\n"}));

    // A second start with the flag set only lowers the level: no new banner.
    gsubInitDebug("", 0);
    EXPECT_TRUE(gblnDebug());
    EXPECT_EQ(glngDebugLevel(), 0);
    EXPECT_EQ(lines().size(), 4u);
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
    EXPECT_TRUE(lines().empty());

    // A log that can't be written loses the line, not the debugger output.
    apartment().gblnDebug = false;
    fx.writeMarker();
    startDiagnostics();
    const auto folder = pathOf(fx.dataFolder());
    std::filesystem::remove_all(folder);
    gsubDebugPrint("lost");
    EXPECT_EQ(lines().back(), "lost\r\n");

    // The next message tries again from the start; without a debugger stream
    // the file still has it.
    std::filesystem::create_directory(folder);
    apartment().ports.debugStream = nullptr;
    gsubDebugPrint("back");
    EXPECT_EQ(readBytes(logFile()), kStamp + "back\r\n");
}

// The lock that guards the file, in the log's apartment.
using MutexGuard = DebugLog;

TEST_F(MutexGuard, ObtainsAndReleasesSilentlyUpToLevel1000AndTracesAbove) {
    apartment().glngDebugLevel = 1000;
    int32_t handle = GetMutex("M", 250);
    EXPECT_TRUE(ReleaseMutexHandle(handle));

    apartment().glngDebugLevel = 1001;
    handle = GetMutex("M", 0);
    ReleaseMutexHandle(handle);
    EXPECT_EQ(lines(), (Calls{"Obtained mutex(M,2)\r\n", "Released mutex handle(2)\r\n",
                              "Closed mutex handle(2)\r\n"}));

    // The same variable a second time (released, it holds 0), or an empty name: nothing at all.
    fx.namedMutex.calls.clear();
    EXPECT_TRUE(ReleaseMutexHandle(handle));
    EXPECT_EQ(GetMutex("", 100), 0);
    EXPECT_TRUE(fx.namedMutex.calls.empty());
}

// An abandoned mutex is a success, told at every level.
TEST_F(MutexGuard, FailedWaitsAndCreationsGiveZeroAndTheirLineAnAbandonedOneIsASuccess) {
    fx.namedMutex.waitAnswer = Port::kWaitTimeout;
    EXPECT_EQ(GetMutex("M", 10), 0);
    fx.namedMutex.waitAnswer = Port::kWaitFailed;
    EXPECT_EQ(GetMutex("M", 10), 0);
    EXPECT_EQ(fx.namedMutex.calls, (Calls{"create M", "wait 1 10", "create M", "wait 2 10"}))
        << "kept: the handle of a failed wait stays open";
    fx.namedMutex.waitAnswer = Port::kWaitAbandoned;
    EXPECT_EQ(GetMutex("M", 10), 3);
    fx.namedMutex.createFails = true;
    EXPECT_EQ(GetMutex("M", 10), 0);
    EXPECT_EQ(lines(),
              (Calls{"Failed getting mutex(M)\r\n", "Failed getting mutex(M)\r\n",
                     "Obtained abandoned mutex(M,3)\r\n", "Failed creating mutex(M)\r\n"}));
}

TEST_F(MutexGuard, RefusedReleaseAndCloseAreToldInTheReleasesWords) {
    fx.namedMutex.releaseFails = true;
    int32_t handle = GetMutex("M", 10);
    EXPECT_FALSE(ReleaseMutexHandle(handle));
    EXPECT_EQ(handle, 0);
    EXPECT_EQ(fx.namedMutex.calls.back(), "close 1") << "closed although the release failed";

    fx.namedMutex.releaseFails = false;
    fx.namedMutex.closeFails = true;
    handle = GetMutex("M", 10);
    EXPECT_TRUE(ReleaseMutexHandle(handle)) << "a failed close doesn't change the result";
    EXPECT_EQ(handle, 0);
    EXPECT_EQ(lines(), (Calls{"Released mutex handle(1) = 288\ttext of 288\r\n",
                              "Released mutex handle(2) = 289\ttext of 289\r\n"}));
}

TEST_F(MutexGuard, WithoutALockServiceTheRunTimeErrorIsLogged) {
    fx.use(&platform::Ports::namedMutex, nullptr);
    EXPECT_EQ(GetMutex("M", 10), 0);
    EXPECT_EQ(lines(), Calls{"[GetMutex] Name: M ERROR: 429 - ActiveX component can't create "
                             "object\r\n"});
    int32_t handle = 7;
    EXPECT_FALSE(ReleaseMutexHandle(handle));
    EXPECT_EQ(handle, 0);
}

#ifndef _WIN32
// On Linux the lock files of these tests go to a private folder of their own.
struct PrivateLockFolder {
    PrivateLockFolder() {
        char made[] = "/tmp/ostrel-locks-XXXXXX";
        path = ::mkdtemp(made);
        ::setenv("XDG_RUNTIME_DIR", made, 1);
    }
    ~PrivateLockFolder() {
        ::unsetenv("XDG_RUNTIME_DIR");
        std::filesystem::remove_all(path);
    }
    std::filesystem::path file(const std::string& name) const {
        return path / ("ostrel-" + name + ".lock");
    }
    std::filesystem::path path;
};
#else
struct PrivateLockFolder {};
#endif

// The system's own lock: what a wait answers from another thread, which
// owns a mutex on Windows and Linux alike.
TEST(SystemNamedMutex, WaitsTimesOutRecursesAndReportsADeadOwner) {
    [[maybe_unused]] const PrivateLockFolder folder;
    Port& port = platform::systemNamedMutex();
    const std::string name =
        "ostrel-test-" +
        std::to_string(std::chrono::steady_clock::now().time_since_epoch().count());
    const int32_t mine = port.create(name);
    ASSERT_GT(mine, 0);
    EXPECT_EQ(port.wait(mine, 0), Port::kWaitObtained);
    EXPECT_EQ(port.wait(mine, 0), Port::kWaitObtained) << "the owner gets it again at once";

    // Another thread's wait: its answer; `released` tells whether it could release.
    bool released = true;
    const auto other = [&](int32_t timeoutMs) {
        uint32_t answer = 0;
        std::thread([&] {
            const int32_t theirs = port.create(name);
            answer = port.wait(theirs, timeoutMs);
            released = port.release(theirs);  // owned or not, as the answer says
            port.close(theirs);
        }).join();
        return answer;
    };
    EXPECT_EQ(other(0), Port::kWaitTimeout);
    EXPECT_FALSE(released) << "a thread that doesn't own it can't release it";
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(other(150), Port::kWaitTimeout);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(140));
    EXPECT_FALSE(port.errorText(port.lastError()).empty());

    EXPECT_TRUE(port.release(mine));
    EXPECT_TRUE(port.release(mine));
    EXPECT_FALSE(port.release(mine)) << "released as often as it was taken";
    EXPECT_EQ(other(0), Port::kWaitObtained);
    EXPECT_TRUE(released);

    // A thread that ends while it owns the lock leaves it abandoned, also
    // after it released and closed the first of two handles.
    std::thread([&] {
        int32_t theirs[2] = {port.create(name), port.create(name)};
        for (const int32_t handle : theirs) port.wait(handle, 0);
        port.release(theirs[0]);
        port.close(theirs[0]);
    }).join();
    EXPECT_EQ(port.wait(mine, 1000), Port::kWaitAbandoned);
    EXPECT_TRUE(port.release(mine));
    EXPECT_EQ(port.wait(mine, 0), Port::kWaitObtained) << "plain again after the abandoned wait";
    EXPECT_TRUE(port.release(mine));
    EXPECT_TRUE(port.close(mine));
}

#ifndef _WIN32
// What is found in the lock folder and wasn't made as the lock makes its
// files is refused, never used.
TEST(SystemNamedMutex, RefusesWhatItDidNotMakeItself) {
    namespace fs = std::filesystem;
    const PrivateLockFolder folder;
    Port& port = platform::systemNamedMutex();
    const auto put = [&](const std::string& name, const std::string& bytes, fs::perms mode) {
        std::ofstream(folder.file(name)) << bytes;
        fs::permissions(folder.file(name), mode);
    };
    port.close(port.create("fine"));
    EXPECT_EQ(fs::status(folder.file("fine")).permissions(), fs::perms(0600));
    fs::remove(folder.file("fine"));
    port.close(port.create("fine"));
    EXPECT_TRUE(fs::exists(folder.file("fine"))) << "a deleted lock file is made again";

    fs::create_symlink(folder.file("fine"), folder.file("link"));
    ::mkfifo(folder.file("fifo").c_str(), 0600);
    fs::create_directory(folder.file("folder"));
    put("wide", "", fs::perms(0644));
    put("long", "nine byte", fs::perms(0600));
    put("twice", "", fs::perms(0600));
    fs::create_hard_link(folder.file("twice"), folder.file("twin"));
    put("theirs", "", fs::perms(0600));
    if (::geteuid() == 0) ::chown(folder.file("theirs").c_str(), 65534, 65534);
    for (const char* name : {"link", "fifo", "folder", "wide", "long", "twice", "theirs"}) {
        EXPECT_EQ(port.create(name), 0) << name;
    }
    // A record this code didn't write: opened, but never taken.
    put("forged", "XXXXXXXX", fs::perms(0600));
    const int32_t forged = port.create("forged");
    EXPECT_EQ(port.wait(forged, 0), Port::kWaitFailed);
    port.close(forged);
}
#endif

}  // namespace
}  // namespace ostrel
