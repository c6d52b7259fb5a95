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
    EXPECT_EQ(openKey(registry, "")->stringValue("Root"), "r");
    EXPECT_TRUE(openKey(registry, "k\\zed\\"));
    EXPECT_FALSE(openKey(registry, "K\\Missing"));
    EXPECT_FALSE(openKey(registry, "K", kHiveUsers));
    int32_t code = 0;
    EXPECT_FALSE(registry.open(4, "", 1, code));  // no such hive
    EXPECT_NE(code, 0);
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

    RegFileRegistry registry;
    EXPECT_NE(errorOf([&] { registry.loadText("", "empty.reg"); }), "");
    EXPECT_NE(errorOf([&] { registry.loadText("\n; only a comment\n", "comment.reg"); }), "");

    // A file's errors count UTF-16 lines; a missing file is named.
    const std::string bad = file("bad", utf16LeWithBom("Windows Registry Editor Version 5.00\r\n"
                                                       "[HKEY_LOCAL_MACHINE\\Good]\r\n\r\n"
                                                       "\"W\"=dword:nothex\r\n"));
    EXPECT_EQ(errorOf([&] { registry.loadFile(bad); }).rfind(bad + ":4: ", 0), 0u);
    const std::string missing = fakes::utf8Of(fx.programData / "missing.reg");
    EXPECT_EQ(errorOf([&] { registry.loadFile(missing); }).rfind(missing + ": ", 0), 0u);
    // A folder given as the file is named too, rather than failing an allocation.
    const std::string folder = fakes::utf8Of(fx.programData);
    EXPECT_EQ(errorOf([&] { registry.loadFile(folder); }).rfind(folder + ": ", 0), 0u);
    EXPECT_FALSE(openKey(registry, "Good"));
}

}  // namespace
}  // namespace ostrel::platform
