#include "catalogue/part_numbers.h"

#include "catalogue_fixture.h"

namespace ostrel::testing {
namespace {

using KnownPartNumberTest = CatalogueTest;

// The file beside the component and an unreadable one are tried end to end.
TEST_F(KnownPartNumberTest, ReadsOneNormalisedNumberALineOnce) {
    const auto table = PartNumberTable::parse(
        "\xEF\xBB\xBF# family\r\nQRL-1\r\n\r\n  # note\n  Qrl-2  \n\xC3\x84-3\nqrl-1 ");
    EXPECT_EQ(table.size(), 3u);
    EXPECT_TRUE(table.contains("qrl-1") && table.contains("qrl-2") && table.contains("\xC3\xA4-3"));

    EXPECT_TRUE(gfblnIsKnownPartNumber("  A-1 "));
    fakes::writeBytes(apartment_.programData / "part-numbers.txt", "z-1\n");
    EXPECT_TRUE(gfblnIsKnownPartNumber("b-2"));
    EXPECT_FALSE(gfblnIsKnownPartNumber("z-1"));
}

}  // namespace
}  // namespace ostrel::testing
