// The saved inventory is read in one pass of the JSON library's event parser,
// which checks the shape as it goes: no tree of the whole file is built, the
// nesting is never deeper than the shape allows, and every error names the
// line it was found on.
#include "platform/common/wmi_json.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <new>
#include <vector>

#include <nlohmann/json.hpp>

#include "runtime/folded_index.h"
#include "runtime/text.h"

namespace ostrel::platform {

struct WmiJsonProvider::Classes {
    std::vector<std::pair<std::string, std::vector<WmiRecord>>> list;
};

namespace {

using Json = nlohmann::json;

constexpr std::string_view kLogonSession = "Win32_LogonSession";
constexpr std::string_view kAccounts = "Accounts";

struct ShapeError {
    std::string message;
};

// Walks the text and counts the lines it has passed, so that the events know
// where they are.
class LineCountingIterator {
  public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    LineCountingIterator(const char* at, int* line) : at_(at), line_(line) {}
    reference operator*() const { return *at_; }
    LineCountingIterator& operator++() {
        if (*at_ == '\n') ++*line_;
        ++at_;
        return *this;
    }
    LineCountingIterator operator++(int) {
        LineCountingIterator before = *this;
        ++*this;
        return before;
    }
    friend bool operator==(const LineCountingIterator& a, const LineCountingIterator& b) {
        return a.at_ == b.at_;
    }

  private:
    const char* at_;
    int* line_;
};

// The names met so far at one level, found by hash without regard to case,
// so that a file of many classes or properties is still read in linear time.
class NameSet {
  public:
    // False when the name is there already.
    bool add(std::string_view name) {
        std::string folded = lowerCase(name);
        const size_t hash = FoldedIndex::hashOf(folded);
        const auto keyOf = [this](size_t reference) -> std::string_view {
            return names_[reference - 1];
        };
        if (index_.find(folded, hash, keyOf) != FoldedIndex::kNoSlot) return false;
        index_.reserve(names_.size() + 1);
        names_.push_back(std::move(folded));
        index_.insert(hash, names_.size());
        return true;
    }
    void clear() {
        names_.clear();
        index_.clear();
    }

  private:
    std::vector<std::string> names_;
    FoldedIndex index_;
};

// Builds the classes from the parser's events: an object of classes (depth 1),
// arrays of objects (2), properties (3); a logon session's "Accounts" array (4)
// of objects (5).
class InventoryBuilder {
  public:
    using number_integer_t = Json::number_integer_t;
    using number_unsigned_t = Json::number_unsigned_t;
    using number_float_t = Json::number_float_t;
    using string_t = Json::string_t;
    using binary_t = Json::binary_t;

    explicit InventoryBuilder(WmiJsonProvider::Classes& classes) : classes_(classes) {}

    bool null() { return value(Variant(NullValue{})); }
    bool boolean(bool v) { return value(Variant(v)); }
    bool number_integer(number_integer_t v) { return whole(static_cast<double>(v), v); }
    bool number_unsigned(number_unsigned_t v) {
        return v <= static_cast<number_unsigned_t>(std::numeric_limits<int32_t>::max())
                   ? value(Variant(static_cast<int32_t>(v)))
                   : value(Variant(static_cast<double>(v)));
    }
    bool number_float(number_float_t v, const string_t&) { return value(Variant(v)); }
    bool string(string_t& v) { return value(Variant(std::move(v))); }
    bool binary(binary_t&) { fail("binary values are not JSON"); }

    bool start_object(std::size_t) {
        switch (depth_) {
            case 0:
                break;
            case 2:
                classes_.list.back().second.emplace_back();
                properties_.clear();
                break;
            case 4:
                session().associated->emplace_back();
                accountProperties_.clear();
                break;
            default:
                notAValue();
        }
        ++depth_;
        return true;
    }
    bool key(string_t& name) {
        if (depth_ == 1) {
            if (!classNames_.add(name)) fail("the class " + name + " is there twice");
            classes_.list.emplace_back(std::move(name), std::vector<WmiRecord>());
        } else {
            if (!(depth_ == 3 ? properties_ : accountProperties_).add(name))
                fail("the property " + name + " is there twice");
            if (depth_ == 3 && isLogonSession() && equalsText(name, kAccounts)) {
                if (current().associated) fail("the property " + name + " is there twice");
            }
            property_ = std::move(name);
        }
        return true;
    }
    bool end_object() {
        --depth_;
        return true;
    }
    bool start_array(std::size_t) {
        if (depth_ == 1) {
            // the class's objects
        } else if (depth_ == 3 && isLogonSession() && equalsText(property_, kAccounts)) {
            current().associated.emplace();
        } else {
            notAValue();
        }
        ++depth_;
        return true;
    }
    bool end_array() {
        --depth_;
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& error) {
        // "[json.exception.parse_error.101] parse error at line 2, column 5: ..."
        std::string message = error.what();
        const std::size_t tag = message.find("] ");
        fail(tag == std::string::npos ? message : message.substr(tag + 2));
    }

  private:
    [[noreturn]] static void fail(std::string message) { throw ShapeError{std::move(message)}; }

    [[noreturn]] void notAValue() const {
        switch (depth_) {
            case 0:
                fail("the file must hold one JSON object, its members the classes");
            case 1:
                fail("the class " + classes_.list.back().first + " must be an array of objects");
            case 2:
                fail("an object of " + classes_.list.back().first + " must be a JSON object");
            case 4:
                fail("an account must be a JSON object");
            default:
                fail("the value of " + property_ +
                     " must be a string, a number, true, false or null");
        }
    }

    bool whole(double asDouble, number_integer_t v) {
        if (v >= std::numeric_limits<int32_t>::min() && v <= std::numeric_limits<int32_t>::max()) {
            return value(Variant(static_cast<int32_t>(v)));
        }
        return value(Variant(asDouble));
    }

    bool value(Variant v) {
        if (depth_ == 3) {
            if (isLogonSession() && equalsText(property_, kAccounts)) {
                if (!v.isNull()) fail("Accounts must be an array of account objects or null");
                return true;  // the same as none: a null result set
            }
            current().set(std::move(property_), std::move(v));
        } else if (depth_ == 5) {
            account().set(std::move(property_), std::move(v));
        } else {
            notAValue();
        }
        return true;
    }

    bool isLogonSession() const { return equalsText(classes_.list.back().first, kLogonSession); }
    WmiRecord& current() { return classes_.list.back().second.back(); }
    WmiRecord& session() { return current(); }
    WmiRecord& account() { return current().associated->back(); }

    WmiJsonProvider::Classes& classes_;
    NameSet classNames_;
    NameSet properties_;         // of the current object
    NameSet accountProperties_;  // of the current account
    int depth_ = 0;
    std::string property_;
};

std::string systemReason(int error) {
    return error != 0 ? std::string(": ") + std::strerror(error) : std::string();
}

}  // namespace

WmiJsonError::WmiJsonError(std::string f, int l, const std::string& message)
    : std::runtime_error(f + (l > 0 ? ":" + std::to_string(l) : std::string()) + ": " + message),
      file(std::move(f)),
      line(l) {}

WmiJsonProvider::WmiJsonProvider() : classes_(std::make_shared<Classes>()) {}
WmiJsonProvider::~WmiJsonProvider() = default;

void WmiJsonProvider::loadFile(const std::string& path) {
    // The name is UTF-8; through a path, Windows opens it by its wide form.
    const std::filesystem::path file(std::u8string(path.begin(), path.end()));
    std::error_code ignored;
    if (std::filesystem::is_directory(file, ignored)) throw WmiJsonError(path, 0, "is a directory");
    errno = 0;
    std::ifstream in(file, std::ios::binary);
    if (!in) throw WmiJsonError(path, 0, "can't open the file" + systemReason(errno));
    std::string text;
    try {
        std::vector<char> chunk(1u << 16);
        while (in.read(chunk.data(), static_cast<std::streamsize>(chunk.size())) ||
               in.gcount() > 0) {
            text.append(chunk.data(), static_cast<std::size_t>(in.gcount()));
            if (text.size() > kMaxBytes) {
                throw WmiJsonError(path, 0,
                                   "larger than " + std::to_string(kMaxBytes >> 20) +
                                       " MiB: no saved inventory is that large");
            }
        }
    } catch (const std::bad_alloc&) {
        throw WmiJsonError(path, 0, "not enough memory to read the file");
    }
    if (in.bad()) throw WmiJsonError(path, 0, "can't read the file" + systemReason(errno));
    loadText(text, path);
}

void WmiJsonProvider::loadText(std::string_view text, const std::string& name) {
    // UTF-16 with its byte order mark, as Windows PowerShell's > writes it.
    std::string decoded;
    if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) {
        const std::size_t units = (text.size() - 2) & ~std::size_t{1};
        decoded = fromUtf16Bytes(text.substr(2, units), text.starts_with("\xFE"));
        if (text.size() % 2 != 0) {
            // Named by the line the half character would have ended.
            const auto lines = std::count(decoded.begin(), decoded.end(), '\n');
            throw WmiJsonError(name, 1 + static_cast<int>(lines),
                               "the file ends in half a UTF-16 character (an odd number of bytes)");
        }
        text = decoded;
    }
    auto classes = std::make_shared<Classes>();
    int line = 1;
    try {
        InventoryBuilder builder(*classes);
        Json::sax_parse(LineCountingIterator(text.data(), &line),
                        LineCountingIterator(text.data() + text.size(), &line), &builder);
    } catch (const ShapeError& error) {
        throw WmiJsonError(name, line, error.message);
    } catch (const std::bad_alloc&) {
        throw WmiJsonError(name, line, "not enough memory to hold the inventory");
    }
    classes_ = std::move(classes);
}

std::unique_ptr<WmiServices> WmiJsonProvider::connect(std::string_view /*moniker*/) {
    return std::make_unique<WmiRecordServices>(
        [classes = classes_](std::string_view className) -> WmiClassRecords {
            for (const auto& [known, records] : classes->list) {
                if (equalsText(known, className)) return records;
            }
            return std::nullopt;
        });
}

}  // namespace ostrel::platform
