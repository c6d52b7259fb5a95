#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "fakes/error_number.h"
#include "fakes/test_apartment.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "runtime/automation_error.h"

namespace ostrel {
namespace {

using fakes::pathOf;
using fakes::readBytes;
using fakes::utf8Of;
using fakes::writeBytes;

using fakes::errorNumberOf;

TEST(FileSystemObject, CantBeMadeWithoutAFileSystemAndIsThenMissedEverywhere) {
    fakes::TestApartment fx;
    EXPECT_EQ(errorNumberOf([] { FileSystemObject fso(nullptr); }), 429);
    EXPECT_EQ(errorNumberOf([] { fileSystem(); }), 91);
    EXPECT_EQ(errorNumberOf([] { buildKeyPath("SOFTWARE", "QUORL"); }), 91);
}

TEST(FileSystemObject, KeyPathsJoinWithOneBackslashOnEveryPlatform) {
    fakes::TestApartment fx;
    apartment().gobjFileSystem = makeRef<FileSystemObject>(fx.ports.fileSystem);
    EXPECT_EQ(buildKeyPath("SOFTWARE\\QUORL", "Toolbar"), "SOFTWARE\\QUORL\\Toolbar");
    EXPECT_EQ(buildKeyPath("SOFTWARE\\QUORL\\", "Toolbar"), "SOFTWARE\\QUORL\\Toolbar");
    EXPECT_EQ(buildKeyPath("", "Toolbar"), "Toolbar");
}

TEST(FileSystemObject, WorksOnRealFilesWithTheRunTimesErrors) {
    fakes::TestApartment fx;
    const FileSystemObject fso(fx.ports.fileSystem);
    const std::string folder = utf8Of(fx.programData);
    const std::string file = fso.BuildPath(folder, "Ünïcode.log");

    EXPECT_FALSE(fso.FileExists(folder)) << "a folder is no file";
    EXPECT_TRUE(fso.FolderExists(folder));
    EXPECT_EQ(errorNumberOf([&] { fso.FileSize(file); }), 53);
    EXPECT_EQ(errorNumberOf([&] { fso.ReadAll(file); }), 53);
    EXPECT_EQ(errorNumberOf([&] { fso.DeleteFile(file, true); }), 53);

    fso.AppendLine(file, "first");
    fso.AppendLine(file, "");
    EXPECT_TRUE(fso.FileExists(file));
    EXPECT_EQ(fso.ReadAll(file), "first\r\n\r\n");
    EXPECT_EQ(fso.FileSize(file), 9);

    std::filesystem::permissions(pathOf(file), std::filesystem::perms::all,
                                 std::filesystem::perm_options::remove);
    EXPECT_EQ(errorNumberOf([&] { fso.DeleteFile(file, false); }), 70) << "read-only";
    fso.DeleteFile(file, true);
    EXPECT_FALSE(fso.FileExists(file));

    const std::string nowhere = fso.BuildPath(fso.BuildPath(folder, "missing"), "x.log");
    EXPECT_EQ(errorNumberOf([&] { fso.AppendLine(nowhere, "x"); }), 76);
    EXPECT_FALSE(fso.FolderExists(fso.BuildPath(folder, "missing")));
}

}  // namespace
}  // namespace ostrel
