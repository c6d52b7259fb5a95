// The scripting run time's dictionary as the core fills it: entries in the
// order they were added, keys compared case-sensitively, a key added twice
// raises 457 and leaves the first entry as it was.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/automation_error.h"
#include "runtime/object.h"
#include "runtime/variant.h"

namespace ostrel {

class Dictionary : public Object {
  public:
    struct Entry {
        std::string key;
        Variant item;
    };

    void Add(std::string_view key, Variant item) {
        if (Exists(key)) raise(kErrDuplicateKey);
        entries_.push_back(Entry{std::string(key), std::move(item)});
    }
    bool Exists(std::string_view key) const { return find(key) != nullptr; }
    // The item under the key; Empty for a missing key (the dictionary's own
    // Item would add it, which no reader here wants).
    Variant Item(std::string_view key) const {
        const Entry* entry = find(key);
        return entry ? entry->item : Variant();
    }
    int32_t Count() const { return static_cast<int32_t>(entries_.size()); }

    auto begin() const { return entries_.begin(); }
    auto end() const { return entries_.end(); }

  private:
    const Entry* find(std::string_view key) const {
        for (const Entry& entry : entries_) {
            if (entry.key == key) return &entry;
        }
        return nullptr;
    }

    std::vector<Entry> entries_;  // thirteen at most here: a walk beats a hash
};

}  // namespace ostrel
