#include "catalogue/toolbar.h"

#include <gmock/gmock.h>

#include "catalogue/software_products.h"
#include "catalogue_fixture.h"

namespace ostrel::testing {
namespace {

using ::testing::ElementsAre;
using ToolbarTest = CatalogueTest;

// Unlike ReadAll: the stored number as it stands, Temp and unknown numbers included.
// Without a registry wrapper all answer blank, and ReadAll changes nothing.
TEST_F(ToolbarTest, ToolbarKeyAndInstallDirReadTheValuesAsTheyStand) {
    EXPECT_EQ(gfstrGetInstallDir(), "");
    loadRegistry("[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL]\n" + value("InstallDir", " C:\\\\Quorl ") +
                 toolbarKey("Beta", partNumber("P-1")) + toolbarKey("Alpha", partNumber("p-1")) +
                 toolbarKey("Padded", partNumber(" ABC ")) + toolbarKey("Temp", partNumber("t-1")) +
                 toolbarKey("Unknown", partNumber("zz-9")) +
                 toolbarKey("Trailing  ", partNumber("tr-1")) + toolbarKey("NoNumber"));
    EXPECT_EQ(gfstrGetInstallDir(), " C:\\Quorl ");
    EXPECT_EQ(ToolbarKey("P-1"), "Alpha");
    EXPECT_EQ(ToolbarKey("t-1") + "|" + ToolbarKey("ZZ-9"), "Temp|Unknown");
    EXPECT_EQ(ToolbarKey("abc") + ToolbarKey(""), "");
    EXPECT_EQ(ToolbarKey("tr-1"), "") << "a trimmed name opens no key";
    EXPECT_TRUE(logLines().empty());

    const OwnedProducts products(newSoftwareProducts());
    products->Add("x", std::string("k"));
    apartment().ports.registry = nullptr;
    products->ReadAll();
    EXPECT_EQ(products->Count(), 1);
    EXPECT_EQ(gfstrGetInstallDir() + ToolbarKey("a-1"), "");
    const std::string error = "ERROR: 429-ActiveX component can't create object";
    EXPECT_THAT(logLines(), ElementsAre("[ReadAllProducts] " + error, error));
}

}  // namespace
}  // namespace ostrel::testing
