// The tree of a .reg registry. A node is counted, so a key handed out stays
// readable after a later layer deletes it; a layer records what it changed
// (only what existed before it, so its memory is about its own keys) and
// puts it back when it is not committed.
#include "platform/common/registry_tree.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <iterator>
#include <map>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "runtime/text.h"

namespace ostrel::platform {

namespace {

// System error codes that open() reports.
constexpr int32_t kErrorFileNotFound = 2;
constexpr int32_t kErrorInvalidHandle = 6;

constexpr std::size_t kHiveCount = 6;
// A key with this many values is looked up through an index while a file loads.
constexpr std::size_t kIndexedValues = 64;

char asciiUpper(char c) {
    return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}

}  // namespace

// Bytes alike in both are passed over at once, and only a name that differs
// beyond ASCII is upper-cased whole.
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

namespace {

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

// One file's changes, made to the tree as they are read and undone unless
// the file is committed. A node that was there before the file keeps a copy
// of its children and values as they were, taken at the file's first change
// to it; a node the file made carries the file's generation and goes when
// its parent's children are put back.
class RegistryLayer::Changes {
  public:
    explicit Changes(RegFileTree& tree) : tree_(tree), generation_(++tree.loads) {
        tree.state = ++treeStates;
    }
    ~Changes() {
        if (!committed_) undo();
    }
    Changes(const Changes&) = delete;
    Changes& operator=(const Changes&) = delete;

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

RegistryLayer::RegistryLayer(RegFileTree& tree) : changes_(std::make_unique<Changes>(tree)) {}

RegistryLayer::~RegistryLayer() = default;

void RegistryLayer::section(int32_t hive, std::string_view path, bool erase) {
    changes_->section(hive, path, erase);
}

void RegistryLayer::value(StagedValue&& staged) {
    changes_->value(std::move(staged));
}

void RegistryLayer::commit() {
    changes_->commit();
}

void RegistryLayer::stringValue(std::string_view name, std::string_view text) {
    value(StagedValue{std::string(name), false, kRegSz, std::string(text)});
}

void RegistryLayer::multiStringValue(std::string_view name,
                                     const std::vector<std::string>& entries) {
    std::string data;
    for (const std::string& entry : entries)
        data += (data.empty() ? "" : std::string(1, '\0')) + entry;
    value(StagedValue{std::string(name), false, kRegMultiSz, std::move(data)});
}

void RegistryLayer::dwordValue(std::string_view name, uint32_t number) {
    value(StagedValue{std::string(name), false, kRegDword, dwordBytes(number)});
}

std::string dwordBytes(uint32_t number) {
    std::string bytes(4, '\0');
    for (std::size_t k = 0; k < 4; ++k) bytes[k] = static_cast<char>((number >> (8 * k)) & 0xFFu);
    return bytes;
}

std::shared_ptr<RegFileTree> newRegFileTree() {
    return std::make_shared<RegFileTree>();
}

namespace {

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

}  // namespace

std::unique_ptr<RegistryKey> openKey(RegFileTree& tree, int32_t hive, std::string_view path,
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
    const bool sameTree = last.state == tree.state && last.hive == hive;
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
        if (node == nullptr) node = tree.find(hive, path, &parent, &place);
        if (node == nullptr) {
            errorCode = kErrorFileNotFound;
            return nullptr;
        }
        last.node = node;
        last.parent = parent;
        last.place = place;
        last.state = tree.state;
        last.hive = hive;
        last.path = path;
    }
    errorCode = 0;
    return std::make_unique<RegFileKey>(NodeRef(last.node));
}

}  // namespace ostrel::platform