#include "ui/language_text.h"

#include <algorithm>
#include <charconv>
#include <exception>
#include <filesystem>
#include <iterator>
#include <utility>
#include <vector>

#include "foundation/builtin_data.h"
#include "foundation/globals.h"
#include "platform/own_file.h"
#include "runtime/automation_error.h"
#include "runtime/text.h"
#include "ui/language_choice.h"

namespace ostrel {

namespace {

// The component whose English texts and pictures are built in.
constexpr std::string_view kBuiltinComponent = "Ostrel";
// Far beyond any real text file or picture: a bigger file is not ours.
constexpr uint64_t kMaxTextFileBytes = 1u << 20;
constexpr uint64_t kMaxPictureBytes = platform::kMaxDataFileBytes;

std::filesystem::path toPath(std::string_view utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string nameOf(const std::filesystem::path& file) {
    const std::u8string name = file.u8string();
    return std::string(name.begin(), name.end());
}

[[noreturn]] void raiseBadFile(const std::filesystem::path& file, const std::string& what) {
    raise(kErrInvalidCall, std::string(what) + ": " + nameOf(file));
}

[[noreturn]] void raiseBadLine(const std::filesystem::path& file, int lineNumber,
                               std::string_view what = "Bad text") {
    raise(kErrInvalidCall,
          std::string(what) + " at line " + std::to_string(lineNumber) + " of " + nameOf(file));
}

// The whole file; nullopt when there is nothing at that path. Anything there
// that is not a plain file of a sane size (own_file.h) raises, naming it.
// The store is read before the file system object exists (start-up binds the
// language first), so it is read here directly.
std::optional<std::string> readDataFile(const std::filesystem::path& file, uint64_t limit) {
    try {
        return platform::readOwnFile(nameOf(file), limit);
    } catch (const platform::OwnFileRefused& refused) {
        raiseBadFile(file, "The language file " + refused.reason);
    }
}

std::string_view trimmed(std::string_view text) {
    const size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    const size_t last = text.find_last_not_of(" \t");
    return text.substr(first, last - first + 1);
}

std::optional<int32_t> numberOf(std::string_view text) {
    int32_t number = 0;
    const auto [rest, ec] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || ec != std::errc() || rest != text.data() + text.size()) return std::nullopt;
    return number;
}

// \n is a line break (CR LF, as message boxes take it), \\ a backslash; any
// other backslash stands as itself, so that a path such as C:\temp survives.
std::string unescape(std::string_view raw) {
    std::string text;
    text.reserve(raw.size());
    for (size_t i = 0; i < raw.size(); ++i) {
        const char next = i + 1 < raw.size() ? raw[i + 1] : '\0';
        if (raw[i] == '\\' && (next == 'n' || next == '\\')) {
            text += next == 'n' ? "\r\n" : "\\";
            ++i;
        } else {
            text += raw[i];
        }
    }
    return text;
}

// face;points[;bold][;italic][;underline][;strikethrough]
std::optional<Font> parseFont(std::string_view entry) {
    std::vector<std::string_view> parts;
    for (size_t start = 0;;) {
        const size_t end = entry.find(';', start);
        parts.push_back(trimmed(entry.substr(start, end - start)));
        if (end == std::string_view::npos) break;
        start = end + 1;
    }
    if (parts.size() < 2 || parts[0].empty()) return std::nullopt;
    Font font;
    font.name = parts[0];
    const auto [rest, ec] =
        std::from_chars(parts[1].data(), parts[1].data() + parts[1].size(), font.size);
    // The size range a font object takes.
    if (ec != std::errc() || rest != parts[1].data() + parts[1].size() || !(font.size > 0) ||
        font.size > 2048) {
        return std::nullopt;
    }
    for (size_t i = 2; i < parts.size(); ++i) {
        const std::string flag = lowerCase(parts[i]);
        bool* target = flag == "bold"            ? &font.bold
                       : flag == "italic"        ? &font.italic
                       : flag == "underline"     ? &font.underline
                       : flag == "strikethrough" ? &font.strikethrough
                                                 : nullptr;
        if (!target) return std::nullopt;
        *target = true;
    }
    return font;
}

// A picture lies beside the text file: a plain .ico or .bmp name.
bool isPictureName(std::string_view name) {
    if (name.find_first_of("/\\:") != std::string_view::npos || name.starts_with('.')) return false;
    const std::string lower = lowerCase(name);
    return lower.size() > 4 && (lower.ends_with(".ico") || lower.ends_with(".bmp"));
}

clsLanguageText::Store parseStore(std::string_view content, const std::filesystem::path& file) {
    if (content.starts_with("\xEF\xBB\xBF")) content.remove_prefix(3);
    clsLanguageText::Store store;
    int lineNumber = 0;
    while (!content.empty()) {
        ++lineNumber;
        const size_t end = content.find('\n');
        std::string_view line = content.substr(0, end);
        content.remove_prefix(end == std::string_view::npos ? content.size() : end + 1);
        if (line.ends_with('\r')) line.remove_suffix(1);
        if (!isValidUtf8(line)) raiseBadLine(file, lineNumber, "Not UTF-8");
        if (line.find('\0') != std::string_view::npos) raiseBadLine(file, lineNumber);

        std::string_view entry = trimmed(line);
        if (entry.empty() || entry.starts_with('#')) continue;
        enum class Kind { Text, Font, Picture } kind = Kind::Text;
        for (auto [keyword, which] : {std::pair{std::string_view("font "), Kind::Font},
                                      std::pair{std::string_view("picture "), Kind::Picture}}) {
            if (entry.starts_with(keyword)) {
                kind = which;
                entry.remove_prefix(keyword.size());
            }
        }
        const size_t equals = entry.find('=');
        if (equals == std::string_view::npos) raiseBadLine(file, lineNumber);
        const auto number = numberOf(trimmed(entry.substr(0, equals)));
        if (!number || store.texts.contains(*number) || store.fonts.contains(*number) ||
            store.pictureFiles.contains(*number)) {
            raiseBadLine(file, lineNumber);
        }
        // A text keeps its blanks; the other entries don't need them.
        const std::string_view value = entry.substr(equals + 1);
        switch (kind) {
            case Kind::Text: {
                // The raw line, so that a text's trailing blanks survive.
                store.texts.emplace(*number, unescape(line.substr(line.find('=') + 1)));
                break;
            }
            case Kind::Font: {
                auto font = parseFont(value);
                if (!font) raiseBadLine(file, lineNumber, "Bad font entry");
                store.fonts.emplace(*number, std::move(*font));
                break;
            }
            case Kind::Picture:
                if (!isPictureName(trimmed(value))) raiseBadLine(file, lineNumber, "Bad picture");
                store.pictureFiles.emplace(*number, std::string(trimmed(value)));
                break;
        }
    }
    return store;
}

uint32_t readLe(std::string_view bytes, size_t at, size_t width) {
    uint32_t value = 0;
    for (size_t i = 0; i < width; ++i) {
        value |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[at + i])) << (8 * i);
    }
    return value;
}

// The picture's kind and size from its header; nullopt when the bytes are
// not an icon or a bitmap as the name says.
std::optional<Picture> decodePicture(std::string_view name, std::string_view bytes) {
    Picture picture;
    picture.kind = lowerCase(name).ends_with(".ico") ? Picture::Kind::Icon : Picture::Kind::Bitmap;
    if (picture.kind == Picture::Kind::Icon) {
        // ICONDIR and the first entry; a size byte of 0 means 256.
        if (bytes.size() < 22 || readLe(bytes, 0, 2) != 0 || readLe(bytes, 2, 2) != 1 ||
            readLe(bytes, 4, 2) == 0) {
            return std::nullopt;
        }
        const uint32_t length = readLe(bytes, 14, 4);
        const uint32_t offset = readLe(bytes, 18, 4);
        if (length == 0 || offset > bytes.size() || length > bytes.size() - offset) {
            return std::nullopt;
        }
        picture.widthPx = bytes[6] ? static_cast<unsigned char>(bytes[6]) : 256;
        picture.heightPx = bytes[7] ? static_cast<unsigned char>(bytes[7]) : 256;
    } else {
        // BITMAPFILEHEADER, then a core (12 bytes) or an info header (40 and more).
        if (bytes.size() < 26 || !bytes.starts_with("BM")) return std::nullopt;
        const uint32_t header = readLe(bytes, 14, 4);
        if (header == 12) {
            picture.widthPx = static_cast<int32_t>(readLe(bytes, 18, 2));
            picture.heightPx = static_cast<int32_t>(readLe(bytes, 20, 2));
        } else if (header >= 40 && bytes.size() >= 54) {
            picture.widthPx = static_cast<int32_t>(readLe(bytes, 18, 4));
            const auto height = static_cast<int32_t>(readLe(bytes, 22, 4));
            if (height == INT32_MIN) return std::nullopt;
            picture.heightPx = height < 0 ? -height : height;  // negative: stored top down
        } else {
            return std::nullopt;
        }
        if (readLe(bytes, 10, 4) > bytes.size()) return std::nullopt;
    }
    if (picture.widthPx <= 0 || picture.heightPx <= 0) return std::nullopt;
    picture.bytes.assign(bytes.begin(), bytes.end());
    return picture;
}

clsLanguageText::Store builtinStore() {
    static const clsLanguageText::Store store = [] {
        const std::string name = std::string(kBuiltinComponent) + ".en.txt";
        return parseStore(builtinDataFile(name).value_or(""), toPath("(built in) " + name));
    }();
    return store;
}

// Adds the entries of `more` that `store` lacks.
void mergeBeneath(clsLanguageText::Store& store, clsLanguageText::Store more) {
    store.texts.merge(more.texts);
    store.fonts.merge(more.fonts);
    store.pictureFiles.merge(more.pictureFiles);
}

[[noreturn]] void raiseNoEntry(std::string_view kind, int32_t number) {
    raise(kErrInvalidCall,
          "There is no " + std::string(kind) + " number " + std::to_string(number));
}

}  // namespace

void clsLanguageText::Initialise(std::string_view componentName, std::string_view componentFolder,
                                 std::optional<std::string_view>) {
    // Every product record binds again with the same values: that must cost
    // nothing, and a file that failed is reported once, not on every record.
    if (bound_ && componentName == boundName_ && componentFolder == boundFolder_) return;
    boundName_ = componentName;
    boundFolder_ = componentFolder;
    bound_ = true;
    pictures_.clear();

    const LanguageChoice choice = chooseLanguage();
    // The region's file, the language's, then English, entry by entry: a
    // text that a translation lacks is the English one. A damaged file is
    // left out, and the first damage is raised once everything is bound.
    store_ = Store();
    fromBuiltin_ = true;
    suffix1_ = "en";
    suffix2_ = choice.language == "en" ? choice.tag : "en-US";
    std::exception_ptr damage;
    std::filesystem::path file;
    bool found = false;  // an empty file is found too: a store without entries
    for (const std::string& candidate : choice.fileLanguages()) {
        file =
            toPath(componentFolder) / toPath(std::string(componentName) + "." + candidate + ".txt");
        try {
            auto content = readDataFile(file, kMaxTextFileBytes);
            if (!content) continue;
            found = true;
            mergeBeneath(store_, parseStore(*content, file));
        } catch (...) {
            if (!damage) damage = std::current_exception();
            continue;
        }
        if (fromBuiltin_ && candidate != "en") {
            suffix1_ = choice.language;
            suffix2_ = choice.tag;
        }
        fromBuiltin_ = false;
    }
    const bool builtinAtHand = componentName == kBuiltinComponent;
    if (builtinAtHand) mergeBeneath(store_, builtinStore());
    fromBuiltin_ = fromBuiltin_ && builtinAtHand;
    if (damage) std::rethrow_exception(damage);
    if (!found && !builtinAtHand) raise(kErrFileNotFound, "File not found: " + nameOf(file));
}

std::string clsLanguageText::GetText(int32_t textNumber) const {
    const auto found = store_.texts.find(textNumber);
    if (found == store_.texts.end()) raiseNoEntry("text", textNumber);
    return found->second;
}

std::string clsLanguageText::GetFormattedText(int32_t textNumber,
                                              std::optional<std::string_view> insert1,
                                              std::optional<std::string_view> insert2,
                                              std::optional<std::string_view> insert3,
                                              std::optional<std::string_view> insert4) const {
    const std::string pattern = GetText(textNumber);
    const std::optional<std::string_view> inserts[] = {insert1, insert2, insert3, insert4};
    std::string text;
    text.reserve(pattern.size());
    // One pass: an insert's own markers stay as they are.
    for (size_t i = 0; i < pattern.size(); ++i) {
        const char next = i + 1 < pattern.size() ? pattern[i + 1] : '\0';
        if (pattern[i] == '%' && next >= '1' && next <= '4') {
            text += inserts[next - '1'].value_or(std::string_view());
            ++i;
        } else if (pattern[i] == '%' && next == '%') {
            text += '%';
            ++i;
        } else {
            text += pattern[i];
        }
    }
    return text;
}

std::shared_ptr<const Picture> clsLanguageText::GetPicture(int32_t pictureNumber) const {
    if (const auto cached = pictures_.find(pictureNumber); cached != pictures_.end()) {
        return cached->second;
    }
    const auto entry = store_.pictureFiles.find(pictureNumber);
    if (entry == store_.pictureFiles.end()) raiseNoEntry("picture", pictureNumber);
    const std::string& name = entry->second;

    const std::filesystem::path file = toPath(boundFolder_) / toPath(name);
    std::optional<std::string> content;
    if (!fromBuiltin_) content = readDataFile(file, kMaxPictureBytes);
    std::string source = nameOf(file);
    if (!content) {
        // A component copied without its pictures still shows its own.
        const auto builtin = boundName_ == kBuiltinComponent ? builtinDataFile(name) : std::nullopt;
        if (!builtin) raise(kErrFileNotFound, "File not found: " + source);
        content = std::string(*builtin);
        source.clear();
    }
    auto picture = decodePicture(name, *content);
    if (!picture) raiseBadFile(file, "Not a valid picture");
    picture->file = source;
    auto shared = std::make_shared<const Picture>(std::move(*picture));
    pictures_.emplace(pictureNumber, shared);
    return shared;
}

void clsLanguageText::ApplyFont(int32_t textNumber, Font& font) const {
    const auto found = store_.fonts.find(textNumber);
    if (found == store_.fonts.end()) raiseNoEntry("font entry", textNumber);
    const int32_t charset = font.charset;  // the caller's, set from text 279
    font = found->second;
    font.charset = charset;
}

void clsLanguageText::GetLanguageSuffixes(std::string& suffix1, std::string& suffix2) const {
    suffix1 = suffix1_;
    suffix2 = suffix2_;
}

namespace {

struct TextSlot : ApartmentSlot {
    Ref<clsLanguageText> text;
};

}  // namespace

clsLanguageText& gobjLanguageText() {
    Ref<clsLanguageText>& text = apartmentSlot<TextSlot>().text;
    if (!text) text = makeRef<clsLanguageText>();
    return *text;
}

}  // namespace ostrel
