#include "platform/common/registry_regfile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "runtime/text.h"

namespace ostrel::platform {
namespace {

namespace fs = std::filesystem;

// A .reg file on disk for one test, removed afterwards.
class TempRegFile {
  public:
    TempRegFile(const std::string& name, const std::string& bytes)
        : path_(fs::temp_directory_path() / ("ostrel_regfile_" + name + ".reg")) {
        std::ofstream out(path_, std::ios::binary);
        out << bytes;
    }
    ~TempRegFile() {
        std::error_code ignored;
        fs::remove(path_, ignored);
    }
    std::string path() const { return path_.string(); }

  private:
    fs::path path_;
};

std::string utf16LeWithBom(const std::string& utf8) {
    std::string bytes = "\xFF\xFE";
    for (char16_t unit : toUtf16(utf8)) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

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

// Every value kind of a version 5 export, as regedit writes it.
const char* const kVersion5 =
    "Windows Registry Editor Version 5.00\r\n"
    "\r\n"
    "; exported by hand\r\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Caf\xC3\xA9]\r\n"
    "@=\"default text\"\r\n"
    "\"Path\"=\"C:\\\\Program Files\\\\QUORL\\\\\"\r\n"
    "\"Quoted\"=\"say \\\"hi\\\"\"\r\n"
    "\"Loose\"=\"C:\\Temp\"\r\n"
    "\"Count\"=dword:0000002a\r\n"
    "\"Minus\"=dword:ffffffff\r\n"
    "\"Expand\"=hex(2):25,00,50,00,52,00,4f,00,47,00,52,00,41,00,4d,00,44,00,41,00,\\\r\n"
    "  54,00,41,00,25,00,00,00\r\n"
    "\"Multi\"=hex(7):61,00,00,00,62,00,00,00,00,00\r\n"
    "\"Big\"=hex(b):01,00,00,00,00,00,00,00\r\n"
    "\"Blob\"=hex:de,ad,be,ef\r\n"
    "\"None\"=hex(0):\r\n"
    "\"DwordBytes\"=hex(4):10,00,00,00\r\n"
    "\"SzBytes\"=hex(1):4f,00,4b,00,00,00\r\n"
    "\r\n"
    "[HKEY_CURRENT_USER\\Software]\r\n"
    "\"User\"=\"yes\"\r\n";

void expectVersion5Content(RegFileRegistry& registry) {
    auto key = openKey(registry, "SOFTWARE\\QUORL\\Toolbar\\Caf\xC3\xA9");
    ASSERT_TRUE(key);
    EXPECT_EQ(key->stringValue(""), "default text");
    EXPECT_EQ(key->stringValue("Path"), "C:\\Program Files\\QUORL\\");
    EXPECT_EQ(key->stringValue("Quoted"), "say \"hi\"");
    EXPECT_EQ(key->stringValue("Loose"), "C:\\Temp");
    EXPECT_EQ(key->dwordValue("Count"), 42);
    EXPECT_EQ(key->dwordValue("Minus"), -1);
    EXPECT_EQ(key->stringValue("Expand"), "%PROGRAMDATA%");
    EXPECT_EQ(key->dwordValue("DwordBytes"), 16);
    EXPECT_EQ(key->stringValue("SzBytes"), "OK");
    // Other kinds are there but are neither strings nor dwords.
    for (const char* name : {"Multi", "Big", "Blob", "None"}) {
        EXPECT_EQ(key->stringValue(name), std::nullopt) << name;
        EXPECT_EQ(key->dwordValue(name), std::nullopt) << name;
    }
    EXPECT_EQ(key->dwordValue("Path"), std::nullopt);
    EXPECT_EQ(key->stringValue("Count"), std::nullopt);
    EXPECT_EQ(key->stringValue("Absent"), std::nullopt);

    auto user = openKey(registry, "software", kHiveCurrentUser);
    ASSERT_TRUE(user);
    EXPECT_EQ(user->stringValue("USER"), "yes");
}

TEST(RegFileRegistry, ReadsEveryValueKindFromUtf16AndUtf8Files) {
    TempRegFile utf16("v5_utf16", utf16LeWithBom(kVersion5));
    TempRegFile utf8("v5_utf8", kVersion5);
    TempRegFile utf8Bom("v5_utf8bom", std::string("\xEF\xBB\xBF") + kVersion5);
    for (const auto* file : {&utf16, &utf8, &utf8Bom}) {
        SCOPED_TRACE(file->path());
        RegFileRegistry registry;
        registry.loadFile(file->path());
        expectVersion5Content(registry);
    }
}

TEST(RegFileRegistry, Regedit4TextIsAnsi) {
    // hex(2) holds single bytes here; a file that isn't UTF-8 is Windows-1252.
    const std::string text =
        "REGEDIT4\n"
        "\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL]\n"
        "\"Expand\"=hex(2):25,54,45,4d,50,25,5c,e9,00\n"
        "\"Name\"=\"Caf\xE9 \x80\"\n";
    RegFileRegistry registry;
    TempRegFile file("regedit4", text);
    registry.loadFile(file.path());
    auto key = openKey(registry, "SOFTWARE\\QUORL");
    ASSERT_TRUE(key);
    EXPECT_EQ(key->stringValue("Name"), "Caf\xC3\xA9 \xE2\x82\xAC");
    EXPECT_EQ(key->stringValue("Expand"), "%TEMP%\\\xC3\xA9");
}

TEST(RegFileRegistry, LayersFilesAndDeletes) {
    RegFileRegistry registry;
    registry.loadText(
        "REGEDIT4\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\One]\n"
        "\"PartNumber\"=\"P1\"\n"
        "\"Old\"=\"gone soon\"\n"
        "@=\"default\"\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Two\\Deep]\n"
        "\"X\"=dword:1\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Three]\n",
        "base");
    auto heldTwo = openKey(registry, "SOFTWARE\\QUORL\\Toolbar\\Two\\Deep");
    registry.loadText(
        "Windows Registry Editor Version 5.00\n"
        "[hkey_local_machine\\software\\quorl\\toolbar\\ONE]\n"
        "\"partnumber\"=\"P1-new\"\n"
        "\"OLD\"=-\n"
        "@=-\n"
        "\"Added\"=\"yes\"\n"
        "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\two]\n"
        "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Three]\n"
        "\"Ignored\"=\"under a deleted key\"\n"
        "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Toolbar\\Three]\n"
        "\"Fresh\"=\"again\"\n"
        "[-HKEY_LOCAL_MACHINE\\SOFTWARE\\Nowhere\\At\\All]\n",
        "overlay");

    auto one = openKey(registry, "SOFTWARE\\QUORL\\Toolbar\\One");
    ASSERT_TRUE(one);
    EXPECT_EQ(one->stringValue("PartNumber"), "P1-new");
    EXPECT_EQ(one->stringValue("Old"), std::nullopt);
    EXPECT_EQ(one->stringValue(""), std::nullopt);
    EXPECT_EQ(one->stringValue("Added"), "yes");

    EXPECT_FALSE(openKey(registry, "SOFTWARE\\QUORL\\Toolbar\\Two"));
    EXPECT_FALSE(openKey(registry, "SOFTWARE\\QUORL\\Toolbar\\Two\\Deep"));
    auto three = openKey(registry, "SOFTWARE\\QUORL\\Toolbar\\Three");
    ASSERT_TRUE(three);
    EXPECT_EQ(three->stringValue("Ignored"), std::nullopt);
    EXPECT_EQ(three->stringValue("Fresh"), "again");

    // Names keep the case they were first written with.
    auto toolbar = openKey(registry, "SOFTWARE\\QUORL\\Toolbar");
    ASSERT_TRUE(toolbar);
    EXPECT_EQ(subKeys(*toolbar), (std::vector<std::string>{"One", "Three"}));

    // A key opened before its deletion stays readable.
    ASSERT_TRUE(heldTwo);
    EXPECT_EQ(heldTwo->dwordValue("x"), 1);
}

TEST(RegFileRegistry, SubKeysEnumerateInUpperCaseOrder) {
    RegFileRegistry registry;
    registry.loadText(
        "REGEDIT4\n"
        "[HKEY_LOCAL_MACHINE\\K\\b]\n[HKEY_LOCAL_MACHINE\\K\\_under]\n"
        "[HKEY_LOCAL_MACHINE\\K\\Zed]\n[HKEY_LOCAL_MACHINE\\K\\a1]\n"
        "[HKEY_LOCAL_MACHINE\\K\\\xC3\xA4rger]\n[HKEY_LOCAL_MACHINE\\K\\A]\n"
        "[HKEY_LOCAL_MACHINE\\K\\10]\n[HKEY_LOCAL_MACHINE\\K\\B]\n",
        "order");
    auto key = openKey(registry, "k");
    ASSERT_TRUE(key);
    // '_' sorts after the letters once they are upper-cased; "B" is "b" again.
    EXPECT_EQ(subKeys(*key),
              (std::vector<std::string>{"10", "A", "a1", "b", "Zed", "_under", "\xC3\xA4rger"}));
    EXPECT_EQ(openKey(registry, "K\\\xC3\x84RGER").get() != nullptr, true);
}

TEST(RegFileRegistry, OpensPathsLikeTheRegistry) {
    RegFileRegistry registry;
    registry.loadText(
        "REGEDIT4\n[HKEY_LOCAL_MACHINE]\n\"Root\"=\"r\"\n[HKEY_LOCAL_MACHINE\\S\\Q]\n", "paths");
    EXPECT_EQ(openKey(registry, "")->stringValue("Root"), "r");
    EXPECT_TRUE(openKey(registry, "s\\q\\"));
    EXPECT_FALSE(openKey(registry, "S\\Q\\Missing"));
    EXPECT_FALSE(openKey(registry, "S", kHiveUsers));
    int32_t code = 0;
    EXPECT_FALSE(registry.open(4, "", 1, code));  // no such hive
    EXPECT_NE(code, 0);
}

TEST(RegFileRegistry, BadFilesNameFileAndLineAndLoadNothing) {
    struct Case {
        const char* text;
        int line;
        const char* why;
    };
    const Case cases[] = {
        {"REGEDIT5\n[HKEY_LOCAL_MACHINE\\A]\n", 1, "header"},
        {"REGEDIT4\n\"Early\"=\"x\"\n", 2, "value before key"},
        {"REGEDIT4\n[HKLM\\A]\n", 2, "short hive name"},
        {"REGEDIT4\n[HKEY_LOCAL_MACHINE\\A\n", 2, "no ]"},
        {"REGEDIT4\n[-HKEY_LOCAL_MACHINE]\n", 2, "hive deleted"},
        {"REGEDIT4\n[HKEY_LOCAL_MACHINE\\A]\n\"V\"=\"open\n", 3, "unterminated"},
        {"REGEDIT4\n[HKEY_LOCAL_MACHINE\\A]\n\"V\"=\"x\" trailing\n", 3, "trailing text"},
        {"REGEDIT4\n[HKEY_LOCAL_MACHINE\\A]\n\"V\"=dword:123456789\n", 3, "long dword"},
        {"REGEDIT4\n[HKEY_LOCAL_MACHINE\\A]\n\"V\"=hex(q):01\n", 3, "bad type"},
        {"REGEDIT4\n[HKEY_LOCAL_MACHINE\\A]\n\"V\"=hex:01,\\\n  02,\\\n  0g\n", 5,
         "bad continuation"},
        {"REGEDIT4\n[HKEY_LOCAL_MACHINE\\A]\nV=\"x\"\n", 3, "unquoted name"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.why);
        RegFileRegistry registry;
        registry.loadText("REGEDIT4\n[HKEY_LOCAL_MACHINE\\Kept]\n\"K\"=\"k\"\n", "good.reg");
        try {
            registry.loadText(std::string(c.text) + "[HKEY_LOCAL_MACHINE\\Later]\n", "bad.reg");
            ADD_FAILURE() << "no error";
        } catch (const RegFileError& error) {
            EXPECT_EQ(error.file, "bad.reg");
            EXPECT_EQ(error.line, c.line);
            EXPECT_EQ(std::string(error.what()).rfind("bad.reg:", 0), 0u) << error.what();
        }
        EXPECT_TRUE(openKey(registry, "Kept"));
        EXPECT_FALSE(openKey(registry, "A"));
        EXPECT_FALSE(openKey(registry, "Later"));
    }
    RegFileRegistry registry;
    EXPECT_THROW(registry.loadText("", "empty.reg"), RegFileError);
    EXPECT_THROW(registry.loadText("\n; only a comment\n", "comment.reg"), RegFileError);
}

TEST(RegFileRegistry, FileErrorsCountUtf16LinesAndNameMissingFiles) {
    TempRegFile file("bad_utf16", utf16LeWithBom("Windows Registry Editor Version 5.00\r\n"
                                                 "[HKEY_LOCAL_MACHINE\\Good]\r\n\r\n"
                                                 "\"W\"=dword:nothex\r\n"));
    const std::string missing = (fs::temp_directory_path() / "ostrel_no_such.reg").string();
    RegFileRegistry registry;
    for (const auto& [path, what] :
         {std::pair{file.path(), file.path() + ":4: "}, std::pair{missing, missing + ": "}}) {
        try {
            registry.loadFile(path);
            ADD_FAILURE() << "no error";
        } catch (const RegFileError& error) {
            EXPECT_EQ(std::string(error.what()).rfind(what, 0), 0u) << error.what();
        }
    }
    EXPECT_FALSE(openKey(registry, "Good"));
}

}  // namespace
}  // namespace ostrel::platform
