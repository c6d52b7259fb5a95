#include "catalogue/software_products.h"

#include <optional>
#include <string>
#include <utility>

#include "catalogue/catalogue_factory.h"
#include "catalogue/part_numbers.h"
#include "catalogue/software_product.h"
#include "catalogue/sort_collection.h"
#include "foundation/debug_log.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "foundation/wnc_registry.h"
#include "platform/registry_port.h"
#include "runtime/automation_error.h"
#include "runtime/text.h"

namespace ostrel {

namespace {

// The next sub-key name of the walk; a failing or answering-False
// enumeration counts as the empty name, which ends the walk.
std::string subKeyName(WNCRegistry& enumerator, bool first) {
    std::string name;
    try {
        name = enumSubKeyName(enumerator, first);
    } catch (...) {
        name.clear();
    }
    return name;
}

}  // namespace

Ref<wncSoftwareProducts> newSoftwareProducts() {
    if (CatalogueFactory* factory = catalogueFactory()) return factory->newSoftwareProducts();
    return makeRef<wncSoftwareProducts>();
}

wncSoftwareProducts::~wncSoftwareProducts() = default;

Ref<wncSoftwareProduct> wncSoftwareProducts::Item(const Variant& vntIndexKey) const {
    return list_.item(vntIndexKey);
}

std::vector<Ref<wncSoftwareProduct>> wncSoftwareProducts::items() const {
    std::vector<Ref<wncSoftwareProduct>> snapshot;
    snapshot.reserve(static_cast<size_t>(list_.count()));
    for (const auto& entry : list_) snapshot.push_back(entry.item);
    return snapshot;
}

Ref<wncSoftwareProduct> wncSoftwareProducts::Add(const std::string& ProductName,
                                                 std::optional<std::string> sKey) {
    Ref<wncSoftwareProduct> product = newSoftwareProduct();
    product->ProductName(ProductName);
    product->Parent(Ref<wncSoftwareProducts>(this));
    if (!sKey || sKey->empty()) {
        list_.add(product);
    } else {
        list_.add(product, lowerCase(*sKey));
    }
    indexAppended(product);
    return product;
}

void wncSoftwareProducts::Remove(const Variant& vntIndexKey) {
    // Silent on purpose: removing what isn't there is no error.
    Ref<wncSoftwareProduct> product;
    resumeNext([&] { product = list_.item(vntIndexKey); });
    resumeNext([&] {
        if (product) product->Parent(nullptr);
    });
    resumeNext([&] {
        list_.remove(vntIndexKey);
        invalidateIndex();
    });
}

void wncSoftwareProducts::ReadAll() {
    ReadAllProducts(nullptr);
}

bool wncSoftwareProducts::PartNumberExists(std::string_view vstrPartNumber) const {
    return firstWithPartNumber(vstrPartNumber) != nullptr;
}

Ref<wncSoftwareProduct> wncSoftwareProducts::ItemByPartNumber(
    std::string_view vstrPartNumber) const {
    return Ref<wncSoftwareProduct>(firstWithPartNumber(vstrPartNumber));
}

// Clearing each record's Parent breaks the loop; the collection then goes
// with its list, and the records with it, without a Remove each.
OwnedProducts::~OwnedProducts() {
    if (!products_) return;
    for (const auto& product : products_->items()) product->Parent(nullptr);
}

void wncSoftwareProducts::RemoveAll() {
    while (list_.count() > 0) Remove(Variant(list_.count()));
}

void wncSoftwareProducts::ReadAllProducts(const PartNumberFilter* vdicFilter) {
    std::optional<WNCRegistry> enumerator;
    try {
        enumerator.emplace();
        // No Toolbar key: an empty catalogue, and nothing to report.
        if (!enumerator->TryOpenKey(platform::kHiveLocalMachine, kToolbarKeyPath, kKeyRead, 0)) {
            return;
        }
    } catch (...) {
        const AutomationError error = currentError();
        gsubDebugPrint("[ReadAllProducts] ERROR: " + std::to_string(error.number) + "-" +
                       error.description);
        return;
    }

    // From here on a failure is passed over without a trace: a failing step
    // skips its sub-key, and the walk goes on with the next one.
    std::optional<WNCRegistry> reader;
    resumeNext([&] { reader.emplace(); });

    for (std::string name = subKeyName(*enumerator, true); !name.empty() && reader;
         name = subKeyName(*enumerator, false)) {
        resumeNext([&] {
            if (equalsText(name, "Temp")) return;
            if (!reader->TryOpenKey(platform::kHiveLocalMachine,
                                    buildKeyPath(kToolbarKeyPath, name), kKeyRead, 0)) {
                return;
            }
            std::string stored;
            if (!reader->GetStringValue("PartNumber", stored)) return;
            const std::string partNumber = normalisePartNumber(stored);
            if (!gfblnIsKnownPartNumber(partNumber)) {
                if (gblnDebug())
                    gsubDebugPrint("[ReadAllProducts] Ignoring unknown product:" + partNumber);
                return;
            }
            if (vdicFilter && !vdicFilter->contains(partNumber)) return;

            // First come wins: the sub-key the registry lists first is kept,
            // nothing about the two is compared.
            const Ref<wncSoftwareProduct> present = ItemByPartNumber(partNumber);
            if (!present) {
                const Ref<wncSoftwareProduct> added = Add(name, partNumber);
                added->PartNumber(partNumber);
            } else {
                const std::string& kept = present->ProductName();
                gsubDebugPrint(
                    "[ReadAllProducts] Multiple toolbar entries exist for part number: '" +
                    partNumber + "'(" + kept + " and " + name + ").  " + kept +
                    " will be used and " + name + " discarded.");
            }
        });
    }

    // Rebuild in the order of the part numbers. A record that sits under any
    // other key than its own lower-cased part number isn't found by it, and
    // so leaves the collection here.
    KeyedList<std::string> names;
    names.reserve(static_cast<size_t>(list_.count()));
    for (const auto& entry : list_) {
        resumeNext([&] {
            std::string folded = lowerCase(entry.item->PartNumber());
            names.add(folded, folded);
        });
    }
    KeyedList<std::string> sorted;
    resumeNext([&] { sorted = gfcolSortCollection(names); });
    ProductList result;
    result.reserve(static_cast<size_t>(sorted.count()));
    for (const auto& entry : sorted) {
        // The names are lower case already.
        resumeNext([&] { result.add(list_.item(entry.item), entry.item); });
    }
    list_ = std::move(result);
    invalidateIndex();
}

namespace {

size_t referenceOf(const wncSoftwareProduct* product) {
    return reinterpret_cast<size_t>(product);
}

}  // namespace

void wncSoftwareProducts::partNumberChanged(const wncSoftwareProduct& product,
                                            std::string_view oldPartNumber) {
    if (!partIndexValid_) return;
    // The last entry is the one ReadAll has just added; its change can be
    // applied in place, since no later entry can claim either number.
    if (list_.count() == 0 || list_.item(list_.count()).get() != &product) {
        invalidateIndex();
        return;
    }
    // Found where the old number put it: the record's key is the new one now.
    const size_t previous = partIndex_.findReference(FoldedIndex::hashOf(lowerCase(oldPartNumber)),
                                                     referenceOf(&product));
    if (previous != FoldedIndex::kNoSlot) partIndex_.erase(previous);
    indexAppended(list_.item(list_.count()));
}

wncSoftwareProduct* wncSoftwareProducts::firstWithPartNumber(std::string_view partNumber) const {
    if (!partIndexValid_) {
        partIndex_.clear();
        for (const auto& entry : list_) {
            if (entry.item) indexRecord(*entry.item);
        }
        partIndexValid_ = true;
    }
    const std::string folded = lowerCase(partNumber);
    const size_t slot = partIndex_.find(folded, FoldedIndex::hashOf(folded), partNumberOf);
    return slot == FoldedIndex::kNoSlot
               ? nullptr
               : reinterpret_cast<wncSoftwareProduct*>(partIndex_.reference(slot));
}

void wncSoftwareProducts::indexAppended(const Ref<wncSoftwareProduct>& product) const {
    if (partIndexValid_) indexRecord(*product);
}

// The first record with a number stays: a later one with the same number
// is not indexed.
void wncSoftwareProducts::indexRecord(const wncSoftwareProduct& product) const {
    const std::string folded = lowerCase(product.PartNumber());
    const size_t hash = FoldedIndex::hashOf(folded);
    if (partIndex_.find(folded, hash, partNumberOf) != FoldedIndex::kNoSlot) return;
    partIndex_.reserve(partIndex_.size() + 1);
    partIndex_.insert(hash, referenceOf(&product));
}

std::string_view wncSoftwareProducts::partNumberOf(size_t reference) {
    return reinterpret_cast<const wncSoftwareProduct*>(reference)->PartNumber();
}

void wncSoftwareProducts::invalidateIndex() const {
    partIndexValid_ = false;
    partIndex_.clear();
}

}  // namespace ostrel
