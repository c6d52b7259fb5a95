// ostrel_wxs STAGE: writes to stdout the WiX source of the x64 MSI, for wixl
// run in STAGE. STAGE/x64 goes into Program Files\Ostrel (ostrel.exe with
// it), STAGE/x86 into Program Files (x86)\Ostrel. The COM registration is
// the package's own registry rows, generated from the table that
// DllRegisterServer writes from, for each bitness in the views its
// registration writes to. Each bitness is a feature of its own (ADDLOCAL=x64
// or x86 installs one); the rows both bitnesses write alike are components
// of both features, so removing one leaves the other registered.
#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "com/registration_table.h"
#include "ostrel_version.h"

namespace fs = std::filesystem;
namespace table = ostrel::com::registration;

namespace {

// Fixed for ever: a newer package of the same code replaces an older one.
constexpr const char* kUpgradeCode = "6A0C51D4-2B77-4E53-9A1E-3F1B0E6C7D21";

struct Bitness {
    table::Bitness bitness;
    const char* name;    // the feature, the folder in STAGE, the prefix of ids
    const char* folder;  // the standard folder property above ours
    const char* win64;   // the files' view
    const char* view;    // the registry view of the server's own keys
};
constexpr Bitness kBitnesses[] = {
    {table::Bitness::x64, "x64", "ProgramFiles64Folder", "yes", "64"},
    {table::Bitness::x86, "x86", "ProgramFilesFolder", "no", "32"},
};

// One registry row: a value, or a key alone (no name).
struct Row {
    std::string view;  // "64" or "32"
    std::string key;
    std::optional<std::string> name;
    std::string data;
    auto tie() const { return std::tie(view, key, name, data); }
    bool operator==(const Row& other) const { return tie() == other.tie(); }
};

std::string narrow(const std::wstring& text) {
    std::string out;
    for (wchar_t c : text) {
        if (c < 0x20 || c > 0x7e)
            throw std::runtime_error("a registry text that is not printable ASCII");
        out += static_cast<char>(c);
    }
    return out;
}

std::string attribute(const std::string& text) {
    std::string out = "\"";
    for (char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            default:
                out += c;
        }
    }
    return out + "\"";
}

// A component's GUID, stable for ever: derived from its id (two FNV-1a
// hashes, mixed), with the bits of a name-based GUID.
std::string componentGuid(const std::string& id) {
    auto fnv = [&](std::uint64_t hash) {
        for (char c : "ostrel/" + id)
            hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3ULL;
        // Mixed, so that ids alike give GUIDs unalike.
        hash = (hash ^ (hash >> 30)) * 0xbf58476d1ce4e5b9ULL;
        hash = (hash ^ (hash >> 27)) * 0x94d049bb133111ebULL;
        return hash ^ (hash >> 31);
    };
    std::uint64_t high = fnv(0xcbf29ce484222325ULL), low = fnv(0x84222325cbf29ce4ULL);
    high = (high & ~0xf000ULL) | 0x5000ULL;      // version 5
    low = (low & ~(3ULL << 62)) | (2ULL << 62);  // the standard variant
    char text[40];
    std::snprintf(text, sizeof text, "%08llX-%04llX-%04llX-%04llX-%012llX",
                  static_cast<unsigned long long>(high >> 32),
                  static_cast<unsigned long long>((high >> 16) & 0xffff),
                  static_cast<unsigned long long>(high & 0xffff),
                  static_cast<unsigned long long>(low >> 48),
                  static_cast<unsigned long long>(low & 0xffffffffffffULL));
    return text;
}

// The rows registering one bitness writes, the server's path and folder as
// the package knows them.
std::vector<Row> rowsOf(const Bitness& bits) {
    const std::wstring name(bits.name, bits.name + std::char_traits<char>::length(bits.name));
    const std::wstring folder(bits.folder,
                              bits.folder + std::char_traits<char>::length(bits.folder));
    std::vector<Row> rows;
    for (const table::Key& key :
         table::keys(L"[#" + name + L"_Ostrel.dll]", L"[" + folder + L"]Ostrel", bits.bitness)) {
        std::vector<std::string> views;
        switch (key.writer) {
            case table::Writer::server:
                views = {bits.view};
                break;
            // Both views see it; the 64-bit one names it without redirection.
            case table::Writer::serverShared:
                views = {"64"};
                break;
            case table::Writer::typeLibrary:
                views = {"64", "32"};
                break;
        }
        for (const std::string& view : views) {
            if (key.values.empty()) rows.push_back({view, narrow(key.path), std::nullopt, ""});
            for (const table::Value& value : key.values) {
                rows.push_back({view, narrow(key.path), narrow(value.name), narrow(value.data)});
            }
        }
    }
    return rows;
}

class Writer {
  public:
    explicit Writer(std::ostream& out) : out_(out) {}

    void files(const fs::path& stage, const Bitness& bits) {
        std::vector<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator(stage / bits.name)) {
            // The tool once, the 64-bit one.
            const std::string name = entry.path().filename().string();
            if (entry.is_regular_file() &&
                !(bits.bitness == table::Bitness::x86 && name == "ostrel.exe")) {
                names.push_back(name);
            }
        }
        if (names.empty())
            throw std::runtime_error((stage / bits.name).string() + " holds no file");
        std::sort(names.begin(), names.end());
        for (const std::string& name : names) {
            std::string id = std::string(bits.name) + "_" + name;
            std::replace(id.begin(), id.end(), '-', '_');
            begin(id, bits.win64, bits.name);
            out_ << "            <File Id=" << attribute(id) << " Name=" << attribute(name)
                 << " Source=" << attribute(std::string(bits.name) + "/" + name)
                 << " KeyPath=\"yes\"/>\n";
            end();
        }
    }

    // The rows of one component, in one view.
    void registry(const std::string& id, const std::string& view, const std::vector<Row>& rows,
                  const std::vector<std::string>& features) {
        begin(id, view == "64" ? "yes" : "no", features);
        bool keyPath = true;
        int number = 0;
        for (const Row& row : rows) {
            if (row.view != view) continue;
            out_ << "            <RegistryValue Id=\"r_" << id << "_" << number++
                 << "\" Root=\"HKCR\" Key=" << attribute(row.key);
            if (!row.name) {
                // A key alone: made on install, removed on uninstall.
                out_ << " Name=\"*\" Type=\"string\" Value=\"\"/>\n";
                continue;
            }
            if (!row.name->empty()) out_ << " Name=" << attribute(*row.name);
            out_ << " Type=\"string\" Value=" << attribute(row.data)
                 << (keyPath ? " KeyPath=\"yes\"" : "") << "/>\n";
            keyPath = false;
        }
        if (keyPath)
            throw std::runtime_error("the component " + id + " has no value to be its key path");
        end();
    }

    const std::map<std::string, std::vector<std::string>>& features() const { return features_; }

  private:
    void begin(const std::string& id, const char* win64, const std::vector<std::string>& features) {
        out_ << "          <Component Id=\"c_" << id << "\" Guid=\"" << componentGuid(id)
             << "\" Win64=\"" << win64 << "\">\n";
        for (const std::string& feature : features) features_[feature].push_back(id);
    }
    void begin(const std::string& id, const char* win64, const char* feature) {
        begin(id, win64, std::vector<std::string>{feature});
    }
    void end() { out_ << "          </Component>\n"; }

    std::ostream& out_;
    std::map<std::string, std::vector<std::string>> features_;
};

void write(std::ostream& out, const fs::path& stage) {
    // What both bitnesses write alike, and what each writes of its own.
    std::vector<Row> rows[2] = {rowsOf(kBitnesses[0]), rowsOf(kBitnesses[1])};
    std::vector<Row> common, own[2];
    for (const Row& row : rows[0]) {
        const bool both = std::find(rows[1].begin(), rows[1].end(), row) != rows[1].end();
        (both ? common : own[0]).push_back(row);
    }
    for (const Row& row : rows[1]) {
        if (std::find(common.begin(), common.end(), row) == common.end()) own[1].push_back(row);
    }

    out << "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
        << "<Wix xmlns=\"http://schemas.microsoft.com/wix/2006/wi\">\n"
        << "  <Product Id=\"*\" Name=\"Ostrel\" Language=\"1033\" Version=\""
        << ostrel::kVersionText << "\" Manufacturer=\"Ostrel developers\" UpgradeCode=\""
        << kUpgradeCode << "\">\n"
        << "    <Package InstallerVersion=\"500\" Compressed=\"yes\" InstallScope=\"perMachine\" "
           "Description=\"Ostrel automation server, 64-bit and 32-bit\"/>\n"
        << "    <MajorUpgrade DowngradeErrorMessage=\"A newer version of Ostrel is installed "
           "already.\"/>\n"
        << "    <Media Id=\"1\" Cabinet=\"ostrel.cab\" EmbedCab=\"yes\"/>\n"
        << "    <Directory Id=\"TARGETDIR\" Name=\"SourceDir\">\n";
    Writer writer(out);
    for (int i = 0; i < 2; ++i) {
        const Bitness& bits = kBitnesses[i];
        out << "      <Directory Id=\"" << bits.folder << "\">\n"
            << "        <Directory Id=\"INSTALLDIR_" << bits.name << "\" Name=\"Ostrel\">\n";
        writer.files(stage, bits);
        for (const char* view : {"64", "32"}) {
            writer.registry(std::string("registry_") + bits.name + "_view" + view, view, own[i],
                            {bits.name});
        }
        if (i == 0) {
            for (const char* view : {"64", "32"}) {
                writer.registry(std::string("registry_common_view") + view, view, common,
                                {"x64", "x86"});
            }
        }
        out << "        </Directory>\n"
            << "      </Directory>\n";
    }
    out << "    </Directory>\n";
    for (const Bitness& bits : kBitnesses) {
        out << "    <Feature Id=\"" << bits.name << "\" Title=\"Ostrel, " << bits.name
            << "\" Level=\"1\">\n";
        for (const std::string& id : writer.features().at(bits.name)) {
            out << "      <ComponentRef Id=\"c_" << id << "\"/>\n";
        }
        out << "    </Feature>\n";
    }
    out << "  </Product>\n"
        << "</Wix>\n";
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: ostrel_wxs STAGE  (the WiX source of the MSI on stdout)\n";
        return 2;
    }
    try {
        std::ostringstream out;
        write(out, argv[1]);
        std::cout << out.str();
        return std::cout.flush() ? 0 : 1;
    } catch (const std::exception& error) {
        std::cerr << "ostrel_wxs: " << error.what() << "\n";
        return 1;
    }
}
