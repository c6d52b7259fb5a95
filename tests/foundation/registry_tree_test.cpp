// The key tree of a .reg registry: layers, deletions, order, and a layer undone.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "foundation/registry_keys.h"
#include "platform/common/registry_regfile.h"

namespace ostrel::platform {
namespace {

std::vector<std::string> subKeys(const RegistryKey& key) {
    std::vector<std::string> names;
    for (uint32_t i = 0; auto name = key.subKeyName(i); ++i) names.push_back(*name);
    return names;
}

TEST(RegFileRegistry, LayersTextsAndDeletes) {
    RegFileRegistry registry;
    registry.loadText(
        "REGEDIT4\n"
        "[HKEY_LOCAL_MACHINE\\Q\\One]\n\"PartNumber\"=\"P1\"\n\"Old\"=\"x\"\n@=\"default\"\n"
        "[HKEY_LOCAL_MACHINE\\Q\\Two\\Deep]\n\"X\"=dword:1\n"
        "[HKEY_LOCAL_MACHINE\\Q\\Three]\n",
        "base");
    auto heldTwo = openKey(registry, "Q\\Two\\Deep");
    registry.loadText(
        "Windows Registry Editor Version 5.00\n"
        "[hkey_local_machine\\q\\ONE]\n\"partnumber\"=\"P1-new\"\n\"OLD\"=-\n@=-\n"
        "[-HKEY_LOCAL_MACHINE\\Q\\two]\n"
        "[-HKEY_LOCAL_MACHINE\\Q\\Three]\n\"Ignored\"=\"under a deleted key\"\n"
        "[HKEY_LOCAL_MACHINE\\Q\\Three]\n\"Fresh\"=\"again\"\n"
        "[-HKEY_LOCAL_MACHINE\\Nowhere\\At\\All]\n",
        "overlay");

    auto one = openKey(registry, "Q\\One");
    ASSERT_TRUE(one);
    EXPECT_EQ(one->stringValue("PartNumber"), "P1-new");
    EXPECT_EQ(one->stringValue("Old"), std::nullopt);
    EXPECT_EQ(one->stringValue(""), std::nullopt);
    EXPECT_FALSE(openKey(registry, "Q\\Two\\Deep"));
    auto three = openKey(registry, "Q\\Three");
    ASSERT_TRUE(three);
    EXPECT_EQ(three->stringValue("Ignored"), std::nullopt);
    EXPECT_EQ(three->stringValue("Fresh"), "again");
    // Names keep the case they were first written with.
    EXPECT_EQ(subKeys(*openKey(registry, "Q")), (std::vector<std::string>{"One", "Three"}));
    // A key opened before its deletion stays readable.
    ASSERT_TRUE(heldTwo);
    EXPECT_EQ(heldTwo->dwordValue("x"), 1);
}

// Keys in any order: found again while the file is read, in order afterwards.
TEST(RegFileRegistry, KeysOutOfOrderAreFoundAgainAndEndInOrder) {
    RegFileRegistry registry;
    registry.loadText("REGEDIT4\n[HKEY_LOCAL_MACHINE\\K\\m]\n", "base");
    registry.loadText(
        "REGEDIT4\n"
        "[HKEY_LOCAL_MACHINE\\K\\z]\n[HKEY_LOCAL_MACHINE\\K\\c\\Deep]\n\"V\"=\"1\"\n"
        "[HKEY_LOCAL_MACHINE\\K\\a]\n[HKEY_LOCAL_MACHINE\\K\\B]\n"
        "[HKEY_LOCAL_MACHINE\\k\\C\\deep]\n\"W\"=\"2\"\n"
        "[-HKEY_LOCAL_MACHINE\\K\\b]\n[HKEY_LOCAL_MACHINE\\K\\b2]\n",
        "unordered");
    EXPECT_EQ(subKeys(*openKey(registry, "K")),
              (std::vector<std::string>{"a", "b2", "c", "m", "z"}));
    auto deep = openKey(registry, "K\\C\\DEEP");
    ASSERT_TRUE(deep);
    EXPECT_EQ(deep->stringValue("V"), "1");
    EXPECT_EQ(deep->stringValue("W"), "2");

    // A bad file in any order leaves nothing behind either.
    EXPECT_THROW(registry.loadText("REGEDIT4\n[HKEY_LOCAL_MACHINE\\K\\y]\n"
                                   "[HKEY_LOCAL_MACHINE\\K\\d]\nbroken\n",
                                   "bad"),
                 RegFileError);
    EXPECT_EQ(subKeys(*openKey(registry, "K")),
              (std::vector<std::string>{"a", "b2", "c", "m", "z"}));

    // A key deleted after one of its own children was, both when it waits to
    // be put in order and when it is listed (a fuzzing find).
    registry.loadText(
        "REGEDIT4\n[HKEY_LOCAL_MACHINE\\K\\b]\n[HKEY_LOCAL_MACHINE\\K\\b\\x\\y]\n"
        "[-HKEY_LOCAL_MACHINE\\K\\b\\x\\y]\n[-HKEY_LOCAL_MACHINE\\K\\b\\x]\n"
        "[HKEY_LOCAL_MACHINE\\K\\zz\\x]\n[-HKEY_LOCAL_MACHINE\\K\\zz\\x]\n"
        "[-HKEY_LOCAL_MACHINE\\K\\zz]\n[-HKEY_LOCAL_MACHINE\\K\\b]\n",
        "nested deletes");
    EXPECT_EQ(subKeys(*openKey(registry, "K")),
              (std::vector<std::string>{"a", "b2", "c", "m", "z"}));
}

// Hundreds of values in one key: written over in any case, deleted, written again.
TEST(RegFileRegistry, AKeyOfManyValuesKeepsEachByName) {
    std::string text = "REGEDIT4\n[HKEY_LOCAL_MACHINE\\Many]\n";
    for (int i = 0; i < 300; ++i) text += "\"V" + std::to_string(i) + "\"=dword:1\n";
    for (int i = 0; i < 300; i += 3) text += "\"v" + std::to_string(i) + "\"=dword:2\n";
    for (int i = 1; i < 300; i += 3) text += "\"V" + std::to_string(i) + "\"=-\n";
    text += "\"V1\"=dword:3\n";
    RegFileRegistry registry;
    registry.loadText(text, "many");
    auto key = openKey(registry, "Many");
    ASSERT_TRUE(key);
    for (int i = 0; i < 300; ++i) {
        const std::optional<int32_t> expected =
            i == 1 ? 3 : (i % 3 == 0 ? 2 : (i % 3 == 1 ? std::optional<int32_t>() : 1));
        EXPECT_EQ(key->dwordValue("v" + std::to_string(i)), expected) << i;
    }
}

TEST(RegFileRegistry, OpensPathsLikeTheRegistryAndEnumeratesInUpperCaseOrder) {
    RegFileRegistry registry;
    registry.loadText(
        "REGEDIT4\n[HKEY_LOCAL_MACHINE]\n\"Root\"=\"r\"\n"
        "[HKEY_LOCAL_MACHINE\\K\\b]\n[HKEY_LOCAL_MACHINE\\K\\_under]\n"
        "[HKEY_LOCAL_MACHINE\\K\\Zed]\n[HKEY_LOCAL_MACHINE\\K\\a1]\n"
        "[HKEY_LOCAL_MACHINE\\K\\\xC3\xA4rger]\n[HKEY_LOCAL_MACHINE\\K\\A]\n"
        "[HKEY_LOCAL_MACHINE\\K\\10]\n[HKEY_LOCAL_MACHINE\\K\\B]\n",
        "order");
    // '_' sorts after the letters once they are upper-cased; "B" is "b" again.
    EXPECT_EQ(subKeys(*openKey(registry, "k")),
              (std::vector<std::string>{"10", "A", "a1", "b", "Zed", "_under", "\xC3\xA4rger"}));
    EXPECT_TRUE(openKey(registry, "K\\\xC3\x84RGER"));
    // Walked forwards, backwards and across keys, every open finds its own key.
    registry.loadText(
        "REGEDIT4\n[HKEY_LOCAL_MACHINE\\K\\A]\n\"N\"=\"A\"\n[HKEY_LOCAL_MACHINE\\K\\b]\n"
        "\"N\"=\"b\"\n[HKEY_LOCAL_MACHINE\\L\\Zed]\n\"N\"=\"L\"\n"
        "[HKEY_LOCAL_MACHINE\\K\\Zed]\n\"N\"=\"Zed\"\n",
        "named");
    for (const char* path : {"K\\A", "K\\a1", "K\\b", "K\\Zed", "L\\Zed", "K\\b", "K\\A", "k\\zed",
                             "K\\Zed", "K\\missing", "K\\Zed"}) {
        auto key = openKey(registry, path);
        if (std::string_view(path) == "K\\missing") {
            EXPECT_FALSE(key);
            continue;
        }
        ASSERT_TRUE(key) << path;
        const std::string leaf = std::string(path).substr(2);
        const auto expected = std::string(path).front() == 'L' ? std::optional<std::string>("L")
                              : leaf == "a1"
                                  ? std::nullopt
                                  : std::optional<std::string>(leaf == "zed" ? "Zed" : leaf);
        EXPECT_EQ(key->stringValue("N"), expected) << path;
    }
    // A key right under the root, then a child named like the key's next
    // sibling: the child is looked for, not the sibling taken (a fuzzing find).
    EXPECT_TRUE(openKey(registry, "K"));
    EXPECT_FALSE(openKey(registry, "K\\L"));
    EXPECT_TRUE(openKey(registry, "K"));
    EXPECT_EQ(openKey(registry, "L")->subKeyName(0), "Zed");
    EXPECT_EQ(openKey(registry, "")->stringValue("Root"), "r");
    EXPECT_TRUE(openKey(registry, "k\\zed\\"));
    EXPECT_FALSE(openKey(registry, "K\\Missing"));
    EXPECT_FALSE(openKey(registry, "K", kHiveUsers));
    int32_t code = 0;
    EXPECT_FALSE(registry.open(4, "", 1, code));  // no such hive
    EXPECT_NE(code, 0);
}

TEST(RegFileRegistry, ABadFileUndoesWhatItChangedBeforeItsError) {
    RegFileRegistry registry;
    registry.loadText(
        "REGEDIT4\n"
        "[HKEY_LOCAL_MACHINE\\Q\\Keep]\n\"Same\"=\"s\"\n\"Changed\"=\"old\"\n\"Erased\"=dword:7\n"
        "[HKEY_LOCAL_MACHINE\\Q\\Gone\\Below]\n\"X\"=\"x\"\n",
        "base");
    auto held = openKey(registry, "Q\\Gone\\Below");
    EXPECT_THROW(
        registry.loadText("REGEDIT4\n"
                          "[HKEY_LOCAL_MACHINE\\Q\\Keep]\n\"Changed\"=\"new\"\n\"Erased\"=-\n"
                          "\"Added\"=\"a\"\n\"changed\"=\"newer\"\n"
                          "[HKEY_LOCAL_MACHINE\\Q\\Keep\\Child]\n"
                          "[-HKEY_LOCAL_MACHINE\\Q\\Gone]\n"
                          "[HKEY_LOCAL_MACHINE\\Q\\Gone\\Other]\n"
                          "[HKEY_LOCAL_MACHINE\\Q\\New]\n\"N\"=\"n\"\n"
                          "[HKEY_LOCAL_MACHINE\\R]\n"
                          "\"Broken\"=nonsense\n",
                          "bad"),
        RegFileError);
    EXPECT_EQ(subKeys(*openKey(registry, "")), (std::vector<std::string>{"Q"}));
    EXPECT_EQ(subKeys(*openKey(registry, "Q")), (std::vector<std::string>{"Gone", "Keep"}));
    EXPECT_EQ(subKeys(*openKey(registry, "Q\\Gone")), (std::vector<std::string>{"Below"}));
    auto keep = openKey(registry, "Q\\Keep");
    ASSERT_TRUE(keep);
    EXPECT_EQ(subKeys(*keep), std::vector<std::string>{});
    EXPECT_EQ(keep->stringValue("Same"), "s");
    EXPECT_EQ(keep->stringValue("Changed"), "old");
    EXPECT_EQ(keep->dwordValue("Erased"), 7);
    EXPECT_EQ(keep->stringValue("Added"), std::nullopt);
    EXPECT_EQ(held->stringValue("X"), "x");
    EXPECT_TRUE(openKey(registry, "Q\\Gone\\Below"));
}

}  // namespace
}  // namespace ostrel::platform
