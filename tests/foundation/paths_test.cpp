#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "fakes/error_number.h"
#include "fakes/test_apartment.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "foundation/paths.h"
#include "platform/adapters.h"

#ifdef _WIN32
#include <windows.h>
#undef DeleteFile  // the file system object's member, not the system's macro

#include <atomic>
#include <thread>
#endif

namespace ostrel {
namespace {

using Calls = std::vector<std::string>;
using fakes::errorNumberOf;

class Paths : public ::testing::Test {
  protected:
    const Calls& said() const { return fx.debugStream.texts; }
    fakes::TestApartment fx;
};

TEST_F(Paths, LongPathNamesTakeTwoCallsAtMostAndLogOnlyWhatIsNoFailedCall) {
    EXPECT_EQ(gfstrGetLongPathFilename("C:\\NOWHERE~1"), "C:\\NOWHERE~1");
    fx.paths.longNames["C:\\PROGRA~1"] = "C:\\Program Files";
    EXPECT_EQ(gfstrGetLongPathFilename("C:\\PROGRA~1"), "C:\\Program Files");
    const std::string deep = "C:\\" + std::string(300, 'd');
    fx.paths.longNames["C:\\DDDDDD~1"] = deep;
    EXPECT_EQ(gfstrGetLongPathFilename("C:\\DDDDDD~1"), deep);
    EXPECT_EQ(fx.paths.calls, (Calls{"long C:\\NOWHERE~1 260", "long C:\\PROGRA~1 260",
                                     "long C:\\DDDDDD~1 260", "long C:\\DDDDDD~1 305"}))
        << "the second call one larger than the size the first asked for";

    // A call that fails, or a system without it, is no answer; the rest is logged.
    fx.paths.longNames["X"] = std::string(40000, 'x');  // cut at a NUL beyond 32767: overflow
    EXPECT_EQ(gfstrGetLongPathFilename("X"), "X");
    fx.paths.longNameRaises = true;
    EXPECT_EQ(gfstrGetLongPathFilename("C:\\PROGRA~1"), "C:\\PROGRA~1");
    fx.use(&platform::Ports::paths, nullptr);
    EXPECT_EQ(gfstrGetLongPathFilename("C:\\PROGRA~1"), "C:\\PROGRA~1");
    EXPECT_EQ(said(),
              Calls{"[gfstrGetLongPathFilename] vstrPathFilename: 'X' ERROR: Overflow\r\n"});
}

TEST_F(Paths, TheFolderDialogueGivesThePathAsTheShellDoesOrNothing) {
    EXPECT_EQ(gfstrBrowseForFolder(0, "Pick", kBrowseOptions, "C:\\"), "") << "cancelled";
    fx.shell.choice = "C:\\Data\\";
    EXPECT_EQ(gfstrBrowseForFolder(7, "", 65, ""), "C:\\Data\\") << "no separator removed";
    fx.shell.choice = "";
    EXPECT_EQ(gfstrBrowseForFolder(0, "", 65, ""), "") << "no separator added";
    fx.shell.choice = "C:\\Data";
    fx.shell.selfIsNothing = true;
    EXPECT_EQ(gfstrBrowseForFolder(0, "", 65, ""), "");
    EXPECT_EQ(fx.shell.created, 4) << "a new shell object for each call";
    EXPECT_EQ(fx.shell.calls.at(0), "0|Pick|65|C:\\");

    fx.shell.createFails = true;
    EXPECT_EQ(gfstrBrowseForFolder(0, "", 65, ""), "");
    EXPECT_EQ(said(), Calls{"ERROR: 429 - ActiveX component can't create object\r\n"});
}

TEST_F(Paths, SetCurrentFolderGivesTheOldFolderEvenWhenTheChangeFails) {
    fx.paths.folders = {"D:\\Other"};
    // An empty name changes nothing; a missing folder leaves C:\Work current.
    EXPECT_EQ((Calls{gfstrSetCurrentFolder(""), gfstrSetCurrentFolder("D:\\Missing"),
                     gfstrSetCurrentFolder("D:\\Other"), gfstrSetCurrentFolder("C:\\Work")}),
              (Calls{"", "C:\\Work", "C:\\Work", "D:\\Other"}));
    EXPECT_EQ(fx.paths.calls, (Calls{"cwd 260", "cd D:\\Missing", "cwd 260", "cd D:\\Other",
                                     "cwd 260", "cd C:\\Work"}));

    fx.paths.currentDirectoryFails = true;
    fx.paths.folders.push_back("C:\\Work");
    EXPECT_EQ(gfstrSetCurrentFolder("D:\\Other"), std::string(261, '\0'))
        << "kept: the buffer of NULs";
    EXPECT_EQ(fx.paths.currentDirectory, "D:\\Other") << "changed all the same";

    fx.use(&platform::Ports::paths, nullptr);
    EXPECT_EQ(errorNumberOf([] { gfstrSetCurrentFolder("D:\\Other"); }), kErrCantCreate);
}

TEST_F(Paths, DeleteFileSaysWhetherTheFileIsGoneNotWhoRemovedIt) {
    const std::filesystem::path file = fx.programData / "read-only.txt";
    fakes::writeBytes(file, "x");
    std::filesystem::permissions(file, std::filesystem::perms::owner_read);
    EXPECT_TRUE(gfblnDeleteFile(fakes::utf8Of(file)));
    EXPECT_TRUE(apartment().gobjFileSystem) << "made on the way";
    EXPECT_TRUE(gfblnDeleteFile(fakes::utf8Of(file))) << "never there";

    fx.use(&platform::Ports::fileSystem, nullptr);
    EXPECT_FALSE(gfblnDeleteFile(fakes::utf8Of(file))) << "none can be made";
}

TEST_F(Paths, TheFileSystemObjectWorksOnRealFilesWithTheRunTimesErrors) {
    EXPECT_EQ(errorNumberOf([] { FileSystemObject fso(nullptr); }), 429);
    const FileSystemObject fso(fx.ports.fileSystem);
    const std::string folder = fakes::utf8Of(fx.programData);
    const std::string file = fso.BuildPath(folder, "Ünïcode.log");

    EXPECT_FALSE(fso.FileExists(folder)) << "a folder is no file";
    EXPECT_TRUE(fso.FolderExists(folder));
    EXPECT_EQ(errorNumberOf([&] { fso.FileSize(file); }), 53);
    EXPECT_EQ(errorNumberOf([&] { fso.ReadAll(file); }), 53);
    EXPECT_EQ(errorNumberOf([&] { fso.DeleteFile(file, true); }), 53);

    fso.AppendLine(file, "first");
    fso.AppendLine(file, "");
    EXPECT_EQ(fso.ReadAll(file), "first\r\n\r\n");
    EXPECT_EQ(fso.FileSize(file), 9);

    std::filesystem::permissions(fakes::pathOf(file), std::filesystem::perms::all,
                                 std::filesystem::perm_options::remove);
    EXPECT_EQ(errorNumberOf([&] { fso.DeleteFile(file, false); }), 70) << "read-only";

    const std::string missing = fso.BuildPath(folder, "missing");
    EXPECT_EQ(errorNumberOf([&] { fso.AppendLine(fso.BuildPath(missing, "x.log"), "x"); }), 76);
    EXPECT_FALSE(fso.FolderExists(missing));
}

// The real calls.
TEST_F(Paths, TheSystemsLongNamesAndCurrentFolder) {
    fx.use(&platform::Ports::paths, &platform::systemPaths());
    // Not ASCII: the A calls count its bytes in the ANSI code page, not in UTF-8.
    const std::filesystem::path home = fx.programData / fakes::pathOf("Jürgen");
    std::filesystem::create_directories(home);
    const std::string folder = fakes::utf8Of(std::filesystem::canonical(home));
    EXPECT_EQ(gfstrGetLongPathFilename(folder), folder);
    const std::string missing = folder + "/missing";
    EXPECT_EQ(gfstrGetLongPathFilename(missing), missing);

    const std::string before = gfstrSetCurrentFolder(folder);
    EXPECT_EQ(gfstrSetCurrentFolder(missing), folder) << "the old one, as if all went well";
    EXPECT_EQ(gfstrSetCurrentFolder(before), folder);

#ifdef _WIN32
    // Beyond 260 characters the A call refuses the path (the two calls are
    // the fakes' test): it comes back as given.
    std::wstring deep = L"\\\\?\\" + fakes::pathOf(folder).wstring();
    for (wchar_t letter = L'a'; letter < L'g'; ++letter) {
        deep += L"\\" + std::wstring(50, letter);
        ASSERT_TRUE(CreateDirectoryW(deep.c_str(), nullptr)) << GetLastError();
    }
    const std::string longForm = fakes::utf8Of(deep.substr(4));
    EXPECT_EQ(gfstrGetLongPathFilename(longForm), longForm);

    // A file held open without delete sharing, as another program holds it.
    const std::string held = folder + "\\held.txt";
    HANDLE handle = CreateFileW(fakes::pathOf(held).wstring().c_str(), GENERIC_WRITE, 0, nullptr,
                                CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(handle, INVALID_HANDLE_VALUE);
    EXPECT_FALSE(gfblnDeleteFile(held));
    CloseHandle(handle);
    EXPECT_TRUE(gfblnDeleteFile(held));
#else
    // A file the system keeps whoever asks: the deletion fails quietly.
    EXPECT_FALSE(gfblnDeleteFile("/proc/version"));
#endif
    EXPECT_TRUE(said().empty()) << "nothing of it logged";
}

#ifdef _WIN32
// The first visible window of a thread, for EnumThreadWindows (a callback
// of the system's calling convention, which a lambda isn't on x86).
BOOL CALLBACK firstVisible(HWND window, LPARAM out) {
    if (!IsWindowVisible(window)) return TRUE;
    *reinterpret_cast<HWND*>(out) = window;
    return FALSE;
}

// The shell's own object, made by its name and called late bound: no error
// on the way. A dialogue that shows is cancelled by a second thread, as a
// user would; without a display Wine's shell answers Nothing at once.
TEST_F(Paths, TheSystemShellsFolderDialogueCancelledGivesNothingAndNoMessage) {
    fx.use(&platform::Ports::shell, &platform::systemShell());
    const DWORD caller = GetCurrentThreadId();
    std::atomic<bool> done{false};
    std::thread user([caller, &done] {
        while (!done) {
            Sleep(50);
            HWND found = nullptr;
            EnumThreadWindows(caller, firstVisible, reinterpret_cast<LPARAM>(&found));
            if (found) PostMessageW(found, WM_COMMAND, IDCANCEL, 0);
        }
    });
    EXPECT_EQ(gfstrBrowseForFolder(0, "Pick", kBrowseOptions, ""), "");
    done = true;
    user.join();
    EXPECT_TRUE(said().empty());
}
#endif

}  // namespace
}  // namespace ostrel
