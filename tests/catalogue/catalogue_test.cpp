// The catalogue on a .reg registry: a started apartment with a table of
// known part numbers of the test's own, and the log lines written since.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "catalogue/catalogue_factory.h"
#include "catalogue/part_numbers.h"
#include "catalogue/software_product.h"
#include "catalogue/software_products.h"
#include "catalogue/sort_collection.h"
#include "catalogue/toolbar.h"
#include "component/startup.h"
#include "fakes/error_number.h"
#include "fakes/test_apartment.h"
#include "foundation/globals.h"
#include "machine/pc_info.h"
#include "runtime/automation_error.h"

namespace ostrel::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using fakes::errorNumberOf;

// A sub-key of the Toolbar key with its value lines, and such lines.
std::string toolbarKey(std::string_view name, std::string_view values = {}) {
    return "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\" + std::string(name) + "]\n" +
           std::string(values) + "\n";
}
std::string value(std::string_view name, std::string_view text) {
    return "\"" + std::string(name) + "\"=\"" + std::string(text) + "\"\n";
}
std::string partNumber(std::string_view text) {
    return value("PartNumber", text);
}
std::string dword(std::string_view name, uint32_t number) {
    char hex[9];
    std::snprintf(hex, sizeof hex, "%08x", number);
    return "\"" + std::string(name) + "\"=dword:" + hex + "\n";
}

class CatalogueTest : public ::testing::Test {
  protected:
    CatalogueTest() {
        const auto table = apartment_.programData / "part-numbers.txt";
        fakes::writeBytes(table, "a-1\nb-2\nb-10\np-1\nABC\npn-1\npn-2\n");
        apartment_.environment.variables["OSTREL_PART_NUMBERS"] = fakes::utf8Of(table);
        ensureStarted();
        apartment_.debugStream.texts.clear();
    }
    void loadRegistry(const std::string& keys) {
        apartment_.loadRegistry("Windows Registry Editor Version 5.00\n\n" + keys);
    }
    // A new record loaded from the Toolbar sub-key of that name.
    static Ref<wncSoftwareProduct> named(std::string_view name) {
        Ref<wncSoftwareProduct> product = newSoftwareProduct();
        product->ProductName(name);
        return product;
    }
    std::vector<std::string> logLines() { return apartment_.debugStream.lines(); }

    // Part number, display name, application path, build, label, icon, revision, tool tip.
    static std::string record(const Ref<wncSoftwareProduct>& product) {
        return product->PartNumber() + "|" + product->DisplayName() + "|" +
               product->ApplicationPath() + "|" + product->BuildID() + "|" + product->Label() +
               "|" + product->IconFile() + "|" + product->Revision() + "|" + product->ToolTip();
    }

    fakes::TestApartment apartment_;
};

using SoftwareProductTest = CatalogueTest;

TEST_F(SoftwareProductTest, LoadsItsKeyWithTheDefaultsOfMissingValues) {
    loadRegistry(toolbarKey("Full", value("DisplayName", "Quorl Full") + partNumber("PN-1") +
                                        dword("VersionMajor", 9) + dword("VersionMinor", 30) +
                                        dword("VersionRevisionMinor", 3) +
                                        value("IconFile", " d.ico ") + value("Tooltip", "Tip")) +
                 toolbarKey("Bare"));
    const auto full = named("Full");
    EXPECT_EQ(record(full), "PN-1|Quorl Full||9300003|0| d.ico |0|Tip") << "not trimmed";
    EXPECT_EQ(full->VersionString(), "9.30.0.3");
    EXPECT_EQ(record(named("Bare")), "|Bare||0000000|0|0|0|0");

    // Writing a version number leaves BuildID until the next load, which restores both.
    full->VersionMajor(5);
    EXPECT_EQ(full->VersionMajor(), 5);
    EXPECT_EQ(full->BuildID(), "9300003");
    full->Load();
    EXPECT_EQ(full->VersionMajor(), 9);

    // A key that isn't there blanks the record, but not its part number.
    full->ProductName("Absent");
    EXPECT_EQ(record(full), "PN-1|||||||");
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
    EXPECT_EQ(record(big), "PN-9|Big||||||");
    EXPECT_EQ(big->VersionMinor(), 0);
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
    EXPECT_EQ(record(product), "PN-1|||||||") << "the blanking leaves the part number";
    EXPECT_EQ(product->VersionMajor(), 0);
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

// Each record as "name=part number", in list order.
std::vector<std::string> namesOf(const wncSoftwareProducts& products) {
    std::vector<std::string> names;
    for (const auto& product : products.items()) {
        names.push_back(product->ProductName() + "=" + product->PartNumber());
    }
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
    // The record keeps the registry's form unless it differs by more than case.
    EXPECT_THAT(namesOf(*products), ElementsAre("Padded=abc", "Two=b-10", "One=b-2", "A=P-1"));
    const std::string first = duplicateLine("p-1", "A", "B");
    const std::string second = duplicateLine("abc", "Padded", "Plain");
    EXPECT_THAT(logLines(), ElementsAre(first, second)) << "unknown ones only with the log on";
    EXPECT_EQ(products->Item(Variant(int32_t{2}))->Parent(), products);

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
    EXPECT_THAT(namesOf(*products), ElementsAre("Three=b-10", "One=B-2"));
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
    EXPECT_THAT(namesOf(*products), ElementsAre("Two=a-1", "One=b-2")) << "Three came second";
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
    EXPECT_THAT(namesOf(*products), ElementsAre("Two=a-1", "Three=b-10", "One=b-2"))
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
    EXPECT_THAT(namesOf(*products), ElementsAre("Own=pn-1"));
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
        EXPECT_EQ(products->refCount(), 3u) << "two records hold it";
        products->RemoveAll();
        EXPECT_EQ(products->refCount(), 1u) << "the records let go of it";
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

// Unlike ReadAll: the stored number as it stands, Temp and unknown numbers included.
// Without a registry wrapper all answer blank, and ReadAll changes nothing.
TEST_F(CatalogueTest, ToolbarKeyAndInstallDirReadTheValuesAsTheyStand) {
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

// The file beside the component and an unreadable one are tried end to end.
TEST_F(CatalogueTest, KnownPartNumbersAreReadOneNormalisedNumberALineOnce) {
    const auto table = PartNumberTable::parse(
        "\xEF\xBB\xBF# family\r\nQRL-1\r\n\r\n  # note\n  Qrl-2  \n\xC3\x84-3\nqrl-1 ");
    EXPECT_EQ(table.size(), 3u);
    EXPECT_TRUE(table.contains("qrl-1") && table.contains("qrl-2") && table.contains("\xC3\xA4-3"));

    EXPECT_TRUE(gfblnIsKnownPartNumber("  A-1 "));
    fakes::writeBytes(apartment_.programData / "part-numbers.txt", "z-1\n");
    EXPECT_TRUE(gfblnIsKnownPartNumber("b-2"));
    EXPECT_FALSE(gfblnIsKnownPartNumber("z-1"));
}

// Every size up to a few heap levels, against a plain sort by character
// code: short texts, texts alike in their first eight bytes, bytes above
// 0x7F and NULs, and texts that are the start of others.
TEST(SortCollection, AgreesWithAPlainSort) {
    std::mt19937 random(7);
    const std::string stems[] = {"b-", "B-", "qrl-1234-", std::string("ab\0", 3), "\xC3\xA9-"};
    for (int size = 0; size < 60; ++size) {
        KeyedList<std::string> list;
        std::vector<std::string> expected;
        for (int i = 0; i < size; ++i) {
            const std::string& stem = stems[random() % std::size(stems)];
            expected.push_back(random() % 4 ? stem + std::to_string(random() % 200) : stem);
            list.add(expected.back());
        }
        std::sort(expected.begin(), expected.end());
        std::vector<std::string> sorted;
        for (const auto& entry : gfcolSortCollection(list)) sorted.push_back(entry.item);
        EXPECT_EQ(sorted, expected) << size;
    }
}

}  // namespace
}  // namespace ostrel::testing
