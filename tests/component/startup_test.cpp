#include "component/startup.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "fakes/error_number.h"
#include "fakes/test_apartment.h"
#include "foundation/debug_log.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "machine/pc_info.h"
#include "ui/language_text.h"

namespace ostrel {
namespace {

using fakes::errorNumberOf;
using fakes::TestApartment;

TEST(Startup, FillsTheGlobalsOnceAndShowsNothing) {
    TestApartment fx;
    fx.writeMarker();
    ensureStarted();
    EXPECT_EQ(apartment().startState, StartState::Started);
    EXPECT_TRUE(fx.messageBox.shown.empty());
    EXPECT_TRUE(gobjPCInfo()) << "the shared snapshot stays after Main drops its own";
    EXPECT_EQ(glngDebugLevel(), 1);

    // Started is final: a later creation doesn't run Main again.
    const FileSystemObject* first = apartment().gobjFileSystem.get();
    ASSERT_TRUE(first);
    const size_t lines = fx.debugStream.texts.size();
    ensureStarted();
    EXPECT_EQ(apartment().gobjFileSystem.get(), first);
    EXPECT_EQ(fx.debugStream.texts.size(), lines) << "no second banner";
}

// Each failure shows one message box with the run time's title, leaves the
// state Failed and is never retried.
void expectFailedOnce(TestApartment& fx, const std::string& text) {
    ensureStarted();
    EXPECT_EQ(fx.messageBox.boxes(), std::vector<std::string>{"Ostrel|16|" + text});
    EXPECT_EQ(apartment().startState, StartState::Failed);
    ensureStarted();
    EXPECT_EQ(fx.messageBox.shown.size(), 1u) << "no retry";
}

TEST(Startup, DamagedLanguageFileIsReportedOnceByFileAndLineAndStartUpGoesOn) {
    TestApartment fx;
    fx.writeMarker();
    fx.environment.folder = fakes::utf8Of(fx.programData);
    fakes::writeBytes(fx.programData / "Ostrel.en.txt", "108=Ostrel\nno text here\n");
    fx.install();
    ensureStarted();
    EXPECT_EQ(fx.messageBox.boxes(),
              std::vector<std::string>{"Ostrel|16|Bad text at line 2 of " +
                                       fakes::utf8Of(fx.programData / "Ostrel.en.txt")});
    EXPECT_EQ(apartment().startState, StartState::Started);
    EXPECT_TRUE(apartment().gobjFileSystem && gobjPCInfo()) << "to the end";
    EXPECT_EQ(glngDebugLevel(), 1);
    // Every record binds again: the file is not reported a second time, and
    // the built-in English texts stand in.
    EXPECT_NO_THROW(gobjLanguageText().Initialise("Ostrel", fx.environment.folder));
    EXPECT_EQ(gobjLanguageText().GetText(131), "OK");
    EXPECT_EQ(fx.messageBox.shown.size(), 1u);
}

TEST(Startup, MissingFileSystemIsReportedByNameAndPathsFailLater) {
    TestApartment fx;
    fx.use(&platform::Ports::fileSystem, nullptr);
    expectFailedOnce(
        fx,
        "Unable to create FileSystemObject.\r\nError 429: ActiveX component can't create object");
    EXPECT_FALSE(gobjPCInfo());
    // Each later path operation fails at its own call site, while reports
    // still reach the debugger.
    EXPECT_EQ(errorNumberOf([] { fileSystem(); }), 91);
    EXPECT_EQ(errorNumberOf([] { buildKeyPath("SOFTWARE", "QUORL"); }), 91);
    gsubDebugPrint("still here");
    EXPECT_EQ(fx.debugStream.texts.back(), "still here\r\n");

    // Without a message box to show it on, it still never raises.
    fx.use(&platform::Ports::messageBox, nullptr);
    EXPECT_NO_THROW(ensureStarted());
    EXPECT_EQ(apartment().startState, StartState::Failed);
}

TEST(Startup, MissingRegistryIsReportedByNameAndLeavesDiagnosticsOff) {
    TestApartment fx;
    fx.writeMarker();
    fx.use(&platform::Ports::registry, nullptr);
    expectFailedOnce(
        fx, "Unable to create WNCRegistry.\r\nError 429: ActiveX component can't create object");
    EXPECT_TRUE(apartment().gobjFileSystem);
    EXPECT_FALSE(gblnDebug());
    EXPECT_FALSE(std::filesystem::exists(fakes::pathOf(fx.dataFile("ot.log"))));
    EXPECT_TRUE(fx.debugStream.texts.empty()) << "the steps before diagnostics write nothing";
}

TEST(Startup, EachThreadHasItsOwnGlobalsAndItsOwnMain) {
    TestApartment fx;
    ensureStarted();
    const FileSystemObject* mine = apartment().gobjFileSystem.get();
    const FileSystemObject* theirs = nullptr;
    std::thread other([&] {
        apartment() = OstrelGlobals(fx.ports);
        ensureStarted();
        theirs = apartment().gobjFileSystem.get();
    });
    other.join();
    EXPECT_NE(theirs, nullptr);
    EXPECT_NE(theirs, mine);
    EXPECT_EQ(apartment().gobjFileSystem.get(), mine);
}

}  // namespace
}  // namespace ostrel
