#include "catalogue/sort_collection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace ostrel {
namespace {

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
}  // namespace ostrel
