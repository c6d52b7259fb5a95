// The run time's ordered keyed list (a VB Collection): positions count from
// 1, an entry has at most one key, key look-ups ignore case, a missing key
// raises 5, a missing position 9, a duplicate key 457. Look-ups by key are
// hashed, so a large list costs no walk per look-up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/automation_error.h"
#include "runtime/convert.h"
#include "runtime/folded_index.h"
#include "runtime/text.h"
#include "runtime/variant.h"

namespace ostrel {

template <class T>
class KeyedList {
  public:
    struct Entry {
        T item;
        std::optional<std::string> key;  // as given; compared through lowerCase
    };

    int32_t count() const { return static_cast<int32_t>(entries_.size()); }

    // Appends; a key already present (in any case) raises 457 and adds nothing.
    void add(T item, std::optional<std::string> key = std::nullopt) {
        if (!key) {
            entries_.push_back(Entry{std::move(item), std::nullopt});
            return;
        }
        const std::string folded = lowerCase(*key);
        const size_t hash = FoldedIndex::hashOf(folded);
        if (slotOf(folded, hash) != FoldedIndex::kNoSlot) raise(kErrDuplicateKey);
        // What can fail comes first: a failed add leaves the list as it was.
        index_.reserve(index_.size() + 1);
        entries_.push_back(Entry{std::move(item), std::move(key)});
        index_.insert(hash, entries_.size());
    }

    // Room for this many entries in all, so that a list filled in one go
    // grows its storage and its index once.
    void reserve(size_t entries) {
        entries_.reserve(entries);
        index_.reserve(entries);
    }

    const T& item(int32_t position) const { return entries_[positionIndex(position)].item; }
    const T& item(std::string_view key) const { return entries_[keyIndex(key)].item; }
    // Text is always a key; these spare callers an ambiguous conversion.
    const T& item(const std::string& key) const { return item(std::string_view(key)); }
    const T& item(const char* key) const { return item(std::string_view(key)); }
    // Item(vntIndexKey): a string is a key, a number a position (rounded
    // as the run time rounds), anything else raises 13.
    const T& item(const Variant& indexKey) const { return entries_[variantIndex(indexKey)].item; }

    void remove(int32_t position) { eraseAt(positionIndex(position)); }
    void remove(std::string_view key) { eraseAt(keyIndex(key)); }
    void remove(const Variant& indexKey) { eraseAt(variantIndex(indexKey)); }
    void remove(const std::string& key) { remove(std::string_view(key)); }
    void remove(const char* key) { remove(std::string_view(key)); }

    bool containsKey(std::string_view key) const {
        const std::string folded = lowerCase(key);
        return slotOf(folded, FoldedIndex::hashOf(folded)) != FoldedIndex::kNoSlot;
    }

    auto begin() const { return entries_.begin(); }
    auto end() const { return entries_.end(); }

  private:
    // The index refers to an entry by its place, from 1.
    size_t slotOf(std::string_view folded, size_t hash) const {
        return index_.find(folded, hash, [this](size_t place) -> std::string_view {
            return *entries_[place - 1].key;
        });
    }
    size_t positionIndex(int32_t position) const {
        if (position < 1 || position > count()) raise(kErrSubscript);
        return static_cast<size_t>(position - 1);
    }
    size_t keyIndex(std::string_view key) const {
        const std::string folded = lowerCase(key);
        const size_t slot = slotOf(folded, FoldedIndex::hashOf(folded));
        if (slot == FoldedIndex::kNoSlot) raise(kErrInvalidCall);
        return index_.reference(slot) - 1;
    }
    size_t variantIndex(const Variant& indexKey) const {
        if (const auto* key = indexKey.getIf<std::string>()) return keyIndex(*key);
        if (!indexKey.isNumber()) raise(kErrTypeMismatch);
        return positionIndex(toLong(indexKey));
    }
    void eraseAt(size_t at) {
        if (entries_[at].key) {
            const std::string folded = lowerCase(*entries_[at].key);
            index_.erase(slotOf(folded, FoldedIndex::hashOf(folded)));
        }
        entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(at));
        // Emptied from the end, as a collection is torn down, nothing moves.
        if (at == entries_.size()) return;
        index_.forEachReference([at](size_t& place) {
            if (place > at + 1) --place;
        });
    }

    std::vector<Entry> entries_;
    FoldedIndex index_;
};

}  // namespace ostrel
