// wncSoftwareProducts: the catalogue as a host sees it, the installed and
// known products in the order of their part numbers. ReadAll fills it from
// the Toolbar key; the catalogue's rules (which sub-keys count, which of two
// with one part number wins, the order) live here.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "runtime/folded_index.h"
#include "runtime/keyed_list.h"
#include "runtime/object.h"
#include "runtime/variant.h"

namespace ostrel {

class wncSoftwareProduct;

class wncSoftwareProducts : public Object {
  public:
    using ProductList = KeyedList<Ref<wncSoftwareProduct>>;
    // What ReadAllProducts may be restricted to: normalised part numbers,
    // compared case-sensitively like the scripting dictionary.
    using PartNumberFilter = std::set<std::string, std::less<>>;

    wncSoftwareProducts() = default;
    ~wncSoftwareProducts() override;

    // Public interface.
    // A position (from 1) or a key (any case); raises 9 and 5 for what isn't there.
    Ref<wncSoftwareProduct> Item(const Variant& vntIndexKey) const;
    int32_t Count() const { return list_.count(); }
    // The records in list order, as NewEnum hands them out.
    std::vector<Ref<wncSoftwareProduct>> items() const;
    const ProductList& list() const { return list_; }
    // A new record named ProductName, added under the lower-cased sKey (no key
    // when it is empty or left out); raises 457 for a key that is present.
    Ref<wncSoftwareProduct> Add(const std::string& ProductName,
                                std::optional<std::string> sKey = std::nullopt);
    // Silent: removing what isn't there is no error.
    void Remove(const Variant& vntIndexKey);
    // Never raises.
    void ReadAll();
    // Nothing is ever written back.
    void SaveAll() {}

    // For the component's own use.
    bool PartNumberExists(std::string_view vstrPartNumber) const;
    // The first record in list order whose own PartNumber equals the argument,
    // ignoring case; null when there is none.
    Ref<wncSoftwareProduct> ItemByPartNumber(std::string_view vstrPartNumber) const;
    void RemoveAll();
    // Reads the Toolbar key into the list; nullptr means no filter.
    void ReadAllProducts(const PartNumberFilter* vdicFilter);

    // A record of this collection changed its PartNumber (the record calls it).
    void partNumberChanged(const wncSoftwareProduct& product, std::string_view oldPartNumber);

  private:
    wncSoftwareProduct* firstWithPartNumber(std::string_view partNumber) const;
    void indexAppended(const Ref<wncSoftwareProduct>& product) const;
    void indexRecord(const wncSoftwareProduct& product) const;
    static std::string_view partNumberOf(size_t reference);
    void invalidateIndex() const;

    ProductList list_;

    // Lower-cased PartNumber -> first record of the list that carries it, so
    // that finding a record by part number is no walk of the list. Built on
    // demand, kept up to date on appends, dropped on any other change. A
    // slot refers to its record by address; the key is the record's own.
    mutable FoldedIndex partIndex_;
    mutable bool partIndexValid_ = false;
};

// A collection held by its owner (the tool, a test): the records and their
// collection keep each other alive, as hosts expect, so the owner breaks
// that loop when done with it.
class OwnedProducts {
  public:
    explicit OwnedProducts(Ref<wncSoftwareProducts> products) : products_(std::move(products)) {}
    OwnedProducts(const OwnedProducts&) = delete;
    OwnedProducts& operator=(const OwnedProducts&) = delete;
    ~OwnedProducts();
    wncSoftwareProducts* operator->() const { return products_.get(); }

  private:
    Ref<wncSoftwareProducts> products_;
};

}  // namespace ostrel
