#include "platform/common/registry_regfile.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fakes/test_apartment.h"
#include "runtime/text.h"

namespace ostrel::platform {
namespace {

std::unique_ptr<RegistryKey> openKey(RegFileRegistry& registry, std::string_view path,
                                     int32_t hive = kHiveLocalMachine) {
    int32_t code = -1;
    auto key = registry.open(hive, path, 131097, code);
    EXPECT_EQ(code, key ? 0 : 2) << path;
    return key;
}

std::vector<std::string> subKeys(const RegistryKey& key) {
    std::vector<std::string> names;
    for (uint32_t i = 0; auto name = key.subKeyName(i); ++i) names.push_back(*name);
    return names;
}

// The message of the RegFileError that `load` throws, or "" when it throws none.
template <class Load>
std::string errorOf(Load load) {
    try {
        load();
    } catch (const RegFileError& error) {
        return error.what();
    }
    return "";
}

// .reg files on disk, in the test's temporary folder.
class RegFile : public ::testing::Test {
  protected:
    std::string file(const std::string& name, const std::string& bytes) {
        const auto path = fx.programData / (name + ".reg");
        fakes::writeBytes(path, bytes);
        return fakes::utf8Of(path);
    }
    static std::string utf16LeWithBom(const std::string& utf8) {
        std::string bytes = "\xFF\xFE";
        for (char16_t unit : toUtf16(utf8)) {
            bytes += static_cast<char>(unit & 0xFF);
            bytes += static_cast<char>(unit >> 8);
        }
        return bytes;
    }

    fakes::TestApartment fx;
};

// Every value kind of a version 5 export, as regedit writes it.
const char* const kVersion5 =
    "Windows Registry Editor Version 5.00\r\n"
    "\r\n"
    "; exported by hand\r\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Caf\xC3\xA9]\r\n"
    "@=\"default text\"\r\n"
    "\"Path\"=\"C:\\\\Program Files\\\\\\\"Q\\\"\"\r\n"
    "\"Loose\"=\"C:\\Temp\"\r\n"
    "\"Count\"=dword:0000002a\r\n"
    "\"Expand\"=hex(2):25,00,54,00,45,00,4d,00,\\\r\n"
    "  50,00,25,00,00,00\r\n"
    "\"Multi\"=hex(7):61,00,00,00,00,00\r\n"
    "\"Big\"=hex(b):01,00,00,00,00,00,00,00\r\n"
    "\"Blob\"=hex:de,ad\r\n"
    "\"None\"=hex(0):\r\n"
    "\"DwordBytes\"=hex(4):10,00,00,00\r\n"
    "\"SzBytes\"=hex(1):4f,00,4b,00,00,00\r\n"
    "[HKEY_CURRENT_USER\\Software]\r\n"
    "\"User\"=\"yes\"\r\n";

TEST_F(RegFile, ReadsEveryValueKindFromUtf16AndUtf8Files) {
    for (const std::string& bytes : {utf16LeWithBom(kVersion5), std::string(kVersion5),
                                     "\xEF\xBB\xBF" + std::string(kVersion5)}) {
        RegFileRegistry registry;
        registry.loadFile(file("v5", bytes));
        auto key = openKey(registry, "SOFTWARE\\QUORL\\Caf\xC3\xA9");
        ASSERT_TRUE(key);
        EXPECT_EQ(key->stringValue(""), "default text");
        EXPECT_EQ(key->stringValue("Path"), "C:\\Program Files\\\"Q\"");
        EXPECT_EQ(key->stringValue("Loose"), "C:\\Temp");
        EXPECT_EQ(key->dwordValue("Count"), 42);
        EXPECT_EQ(key->stringValue("Expand"), "%TEMP%");
        EXPECT_EQ(key->dwordValue("DwordBytes"), 16);
        EXPECT_EQ(key->stringValue("SzBytes"), "OK");
        // Other kinds are there but are neither strings nor dwords.
        for (const char* name : {"Multi", "Big", "Blob", "None", "Absent"}) {
            EXPECT_EQ(key->stringValue(name), std::nullopt) << name;
            EXPECT_EQ(key->dwordValue(name), std::nullopt) << name;
        }
        EXPECT_EQ(key->dwordValue("Path"), std::nullopt);
        EXPECT_EQ(key->stringValue("Count"), std::nullopt);
        auto user = openKey(registry, "software", kHiveCurrentUser);
        ASSERT_TRUE(user);
        EXPECT_EQ(user->stringValue("USER"), "yes");
    }
}

TEST_F(RegFile, Regedit4FileIsAnsi) {
    // hex(2) holds single bytes here; a file that isn't UTF-8 is Windows-1252.
    RegFileRegistry registry;
    registry.loadFile(file("regedit4",
                           "REGEDIT4\n"
                           "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL]\n"
                           "\"Expand\"=hex(2):25,54,45,4d,50,25,5c,e9,00\n"
                           "\"Name\"=\"Caf\xE9 \x80\"\n"));
    auto key = openKey(registry, "SOFTWARE\\QUORL");
    ASSERT_TRUE(key);
    EXPECT_EQ(key->stringValue("Name"), "Caf\xC3\xA9 \xE2\x82\xAC");
    EXPECT_EQ(key->stringValue("Expand"), "%TEMP%\\\xC3\xA9");
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
    EXPECT_NE(errorOf([&] {
                  registry.loadText(
                      "REGEDIT4\n[HKEY_LOCAL_MACHINE\\K\\y]\n"
                      "[HKEY_LOCAL_MACHINE\\K\\d]\nbroken\n",
                      "bad");
              }),
              "");
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

TEST_F(RegFile, BadFilesNameFileAndLineAndLoadNothing) {
    const auto expectRejected = [](const std::string& text, int line) {
        RegFileRegistry registry;
        registry.loadText("REGEDIT4\n[HKEY_LOCAL_MACHINE\\Kept]\n", "good.reg");
        EXPECT_EQ(errorOf([&] {
                      registry.loadText(text + "[HKEY_LOCAL_MACHINE\\Later]\n", "bad.reg");
                  }).rfind("bad.reg:" + std::to_string(line) + ": ", 0),
                  0u)
            << text;
        EXPECT_TRUE(openKey(registry, "Kept"));
        EXPECT_FALSE(openKey(registry, "A"));
        EXPECT_FALSE(openKey(registry, "Later"));
    };
    expectRejected("REGEDIT5\n[HKEY_LOCAL_MACHINE\\A]\n", 1);
    for (const char* keyLine :
         {"\"Early\"=\"x\"", "[HKLM\\A]", "[HKEY_LOCAL_MACHINE\\A", "[-HKEY_LOCAL_MACHINE]"}) {
        expectRejected(std::string("REGEDIT4\n") + keyLine + "\n", 2);
    }
    for (const char* valueLine : {"\"V\"=\"open", "\"V\"=\"x\" trailing", "\"V\"=dword:123456789",
                                  "\"V\"=hex(q):01", "V=\"x\""}) {
        expectRejected(std::string("REGEDIT4\n[HKEY_LOCAL_MACHINE\\A]\n") + valueLine + "\n", 3);
    }
    expectRejected("REGEDIT4\n[HKEY_LOCAL_MACHINE\\A]\n\"V\"=hex:01,\\\n  02,\\\n  0g\n", 5);
    // A key name with a NUL inside (a fuzzing finding: it was listed and couldn't be opened).
    expectRejected(std::string("REGEDIT4\n[HKEY_LOCAL_MACHINE\\S\0O]\n", 34), 2);
    // A hex list whose last line goes on to nothing.
    expectRejected("REGEDIT4\n[HKEY_LOCAL_MACHINE\\A]\n\"V\"=hex:01,\\\n\n", 3);
    // The system's registry takes 512 levels and no more.
    const auto levels = [](int depth) {
        std::string path = "[HKEY_LOCAL_MACHINE";
        for (int i = 0; i < depth; ++i) path += "\\k";
        return "REGEDIT4\n" + path + "]\n";
    };
    expectRejected(levels(513), 2);
    expectRejected(levels(200000), 2);

    RegFileRegistry registry;
    registry.loadText(levels(512), "deepest.reg");
    std::string deepest = "k";
    for (int i = 1; i < 512; ++i) deepest += "\\k";
    EXPECT_TRUE(openKey(registry, deepest));
    const std::string endless = "REGEDIT4\n[HKEY_LOCAL_MACHINE\\A]\n\"V\"=hex:01,\\\n";
    EXPECT_EQ(
        errorOf([&] { registry.loadText(endless, "endless.reg"); }).rfind("endless.reg:3: ", 0),
        0u);
    EXPECT_NE(errorOf([&] { registry.loadText("", "empty.reg"); }), "");
    EXPECT_NE(errorOf([&] { registry.loadText("\n; only a comment\n", "comment.reg"); }), "");

    // A file's errors count UTF-16 lines; a missing file is named.
    const std::string bad = file("bad", utf16LeWithBom("Windows Registry Editor Version 5.00\r\n"
                                                       "[HKEY_LOCAL_MACHINE\\Good]\r\n\r\n"
                                                       "\"W\"=dword:nothex\r\n"));
    EXPECT_EQ(errorOf([&] { registry.loadFile(bad); }).rfind(bad + ":4: ", 0), 0u);
    const std::string odd =
        file("odd", utf16LeWithBom("REGEDIT4\r\n[HKEY_LOCAL_MACHINE\\Good]\r\n") + "\n");
    EXPECT_EQ(errorOf([&] { registry.loadFile(odd); }).rfind(odd + ":3: ", 0), 0u);
    const std::string missing = fakes::utf8Of(fx.programData / "missing.reg");
    EXPECT_EQ(errorOf([&] { registry.loadFile(missing); }).rfind(missing + ": ", 0), 0u);
    const std::string folder = fakes::utf8Of(fx.programData);
    EXPECT_EQ(errorOf([&] { registry.loadFile(folder); }), folder + ": is a directory");
    EXPECT_FALSE(openKey(registry, "Good"));
}

TEST(RegFileRegistry, ABadFileUndoesWhatItChangedBeforeItsError) {
    RegFileRegistry registry;
    registry.loadText(
        "REGEDIT4\n"
        "[HKEY_LOCAL_MACHINE\\Q\\Keep]\n\"Same\"=\"s\"\n\"Changed\"=\"old\"\n\"Erased\"=dword:7\n"
        "[HKEY_LOCAL_MACHINE\\Q\\Gone\\Below]\n\"X\"=\"x\"\n",
        "base");
    auto held = openKey(registry, "Q\\Gone\\Below");
    EXPECT_NE(errorOf([&] {
                  registry.loadText(
                      "REGEDIT4\n"
                      "[HKEY_LOCAL_MACHINE\\Q\\Keep]\n\"Changed\"=\"new\"\n\"Erased\"=-\n"
                      "\"Added\"=\"a\"\n\"changed\"=\"newer\"\n"
                      "[HKEY_LOCAL_MACHINE\\Q\\Keep\\Child]\n"
                      "[-HKEY_LOCAL_MACHINE\\Q\\Gone]\n"
                      "[HKEY_LOCAL_MACHINE\\Q\\Gone\\Other]\n"
                      "[HKEY_LOCAL_MACHINE\\Q\\New]\n\"N\"=\"n\"\n"
                      "[HKEY_LOCAL_MACHINE\\R]\n"
                      "\"Broken\"=nonsense\n",
                      "bad");
              }),
              "");
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

TEST_F(RegFile, ReadsAFileLargerThanOneReadInPieces) {
    // A value of characters of two UTF-16 units each, long enough to span a
    // read; one of the two shifts splits a pair where the first read ends.
    std::string smiles;
    for (int i = 0; i < 20000; ++i) smiles += "\xF0\x9F\x98\x80";
    for (const char* comment : {";\r\n", ";;\r\n"}) {
        RegFileRegistry registry;
        registry.loadFile(file("big", utf16LeWithBom("Windows Registry Editor Version 5.00\r\n" +
                                                     std::string(comment) +
                                                     "[HKEY_LOCAL_MACHINE\\Big]\r\n\"Smiles\"=\"" +
                                                     smiles + "\"\r\n\"After\"=\"a\"\r\n")));
        auto key = openKey(registry, "Big");
        ASSERT_TRUE(key);
        EXPECT_TRUE(key->stringValue("Smiles") == smiles) << comment;
        EXPECT_EQ(key->stringValue("After"), "a");
    }
}

}  // namespace
}  // namespace ostrel::platform
