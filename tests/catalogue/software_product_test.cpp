#include "catalogue/software_product.h"

#include <gmock/gmock.h>

#include "catalogue_fixture.h"

namespace ostrel::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using SoftwareProductTest = CatalogueTest;

TEST_F(SoftwareProductTest, LoadsItsKeyWithTheDefaultsOfMissingValues) {
    loadRegistry(toolbarKey("Full", value("DisplayName", "Quorl Full") + partNumber("PN-1") +
                                        dword("VersionMajor", 9) + dword("VersionMinor", 30) +
                                        dword("VersionRevisionMinor", 3) +
                                        value("IconFile", " d.ico ") + value("Tooltip", "Tip")) +
                 toolbarKey("Bare"));
    const auto full = named("Full");
    EXPECT_EQ(full->DisplayName(), "Quorl Full");
    EXPECT_EQ(full->BuildID(), "9300003");
    EXPECT_EQ(full->VersionString(), "9.30.0.3");
    EXPECT_EQ(full->IconFile() + "|" + full->ToolTip(), " d.ico |Tip") << "not trimmed";

    const auto bare = named("Bare");
    EXPECT_EQ(bare->DisplayName(), "Bare");
    EXPECT_EQ(bare->ApplicationPath(), "");
    EXPECT_EQ(bare->BuildID(), "0000000");
    EXPECT_EQ(bare->Label() + bare->IconFile() + bare->Revision() + bare->ToolTip(), "0000");

    // Writing a version number leaves BuildID until the next load, which restores both.
    full->VersionMajor(5);
    EXPECT_EQ(full->VersionMajor(), 5);
    EXPECT_EQ(full->BuildID(), "9300003");
    full->Load();
    EXPECT_EQ(full->VersionMajor(), 9);
    EXPECT_EQ(full->BuildID(), "9300003");

    // A key that isn't there blanks the record, but not its part number.
    full->ProductName("Absent");
    EXPECT_EQ(full->PartNumber(), "PN-1");
    EXPECT_EQ(full->DisplayName() + full->BuildID() + full->Label(), "");
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(SoftwareProductTest, ApplicationPathIsTrimmedAndGetsABackslash) {
    const std::pair<const char*, const char*> cases[] = {{" C:\\\\App ", "C:\\App\\"},
                                                         {"\\\\", "\\"},
                                                         {"C:\\\\App\\\\", "C:\\App\\\\"},
                                                         {"   ", "\\"},
                                                         {"", ""}};
    for (const auto& [stored, expected] : cases) {
        loadRegistry(toolbarKey("P", value("ApplicationPath", stored)));
        EXPECT_EQ(named("P")->ApplicationPath(), expected) << stored;
    }
}

// No separator in a BuildID; a number out of the 16-bit range stops the load there.
TEST_F(SoftwareProductTest, VersionNumbersMakeTheBuildIdOrStopTheLoad) {
    loadRegistry(
        toolbarKey("B", dword("VersionMinor", 123) + dword("VersionRevisionMajor", 100)) +
        toolbarKey("C", dword("VersionMajor", 0xffffffff) + dword("VersionMinor", 0xfffffffb)) +
        toolbarKey("Big", partNumber("PN-9") + dword("VersionMajor", 40000) +
                              dword("VersionMinor", 2) + value("Label", "L")) +
        toolbarKey("Late", dword("VersionMinor", 2) + dword("VersionRevisionMinor", 0xffff7fff)));
    EXPECT_EQ(named("B")->BuildID(), "012310000");
    EXPECT_EQ(named("C")->BuildID(), "-1-050000");
    const auto big = named("Big");
    EXPECT_EQ(big->PartNumber(), "PN-9");
    EXPECT_EQ(big->VersionMinor(), 0);
    EXPECT_EQ(big->BuildID() + big->Label(), "");
    EXPECT_EQ(named("Late")->VersionMinor(), 2);
    EXPECT_THAT(logLines(),
                ElementsAre("[LoadEx] Error: 6, Overflow", "[LoadEx] Error: 6, Overflow"));
}

// The load's trap: without a registry wrapper the record stays blank, and says why.
TEST_F(SoftwareProductTest, ALoadWithoutARegistryWrapperLogsAndLeavesTheRecordBlank) {
    loadRegistry(toolbarKey("Full", partNumber("PN-1") + value("Label", "L")));
    const auto product = named("Full");
    product->VersionMajor(3);
    apartment().ports.registry = nullptr;
    product->Load();
    EXPECT_EQ(product->PartNumber(), "PN-1") << "the blanking leaves it";
    EXPECT_EQ(product->VersionMajor(), 0);
    EXPECT_EQ(product->DisplayName() + product->BuildID() + product->Label(), "");
    EXPECT_THAT(logLines(),
                ElementsAre("[LoadEx] Error: 429, ActiveX component can't create object"));
}

TEST_F(SoftwareProductTest, APartNumberWriteThatOnlyChangesTheCaseIsDropped) {
    loadRegistry(toolbarKey("Upper", partNumber("ABC") + dword("VersionMajor", 4)) +
                 toolbarKey("NoNumber"));
    const auto product = newSoftwareProduct();
    product->PartNumber("abc");
    product->ProductName("Upper");
    EXPECT_EQ(product->PartNumber(), "abc");
    product->PartNumber("abd");
    product->VersionBugFix(3);
    product->Load();
    EXPECT_EQ(product->PartNumber(), "ABC");
    EXPECT_EQ(product->VersionBugFix(), 0) << "no load fills it, every load blanks it";
    product->ProductName("NoNumber");
    EXPECT_EQ(product->PartNumber(), "");
}

}  // namespace
}  // namespace ostrel::testing
