// The registry of .reg files (reading, the key tree, layers), the system's own,
// and the registry object the component reads them through.
#include "platform/common/registry_regfile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "fakes/error_number.h"
#include "fakes/test_apartment.h"
#include "foundation/globals.h"
#include "foundation/wnc_registry.h"
#include "platform/adapters.h"
#include "runtime/text.h"

namespace ostrel::platform {
namespace {

using ::testing::StartsWith;
using ::testing::ThrowsMessage;

// A key of a registry in a test: found with code 0, missing with 2; and what
// a key holds and the keys below it, as one text to compare whole.
std::unique_ptr<RegistryKey> openKey(RegFileRegistry& registry, std::string_view path,
                                     int32_t hive = kHiveLocalMachine) {
    int32_t code = -1;
    auto key = registry.open(hive, path, 131097, code);
    EXPECT_EQ(code, key ? 0 : 2) << path;
    return key;
}

// "name=value; ..." for these names ("@" the default value): a string as it
// reads, a dword as #n, "-" when it is neither; "no key" for a missing key.
std::string valuesOf(const std::unique_ptr<RegistryKey>& key,
                     std::initializer_list<std::string_view> names) {
    if (!key) return "no key";
    std::string out;
    for (const std::string_view name : names) {
        const auto text = key->stringValue(name);
        const auto number = key->dwordValue(name);
        out += (out.empty() ? "" : "; ") + std::string(name.empty() ? "@" : name) + "=" +
               text.value_or("") + (number ? "#" + std::to_string(*number) : "") +
               (text || number ? "" : "-");
    }
    return out;
}

// The keys below path as listed, each followed by its own in brackets.
std::string keysOf(RegFileRegistry& registry, const std::string& path) {
    const auto key = openKey(registry, path);
    if (!key) return "unopenable";
    std::string out;
    for (uint32_t i = 0; auto name = key->subKeyName(i); ++i) {
        const std::string below = keysOf(registry, path.empty() ? *name : path + "\\" + *name);
        out += (i == 0 ? "" : " ") + *name + (below.empty() ? "" : "(" + below + ")");
    }
    return out;
}

// As the machines this runs on hold UTF-16: little-endian.
std::string utf16LeWithBom(const std::string& utf8) {
    const std::u16string units = u'\xFEFF' + toUtf16(utf8);
    return std::string(reinterpret_cast<const char*>(units.data()), 2 * units.size());
}

// Every value kind of a version 5 export, as regedit writes it.
const char* const kVersion5 =
    "Windows Registry Editor Version 5.00\r\n\r\n; exported by hand\r\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\QUORL\\Caf\xC3\xA9]\r\n"
    "@=\"default text\"\r\n"
    "\"Path\"=\"C:\\\\Program Files\\\\\\\"Q\\\"\"\r\n"
    "\"Loose\"=\"C:\\Temp\"\r\n"
    "\"Count\"=dword:0000002a\r\n"
    "\"Expand\"=hex(2):25,00,54,00,45,00,4d,00,\\\r\n  50,00,25,00,00,00\r\n"
    "\"Multi\"=hex(7):61,00,00,00,00,00\r\n"
    "\"Big\"=hex(b):01,00,00,00,00,00,00,00\r\n"
    "\"Blob\"=hex:de,ad\r\n"
    "\"None\"=hex(0):\r\n"
    "\"DwordBytes\"=hex(4):10,00,00,00\r\n"
    "\"SzBytes\"=hex(1):4f,00,4b,00,00,00\r\n"
    "[HKEY_CURRENT_USER\\Software]\r\n\"User\"=\"yes\"\r\n";

// RegFile: the reader of .reg texts and files, their encodings and errors.
TEST(RegFile, ReadsEveryValueKindInEveryEncodingAndInPieces) {
    // First a value of characters of two UTF-16 units each, long enough to
    // span a read: of two UTF-16 files a unit apart, one splits a pair where
    // the first read ends.
    std::string smiles;
    for (int i = 0; i < 20000; ++i) smiles += "\xF0\x9F\x98\x80";
    std::string text = kVersion5;
    text.insert(text.find("[HKEY"),
                "[HKEY_LOCAL_MACHINE\\Big]\r\n\"Smiles\"=\"" + smiles + "\"\r\n");
    const std::string shifted = std::string(text).insert(text.find(';'), ";");
    fakes::TestApartment fx;
    const auto file = fx.programData / "v5.reg";
    for (const std::string& bytes :
         {utf16LeWithBom(text), utf16LeWithBom(shifted), text, "\xEF\xBB\xBF" + text}) {
        fakes::writeBytes(file, bytes);
        RegFileRegistry registry;
        registry.loadFile(fakes::utf8Of(file));
        EXPECT_TRUE(valuesOf(openKey(registry, "Big"), {"Smiles"}) == "Smiles=" + smiles);
        // Other kinds are there but are neither strings nor dwords.
        EXPECT_EQ(valuesOf(openKey(registry, "SOFTWARE\\QUORL\\Caf\xC3\xA9"),
                           {"", "Path", "Loose", "Count", "Expand", "DwordBytes", "SzBytes",
                            "Multi", "Big", "Blob", "None", "Absent"}),
                  "@=default text; Path=C:\\Program Files\\\"Q\"; Loose=C:\\Temp; Count=#42; "
                  "Expand=%TEMP%; DwordBytes=#16; SzBytes=OK; Multi=-; Big=-; Blob=-; None=-; "
                  "Absent=-");
        EXPECT_EQ(valuesOf(openKey(registry, "software", kHiveCurrentUser), {"USER"}), "USER=yes");
    }

    // REGEDIT4: hex(2) holds single bytes, a line that isn't UTF-8 is
    // Windows-1252; and a root key's name may come in any case.
    RegFileRegistry registry;
    registry.loadText(
        "REGEDIT4\n[hkey_local_machine\\SOFTWARE\\QUORL]\n"
        "\"Expand\"=hex(2):25,54,45,4d,50,25,5c,e9,00\n\"Name\"=\"Caf\xE9 \x80\"\n",
        "regedit4.reg");
    EXPECT_EQ(valuesOf(openKey(registry, "SOFTWARE\\QUORL"), {"Name", "Expand"}),
              "Name=Caf\xC3\xA9 \xE2\x82\xAC; Expand=%TEMP%\\\xC3\xA9");
}

TEST(RegFile, BadFilesNameFileAndLineAndLoadNothing) {
    fakes::TestApartment fx;
    RegFileRegistry registry;
    // Listed first: a key that a bad text left behind would be listed after it.
    registry.loadText("REGEDIT4\n[HKEY_LOCAL_MACHINE\\0kept]\n", "good.reg");
    const auto expectRejected = [&](const std::string& text, int line) {
        EXPECT_THAT(
            [&] { registry.loadText(text, "bad.reg"); },
            ThrowsMessage<RegFileError>(StartsWith("bad.reg:" + std::to_string(line) + ": ")))
            << text;
    };
    expectRejected("REGEDIT5\n[HKEY_LOCAL_MACHINE\\A]\n", 1);
    for (const char* keyLine :
         {"\"Early\"=\"x\"", "[HKLM\\A]", "[HKEY_LOCAL_MACHINE\\A", "[-HKEY_LOCAL_MACHINE]"})
        expectRejected(std::string("REGEDIT4\n") + keyLine + "\n", 2);
    for (const char* valueLine : {"\"V\"=\"open", "\"V\"=\"x\" trailing", "\"V\"=dword:123456789",
                                  "\"V\"=hex(q):01", "V=\"x\""})
        expectRejected(std::string("REGEDIT4\n[HKEY_LOCAL_MACHINE\\A]\n") + valueLine + "\n", 3);
    expectRejected("REGEDIT4\n[HKEY_LOCAL_MACHINE\\A]\n\"V\"=hex:01,\\\n  02,\\\n  0g\n", 5);
    // A key name with a NUL inside (a fuzzing finding: it was listed and couldn't be opened).
    expectRejected(std::string("REGEDIT4\n[HKEY_LOCAL_MACHINE\\S\0O]\n", 34), 2);
    // A hex list whose last line goes on to an empty line, or to none.
    expectRejected("REGEDIT4\n[HKEY_LOCAL_MACHINE\\A]\n\"V\"=hex:01,\\\n\n", 3);
    expectRejected("REGEDIT4\n[HKEY_LOCAL_MACHINE\\A]\n\"V\"=hex:01,\\\n", 3);
    expectRejected("\n; only a comment\n", 2);
    EXPECT_THROW(registry.loadText("", "empty.reg"), RegFileError);
    // The system's registry takes 512 levels and no more.
    const auto levels = [](int depth) {
        std::string path = "k";
        for (int i = 1; i < depth; ++i) path += "\\k";
        return path;
    };
    expectRejected("REGEDIT4\n[HKEY_LOCAL_MACHINE\\" + levels(513) + "]\n", 2);
    RegFileRegistry deepest;
    deepest.loadText("REGEDIT4\n[HKEY_LOCAL_MACHINE\\" + levels(512) + "]\n", "deepest.reg");
    EXPECT_TRUE(openKey(deepest, levels(512)));

    // UTF-16 lines count, and a file may end in half a unit.
    expectRejected(utf16LeWithBom("Windows Registry Editor Version 5.00\r\n"
                                  "[HKEY_LOCAL_MACHINE\\Good]\r\n\r\n\"W\"=dword:nothex\r\n"),
                   4);
    expectRejected(utf16LeWithBom("REGEDIT4\r\n[HKEY_LOCAL_MACHINE\\Good]\r\n") + "\n", 3);
    // A file that can't be read is named.
    const std::string missing = fakes::utf8Of(fx.programData / "missing.reg");
    EXPECT_THAT([&] { registry.loadFile(missing); },
                ThrowsMessage<RegFileError>(StartsWith(missing + ": ")));
    const std::string folder = fakes::utf8Of(fx.programData);
    EXPECT_THAT([&] { registry.loadFile(folder); },
                ThrowsMessage<RegFileError>(StartsWith(folder + ": is a directory")));
    // Nothing of any bad text or file stayed.
    EXPECT_EQ(keysOf(registry, ""), "0kept");
}

// RegFileRegistry: the key tree the texts are layered into, and its look-ups.

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

#ifdef _WIN32
TEST(SystemRegistry, ReadsTheWindowsRegistry) {
    RegistryPort& registry = systemRegistry();
    int32_t code = -1;
    auto version = registry.open(kHiveLocalMachine,
                                 "Software\\Microsoft\\Windows NT\\CurrentVersion", kKeyRead, code);
    ASSERT_TRUE(version);
    EXPECT_EQ(code, 0);
    EXPECT_FALSE(version->stringValue("CurrentVersion").value_or("").empty());
    EXPECT_EQ(version->dwordValue("CurrentVersion"), std::nullopt);  // a string, not a dword

    auto microsoft = registry.open(kHiveLocalMachine, "SOFTWARE\\microsoft", kKeyRead, code);
    ASSERT_TRUE(microsoft);
    bool listed = false;
    for (uint32_t i = 0; auto name = microsoft->subKeyName(i); ++i) listed |= *name == "Windows";
    EXPECT_TRUE(listed);

    EXPECT_FALSE(registry.open(kHiveLocalMachine, "Software\\No\\Such\\Key", kKeyRead, code));
    EXPECT_EQ(code, 2);
}
#else
TEST(SystemRegistry, StartsEmptyOffWindows) {
    int32_t code = -1;
    EXPECT_FALSE(systemRegistry().open(kHiveLocalMachine, "Software", kKeyRead, code));
    EXPECT_EQ(code, 2);
}
#endif

// The registry object over it.
using fakes::errorNumberOf;

// A key whose every read fails at run time.
struct BrokenKey : RegistryKey {
    [[noreturn]] static std::nullopt_t broken() { throw std::runtime_error("broken"); }
    std::optional<std::string> stringValue(std::string_view) const override { return broken(); }
    std::optional<int32_t> dwordValue(std::string_view) const override { return broken(); }
    std::optional<std::string> subKeyName(uint32_t) const override { return broken(); }
};

// A .reg registry that records the hive and access that reach it, and answers
// with a broken key or a refusal where the path says so.
struct RecordingPort : platform::RegFileRegistry {
    std::unique_ptr<RegistryKey> open(int32_t hive, std::string_view path, int32_t access,
                                      int32_t& errorCode) override {
        calls.push_back({hive, access});
        errorCode = path == "Refused" ? 5 : 0;
        if (path == "Broken") return std::make_unique<BrokenKey>();
        if (path == "Refused") return nullptr;
        return RegFileRegistry::open(hive, path, access, errorCode);
    }
    std::vector<std::pair<int32_t, int32_t>> calls;
};

// Each value of the key as a string and as a number, the defaults "dflt" and 9.
std::string reads(WNCRegistry* registry) {
    return gfstrGetRegValue(registry, "partnumber", "dflt") + "|" +
           gfstrGetRegValue(registry, "Build", "dflt") + "|" +
           std::to_string(gflngGetRegValue(registry, "Build", 9)) + "|" +
           std::to_string(gflngGetRegValue(registry, "PartNumber", 9));
}

struct WNCRegistryTest : ::testing::Test {
    void SetUp() override {
        layer(port,
              "[SOFTWARE\\QUORL\\Toolbar\\Beta]\n\"PartNumber\"=\" PN-2 \"\n"
              "\"Build\"=dword:fffffffe\n"
              "[SOFTWARE\\QUORL\\Toolbar\\alpha]\n\"PartNumber\"=\"PN-1\"\n"
              "[SOFTWARE\\QUORL\\Toolbar\\Gamma]\n");
        fx.use(&platform::Ports::registry, &port);
    }

    fakes::TestApartment fx;
    RecordingPort port;
};

// Only OpenKey raises: TryOpenKey answers False, and the reads their defaults.
TEST_F(WNCRegistryTest, OpenKeyRaisesWhereTryOpenKeyAndTheReadsDoNot) {
    EXPECT_EQ(reads(nullptr), "dflt|dflt|9|9");
    WNCRegistry registry;
    ASSERT_TRUE(registry.TryOpenKey(2, "SOFTWARE\\QUORL\\Toolbar\\Beta", kKeyRead, 0));
    EXPECT_EQ(reads(&registry), " PN-2 |dflt|-2|9") << "a dword is no string, a string no dword";
    EXPECT_FALSE(registry.TryOpenKey(1, "Refused", kKeyQueryValue, 0));
    EXPECT_EQ(port.calls, (std::vector<std::pair<int32_t, int32_t>>{{2, 131097}, {1, 1}}));

    // A failed open drops the key held before.
    EXPECT_EQ(reads(&registry), "dflt|dflt|9|9");
    std::string name;
    EXPECT_FALSE(registry.EnumFirstSubKey(name));

    EXPECT_EQ(errorNumberOf([&] { registry.OpenKey(2, "SOFTWARE\\Missing", kKeyRead, 0); }), 53);
    EXPECT_EQ(errorNumberOf([&] { registry.OpenKey(2, "Refused", kKeyRead, 0); }), 70);
    registry.OpenKey(2, "Broken", kKeyRead, 0);
    EXPECT_EQ(reads(&registry), "dflt|dflt|9|9") << "reads that fail";
}

// The catalogue's walk of the enumeration itself: the catalogue suites.
TEST_F(WNCRegistryTest, EnumerationEndsAndStartsOverOnASecondOpen) {
    WNCRegistry parent;
    parent.OpenKey(2, "SOFTWARE\\QUORL\\Toolbar", kKeyRead, 0);
    const auto next = [&] { return enumSubKeyName(parent, false); };
    EXPECT_EQ((std::vector<std::string>{enumSubKeyName(parent, true), next(), next(), next()}),
              (std::vector<std::string>{"alpha", "Beta", "Gamma", ""}))
        << "the empty name past the last";

    // Re-opening resets the position; EnumFirstSubKey does too.
    EXPECT_EQ(enumSubKeyName(parent, true), "alpha");
    parent.OpenKey(2, "SOFTWARE\\QUORL\\Toolbar", kKeyRead, 0);
    EXPECT_EQ(next(), "alpha");
    parent.OpenKey(2, "SOFTWARE\\QUORL\\Toolbar\\Gamma", kKeyRead, 0);
    std::string name;
    EXPECT_FALSE(parent.EnumFirstSubKey(name)) << "a key without sub-keys";
}

}  // namespace
}  // namespace ostrel::platform
