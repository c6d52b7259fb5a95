#include "foundation/file_system_object.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "fakes/error_number.h"
#include "fakes/test_apartment.h"
#include "foundation/globals.h"

namespace ostrel {
namespace {

using fakes::errorNumberOf;

TEST(FileSystemObject, WorksOnRealFilesWithTheRunTimesErrors) {
    fakes::TestApartment fx;
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
    fso.DeleteFile(file, true);
    EXPECT_FALSE(fso.FileExists(file));

    const std::string missing = fso.BuildPath(folder, "missing");
    EXPECT_EQ(errorNumberOf([&] { fso.AppendLine(fso.BuildPath(missing, "x.log"), "x"); }), 76);
    EXPECT_FALSE(fso.FolderExists(missing));
}

}  // namespace
}  // namespace ostrel
