#include "catalogue/software_product.h"

#include <gmock/gmock.h>

#include "catalogue/software_products.h"
#include "catalogue_fixture.h"
#include "foundation/object_factory.h"
#include "machine/pc_info.h"

namespace ostrel::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SoftwareProductTest : public CatalogueTest {
  protected:
    Ref<wncSoftwareProduct> named(std::string_view name) {
        Ref<wncSoftwareProduct> product = newSoftwareProduct();
        product->ProductName(name);
        return product;
    }
};

TEST_F(SoftwareProductTest, LoadsItsKeyWithTheDefaultsOfMissingValues) {
    loadRegistry(
        toolbarKey("Full",
                   "\"DisplayName\"=\"Quorl Full\"\n\"ApplicationPath\"=\"C:\\\\Full\"\n" +
                       partNumber("PN-1") +
                       "\"VersionMajor\"=dword:00000009\n\"VersionMinor\"=dword:0000001e\n"
                       "\"VersionRevisionMinor\"=dword:00000003\n\"Label\"=\"Design\"\n"
                       "\"IconFile\"=\" d.ico \"\n\"Revision\"=\"SP1\"\n\"Tooltip\"=\"Tip\"\n") +
        toolbarKey("Bare"));
    const auto full = named("Full");
    EXPECT_EQ(full->DisplayName(), "Quorl Full");
    EXPECT_EQ(full->ApplicationPath(), "C:\\Full\\");
    EXPECT_EQ(full->PartNumber(), "PN-1");
    EXPECT_EQ(full->BuildID(), "9300003");
    EXPECT_EQ(full->VersionString(), "9.30.0.3");
    EXPECT_EQ(full->IconFile(), " d.ico ") << "the last four values are not trimmed";
    EXPECT_EQ(full->ToolTip(), "Tip");

    const auto bare = named("Bare");
    EXPECT_EQ(bare->DisplayName(), "Bare");
    EXPECT_EQ(bare->ApplicationPath(), "");
    EXPECT_EQ(bare->BuildID(), "0000000");
    for (const std::string& text :
         {bare->Label(), bare->IconFile(), bare->Revision(), bare->ToolTip()}) {
        EXPECT_EQ(text, "0");
    }

    // A key that isn't there blanks the record, but not its part number.
    full->ProductName("Absent");
    EXPECT_EQ(full->PartNumber(), "PN-1");
    EXPECT_EQ(full->BuildID(), "");
    EXPECT_EQ(full->Label(), "");
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(SoftwareProductTest, ApplicationPathIsTrimmedAndGetsABackslash) {
    const std::pair<const char*, const char*> cases[] = {{" C:\\\\App ", "C:\\App\\"},
                                                         {"\\\\", "\\"},
                                                         {"C:\\\\App\\\\", "C:\\App\\\\"},
                                                         {"   ", "\\"},
                                                         {"", ""}};
    for (const auto& [stored, expected] : cases) {
        loadRegistry(toolbarKey("P", "\"ApplicationPath\"=\"" + std::string(stored) + "\"\n"));
        EXPECT_EQ(named("P")->ApplicationPath(), expected) << stored;
    }
}

TEST_F(SoftwareProductTest, BuildIdPadsToTwoDigitsWithoutSeparator) {
    loadRegistry(
        toolbarKey("A", "\"VersionMajor\"=dword:0000000c\n\"VersionMinor\"=dword:00000007\n") +
        toolbarKey("B",
                   "\"VersionMinor\"=dword:0000007b\n\"VersionRevisionMajor\"=dword:00000064\n") +
        toolbarKey("C", "\"VersionMajor\"=dword:ffffffff\n"));
    EXPECT_EQ(named("A")->BuildID(), "12070000");
    EXPECT_EQ(named("B")->BuildID(), "012310000");
    EXPECT_EQ(named("C")->BuildID(), "-1000000");
}

TEST_F(SoftwareProductTest, AnOutOfRangeNumberStopsTheLoadHalfWay) {
    loadRegistry(
        toolbarKey("Big", "\"ApplicationPath\"=\"C:\\\\Big\"\n" + partNumber("PN-9") +
                              "\"VersionMajor\"=dword:00009c40\n\"VersionMinor\"=dword:00000002\n"
                              "\"Label\"=\"L\"\n") +
        toolbarKey("Late",
                   "\"VersionMinor\"=dword:00000002\n\"VersionRevisionMinor\"=dword:ffff7fff\n"));
    const auto big = named("Big");
    EXPECT_EQ(big->ApplicationPath(), "C:\\Big\\");
    EXPECT_EQ(big->PartNumber(), "PN-9");
    EXPECT_EQ(big->VersionMinor(), 0);
    EXPECT_EQ(big->BuildID(), "");
    EXPECT_EQ(big->Label(), "");
    EXPECT_EQ(named("Late")->VersionMinor(), 2);
    EXPECT_THAT(logLines(),
                ElementsAre("[LoadEx] Error: 6, Overflow", "[LoadEx] Error: 6, Overflow"));
}

TEST_F(SoftwareProductTest, APartNumberWriteThatOnlyChangesTheCaseIsDropped) {
    loadRegistry(toolbarKey("Upper", partNumber("ABC") + "\"VersionMajor\"=dword:00000004\n") +
                 toolbarKey("NoNumber"));
    const auto product = newSoftwareProduct();
    product->PartNumber("abc");
    product->ProductName("Upper");
    EXPECT_EQ(product->PartNumber(), "abc");
    product->PartNumber("abd");
    product->VersionMajor(7);
    product->VersionBugFix(3);
    EXPECT_EQ(product->BuildID(), "4000000") << "a plain write changes nothing else";
    product->Load();
    EXPECT_EQ(product->PartNumber(), "ABC");
    EXPECT_EQ(product->VersionMajor(), 4);
    EXPECT_EQ(product->VersionBugFix(), 0) << "no load fills it, every load blanks it";
    product->ProductName("NoNumber");
    EXPECT_EQ(product->PartNumber(), "");
}

TEST_F(SoftwareProductTest, SharesTheMachineFactsAndReferencesItsCollection) {
    gsubReleasePCInfo();
    const auto products = newSoftwareProducts();
    {
        const auto product = products->Add("Anything");
        EXPECT_TRUE(apartment().gobjPCInfo) << "a record makes sure the shared facts exist";
        EXPECT_EQ(product->Parent(), products);
        EXPECT_EQ(products->refCount(), 2u);
        products->Remove(Variant(int32_t{1}));
        EXPECT_FALSE(product->Parent());
        EXPECT_EQ(products->refCount(), 1u);
    }
    EXPECT_FALSE(apartment().gobjPCInfo) << "destroying a record releases them";
}

}  // namespace
}  // namespace ostrel::testing
