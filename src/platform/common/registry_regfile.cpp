// A registry read from .reg export files. A file is read as a stream, a
// piece at a time, and applied to the tree as it goes; what it changed is
// recorded so that a bad file is undone and leaves nothing behind. Only what
// existed before the file is recorded, so a file's memory is about its tree.
#include "platform/common/registry_regfile.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <istream>
#include <iterator>
#include <map>
#include <memory>
#include <new>
#include <streambuf>
#include <system_error>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "runtime/text.h"

namespace ostrel::platform {

namespace {

// Registry value types, as the export format numbers them in hex(n).
constexpr uint32_t kRegSz = 1;
constexpr uint32_t kRegExpandSz = 2;
constexpr uint32_t kRegBinary = 3;
constexpr uint32_t kRegDword = 4;
constexpr uint32_t kRegMultiSz = 7;

// System error codes that open() reports.
constexpr int32_t kErrorFileNotFound = 2;
constexpr int32_t kErrorInvalidHandle = 6;

constexpr std::size_t kHiveCount = 6;
// The system's registry takes no deeper key.
constexpr int kMaxKeyDepth = 512;
constexpr std::size_t kReadChunk = 64 * 1024;
// A key with this many values is looked up through an index while a file loads.
constexpr std::size_t kIndexedValues = 64;

// ---- names ---------------------------------------------------------------

char asciiUpper(char c) {
    return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}

// How two names order as the registry compares them, by their upper-cased
// forms: <0, 0 or >0. Bytes alike in both are passed over at once, and only
// a name that differs beyond ASCII is upper-cased whole.
int compareNames(std::string_view a, std::string_view b) {
    const auto continuation = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
    std::size_t i = 0;
    for (;; ++i) {
        i = static_cast<std::size_t>(
            std::mismatch(a.begin() + static_cast<std::ptrdiff_t>(i), a.end(),
                          b.begin() + static_cast<std::ptrdiff_t>(i), b.end())
                .first -
            a.begin());
        if (i == a.size() || i == b.size()) {
            return a.size() < b.size() ? -1 : (a.size() > b.size() ? 1 : 0);
        }
        if (static_cast<unsigned char>(a[i]) >= 0x80 || static_cast<unsigned char>(b[i]) >= 0x80) {
            // Alike up to here; from the start of this character on, upper-cased.
            while (i > 0 && (continuation(a[i]) || continuation(b[i]))) --i;
            return upperCase(a.substr(i)).compare(upperCase(b.substr(i)));
        }
        const auto x = static_cast<unsigned char>(asciiUpper(a[i]));
        const auto y = static_cast<unsigned char>(asciiUpper(b[i]));
        if (x != y) return x < y ? -1 : 1;
    }
}

// Calls step for each non-empty segment of a backslash-separated path.
template <class Step>
bool forEachSegment(std::string_view path, Step&& step) {
    while (!path.empty()) {
        const std::size_t cut = path.find('\\');
        const std::string_view segment = path.substr(0, cut);
        if (!segment.empty() && !step(segment)) return false;
        if (cut == std::string_view::npos) break;
        path.remove_prefix(cut + 1);
    }
    return true;
}

// ---- the tree's nodes ----------------------------------------------------

struct Value {
    const std::string* name;  // in the tree's table: a few names recur in every key
    // Types 1, 2 and 7 hold UTF-8 text; every other type its raw bytes.
    std::string data;
    uint32_t type = kRegSz;
};

struct Node;
void release(Node* node) noexcept;

// A counted reference to a node. A key handed out holds one, so it stays
// readable after a later file deletes it; the count lives in the node, which
// keeps a large tree small.
class NodeRef {
  public:
    NodeRef() = default;
    explicit NodeRef(Node* node) noexcept;
    NodeRef(const NodeRef& other) noexcept : NodeRef(other.node_) {}
    NodeRef(NodeRef&& other) noexcept : node_(std::exchange(other.node_, nullptr)) {}
    NodeRef& operator=(NodeRef other) noexcept {
        std::swap(node_, other.node_);
        return *this;
    }
    ~NodeRef() {
        if (node_ != nullptr) release(node_);
    }

    Node* get() const noexcept { return node_; }
    Node* operator->() const noexcept { return node_; }
    // Hands the reference over to the caller without dropping it.
    Node* detach() noexcept { return std::exchange(node_, nullptr); }

  private:
    Node* node_ = nullptr;
};

struct Node {
    std::atomic<uint32_t> references{0};
    uint32_t generation = 0;  // the load that last changed it; 0: none has
    std::string name;
    std::vector<NodeRef> children;  // ordered by upper-cased name
    std::vector<Value> values;
};

NodeRef::NodeRef(Node* node) noexcept : node_(node) {
    if (node_ != nullptr) node_->references.fetch_add(1, std::memory_order_relaxed);
}

NodeRef makeNode(std::string_view name, uint32_t generation) {
    auto node = std::make_unique<Node>();
    node->name = std::string(name);
    node->generation = generation;
    return NodeRef(node.release());
}

// Drops a reference. A node that goes takes its sub-tree with it, level by
// level from a list rather than by recursion, so no depth of the input can
// exhaust the stack.
void release(Node* node) noexcept {
    if (node->references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    std::vector<std::vector<NodeRef>> levels;  // as deep as the tree at most
    levels.push_back(std::move(node->children));
    delete node;  // the last reference: counted references are the one owner here
    while (!levels.empty()) {
        std::vector<NodeRef>& level = levels.back();
        if (level.empty()) {
            levels.pop_back();
            continue;
        }
        Node* child = level.back().detach();
        level.pop_back();
        if (child->references.fetch_sub(1, std::memory_order_acq_rel) != 1) continue;
        std::vector<NodeRef> grandchildren = std::move(child->children);
        delete child;
        if (!grandchildren.empty()) levels.push_back(std::move(grandchildren));
    }
}

// Where a child of this name is or would go, and whether it is there.
std::pair<std::vector<NodeRef>::iterator, bool> childSlot(Node& node, std::string_view name) {
    auto& children = node.children;
    // Exports list keys in order: a new last child needs no search.
    if (children.empty() || compareNames(children.back()->name, name) < 0) {
        return {children.end(), false};
    }
    const auto slot = std::lower_bound(children.begin(), children.end(), name,
                                       [](const NodeRef& child, std::string_view key) {
                                           return compareNames(child->name, key) < 0;
                                       });
    return {slot, slot != children.end() && compareNames((*slot)->name, name) == 0};
}

std::vector<Value>::iterator findValue(Node& node, std::string_view name) {
    // Mostly asked for as written; no two values of a key differ only in case.
    const auto same = std::find_if(node.values.begin(), node.values.end(),
                                   [name](const Value& value) { return *value.name == name; });
    if (same != node.values.end()) return same;
    return std::find_if(node.values.begin(), node.values.end(), [name](const Value& value) {
        return compareNames(*value.name, name) == 0;
    });
}

// ---- text decoding -------------------------------------------------------

void appendUtf8(std::string& out, uint32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

// Text in the ANSI code page of the machine that wrote it. Modern tools write
// UTF-8 even into REGEDIT4 files, so valid UTF-8 is taken as it stands and
// anything else is read as Windows-1252.
std::string decodeAnsi(std::string_view bytes) {
    if (isValidUtf8(bytes)) return std::string(bytes);
    static constexpr std::array<uint16_t, 32> kHigh = {
        0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
    std::string out;
    out.reserve(bytes.size() + bytes.size() / 8);
    for (char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        if (b >= 0x80 && b < 0xA0) {
            appendUtf8(out, kHigh[b - 0x80u]);
        } else {
            appendUtf8(out, b);
        }
    }
    return out;
}

// A string value read back from the registry ends at its first NUL.
std::string cutAtNul(std::string text) {
    const std::size_t nul = text.find('\0');
    if (nul != std::string::npos) text.resize(nul);
    return text;
}

struct ParseFailure {
    int line;
    std::string message;
};

// ": " and the reason of the last failed system call, where the library tells it.
std::string systemReason(int error) {
    return error != 0 ? ": " + std::generic_category().message(error) : std::string();
}

// The lines of a file, decoded to UTF-8 as they are read: the file is never
// held whole, and anything that reads as a stream (a pipe, a /proc file, a
// terminal) reads the same as a file on disk. A UTF-16LE file starts with its
// byte order mark; anything else is UTF-8, and a line that isn't valid UTF-8
// is Windows-1252.
class LineReader {
  public:
    explicit LineReader(std::istream& in) : in_(in) {}

    // The next line, without its '\n'; false after the last.
    bool next(std::string& line) {
        for (;;) {
            const std::size_t end = pending_.find('\n', scanned_);
            if (end != std::string::npos) {
                take(line, end, end + 1);
                return true;
            }
            scanned_ = pending_.size();
            if (!fill()) break;
        }
        if (start_ == pending_.size()) return false;
        take(line, pending_.size(), pending_.size());
        return true;
    }

    // The number of the line last handed out.
    int number() const { return number_; }

  private:
    enum class Encoding { Unknown, Utf8, Utf16Le };

    void take(std::string& line, std::size_t end, std::size_t next) {
        line.assign(pending_, start_, end - start_);
        if (encoding_ == Encoding::Utf8 && !isValidUtf8(line)) line = decodeAnsi(line);
        start_ = scanned_ = next;
        ++number_;
    }

    // Reads until some text is decoded; false at the end of the file.
    bool fill() {
        pending_.erase(0, start_);
        scanned_ -= start_;
        start_ = 0;
        const std::size_t before = pending_.size();
        while (!ended_ && pending_.size() == before) {
            in_.read(chunk_.data(), static_cast<std::streamsize>(chunk_.size()));
            if (in_.bad())
                throw ParseFailure{number_ + 1, "can't read the file" + systemReason(errno)};
            raw_.append(chunk_.data(), static_cast<std::size_t>(in_.gcount()));
            ended_ = in_.eof();
            decode();
        }
        return pending_.size() > before;
    }

    // Moves what can be decoded of raw_ to pending_.
    void decode() {
        const std::string_view raw(raw_);
        if (encoding_ == Encoding::Unknown) {
            if (raw.size() < 3 && !ended_) return;  // a byte order mark may still come
            if (raw.starts_with("\xFE\xFF")) {
                throw ParseFailure{1, "UTF-16 big-endian files are not supported"};
            }
            std::size_t mark = 0;
            if (raw.starts_with("\xFF\xFE")) {
                encoding_ = Encoding::Utf16Le;
                mark = 2;
            } else {
                encoding_ = Encoding::Utf8;
                if (raw.starts_with("\xEF\xBB\xBF")) mark = 3;
            }
            raw_.erase(0, mark);
        }
        if (encoding_ == Encoding::Utf8) {
            pending_ += raw_;
            raw_.clear();
            return;
        }
        // Whole units only; a high surrogate waits for its partner.
        std::size_t usable = raw_.size() & ~std::size_t{1};
        if (!ended_ && usable >= 2 &&
            (static_cast<unsigned char>(raw_[usable - 1]) & 0xFC) == 0xD8) {
            usable -= 2;
        }
        pending_ += fromUtf16Bytes(std::string_view(raw_).substr(0, usable));
        raw_.erase(0, usable);
        if (ended_ && !raw_.empty()) {
            const auto lines = std::count(pending_.begin() + static_cast<std::ptrdiff_t>(start_),
                                          pending_.end(), '\n');
            throw ParseFailure{number_ + 1 + static_cast<int>(lines),
                               "the file ends in half a UTF-16 character (an odd number of bytes)"};
        }
    }

    std::istream& in_;
    std::array<char, kReadChunk> chunk_{};
    std::string raw_;      // bytes read and not yet decoded
    std::string pending_;  // decoded text from start_ on not yet handed out
    std::size_t start_ = 0;
    std::size_t scanned_ = 0;  // pending_ holds no '\n' from start_ to here
    Encoding encoding_ = Encoding::Unknown;
    bool ended_ = false;
    int number_ = 0;
};

// ---- parsing -------------------------------------------------------------

struct StagedValue {
    std::string name;
    bool erase = false;
    uint32_t type = kRegSz;
    std::string data;
};

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

std::string_view trimLeft(std::string_view s) {
    while (!s.empty() && isBlank(s.front())) s.remove_prefix(1);
    return s;
}

std::string_view trimRight(std::string_view s) {
    while (!s.empty() && (isBlank(s.back()) || s.back() == '\r')) s.remove_suffix(1);
    return s;
}

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

struct HiveName {
    std::string_view name;
    int32_t hive;
};

constexpr std::array<HiveName, 5> kHiveNames = {{
    {"HKEY_CLASSES_ROOT", kHiveClassesRoot},
    {"HKEY_CURRENT_USER", kHiveCurrentUser},
    {"HKEY_LOCAL_MACHINE", kHiveLocalMachine},
    {"HKEY_USERS", kHiveUsers},
    {"HKEY_CURRENT_CONFIG", kHiveCurrentConfig},
}};

bool asciiEqualsIgnoreCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return asciiUpper(x) == asciiUpper(y);
           });
}

}  // namespace

// ---- the tree ------------------------------------------------------------

namespace {
// Tells every state of every tree apart, for the cache of the last opened key.
std::atomic<uint64_t> treeStates{0};
}  // namespace

struct RegFileTree {
    RegFileTree() {
        for (auto& root : roots) root = makeNode("", 0);
    }

    // The node at hive\path; null when it is missing. Also tells the node's
    // parent and its place among the parent's children, where asked.
    Node* find(int32_t hive, std::string_view path, Node** parent = nullptr,
               std::size_t* place = nullptr) const {
        Node* node = roots[static_cast<std::size_t>(hive)].get();
        forEachSegment(path, [&](std::string_view segment) {
            const auto [slot, found] = childSlot(*node, segment);
            if (parent != nullptr) *parent = node;
            if (place != nullptr) *place = static_cast<std::size_t>(slot - node->children.begin());
            node = found ? slot->get() : nullptr;
            return found;
        });
        return node;
    }

    std::array<NodeRef, kHiveCount> roots;
    std::unordered_set<std::string> valueNames;  // as first written; never shrinks
    uint32_t loads = 0;                          // the generation of the latest load
    uint64_t state = ++treeStates;               // new with every load
};

namespace {

// One file's changes, made to the tree as they are read and undone unless
// the file is committed. A node that was there before the file keeps a copy
// of its children and values as they were, taken at the file's first change
// to it; a node the file made carries the file's generation and goes when
// its parent's children are put back.
class Load {
  public:
    explicit Load(RegFileTree& tree) : tree_(tree), generation_(++tree.loads) {
        tree.state = ++treeStates;
    }
    ~Load() {
        if (!committed_) undo();
    }
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;

    // Takes the deleted children out and puts those that came out of order in
    // their places.
    void commit() {
        for (Node* parent : swept_) {
            // A key taken out here may be a parent still to be swept or
            // merged below: it is kept until the file is done.
            std::vector<NodeRef>& children = parent->children;
            const auto cut = std::stable_partition(
                children.begin(), children.end(),
                [this](const NodeRef& child) { return !gone_.contains(child.get()); });
            std::move(cut, children.end(), std::back_inserter(dropped_));
            children.erase(cut, children.end());
        }
        for (auto& [parent, waiting] : late_) {
            std::vector<NodeRef> merged;
            merged.reserve(parent->children.size() + waiting.size());
            auto next = waiting.begin();
            for (NodeRef& present : parent->children) {
                for (; next != waiting.end() && compareNames(next->second->name, present->name) < 0;
                     ++next) {
                    merged.push_back(std::move(next->second));
                }
                merged.push_back(std::move(present));
            }
            for (; next != waiting.end(); ++next) merged.push_back(std::move(next->second));
            parent->children = std::move(merged);
        }
        late_.clear();
        gone_.clear();
        swept_.clear();
        valueIndexes_.clear();
        dropped_.clear();
        committed_ = true;
    }

    // [hive\path] makes the key and takes the values that follow; [-hive\path]
    // deletes it.
    void section(int32_t hive, std::string_view path, bool erase) {
        current_ = erase ? nullptr : makeKey(hive, path);
        if (erase) eraseKey(hive, path);
    }

    void value(StagedValue&& staged) {
        // kept: values listed under a deleted key are skipped, as the importer does
        if (current_ == nullptr) return;
        Node& node = *current_;
        keepBefore(node);
        std::vector<Value>& values = node.values;
        const std::size_t at = valueAt(node, staged.name);
        if (staged.erase) {
            if (at < values.size()) eraseValue(node, at);
        } else if (at < values.size()) {
            values[at].type = staged.type;
            values[at].data = std::move(staged.data);
        } else {
            const std::string* name = &*tree_.valueNames.insert(std::move(staged.name)).first;
            const auto index = valueIndexes_.find(&node);
            if (index != valueIndexes_.end())
                index->second.emplace(upperCase(*name), values.size());
            values.push_back(Value{name, std::move(staged.data), staged.type});
        }
    }

  private:
    struct Before {
        NodeRef node;
        uint32_t generation;
        std::vector<NodeRef> children;
        std::vector<Value> values;
    };

    void keepBefore(Node& node) {
        if (node.generation == generation_) return;
        before_.push_back({NodeRef(&node), node.generation, node.children, node.values});
        node.generation = generation_;
    }

    // Where the value of this name is; the number of values when there is none.
    // A key of many values is looked up through an index, kept for the file.
    std::size_t valueAt(Node& node, std::string_view name) {
        if (node.values.size() < kIndexedValues) {
            return static_cast<std::size_t>(findValue(node, name) - node.values.begin());
        }
        auto& index = valueIndexes_[&node];
        if (index.empty()) {
            for (std::size_t at = 0; at < node.values.size(); ++at) {
                index.emplace(upperCase(*node.values[at].name), at);
            }
        }
        const auto found = index.find(upperCase(name));
        return found == index.end() ? node.values.size() : found->second;
    }

    // Values have no order anyone sees: with an index the last one fills the gap.
    void eraseValue(Node& node, std::size_t at) {
        std::vector<Value>& values = node.values;
        const auto index = valueIndexes_.find(&node);
        if (index == valueIndexes_.end()) {
            values.erase(values.begin() + static_cast<std::ptrdiff_t>(at));
            return;
        }
        index->second.erase(upperCase(*values[at].name));
        if (at + 1 != values.size()) {
            values[at] = std::move(values.back());
            index->second[upperCase(*values[at].name)] = at;
        }
        values.pop_back();
    }

    // The child of this name, in its parent's list or waiting; null when there is none.
    Node* child(Node& parent, std::string_view name) {
        const auto [slot, found] = childSlot(parent, name);
        if (found && !gone_.contains(slot->get())) return slot->get();
        const auto waiting = late_.find(&parent);
        if (waiting == late_.end()) return nullptr;
        const auto entry = waiting->second.find(upperCase(name));
        return entry == waiting->second.end() ? nullptr : entry->second.get();
    }

    Node* makeKey(int32_t hive, std::string_view path) {
        Node* node = tree_.roots[static_cast<std::size_t>(hive)].get();
        forEachSegment(path, [&](std::string_view segment) {
            Node* next = child(*node, segment);
            if (next == nullptr) {
                NodeRef made = makeNode(segment, generation_);
                next = made.get();
                keepBefore(*node);
                std::vector<NodeRef>& children = node->children;
                if (children.empty() || compareNames(children.back()->name, segment) < 0) {
                    children.push_back(std::move(made));
                } else {
                    late_[node].emplace(upperCase(segment), std::move(made));
                }
            }
            node = next;
            return true;
        });
        return node;
    }

    void eraseKey(int32_t hive, std::string_view path) {
        const std::size_t cut = path.find_last_not_of('\\');
        if (cut == std::string_view::npos) return;
        path = path.substr(0, cut + 1);
        const std::size_t slash = path.rfind('\\');
        Node* parent = tree_.roots[static_cast<std::size_t>(hive)].get();
        if (slash != std::string_view::npos) {
            forEachSegment(path.substr(0, slash), [&](std::string_view segment) {
                parent = child(*parent, segment);
                return parent != nullptr;
            });
        }
        if (parent == nullptr) return;
        const std::string_view leaf =
            slash == std::string_view::npos ? path : path.substr(slash + 1);
        const auto [slot, found] = childSlot(*parent, leaf);
        if (found && !gone_.contains(slot->get())) {
            keepBefore(*parent);
            gone_.insert(slot->get());
            swept_.insert(parent);
        } else if (const auto waiting = late_.find(parent); waiting != late_.end()) {
            if (const auto entry = waiting->second.find(upperCase(leaf));
                entry != waiting->second.end()) {
                dropped_.push_back(std::move(entry->second));
                waiting->second.erase(entry);
            }
        }
    }

    // Moves only: nothing here can fail.
    void undo() noexcept {
        for (Before& before : before_) {
            Node& node = *before.node.get();
            node.children = std::move(before.children);
            node.values = std::move(before.values);
            node.generation = before.generation;
        }
    }

    RegFileTree& tree_;
    uint32_t generation_;
    bool committed_ = false;
    Node* current_ = nullptr;  // the key that values go to; null under [-key]
    std::vector<Before> before_;
    // Children that came out of order, by upper-cased name, for each parent:
    // they join the parent's ordered list when the whole file has been read,
    // so a file in any order loads without moving a long list for every key.
    std::unordered_map<Node*, std::map<std::string, NodeRef>> late_;
    // Children deleted from their parents' lists, taken out at the end too:
    // deleting from a long list one by one would move it for every key.
    std::unordered_set<const Node*> gone_;
    std::unordered_set<Node*> swept_;
    // Deleted keys, released only when the file is done: the sets above
    // name nodes by address, so none may go (or come back at its address)
    // while the file is read.
    std::vector<NodeRef> dropped_;
    // Positions of the values of keys that have many, by upper-cased name.
    std::unordered_map<const Node*, std::unordered_map<std::string, std::size_t>> valueIndexes_;
};

class Parser {
  public:
    Parser(LineReader& lines, Load& load) : lines_(lines), load_(load) {}

    void parse() {
        std::string_view line;
        bool headerSeen = false;
        while (nextLine(line)) {
            line = trimLeft(trimRight(line));
            if (!headerSeen) {
                if (line.empty()) continue;
                if (line == "Windows Registry Editor Version 5.00") {
                    unicode_ = true;
                } else if (line != "REGEDIT4") {
                    fail(
                        "not a registry file: the first line must be \"REGEDIT4\" or "
                        "\"Windows Registry Editor Version 5.00\"");
                }
                headerSeen = true;
                continue;
            }
            if (line.empty() || line.front() == ';') continue;
            if (line.front() == '[') {
                section(line);
            } else if (line.front() == '"' || line.front() == '@') {
                value(line);
            } else {
                fail("expected [key], \"name\"=value or @=value");
            }
        }
        if (!headerSeen) fail("the file is empty");
    }

  private:
    // The line stays valid until the next call.
    bool nextLine(std::string_view& line) {
        if (!lines_.next(line_)) return false;
        line = line_;
        return true;
    }

    [[noreturn]] void fail(std::string message) const {
        throw ParseFailure{lines_.number(), std::move(message)};
    }

    void section(std::string_view line) {
        const std::size_t close = line.rfind(']');
        if (close == std::string_view::npos) fail("a key name must end with ']'");
        if (!trimLeft(line.substr(close + 1)).empty()) fail("unexpected text after ']'");
        std::string_view path = line.substr(1, close - 1);
        // The system's key names end at a NUL: one inside a name names no key.
        if (path.find('\0') != std::string_view::npos)
            fail("a key name can't hold a NUL character");
        bool erase = false;
        if (!path.empty() && path.front() == '-') {
            erase = true;
            path.remove_prefix(1);
        }
        const std::size_t cut = path.find('\\');
        const std::string_view hiveName = path.substr(0, cut);
        const auto hive = std::find_if(
            kHiveNames.begin(), kHiveNames.end(),
            [&](const HiveName& h) { return asciiEqualsIgnoreCase(h.name, hiveName); });
        if (hive == kHiveNames.end()) fail("unknown root key \"" + std::string(hiveName) + "\"");
        const std::string_view below =
            cut == std::string_view::npos ? std::string_view() : path.substr(cut + 1);
        if (erase && below.find_first_not_of('\\') == std::string_view::npos) {
            fail("a root key can't be deleted");
        }
        int depth = 0;
        if (!forEachSegment(below, [&](std::string_view) { return ++depth <= kMaxKeyDepth; })) {
            fail("a key path is more than " + std::to_string(kMaxKeyDepth) + " levels deep");
        }
        load_.section(hive->hive, below, erase);
        inKey_ = true;
    }

    void value(std::string_view line) {
        if (!inKey_) fail("a value before the first [key]");
        StagedValue staged;
        std::string_view rest = line;
        if (rest.front() == '@') {
            rest.remove_prefix(1);
        } else {
            staged.name = quoted(rest);
        }
        rest = trimLeft(rest);
        if (rest.empty() || rest.front() != '=') fail("expected '=' after the value name");
        rest = trimLeft(rest.substr(1));
        data(rest, staged);
        load_.value(std::move(staged));
    }

    // A quoted string at the front of text, unescaped; text moves past it.
    // \\ and \" are the format's escapes; a backslash before anything else is
    // kept as written, which is what a hand-written path like "C:\Temp" means.
    std::string quoted(std::string_view& text) const {
        std::string out;
        std::size_t i = 1;
        for (;;) {
            std::size_t stop = i;
            while (stop < text.size() && text[stop] != '\\' && text[stop] != '"') ++stop;
            if (stop == text.size()) fail("a string is missing its closing '\"'");
            out.append(text.substr(i, stop - i));
            if (text[stop] == '"') {
                text.remove_prefix(stop + 1);
                return out;
            }
            if (stop + 1 < text.size() && (text[stop + 1] == '\\' || text[stop + 1] == '"')) {
                out += text[stop + 1];
                i = stop + 2;
            } else {
                out += '\\';
                i = stop + 1;
            }
        }
    }

    void expectEnd(std::string_view rest) const {
        rest = trimLeft(rest);
        if (!rest.empty() && rest.front() != ';') fail("unexpected text after the value");
    }

    void data(std::string_view rest, StagedValue& staged) {
        if (rest.empty()) fail("a value has no data");
        if (rest.front() == '"') {
            staged.type = kRegSz;
            staged.data = quoted(rest);
            expectEnd(rest);
        } else if (rest.front() == '-') {
            staged.erase = true;
            expectEnd(rest.substr(1));
        } else if (rest.starts_with("dword:")) {
            rest.remove_prefix(6);
            uint32_t number = 0;
            std::size_t digits = 0;
            for (; digits < rest.size() && hexDigit(rest[digits]) >= 0; ++digits) {
                if (digits == 8) fail("a dword has more than 8 hex digits");
                number = (number << 4) | static_cast<uint32_t>(hexDigit(rest[digits]));
            }
            if (digits == 0) fail("a dword needs hex digits");
            expectEnd(rest.substr(digits));
            staged.type = kRegDword;
            staged.data.resize(4);
            for (std::size_t k = 0; k < 4; ++k) {
                staged.data[k] = static_cast<char>((number >> (8 * k)) & 0xFFu);
            }
        } else if (rest.starts_with("hex")) {
            rest.remove_prefix(3);
            staged.type = kRegBinary;
            if (!rest.empty() && rest.front() == '(') {
                const std::size_t close = rest.find(')');
                if (close == std::string_view::npos || close == 1 || close > 9) {
                    fail("expected hex(type):");
                }
                uint32_t type = 0;
                for (std::size_t k = 1; k < close; ++k) {
                    const int digit = hexDigit(rest[k]);
                    if (digit < 0) fail("a value type must be hex digits");
                    type = (type << 4) | static_cast<uint32_t>(digit);
                }
                staged.type = type;
                rest.remove_prefix(close + 1);
            }
            if (rest.empty() || rest.front() != ':') fail("expected ':' after hex");
            rest.remove_prefix(1);
            staged.data = hexBytes(rest);
            decodeHexText(staged);
        } else {
            fail("unknown value data");
        }
    }

    // Comma-separated hex bytes; a trailing backslash continues the list on
    // the next line.
    std::string hexBytes(std::string_view rest) {
        std::string bytes;
        bytes.reserve(rest.size() / 3 + 1);
        for (;;) {
            rest = trimLeft(trimRight(rest));
            if (rest.empty()) return bytes;
            if (rest == "\\") {
                const int continued = lines_.number();
                std::string_view next;
                if (!nextLine(next) || trimLeft(trimRight(next)).empty()) {
                    throw ParseFailure{continued,
                                       "a hex list ends in '\\' with no line to continue it"};
                }
                rest = next;
                continue;
            }
            if (rest.front() == ';') return bytes;
            const int high = hexDigit(rest.front());
            if (high < 0) fail("expected a hex byte");
            int byte = high;
            std::size_t used = 1;
            if (rest.size() > 1 && hexDigit(rest[1]) >= 0) {
                byte = byte * 16 + hexDigit(rest[1]);
                used = 2;
            }
            bytes += static_cast<char>(byte);
            rest = trimLeft(rest.substr(used));
            if (!rest.empty() && rest.front() == ',') {
                rest.remove_prefix(1);
            } else if (!rest.empty() && rest.front() != '\\' && rest.front() != ';') {
                fail("expected ',' between hex bytes");
            }
        }
    }

    // String types given as bytes: UTF-16LE in version 5 files, ANSI in REGEDIT4.
    void decodeHexText(StagedValue& staged) const {
        if (staged.type != kRegSz && staged.type != kRegExpandSz && staged.type != kRegMultiSz) {
            return;
        }
        std::string text = unicode_ ? fromUtf16Bytes(staged.data) : decodeAnsi(staged.data);
        if (staged.type == kRegMultiSz) {
            while (!text.empty() && text.back() == '\0') text.pop_back();
            staged.data = std::move(text);
        } else {
            staged.data = cutAtNul(std::move(text));
        }
    }

    LineReader& lines_;
    Load& load_;
    std::string line_;
    bool unicode_ = false;
    bool inKey_ = false;
};

// Holds its node alive, so a key stays readable while later files layer over it.
class RegFileKey final : public RegistryKey {
  public:
    explicit RegFileKey(NodeRef node) : node_(std::move(node)) {}

    std::optional<std::string> stringValue(std::string_view name) const override {
        const auto value = findValue(*node_.get(), name);
        if (value == node_->values.end() ||
            (value->type != kRegSz && value->type != kRegExpandSz)) {
            return std::nullopt;
        }
        return value->data;
    }

    std::optional<std::vector<std::string>> multiStringValue(std::string_view name) const override {
        const auto value = findValue(*node_.get(), name);
        if (value == node_->values.end() || value->type != kRegMultiSz) return std::nullopt;
        // Held with a NUL between entries and none at the end.
        std::vector<std::string> entries;
        if (value->data.empty()) return entries;
        std::string_view rest = value->data;
        for (;;) {
            const std::size_t nul = rest.find('\0');
            entries.emplace_back(rest.substr(0, nul));
            if (nul == std::string_view::npos) return entries;
            rest.remove_prefix(nul + 1);
        }
    }

    std::optional<int32_t> dwordValue(std::string_view name) const override {
        const auto value = findValue(*node_.get(), name);
        if (value == node_->values.end() || value->type != kRegDword || value->data.size() != 4) {
            return std::nullopt;
        }
        uint32_t number = 0;
        for (std::size_t k = 0; k < 4; ++k) {
            number |= static_cast<uint32_t>(static_cast<unsigned char>(value->data[k])) << (8 * k);
        }
        return static_cast<int32_t>(number);
    }

    std::optional<std::string> subKeyName(uint32_t index) const override {
        if (index >= node_->children.size()) return std::nullopt;
        return node_->children[index]->name;
    }

  private:
    NodeRef node_;
};

std::string whatOf(const std::string& file, int line, const std::string& message) {
    if (line <= 0) return file + ": " + message;
    return file + ":" + std::to_string(line) + ": " + message;
}

}  // namespace

RegFileError::RegFileError(std::string fileName, int lineNumber, const std::string& message)
    : std::runtime_error(whatOf(fileName, lineNumber, message)),
      file(std::move(fileName)),
      line(lineNumber) {}

RegFileRegistry::RegFileRegistry() : tree_(std::make_shared<RegFileTree>()) {}

RegFileRegistry::~RegFileRegistry() = default;

void RegFileRegistry::loadFile(const std::string& path) {
    // The name is UTF-8; through a path, Windows opens it by its wide form.
    const std::filesystem::path file(std::u8string(path.begin(), path.end()));
    std::error_code ignored;
    if (std::filesystem::is_directory(file, ignored)) throw RegFileError(path, 0, "is a directory");
    errno = 0;
    std::ifstream in(file, std::ios::binary);
    if (!in) throw RegFileError(path, 0, "can't open the file" + systemReason(errno));
    load(in, path);
}

void RegFileRegistry::loadText(std::string_view text, const std::string& name) {
    // The text read in place, as a stream over it.
    struct TextBuffer : std::streambuf {
        explicit TextBuffer(std::string_view text) {
            char* begin = const_cast<char*>(text.data());
            setg(begin, begin, begin + text.size());
        }
    } buffer(text);
    std::istream in(&buffer);
    load(in, name);
}

void RegFileRegistry::load(std::istream& in, const std::string& name) {
    Load changes(*tree_);
    LineReader lines(in);
    try {
        Parser(lines, changes).parse();
        changes.commit();
    } catch (const ParseFailure& failure) {
        throw RegFileError(name, failure.line, failure.message);
    } catch (const std::bad_alloc&) {
        throw RegFileError(name, lines.number(), "not enough memory to hold the file's keys");
    }
}

std::unique_ptr<RegistryKey> RegFileRegistry::open(int32_t hive, std::string_view path,
                                                   int32_t /*access: files are read-only*/,
                                                   int32_t& errorCode) {
    if (hive < 0 || static_cast<std::size_t>(hive) >= kHiveCount || hive == 4) {
        errorCode = kErrorInvalidHandle;
        return nullptr;
    }
    // The catalogue walks the sub-keys of one key in turn and opens each twice
    // in a row: once to look at it, once to load the record. So the last key
    // this thread opened is kept, and the next sibling is tried first. The
    // nodes are held by address, not counted: they are used only while the
    // tree is in the state they were found in, which no other tree ever has,
    // and a counted reference would keep a gone tree's keys in memory.
    thread_local struct {
        uint64_t state = 0;
        int32_t hive = -1;
        std::string path;
        Node* node = nullptr;
        Node* parent = nullptr;  // null for a hive's root
        std::size_t place = 0;
    } last;
    const bool sameTree = last.state == tree_->state && last.hive == hive;
    if (!sameTree || last.path != path) {
        Node* parent = nullptr;
        std::size_t place = 0;
        Node* node = nullptr;
        // A key's parent path: empty for a key right under the hive's root.
        const auto parentPath = [](std::string_view of) {
            const std::size_t cut = of.rfind('\\');
            return cut == std::string_view::npos ? std::string_view() : of.substr(0, cut);
        };
        const std::string_view parentOfPath = parentPath(path);
        if (sameTree && last.parent != nullptr && parentPath(last.path) == parentOfPath) {
            const std::vector<NodeRef>& siblings = last.parent->children;
            const std::string_view leaf =
                path.substr(parentOfPath.empty() ? 0 : parentOfPath.size() + 1);
            if (last.place + 1 < siblings.size() &&
                compareNames(siblings[last.place + 1]->name, leaf) == 0) {
                parent = last.parent;
                place = last.place + 1;
                node = siblings[place].get();
            }
        }
        if (node == nullptr) node = tree_->find(hive, path, &parent, &place);
        if (node == nullptr) {
            errorCode = kErrorFileNotFound;
            return nullptr;
        }
        last.node = node;
        last.parent = parent;
        last.place = place;
        last.state = tree_->state;
        last.hive = hive;
        last.path = path;
    }
    errorCode = 0;
    return std::make_unique<RegFileKey>(NodeRef(last.node));
}

}  // namespace ostrel::platform
