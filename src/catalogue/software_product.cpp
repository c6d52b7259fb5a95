#include "catalogue/software_product.h"

#include <string>
#include <utility>

#include "catalogue/catalogue_factory.h"
#include "catalogue/software_products.h"
#include "foundation/debug_log.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "foundation/wnc_registry.h"
#include "machine/pc_info.h"
#include "platform/registry_port.h"
#include "runtime/automation_error.h"
#include "runtime/convert.h"
#include "runtime/format.h"
#include "runtime/text.h"
#include "ui/language_text.h"

namespace ostrel {

namespace {

std::string componentFolder() {
    platform::EnvironmentPort* environment = apartment().ports.environment;
    return environment ? environment->componentFolder() : std::string();
}

// Trimmed, with a backslash appended. Kept as the installers' readers expect
// it: a path that already ends in a backslash gets a second one, and a path
// of blanks only becomes a single backslash.
std::string programFolder(const std::string& stored) {
    if (stored.empty()) return stored;
    std::string folder = trimBlanks(stored);
    if (folder != "\\") folder += '\\';
    return folder;
}

std::string twoDigits(int16_t number) {
    // What Format(n, "00") gives a number that isn't negative, without the
    // general formatter: it ran three times for every record loaded.
    if (number >= 0) return (number < 10 ? "0" : "") + std::to_string(number);
    static const LocaleFacts invariant;  // "00" has no separator to localise
    return formatNumber(number, "00", invariant);
}

struct FactorySlot : ApartmentSlot {
    CatalogueFactory* factory = nullptr;
};

}  // namespace

void setCatalogueFactory(CatalogueFactory* factory) {
    apartmentSlot<FactorySlot>().factory = factory;
}

CatalogueFactory* catalogueFactory() {
    return apartmentSlot<FactorySlot>().factory;
}

Ref<wncSoftwareProduct> newSoftwareProduct() {
    if (CatalogueFactory* factory = catalogueFactory()) return factory->newSoftwareProduct();
    return makeRef<wncSoftwareProduct>();
}

wncSoftwareProduct::wncSoftwareProduct() {
    gobjLanguageText().Initialise("Ostrel", componentFolder());
    // A record made after the shared facts were released takes a fresh snapshot.
    if (!gobjPCInfo()) gfobjGetPCInfo();
}

wncSoftwareProduct::~wncSoftwareProduct() {
    Parent_.reset();
    resumeNext([] { gsubReleasePCInfo(); });
}

void wncSoftwareProduct::PartNumber(std::string_view value) {
    // Kept: a write that changes only the case is dropped, so a record shows
    // the registry's form while the collection's keys are lower case.
    if (value == PartNumber_ || equalsText(value, PartNumber_)) return;
    const std::string previous = std::exchange(PartNumber_, std::string(value));
    if (Parent_) Parent_->partNumberChanged(*this, previous);
}

void wncSoftwareProduct::ProductName(std::string_view value) {
    ProductName_ = value;
    LoadEx(buildKeyPath(kToolbarKeyPath, ProductName_));
}

void wncSoftwareProduct::Load() {
    LoadEx(buildKeyPath(kToolbarKeyPath, ProductName_));
}

void wncSoftwareProduct::Parent(Ref<wncSoftwareProducts> value) {
    Parent_ = std::move(value);
}

std::string wncSoftwareProduct::VersionString() const {
    return std::to_string(VersionMajor_) + "." + std::to_string(VersionMinor_) + "." +
           std::to_string(VersionRevisionMajor_) + "." + std::to_string(VersionRevisionMinor_);
}

void wncSoftwareProduct::msubResetFields() {
    ApplicationPath_.clear();
    BuildID_.clear();
    DisplayName_.clear();
    IconFile_.clear();
    Label_.clear();
    Revision_.clear();
    ToolTip_.clear();
    VersionBugFix_ = 0;
    VersionMajor_ = 0;
    VersionMinor_ = 0;
}

void wncSoftwareProduct::LoadEx(std::string_view vstrKeyPath) {
    try {
        msubResetFields();
        WNCRegistry registry;
        // A missing key is no failure: the record stays blank.
        if (!registry.TryOpenKey(platform::kHiveLocalMachine, vstrKeyPath, kKeyRead, 0)) return;

        DisplayName_ = gfstrGetRegValue(&registry, "DisplayName", ProductName_);
        ApplicationPath_ = programFolder(gfstrGetRegValue(&registry, "ApplicationPath", ""));
        PartNumber(gfstrGetRegValue(&registry, "PartNumber", ""));
        // A number out of the 16-bit range stops the load here (error 6).
        VersionMajor_ = narrowToInteger(gflngGetRegValue(&registry, "VersionMajor", 0));
        VersionMinor_ = narrowToInteger(gflngGetRegValue(&registry, "VersionMinor", 0));
        VersionRevisionMajor_ =
            narrowToInteger(gflngGetRegValue(&registry, "VersionRevisionMajor", 0));
        VersionRevisionMinor_ =
            narrowToInteger(gflngGetRegValue(&registry, "VersionRevisionMinor", 0));

        // No separator: hosts compare BuildIDs as they always were, even where
        // a part of 100 or more makes them ambiguous.
        BuildID_ = std::to_string(VersionMajor_) + twoDigits(VersionMinor_) +
                   twoDigits(VersionRevisionMajor_) + twoDigits(VersionRevisionMinor_);

        // Kept: hosts test these for the literal "0", not for empty text.
        Label_ = gfstrGetRegValue(&registry, "Label", "0");
        IconFile_ = gfstrGetRegValue(&registry, "IconFile", "0");
        Revision_ = gfstrGetRegValue(&registry, "Revision", "0");
        ToolTip_ = gfstrGetRegValue(&registry, "Tooltip", "0");
    } catch (...) {
        const AutomationError error = currentError();
        gsubDebugPrint("[LoadEx] Error: " + std::to_string(error.number) + ", " +
                       error.description);
    }
}

}  // namespace ostrel
