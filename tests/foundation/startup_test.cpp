#include <gtest/gtest.h>

#include <thread>

#include "fakes/error_number.h"
#include "fakes/test_apartment.h"
#include "foundation/debug_log.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "foundation/startup.h"
#include "machine/pc_info.h"
#include "runtime/automation_error.h"

namespace ostrel {
namespace {

using fakes::TestApartment;

using fakes::errorNumberOf;

TEST(Startup, FillsTheGlobalsOnceAndShowsNothing) {
    TestApartment fx;
    fx.writeMarker();
    ensureStarted();

    const OstrelGlobals& g = apartment();
    EXPECT_EQ(g.startState, StartState::Started);
    EXPECT_TRUE(fx.messageBox.shown.empty());
    EXPECT_TRUE(g.gobjFileSystem);
    EXPECT_TRUE(g.gobjPCInfo) << "the shared snapshot stays after Main drops its reference";
    EXPECT_TRUE(gblnDebug());
    EXPECT_EQ(glngDebugLevel(), 1);

    // Started is final: a later creation doesn't run Main again.
    const FileSystemObject* first = g.gobjFileSystem.get();
    const size_t lines = fx.debugStream.texts.size();
    ensureStarted();
    EXPECT_EQ(apartment().gobjFileSystem.get(), first);
    EXPECT_EQ(fx.debugStream.texts.size(), lines) << "no second banner";
}

TEST(Startup, MissingLanguageFileShowsTheDescriptionAndStopsThere) {
    TestApartment fx;
    fx.environment.folder = fakes::utf8Of(fx.programData);  // no texts there
    fx.install();
    ensureStarted();

    ASSERT_EQ(fx.messageBox.shown.size(), 1u);
    EXPECT_EQ(fx.messageBox.shown[0].text, "File not found");
    EXPECT_EQ(fx.messageBox.shown[0].style, 16);
    EXPECT_EQ(fx.messageBox.shown[0].title, "");
    EXPECT_EQ(apartment().startState, StartState::Failed);
    EXPECT_FALSE(apartment().gobjFileSystem) << "the globals stay as far as the steps got";

    ensureStarted();
    EXPECT_EQ(fx.messageBox.shown.size(), 1u) << "no retry";
}

TEST(Startup, MissingFileSystemIsReportedByNameAndPathsFailLater) {
    TestApartment fx;
    fx.ports.fileSystem = nullptr;
    fx.install();
    ensureStarted();

    ASSERT_EQ(fx.messageBox.shown.size(), 1u);
    EXPECT_EQ(fx.messageBox.shown[0].text,
              "Unable to create FileSystemObject.\r\nError 429: ActiveX component can't create "
              "object");
    EXPECT_EQ(fx.messageBox.shown[0].style, 16);
    EXPECT_EQ(apartment().startState, StartState::Failed);
    EXPECT_FALSE(apartment().gobjPCInfo);

    // Each later path operation fails at its own call site...
    EXPECT_EQ(errorNumberOf([] { fileSystem(); }), 91);
    EXPECT_EQ(errorNumberOf([] { buildKeyPath("SOFTWARE", "QUORL"); }), 91);
    // ...while reports still reach the debugger.
    gsubDebugPrint("still here");
    EXPECT_EQ(fx.debugStream.texts.back(), "still here\r\n");

    ensureStarted();
    EXPECT_EQ(fx.messageBox.shown.size(), 1u);
}

TEST(Startup, MissingRegistryIsReportedByNameAndLeavesDiagnosticsOff) {
    TestApartment fx;
    fx.writeMarker();
    fx.ports.registry = nullptr;
    fx.install();
    ensureStarted();

    ASSERT_EQ(fx.messageBox.shown.size(), 1u);
    EXPECT_EQ(fx.messageBox.shown[0].text,
              "Unable to create WNCRegistry.\r\nError 429: ActiveX component can't create object");
    EXPECT_TRUE(apartment().gobjFileSystem);
    EXPECT_FALSE(gblnDebug());
    EXPECT_EQ(glngDebugLevel(), 0);
    EXPECT_FALSE(std::filesystem::exists(fakes::pathOf(fx.dataFile("ot.log"))));
    EXPECT_TRUE(fx.debugStream.texts.empty()) << "the steps before diagnostics write nothing";

    ensureStarted();
    EXPECT_EQ(fx.messageBox.shown.size(), 1u);
}

TEST(Startup, NeverRaisesEvenWithoutAMessageBox) {
    TestApartment fx;
    fx.ports.fileSystem = nullptr;
    fx.ports.messageBox = nullptr;
    fx.install();
    EXPECT_NO_THROW(ensureStarted());
    EXPECT_EQ(apartment().startState, StartState::Failed);
}

TEST(Startup, EachThreadHasItsOwnGlobalsAndItsOwnMain) {
    TestApartment fx;
    ensureStarted();
    const FileSystemObject* mine = apartment().gobjFileSystem.get();

    const FileSystemObject* theirs = nullptr;
    StartState theirStateBefore = StartState::Failed;
    std::thread other([&] {
        apartment() = OstrelGlobals(fx.ports);
        theirStateBefore = apartment().startState;
        ensureStarted();
        theirs = apartment().gobjFileSystem.get();
    });
    other.join();

    EXPECT_EQ(theirStateBefore, StartState::NotStarted);
    EXPECT_NE(theirs, nullptr);
    EXPECT_NE(theirs, mine);
    EXPECT_EQ(apartment().gobjFileSystem.get(), mine);
}

}  // namespace
}  // namespace ostrel
