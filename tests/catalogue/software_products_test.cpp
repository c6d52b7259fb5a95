#include "catalogue/software_products.h"

#include <gmock/gmock.h>

#include <memory>

#include "catalogue/part_numbers.h"
#include "catalogue/software_product.h"
#include "catalogue_fixture.h"
#include "fakes/error_number.h"
#include "foundation/object_factory.h"
#include "runtime/automation_error.h"

namespace ostrel::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using fakes::errorNumberOf;

std::vector<std::string> namesOf(const wncSoftwareProducts& products) {
    std::vector<std::string> names;
    for (const auto& product : products.items()) names.push_back(product->ProductName());
    return names;
}

std::string duplicateLine(const std::string& number, const std::string& kept,
                          const std::string& dropped) {
    return "[ReadAllProducts] Multiple toolbar entries exist for part number: '" + number + "'(" +
           kept + " and " + dropped + ").  " + kept + " will be used and " + dropped +
           " discarded.";
}

// Refuses the keys whose path ends with "Locked", as for a key the user may not read.
class RefusingRegistry : public platform::RegistryPort {
  public:
    explicit RefusingRegistry(platform::RegistryPort& inner) : inner_(inner) {}
    std::unique_ptr<platform::RegistryKey> open(int32_t hive, std::string_view path, int32_t access,
                                                int32_t& errorCode) override {
        if (!path.ends_with("Locked")) return inner_.open(hive, path, access, errorCode);
        errorCode = 5;
        return nullptr;
    }

  private:
    platform::RegistryPort& inner_;
};

class SoftwareProductsTest : public CatalogueTest {
  protected:
    Ref<wncSoftwareProducts> products = newSoftwareProducts();
};

TEST_F(SoftwareProductsTest, PassesOverTempUnreadableAndUnknownSubKeys) {
    products->ReadAll();
    EXPECT_EQ(products->Count(), 0) << "no Toolbar key";

    loadRegistry(toolbarKey("Alpha", partNumber("a-1")) + toolbarKey("Locked", partNumber("b-2")) +
                 toolbarKey("NoNumber") + toolbarKey("Stranger", partNumber("Z-9")) +
                 toolbarKey("tEMP", partNumber("b-10")) + toolbarKey("Blank", partNumber("  ")));
    RefusingRegistry refusing(apartment_.registry);
    apartment().ports.registry = &refusing;
    products->ReadAll();
    EXPECT_THAT(namesOf(*products), ElementsAre("Alpha"));
    EXPECT_THAT(logLines(), IsEmpty()) << "unknown products are told only with the log on";

    apartment().gblnDebug = true;
    newSoftwareProducts()->ReadAll();
    EXPECT_THAT(logLines(), ElementsAre("[ReadAllProducts] Ignoring unknown product:",
                                        "[ReadAllProducts] Ignoring unknown product:z-9"));
}

TEST_F(SoftwareProductsTest, KeepsTheFirstOfTwoSubKeysAndOrdersByCharacterCode) {
    loadRegistry(toolbarKey("B", partNumber("p-1")) + toolbarKey("A", partNumber("P-1")) +
                 toolbarKey("Padded", partNumber(" ABC ")) +
                 toolbarKey("Plain", partNumber("abc")) + toolbarKey("One", partNumber("b-2")) +
                 toolbarKey("Two", partNumber("b-10")));
    products->ReadAll();
    EXPECT_THAT(namesOf(*products), ElementsAre("Padded", "Two", "One", "A"));
    EXPECT_THAT(logLines(), ElementsAre(duplicateLine("p-1", "A", "B"),
                                        duplicateLine("abc", "Padded", "Plain")));
    // Lower-case keys; the record keeps the registry's form unless it differs by more than case.
    EXPECT_EQ(products->Item("P-1")->PartNumber(), "P-1");
    EXPECT_EQ(products->Item("abc")->PartNumber(), "abc");
    EXPECT_EQ(products->Item(Variant(int32_t{2}))->Parent(), products);
}

TEST_F(SoftwareProductsTest, ASecondReadAllReportsEverySubKeyAsItsOwnDuplicate) {
    loadRegistry(toolbarKey("One", partNumber("b-2")) + toolbarKey("Two", partNumber("a-1")));
    products->ReadAll();
    const auto one = products->Item("b-2");
    apartment_.debugStream.texts.clear();

    apartment_.registry = platform::RegFileRegistry();
    loadRegistry(toolbarKey("One", partNumber("b-2") + "\"Label\"=\"new\"\n") +
                 toolbarKey("Three", partNumber("b-10")));
    products->ReadAll();
    EXPECT_THAT(logLines(), ElementsAre(duplicateLine("b-2", "One", "One")));
    EXPECT_THAT(namesOf(*products), ElementsAre("Two", "Three", "One"))
        << "added, and nothing removed";
    EXPECT_EQ(products->Item("b-2"), one);
    EXPECT_EQ(one->Label(), "0") << "not reloaded";
}

TEST_F(SoftwareProductsTest, ReadAllDropsRecordsAHostAddedUnderAForeignKey) {
    loadRegistry(toolbarKey("One", partNumber("b-2")) + toolbarKey("Own", partNumber("pn-1")) +
                 toolbarKey("Stray", partNumber("pn-2")));
    products->Add("One", std::string("k"));
    products->Add("Stray");
    const auto own = products->Add("Own", std::string("PN-1"));
    products->ReadAll();
    EXPECT_THAT(namesOf(*products), ElementsAre("Own"));
    EXPECT_EQ(products->Item("pn-1"), own);
    EXPECT_EQ(logLines().size(), 3u) << "each is found by its own part number all the same";
}

TEST_F(SoftwareProductsTest, ItemRaisesRemoveIsSilentAddRaisesForADuplicateKey) {
    EXPECT_EQ(errorNumberOf([&] { products->Item(Variant(int32_t{1})); }), 9);
    EXPECT_EQ(errorNumberOf([&] { products->Item("p-1"); }), 5);
    EXPECT_EQ(errorNumberOf([&] { products->Remove("p-1"); }), 0);
    products->Add("x");
    const auto keyed = products->Add("x", std::string("k"));
    EXPECT_EQ(errorNumberOf([&] { products->Add("y", std::string("K")); }), 457);
    EXPECT_EQ(products->Count(), 2);
    products->RemoveAll();
    EXPECT_FALSE(keyed->Parent());
}

TEST_F(SoftwareProductsTest, PartNumberLookUpsFollowTheRecordsOwnNumbers) {
    const auto first = products->Add("x", std::string("k1"));
    const auto second = products->Add("y", std::string("k2"));
    first->PartNumber("PN-1");
    second->PartNumber("pn-1");
    EXPECT_EQ(products->ItemByPartNumber("Pn-1"), first) << "the first in list order";
    EXPECT_FALSE(products->PartNumberExists("k1")) << "keys don't count";

    first->PartNumber("pn-7");
    EXPECT_EQ(products->ItemByPartNumber("pn-1"), second);
    products->Remove(Variant(int32_t{2}));
    EXPECT_FALSE(products->PartNumberExists("pn-1"));
    const auto third = products->Add("z", std::string("k3"));
    third->PartNumber("PN-7");
    EXPECT_EQ(products->ItemByPartNumber("pn-7"), first);
    third->PartNumber("pn-3");
    EXPECT_EQ(products->ItemByPartNumber("pn-3"), third);
    EXPECT_FALSE(products->PartNumberExists(""));
}

TEST_F(SoftwareProductsTest, AWrapperThatCantBeMadeIsReportedAndChangesNothing) {
    products->Add("x", std::string("k"));
    apartment().ports.registry = nullptr;
    products->ReadAll();
    EXPECT_EQ(products->Count(), 1);
    EXPECT_THAT(logLines(),
                ElementsAre("[ReadAllProducts] ERROR: 429-ActiveX component can't create object"));
}

}  // namespace
}  // namespace ostrel::testing
