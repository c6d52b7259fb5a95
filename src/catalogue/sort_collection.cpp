#include "catalogue/sort_collection.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace ostrel {

namespace {

// Positions (from 1) into the list; the sort moves these, never the items.
using IndexArray = std::vector<int32_t>;
// The items by position, looked up once rather than at every comparison.
using Items = std::vector<const std::string*>;

void msubSwapIndexes(IndexArray& indexes, int32_t a, int32_t b) {
    std::swap(indexes[static_cast<size_t>(a)], indexes[static_cast<size_t>(b)]);
}

// By character code, case-sensitive.
const std::string& itemAt(const Items& items, const IndexArray& indexes, int32_t at) {
    return *items[static_cast<size_t>(indexes[static_cast<size_t>(at)] - 1)];
}

void msubSiftDown(const Items& items, IndexArray& indexes, int32_t i, int32_t n) {
    while (i < n / 2) {
        int32_t child = 2 * i + 1;
        if (2 * i + 2 < n &&
            itemAt(items, indexes, 2 * i + 1) < itemAt(items, indexes, 2 * i + 2)) {
            child = 2 * i + 2;
        }
        if (itemAt(items, indexes, i) >= itemAt(items, indexes, child)) return;
        msubSwapIndexes(indexes, i, child);
        i = child;
    }
}

}  // namespace

KeyedList<std::string> gfcolSortCollection(const KeyedList<std::string>& vcolItems) {
    const int32_t n = vcolItems.count();
    KeyedList<std::string> sorted;
    if (n < 1) return sorted;

    IndexArray indexes(static_cast<size_t>(n));
    Items items;
    items.reserve(static_cast<size_t>(n));
    for (int32_t i = 0; i < n; ++i) indexes[static_cast<size_t>(i)] = i + 1;
    for (const auto& entry : vcolItems) items.push_back(&entry.item);

    for (int32_t i = n / 2 - 1; i >= 0; --i) msubSiftDown(items, indexes, i, n);
    for (int32_t k = n; k >= 2; --k) {
        msubSwapIndexes(indexes, 0, k - 1);
        msubSiftDown(items, indexes, 0, k - 1);
    }

    sorted.reserve(static_cast<size_t>(n));
    for (const int32_t position : indexes) sorted.add(*items[static_cast<size_t>(position - 1)]);
    return sorted;
}

}  // namespace ostrel
