#include "runtime/keyed_list.h"

#include <gtest/gtest.h>

#include "fakes/error_number.h"

#include <optional>
#include <random>
#include <string>
#include <vector>

namespace ostrel {
namespace {

using fakes::errorNumberOf;

std::vector<std::string> itemsOf(const KeyedList<std::string>& list) {
    std::vector<std::string> items;
    for (const auto& entry : list) items.push_back(entry.item);
    return items;
}

TEST(KeyedList, PositionsAndKeys) {
    KeyedList<std::string> list;
    list.add("first", "AbC");
    list.add("second");
    list.add("third", "Ärger");
    list.add("fourth", "");  // an empty key is a key like any other

    EXPECT_EQ(list.item(4), "fourth");
    EXPECT_EQ(list.item("abc"), "first");
    EXPECT_EQ(list.item(std::string("ABC")), "first");
    EXPECT_EQ(list.item("äRGER"), "third");  // case ignored beyond ASCII too
    EXPECT_FALSE(list.containsKey("abc "));  // keys are not trimmed
    EXPECT_EQ(list.begin()->key, "AbC");     // the key is kept as given

    EXPECT_EQ(errorNumberOf([&] { list.item(0); }), 9);
    EXPECT_EQ(errorNumberOf([&] { list.item(5); }), 9);
    EXPECT_EQ(errorNumberOf([&] { list.item("missing"); }), 5);
    EXPECT_EQ(errorNumberOf([&] { list.add("dup", "ABC"); }), 457);
    EXPECT_EQ(errorNumberOf([&] { list.add("dup", "ärger"); }), 457);
    // a refused add adds nothing
    EXPECT_EQ(itemsOf(list), (std::vector<std::string>{"first", "second", "third", "fourth"}));
}

TEST(KeyedList, ItemByVariant) {
    KeyedList<std::string> list;
    list.add("one", "1");
    list.add("two", "k2");

    // a string is always a key, even one that reads as a number
    EXPECT_EQ(list.item(Variant("1")), "one");
    EXPECT_EQ(errorNumberOf([&] { list.item(Variant("2")); }), 5);
    EXPECT_EQ(list.item(Variant(int16_t{2})), "two");
    // rounded as CLng rounds (its rules: the conversion suite), not cut
    EXPECT_EQ(list.item(Variant(1.5)), "two");
    EXPECT_EQ(errorNumberOf([&] { list.item(Variant(true)); }), 9);  // True is -1
    for (const Variant& index : {Variant(), Variant(NullValue{}), Variant(makeRef<Object>())}) {
        EXPECT_EQ(errorNumberOf([&] { list.item(index); }), 13);
    }
}

// By position, key or Variant; that the index follows: the next test.
TEST(KeyedList, RemoveByPositionKeyOrVariant) {
    KeyedList<std::string> list;
    for (const char* name : {"a", "b", "c", "d", "e"}) list.add(name, std::string("K") + name);

    list.remove(2);           // b
    list.remove("kd");        // d
    list.remove(Variant(1));  // a
    EXPECT_EQ(errorNumberOf([&] { list.remove(3); }), 9);
    EXPECT_EQ(errorNumberOf([&] { list.remove("kd"); }), 5);
    EXPECT_EQ(itemsOf(list),
              (std::vector<std::string>{"c", "e"}));  // a refused remove removes nothing
}

// Thousands of adds and removes in any case against a plain list of pairs:
// the index grows, and keys leave it from the middle of their runs; the
// small pool keeps a small table crowded, so runs wrap around its end.
TEST(KeyedList, ManyKeysStayFoundThroughAddsAndRemoves) {
    for (const int pool : {12, 1500}) {
        std::mt19937 random(11);
        KeyedList<std::string> list;
        std::vector<std::pair<std::string, std::optional<std::string>>> model;  // lower-cased key
        const auto keyOf = [&](int n) {
            std::string key = "Key-" + std::to_string(n);
            for (char& c : key) c = random() % 2 ? static_cast<char>(std::toupper(c)) : c;
            return key;
        };
        const auto modelPosition = [&](const std::string& key) -> int32_t {
            for (size_t i = 0; i < model.size(); ++i) {
                if (model[i].second == lowerCase(key)) return static_cast<int32_t>(i + 1);
            }
            return 0;
        };
        for (int step = 0; step < 6000; ++step) {
            const std::string key = keyOf(static_cast<int>(random()) % pool);
            const int32_t present = modelPosition(key);
            if (random() % 3 != 0) {
                const bool keyed = random() % 8 != 0;
                const std::string item = "item" + std::to_string(step);
                const int number =
                    errorNumberOf([&] { keyed ? list.add(item, key) : list.add(item); });
                ASSERT_EQ(number, keyed && present ? 457 : 0) << pool << " " << step;
                if (!number) {
                    model.emplace_back(item, keyed ? std::optional(lowerCase(key)) : std::nullopt);
                }
            } else if (present && random() % 2) {
                list.remove(key);
                model.erase(model.begin() + present - 1);
            } else if (!model.empty()) {
                const auto position = static_cast<int32_t>(random() % model.size() + 1);
                list.remove(position);
                model.erase(model.begin() + position - 1);
            }
            ASSERT_EQ(list.count(), static_cast<int32_t>(model.size())) << pool << " " << step;
            for (int n = 0; n < pool && pool < 100; ++n) {
                ASSERT_EQ(list.containsKey(keyOf(n)), modelPosition(keyOf(n)) != 0) << step;
            }
        }
        for (size_t i = 0; i < model.size(); ++i) {
            ASSERT_EQ(list.item(static_cast<int32_t>(i + 1)), model[i].first) << i;
            if (model[i].second) {
                ASSERT_EQ(list.item(*model[i].second), model[i].first) << i;
            }
        }
        for (int n = 0; n < pool; ++n) {
            EXPECT_EQ(list.containsKey(keyOf(n)), modelPosition(keyOf(n)) != 0) << n;
        }
    }
}

}  // namespace
}  // namespace ostrel
