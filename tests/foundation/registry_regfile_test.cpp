#include "platform/common/registry_regfile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "fakes/test_apartment.h"
#include "foundation/registry_keys.h"
#include "runtime/text.h"

namespace ostrel::platform {
namespace {

using ::testing::StartsWith;
using ::testing::ThrowsMessage;

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

}  // namespace
}  // namespace ostrel::platform
