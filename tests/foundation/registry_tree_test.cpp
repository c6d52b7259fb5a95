// The key tree of a .reg registry: layers, deletions, order, and a layer undone.
#include <gtest/gtest.h>

#include <string>

#include "foundation/registry_keys.h"

namespace ostrel::platform {
namespace {

// Layers a REGEDIT4 text of keys under HKEY_LOCAL_MACHINE: "[Q]" stands for
// "[HKEY_LOCAL_MACHINE\Q]", "[-Q]" for its deletion and "[]" for the root.
void layer(RegFileRegistry& registry, std::string_view keys) {
    std::string text = "REGEDIT4\n" + std::string(keys);
    for (std::size_t at = 0; (at = text.find('[', at)) != std::string::npos; ++at)
        text.insert(at + 1 + (text[at + 1] == '-'), "HKEY_LOCAL_MACHINE\\");
    registry.loadText(text, "keys.reg");
}

// Later layers win and delete; a bad one is undone, whatever it changed
// before its error.
TEST(RegFileRegistry, LayersTextsAndDeletesAndUndoesABadOne) {
    RegFileRegistry registry;
    layer(registry,
          "[Q\\One]\n\"PartNumber\"=\"P1\"\n\"Old\"=\"x\"\n@=\"default\"\n\"Count\"=dword:7\n"
          "[Q\\Two\\Deep]\n\"X\"=dword:1\n[Q\\Three]\n");
    auto heldTwo = openKey(registry, "Q\\Two\\Deep");
    layer(registry,
          "[q\\ONE]\n\"partnumber\"=\"P1-new\"\n\"OLD\"=-\n@=-\n[-Q\\two]\n"
          "[-Q\\Three]\n\"Ignored\"=\"under a deleted key\"\n[Q\\Three]\n\"Fresh\"=\"again\"\n"
          "[Q\\Three\\Below]\n[-Nowhere\\At\\All]\n");
    const auto expectLayered = [&] {
        EXPECT_EQ(
            valuesOf(openKey(registry, "Q\\One"), {"PartNumber", "Old", "", "Count", "Added"}),
            "PartNumber=P1-new; Old=-; @=-; Count=#7; Added=-");
        EXPECT_EQ(valuesOf(openKey(registry, "Q\\Three"), {"Ignored", "Fresh"}),
                  "Ignored=-; Fresh=again");
        // Names keep the case they were first written with.
        EXPECT_EQ(keysOf(registry, ""), "Q(One Three(Below))");
    };
    expectLayered();
    // A key opened before its deletion stays readable.
    EXPECT_EQ(valuesOf(heldTwo, {"x"}), "x=#1");

    EXPECT_THROW(layer(registry,
                       "[Q\\One]\n\"PartNumber\"=\"new\"\n\"Count\"=-\n\"Added\"=\"a\"\n"
                       "\"partnumber\"=\"newer\"\n[Q\\One\\Child]\n[-Q\\Three]\n[Q\\Three\\Other]\n"
                       "[Q\\New]\n\"N\"=\"n\"\n[R]\n\"Broken\"=nonsense\n"),
                 RegFileError);
    expectLayered();
}

// Keys in any order: found again while the file is read, in order afterwards.
TEST(RegFileRegistry, KeysOutOfOrderAreFoundAgainAndEndInOrder) {
    RegFileRegistry registry;
    layer(registry, "[K\\m]\n");
    layer(registry,
          "[K\\z]\n[K\\c\\Deep]\n\"V\"=\"1\"\n[K\\a]\n[K\\B]\n[k\\C\\deep]\n\"W\"=\"2\"\n"
          "[-K\\b]\n[K\\b2]\n");
    const std::string ordered = "a b2 c(Deep) m z";
    EXPECT_EQ(keysOf(registry, "K"), ordered);
    EXPECT_EQ(valuesOf(openKey(registry, "K\\C\\DEEP"), {"V", "W"}), "V=1; W=2");

    // A bad file in any order leaves nothing behind either.
    EXPECT_THROW(layer(registry, "[K\\y]\n[K\\d]\nbroken\n"), RegFileError);
    EXPECT_EQ(keysOf(registry, "K"), ordered);

    // A key deleted after one of its own children was, both when it waits to
    // be put in order and when it is listed (a fuzzing find).
    layer(registry,
          "[K\\b]\n[K\\b\\x\\y]\n[-K\\b\\x\\y]\n[-K\\b\\x]\n"
          "[K\\zz\\x]\n[-K\\zz\\x]\n[-K\\zz]\n[-K\\b]\n");
    EXPECT_EQ(keysOf(registry, "K"), ordered);
}

// Hundreds of values in one key: written over in any case, deleted, written again.
TEST(RegFileRegistry, AKeyOfManyValuesKeepsEachByName) {
    std::string text = "[Many]\n";
    for (int i = 0; i < 300; ++i) text += "\"V" + std::to_string(i) + "\"=dword:1\n";
    for (int i = 0; i < 300; i += 3) text += "\"v" + std::to_string(i) + "\"=dword:2\n";
    for (int i = 1; i < 300; i += 3) text += "\"v" + std::to_string(i) + "\"=-\n";
    text += "\"V1\"=dword:3\n";
    RegFileRegistry registry;
    layer(registry, text);
    auto key = openKey(registry, "Many");
    ASSERT_TRUE(key);
    const std::optional<int32_t> byRest[] = {2, std::nullopt, 1};
    for (int i = 0; i < 300; ++i)
        EXPECT_EQ(key->dwordValue("V" + std::to_string(i)), i == 1 ? 3 : byRest[i % 3]) << i;
}

TEST(RegFileRegistry, OpensPathsLikeTheRegistryAndEnumeratesInUpperCaseOrder) {
    RegFileRegistry registry;
    layer(registry,
          "[]\n\"N\"=\"root\"\n[K\\b]\n[K\\_under]\n[K\\Zed]\n[K\\a1]\n[K\\\xC3\xA4rger]\n[K\\A]\n"
          "[K\\10]\n[K\\B]\n");
    // '_' sorts after the letters once they are upper-cased; "B" is "b" again.
    EXPECT_EQ(keysOf(registry, "k"), "10 A a1 b Zed _under \xC3\xA4rger");
    EXPECT_TRUE(openKey(registry, "K\\\xC3\x84RGER"));
    // Walked forwards, backwards and across keys, every open finds its own
    // key; so does a key right under the root followed by a child named like
    // the key's next sibling: the child is looked for, not the sibling taken
    // (a fuzzing find).
    layer(registry,
          "[K]\n\"N\"=\"K\"\n[K\\A]\n\"N\"=\"A\"\n[K\\b]\n\"N\"=\"b\"\n[L\\Zed]\n\"N\"=\"L\"\n"
          "[K\\Zed]\n\"N\"=\"Zed\"\n");
    std::string walked;
    for (const char* path :
         {"K\\A", "K\\a1", "K\\b", "K\\Zed", "L\\Zed", "K\\b", "K\\A", "k\\zed", "K\\Zed",
          "K\\missing", "K\\Zed", "K", "K\\L", "K", "L", "", "k\\zed\\", "K\\Missing"})
        walked += valuesOf(openKey(registry, path), {"N"}) + ", ";
    EXPECT_EQ(walked,
              "N=A, N=-, N=b, N=Zed, N=L, N=b, N=A, N=Zed, N=Zed, no key, N=Zed, N=K, no key, N=K, "
              "N=-, N=root, N=Zed, no key, ");
    EXPECT_FALSE(openKey(registry, "K", kHiveUsers));
    int32_t code = 0;
    EXPECT_FALSE(registry.open(4, "", 1, code));  // no such hive
    EXPECT_NE(code, 0);
}

}  // namespace
}  // namespace ostrel::platform
