#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>
#else
#include <unistd.h>
#endif

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "fakes/test_apartment.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "machine/processes.h"
#include "platform/adapters.h"
#include "platform/common/command_line.h"

namespace ostrel {
namespace {

using Lines = std::vector<std::string>;

class Processes : public ::testing::Test {
  protected:
    Processes() {
        apartment().gobjFileSystem = makeRef<FileSystemObject>(fx.ports.fileSystem);
        fx.processes.table = {{4, "/sbin/init"}, {40, "/opt/App/Worker.BIN"}, {41, "worker.bin"}};
    }
    void debugOn() { apartment().gblnDebug = true; }
    const Lines& said() const { return fx.debugStream.texts; }

    fakes::TestApartment fx;
};

TEST_F(Processes, FindsTheFirstOfThatFileNameWhateverItsFolderAndCase) {
    debugOn();
    Variant id(std::string("stale"));
    EXPECT_TRUE(mblnIsProcessRunning("C:/Elsewhere/WORKER.bin", id));
    EXPECT_EQ(id, Variant(int32_t{40})) << "the first in the system's list";
    EXPECT_EQ(fx.processes.snapshotsOpen, 0) << "the snapshot is closed";

    EXPECT_FALSE(mblnIsProcessRunning("/bin/missing", id));
    EXPECT_EQ(id, Variant(int16_t{0})) << "the integer 0, as set at the start";
    EXPECT_EQ(said(),
              (Lines{"[mblnIsProcessRunning :C:/Elsewhere/WORKER.bin] Process is running.\r\n",
                     "[mblnIsProcessRunning :/bin/missing] Process is not running.\r\n"}))
        << "the name as given, folder and all";
}

TEST_F(Processes, AFailedSnapshotLogsTwiceWithDiagnosticsAndNothingWithout) {
    fx.processes.snapshotFails = true;
    Variant id;
    EXPECT_FALSE(mblnIsProcessRunning("worker.bin", id));
    EXPECT_TRUE(said().empty());
    debugOn();
    EXPECT_FALSE(mblnIsProcessRunning("worker.bin", id));
    EXPECT_EQ(said(), (Lines{"[mblnIsProcessRunning :worker.bin] Unable to create process table "
                             "snapshot. ErrorCode: 8\r\n",
                             "[mblnIsProcessRunning :worker.bin] Process is not running.\r\n"}));

    // A run-time failure: the same words with the error, at any verbosity.
    apartment().gblnDebug = false;
    apartment().ports.processes = nullptr;
    EXPECT_FALSE(mblnIsProcessRunning("worker.bin", id));
    EXPECT_EQ(said().back(),
              "[mblnIsProcessRunning :worker.bin] Unable to create process table "
              "snapshot. Error: 429, ActiveX component can't create object\r\n");
}

TEST_F(Processes, RunStartsHiddenAndWaitsForTheReadinessTest) {
    debugOn();
    int asked = 0;
    const ReadinessTest readyOnThird = [&] { return ++asked >= 3 ? "up" : ""; };
    int32_t started = 0;
    EXPECT_TRUE(mfblnRunProgram("worker.bin -x", 999, readyOnThird, &started));
    EXPECT_EQ(started, 1234);
    EXPECT_EQ(fx.processes.started, Lines{"worker.bin -x @0"});
    EXPECT_EQ(fx.processes.sleeps, 2u) << "one millisecond between two questions";
    EXPECT_EQ(said().back(),
              "[mfblnRunProgram] Program started.  procID: 1234 prog: worker.bin -x\r\n");

    // Never ready: false after the 500 ms of the default, without a line;
    // the program is not stopped. The time-out is a setting, a minute at most.
    const size_t lines = said().size();
    const auto msWaited = [&] {
        fx.processes.sleeps = 0;
        EXPECT_FALSE(mfblnRunProgram("worker.bin", 0, ReadinessTest()));
        return fx.processes.sleeps;
    };
    EXPECT_EQ(msWaited(), 500u);
    EXPECT_EQ(said().size(), lines);
    fx.programSettings.values["Ostrel\\Settings\\ProgramReadyTimeout"] = "20";
    EXPECT_EQ(msWaited(), 20u);
    fx.writeSettings("<Settings><ProgramReadyTimeout>2147483647</ProgramReadyTimeout></Settings>");
    apartment().gobjSettingsDoc.reset();
    EXPECT_EQ(msWaited(), 60000u);
}

TEST_F(Processes, RunFailuresAndTheSixteenBitId) {
    fx.processes.startedId = 0;
    EXPECT_FALSE(mfblnRunProgram("a", 0, ReadinessTest()));
    EXPECT_TRUE(said().empty()) << "no id: the line needs diagnostics";
    debugOn();
    EXPECT_FALSE(mfblnRunProgram("a", 0, ReadinessTest()));
    EXPECT_EQ(said().back(), "[mfblnRunProgram] Program failed to run.  prog: a\r\n");

    // kept: an id above 32767 overflows its 16 bits although the program runs
    fx.processes.startedId = 40000;
    EXPECT_FALSE(mfblnRunProgram("b", 0, [] { return std::string("up"); }));
    EXPECT_EQ(fx.processes.started.back(), "b @0");
    EXPECT_EQ(said().back(),
              "[mfblnRunProgram] Program failed to run.  prog: b Error: 6, Overflow\r\n");

    fx.programSettings.values["Ostrel\\Settings\\ProgramReadyTimeout"] = "soon";
    EXPECT_FALSE(mfblnRunProgram("e", 0, ReadinessTest()));
    EXPECT_EQ(said().back(),
              "[mfblnRunProgram] Program failed to run.  prog: e Error: 13, Type mismatch\r\n");
}

TEST_F(Processes, TheWaitSurvivesAWrapOfTheTickCounter) {
    int asked = 0;
    const ReadinessTest never = [&] {
        ++asked;
        return std::string();
    };
    EXPECT_FALSE(mfblnWaitForReady(0, never));
    EXPECT_FALSE(mfblnWaitForReady(-5, never));
    EXPECT_EQ(asked, 0) << "a time-out of 0 or less asks nothing";

    // 10 ms before the signed counter turns negative: the wait starts
    // afresh at the wrap and so lasts up to one time-out longer.
    fx.processes.ticks = 0x7FFFFFFFu - 9;
    EXPECT_FALSE(mfblnWaitForReady(100, never));
    EXPECT_EQ(fx.processes.sleeps, 110u);
}

TEST(CommandLine, SplitsAsTheWindowsRunTimeAndExpandsNothing) {
    const std::pair<std::string, Lines> table[] = {
        {"prog a  b\tc", {"prog", "a", "b", "c"}},
        {R"("C:\Program Files\x.exe" "a b"c d)", {R"(C:\Program Files\x.exe)", "a bc", "d"}},
        {R"(p a\\b \"q\" a\\\"b a\\\\"b c" d)",
         {"p", R"(a\\b)", R"("q")", R"(a\"b)", R"(a\\b c)", "d"}},
        {R"(p "a""b" "" "x)", {"p", R"(a"b)", "", "x"}},
        {"p $HOME ~ * $((1+1)) `id` 'a b'",
         {"p", "$HOME", "~", "*", "$((1+1))", "`id`", "'a", "b'"}},
        {"", {""}},
    };
    for (const auto& [line, words] : table) {
        EXPECT_EQ(platform::splitCommandLine(line), words) << line;
    }
}

#ifndef _WIN32
// The system's start: a program that can't be run fails inside the start,
// with its number, at once; and the line reaches the program unexpanded.
TEST_F(Processes, TheSystemStartFailsAtOnceAndExpandsNothing) {
    namespace fs = std::filesystem;
    apartment().ports.processes = &platform::systemProcesses();
    const fs::path folder =
        fs::temp_directory_path() / ("ostrel-start-" + std::to_string(::getpid()));
    fs::create_directories(folder);
    std::ofstream(folder / "text") << "no program\n";
    fs::permissions(folder / "text", fs::perms(0755));
    const std::pair<fs::path, std::string> failures[] = {
        {folder, "70, Permission denied"},
        {folder / "text", "5, Invalid procedure call or argument"},
        {folder / "missing", "53, File not found"},
    };
    for (const auto& [program, error] : failures) {
        EXPECT_FALSE(mfblnRunProgram(program.string(), 0, ReadinessTest()));
        EXPECT_EQ(fx.debugStream.lines(), Lines{"[mfblnRunProgram] Program failed to run.  prog: " +
                                                program.string() + " Error: " + error});
    }

    const fs::path made[] = {folder / "$HOME", folder / "~", folder / "*"};
    const ReadinessTest madeAll = [&] { return fs::exists(made[2]) ? "made" : ""; };
    EXPECT_TRUE(mfblnRunProgram(
        "touch " + made[0].string() + " " + made[1].string() + " " + made[2].string(), 5000,
        madeAll));
    EXPECT_TRUE(fs::exists(made[0]) && fs::exists(made[1]));
    fs::remove_all(folder);
}
#else
// A path with a blank, started as exactly that program: a planted "a.exe"
// before the blank is never tried (read unquoted, "...\a b\prog.exe" tries
// "...\a.exe" first, which is no program, and the start fails).
TEST(SystemProcesses, AProgramIsStartedAsTheFileItsPathNames) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::temp_directory_path() / "ostrel-start";
    fs::remove_all(folder);
    fs::create_directories(folder / "a b");
    std::ofstream(folder / "a.exe") << "planted, no program\n";
    wchar_t system[MAX_PATH] = {};
    GetSystemDirectoryW(system, MAX_PATH);
    fs::copy_file(fs::path(system) / "hostname.exe", folder / "a b" / "prog.exe");
    const std::string program = (folder / "a b" / "prog.exe").string();
    EXPECT_GT(platform::systemProcesses().startProgram(program, 0), 0u);
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}
#endif

}  // namespace
}  // namespace ostrel
