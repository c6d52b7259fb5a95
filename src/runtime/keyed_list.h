// The run time's ordered keyed list (a VB Collection): positions count from
// 1, an entry has at most one key, key look-ups ignore case, a missing key
// raises 5, a missing position 9, a duplicate key 457. Look-ups by key are
// hashed, so a large list costs no walk per look-up.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/automation_error.h"
#include "runtime/convert.h"
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
        const size_t hash = hashOf(folded);
        if (findSlot(folded, hash) != kNoSlot) raise(kErrDuplicateKey);
        // What can fail comes first: a failed add leaves the list as it was.
        reserveSlots(keys_ + 1);
        entries_.push_back(Entry{std::move(item), std::move(key)});
        placeSlot(Slot{hash, entries_.size()});
        ++keys_;
    }

    // Room for this many entries in all, so that a list filled in one go
    // grows its storage and its index once.
    void reserve(size_t entries) {
        entries_.reserve(entries);
        reserveSlots(entries);
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
        return findSlot(folded, hashOf(folded)) != kNoSlot;
    }

    auto begin() const { return entries_.begin(); }
    auto end() const { return entries_.end(); }

  private:
    // The index: open addressing with linear probing over a power-of-two
    // table, each slot the hash of a lower-cased key and its entry's place
    // (from 1; 0 is an empty slot). Flat, so that a list of thousands of
    // keys is filled, searched and dropped without a node per key.
    struct Slot {
        size_t hash = 0;
        size_t where = 0;
    };
    static constexpr size_t kNoSlot = static_cast<size_t>(-1);

    static size_t hashOf(std::string_view folded) { return std::hash<std::string_view>{}(folded); }

    size_t findSlot(std::string_view folded, size_t hash) const {
        if (slots_.empty()) return kNoSlot;
        const size_t mask = slots_.size() - 1;
        for (size_t at = hash & mask;; at = (at + 1) & mask) {
            const Slot& slot = slots_[at];
            if (slot.where == 0) return kNoSlot;
            if (slot.hash == hash && equalsText(*entries_[slot.where - 1].key, folded)) return at;
        }
    }
    void placeSlot(Slot slot) {
        const size_t mask = slots_.size() - 1;
        size_t at = slot.hash & mask;
        while (slots_[at].where != 0) at = (at + 1) & mask;
        slots_[at] = slot;
    }
    // Takes a slot out and moves up the ones after it that would no longer
    // be found past the gap, so a search still ends at the first empty slot.
    void clearSlot(size_t hole) {
        const size_t mask = slots_.size() - 1;
        for (size_t at = (hole + 1) & mask; slots_[at].where != 0; at = (at + 1) & mask) {
            const size_t home = slots_[at].hash & mask;
            const bool reachable =
                hole <= at ? (hole < home && home <= at) : (hole < home || home <= at);
            if (!reachable) {
                slots_[hole] = slots_[at];
                hole = at;
            }
        }
        slots_[hole] = Slot{};
    }
    // Keeps the table at most three quarters full.
    void reserveSlots(size_t keys) {
        if (keys * 4 <= slots_.size() * 3) return;
        size_t size = 16;
        while (keys * 4 > size * 3) size *= 2;
        std::vector<Slot> old = std::exchange(slots_, std::vector<Slot>(size));
        for (const Slot& slot : old) {
            if (slot.where != 0) placeSlot(slot);
        }
    }

    size_t positionIndex(int32_t position) const {
        if (position < 1 || position > count()) raise(kErrSubscript);
        return static_cast<size_t>(position - 1);
    }
    size_t keyIndex(std::string_view key) const {
        const std::string folded = lowerCase(key);
        const size_t at = findSlot(folded, hashOf(folded));
        if (at == kNoSlot) raise(kErrInvalidCall);
        return slots_[at].where - 1;
    }
    size_t variantIndex(const Variant& indexKey) const {
        if (const auto* key = indexKey.getIf<std::string>()) return keyIndex(*key);
        if (!indexKey.isNumber()) raise(kErrTypeMismatch);
        return positionIndex(toLong(indexKey));
    }
    void eraseAt(size_t at) {
        if (entries_[at].key) {
            const std::string folded = lowerCase(*entries_[at].key);
            clearSlot(findSlot(folded, hashOf(folded)));
            --keys_;
        }
        entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(at));
        // Emptied from the end, as a collection is torn down, nothing moves.
        if (at == entries_.size()) return;
        for (Slot& slot : slots_) {
            if (slot.where > at + 1) --slot.where;
        }
    }

    std::vector<Entry> entries_;
    std::vector<Slot> slots_;
    size_t keys_ = 0;  // entries with a key
};

}  // namespace ostrel
