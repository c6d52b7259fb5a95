// A hash index over texts that compare without case, whose keys the owner
// keeps: a slot holds a key's hash and a reference (never 0) that the owner
// turns back into the key. Open addressing with linear probing over a
// power-of-two table at most three quarters full, so that thousands of keys
// are added, found and dropped without an allocation per key.
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/text.h"

namespace ostrel {

class FoldedIndex {
  public:
    static constexpr size_t kNoSlot = static_cast<size_t>(-1);

    // The hash of a lower-cased key.
    static size_t hashOf(std::string_view folded) { return std::hash<std::string_view>{}(folded); }

    // The slot of the key that equals `folded` (lower-cased) in any case;
    // keyOf(reference) gives a slot's key.
    template <class KeyOf>
    size_t find(std::string_view folded, size_t hash, KeyOf&& keyOf) const {
        for (size_t at = home(hash); !slots_.empty(); at = next(at)) {
            const Slot& slot = slots_[at];
            if (slot.reference == 0) break;
            if (slot.hash == hash && equalsText(keyOf(slot.reference), folded)) return at;
        }
        return kNoSlot;
    }
    // The slot that holds this reference, looked for where a key of this
    // hash would be: for a key that has changed since it was placed.
    size_t findReference(size_t hash, size_t reference) const {
        for (size_t at = home(hash); !slots_.empty(); at = next(at)) {
            if (slots_[at].reference == 0) break;
            if (slots_[at].reference == reference) return at;
        }
        return kNoSlot;
    }
    size_t reference(size_t slot) const { return slots_[slot].reference; }

    // Room for this many keys in all; the one step here that can fail.
    void reserve(size_t keys) {
        if (keys * 4 <= slots_.size() * 3) return;
        size_t size = 16;
        while (keys * 4 > size * 3) size *= 2;
        std::vector<Slot> old = std::exchange(slots_, std::vector<Slot>(size));
        for (const Slot& slot : old) {
            if (slot.reference != 0) place(slot);
        }
    }
    // Adds a key whose room was reserved.
    void insert(size_t hash, size_t reference) {
        place(Slot{hash, reference});
        ++keys_;
    }
    // Takes a slot out and moves up the ones after it that would no longer
    // be found past the gap, so that a search still ends at an empty slot.
    void erase(size_t hole) {
        for (size_t at = next(hole); slots_[at].reference != 0; at = next(at)) {
            const size_t from = home(slots_[at].hash);
            const bool reachable =
                hole <= at ? (hole < from && from <= at) : (hole < from || from <= at);
            if (!reachable) {
                slots_[hole] = slots_[at];
                hole = at;
            }
        }
        slots_[hole] = Slot{};
        --keys_;
    }
    void clear() {
        if (keys_ == 0) return;
        std::fill(slots_.begin(), slots_.end(), Slot{});
        keys_ = 0;
    }
    size_t size() const { return keys_; }

    // Lets the owner renumber its references in place.
    template <class Renumber>
    void forEachReference(Renumber&& renumber) {
        for (Slot& slot : slots_) {
            if (slot.reference != 0) renumber(slot.reference);
        }
    }

  private:
    struct Slot {
        size_t hash = 0;
        size_t reference = 0;
    };

    size_t home(size_t hash) const { return hash & (slots_.size() - 1); }
    size_t next(size_t at) const { return (at + 1) & (slots_.size() - 1); }
    void place(Slot slot) {
        size_t at = home(slot.hash);
        while (slots_[at].reference != 0) at = next(at);
        slots_[at] = slot;
    }

    std::vector<Slot> slots_;
    size_t keys_ = 0;
};

}  // namespace ostrel
