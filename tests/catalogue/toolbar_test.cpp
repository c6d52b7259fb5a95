#include "catalogue/toolbar.h"

#include <gmock/gmock.h>

#include "catalogue_fixture.h"

namespace ostrel::testing {
namespace {

using ::testing::ElementsAre;

class ToolbarTest : public CatalogueTest {};

TEST_F(ToolbarTest, ToolbarKeyComparesTheStoredNumberAsItStands) {
    loadRegistry(toolbarKey("Beta", partNumber("P-1")) + toolbarKey("Alpha", partNumber("p-1")) +
                 toolbarKey("Padded", partNumber(" ABC ")) + toolbarKey("Temp", partNumber("t-1")) +
                 toolbarKey("Unknown", partNumber("zz-9")) +
                 toolbarKey("Trailing  ", partNumber("tr-1")) + toolbarKey("NoNumber"));
    EXPECT_EQ(ToolbarKey("P-1"), "Alpha");
    EXPECT_EQ(ToolbarKey("t-1"), "Temp");
    EXPECT_EQ(ToolbarKey("ZZ-9"), "Unknown");
    EXPECT_EQ(ToolbarKey("abc"), "");
    EXPECT_EQ(ToolbarKey(""), "");
    EXPECT_EQ(ToolbarKey("tr-1"), "") << "a trimmed name opens no key";
    EXPECT_TRUE(logLines().empty());
}

TEST_F(ToolbarTest, InstallDirAndFailures) {
    EXPECT_EQ(gfstrGetInstallDir(), "");
    loadRegistry("[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL]\n\"InstallDir\"=\" C:\\\\Quorl \"\n");
    EXPECT_EQ(gfstrGetInstallDir(), " C:\\Quorl ");

    apartment().ports.registry = nullptr;
    EXPECT_EQ(gfstrGetInstallDir(), "");
    EXPECT_EQ(ToolbarKey("a-1"), "");
    EXPECT_THAT(logLines(), ElementsAre("ERROR: 429-ActiveX component can't create object"));
}

}  // namespace
}  // namespace ostrel::testing
