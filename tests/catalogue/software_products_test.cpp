#include "catalogue/software_products.h"

#include <gmock/gmock.h>

#include "catalogue/catalogue_factory.h"
#include "catalogue/software_product.h"
#include "catalogue_fixture.h"
#include "fakes/error_number.h"
#include "machine/pc_info.h"
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

class SoftwareProductsTest : public CatalogueTest {
  protected:
    ~SoftwareProductsTest() override { products->RemoveAll(); }
    Ref<wncSoftwareProducts> products = newSoftwareProducts();
};

// Temp in any case, sub-keys without a known number and later duplicates are passed over.
TEST_F(SoftwareProductsTest, ReadAllKeepsTheFirstKnownNumberInCharacterCodeOrder) {
    products->ReadAll();
    EXPECT_EQ(products->Count(), 0) << "no Toolbar key";
    loadRegistry(toolbarKey("B", partNumber("p-1")) + toolbarKey("A", partNumber("P-1")) +
                 toolbarKey("Padded", partNumber(" ABC ")) +
                 toolbarKey("Plain", partNumber("abc")) + toolbarKey("One", partNumber("b-2")) +
                 toolbarKey("Two", partNumber("b-10")) + toolbarKey("tEMP", partNumber("b-10")) +
                 toolbarKey("Blank", partNumber("  ")) + toolbarKey("Stranger", partNumber("Z-9")) +
                 toolbarKey("NoNumber"));
    products->ReadAll();
    EXPECT_THAT(namesOf(*products), ElementsAre("Padded", "Two", "One", "A"));
    const std::string first = duplicateLine("p-1", "A", "B");
    const std::string second = duplicateLine("abc", "Padded", "Plain");
    EXPECT_THAT(logLines(), ElementsAre(first, second)) << "unknown ones only with the log on";
    // Lower-case keys; the record keeps the registry's form unless it differs by more than case.
    EXPECT_EQ(products->Item("P-1")->PartNumber(), "P-1");
    EXPECT_EQ(products->Item("abc")->PartNumber(), "abc");
    EXPECT_EQ(products->Item(Variant(int32_t{2}))->Parent(), products);

    apartment_.debugStream.texts.clear();
    apartment().gblnDebug = true;
    OwnedProducts(newSoftwareProducts())->ReadAll();
    const std::string unknown = "[ReadAllProducts] Ignoring unknown product:";
    EXPECT_THAT(logLines(), ElementsAre(first, unknown, second, unknown + "z-9"));
}

// The filter holds normalised part numbers and compares them as they are.
TEST_F(SoftwareProductsTest, TheWalksFilterKeepsOnlyItsPartNumbers) {
    loadRegistry(toolbarKey("One", partNumber("B-2")) + toolbarKey("Two", partNumber("a-1")) +
                 toolbarKey("Three", partNumber("b-10")));
    const wncSoftwareProducts::PartNumberFilter filter{"b-2", "b-10", "pn-9"};
    products->ReadAllProducts(&filter);
    EXPECT_THAT(namesOf(*products), ElementsAre("Three", "One"));
    const wncSoftwareProducts::PartNumberFilter notNormalised{"B-2", " a-1"};
    const auto other = newSoftwareProducts();
    other->ReadAllProducts(&notNormalised);
    EXPECT_EQ(other->Count(), 0);
    EXPECT_THAT(logLines(), IsEmpty());
}

// A record that can't be made is passed over without a trace; the others stay.
TEST_F(SoftwareProductsTest, ReadAllSkipsARecordThatCantBeMadeSilently) {
    struct FailingSecondRecord : CatalogueFactory {
        int made = 0;
        Ref<wncSoftwareProduct> newSoftwareProduct() override {
            if (++made == 2) raise(kErrCantCreate);
            return makeRef<wncSoftwareProduct>();
        }
        Ref<wncSoftwareProducts> newSoftwareProducts() override {
            return makeRef<wncSoftwareProducts>();
        }
    } factory;
    loadRegistry(toolbarKey("One", partNumber("b-2")) + toolbarKey("Two", partNumber("a-1")) +
                 toolbarKey("Three", partNumber("b-10")));
    setCatalogueFactory(&factory);
    products->ReadAll();
    setCatalogueFactory(nullptr);
    EXPECT_THAT(namesOf(*products), ElementsAre("Two", "One")) << "Three came second";
    EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(SoftwareProductsTest, ASecondReadAllReportsEverySubKeyAsItsOwnDuplicate) {
    loadRegistry(toolbarKey("One", partNumber("b-2")) + toolbarKey("Two", partNumber("a-1")));
    products->ReadAll();
    const auto one = products->Item("b-2");
    apartment_.debugStream.texts.clear();

    apartment_.registry = platform::RegFileRegistry();
    loadRegistry(toolbarKey("One", partNumber("b-2") + value("Label", "new")) +
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

// Each record holds its collection and the shared machine facts while it lives.
TEST_F(SoftwareProductsTest, ItemRaisesRemoveIsSilentAddRaisesForADuplicateKey) {
    EXPECT_EQ(errorNumberOf([&] { products->Item(Variant(int32_t{1})); }), 9);
    EXPECT_EQ(errorNumberOf([&] { products->Item("p-1"); }), 5);
    EXPECT_EQ(errorNumberOf([&] { products->Remove("p-1"); }), 0);
    gsubReleasePCInfo();
    {
        const auto keyed = products->Add("x", std::string("k"));
        EXPECT_TRUE(gobjPCInfo());
        EXPECT_EQ(errorNumberOf([&] { products->Add("y", std::string("K")); }), 457);
        products->Add("x");
        EXPECT_EQ(products->Count(), 2);
        EXPECT_EQ(products->refCount(), 3u);
        products->RemoveAll();
        EXPECT_FALSE(keyed->Parent());
        EXPECT_EQ(products->refCount(), 1u);
    }
    EXPECT_FALSE(gobjPCInfo());
}

// The look-ups follow the records' own numbers as they change, first in list order.
TEST_F(SoftwareProductsTest, PartNumberLookUpsFollowTheRecordsOwnNumbers) {
    const auto first = products->Add("x", std::string("k1"));
    const auto second = products->Add("y", std::string("k2"));
    first->PartNumber("PN-1");
    second->PartNumber("pn-1");
    EXPECT_EQ(products->ItemByPartNumber("Pn-1"), first);
    EXPECT_FALSE(products->PartNumberExists("k1")) << "keys don't count";
    first->PartNumber("pn-7");
    EXPECT_EQ(products->ItemByPartNumber("pn-1"), second);
    products->Remove(Variant(int32_t{2}));
    EXPECT_FALSE(products->PartNumberExists("pn-1"));
    products->Add("z")->PartNumber("PN-7");
    EXPECT_EQ(products->ItemByPartNumber("pn-7"), first);
}

}  // namespace
}  // namespace ostrel::testing
