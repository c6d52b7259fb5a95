#include "catalogue/sort_collection.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace ostrel {

namespace {

// Positions (from 1) into the list; the sort moves these, never the items.
using IndexArray = std::vector<int32_t>;

// An item as the comparisons see it: its first eight bytes as one number
// that orders as the bytes do, and the whole text for a tie. Most pairs are
// told apart by the number alone, without reaching the text.
struct Item {
    uint64_t head;
    const std::string* text;
};
using Items = std::vector<Item>;

Item itemOf(const std::string& text) {
    uint64_t head = 0;
    for (size_t i = 0; i < sizeof head; ++i) {
        head <<= 8;
        if (i < text.size()) head |= static_cast<unsigned char>(text[i]);
    }
    return {head, &text};
}

// By character code, case-sensitive. Heads that differ decide as the bytes
// would; equal heads (a text shorter than eight bytes is padded with zeros)
// leave it to the texts.
int compareItems(const Item& a, const Item& b) {
    if (a.head != b.head) return a.head < b.head ? -1 : 1;
    return a.text->compare(*b.text);
}

void msubSwapIndexes(IndexArray& indexes, int32_t a, int32_t b) {
    std::swap(indexes[static_cast<size_t>(a)], indexes[static_cast<size_t>(b)]);
}

const Item& itemAt(const Items& items, const IndexArray& indexes, int32_t at) {
    return items[static_cast<size_t>(indexes[static_cast<size_t>(at)] - 1)];
}

void msubSiftDown(const Items& items, IndexArray& indexes, int32_t i, int32_t n) {
    while (i < n / 2) {
        int32_t child = 2 * i + 1;
        if (2 * i + 2 < n && compareItems(itemAt(items, indexes, 2 * i + 1),
                                          itemAt(items, indexes, 2 * i + 2)) < 0) {
            child = 2 * i + 2;
        }
        if (compareItems(itemAt(items, indexes, i), itemAt(items, indexes, child)) >= 0) return;
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
    for (const auto& entry : vcolItems) items.push_back(itemOf(entry.item));

    for (int32_t i = n / 2 - 1; i >= 0; --i) msubSiftDown(items, indexes, i, n);
    for (int32_t k = n; k >= 2; --k) {
        msubSwapIndexes(indexes, 0, k - 1);
        msubSiftDown(items, indexes, 0, k - 1);
    }

    sorted.reserve(static_cast<size_t>(n));
    for (const int32_t position : indexes)
        sorted.add(*items[static_cast<size_t>(position - 1)].text);
    return sorted;
}

}  // namespace ostrel
