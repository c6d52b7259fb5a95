#include "catalogue/sort_collection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace ostrel {
namespace {

// Every size up to a few heap levels, against a plain sort by character code.
TEST(SortCollection, AgreesWithAPlainSort) {
    std::mt19937 random(7);
    for (int size = 0; size < 40; ++size) {
        KeyedList<std::string> list;
        std::vector<std::string> expected;
        for (int i = 0; i < size; ++i) {
            expected.push_back((random() % 2 ? "B-" : "b-") + std::to_string(random() % 200));
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
