// The objects of the subsystems that an apartment keeps: the language text,
// the shared machine facts and the part-number table. The subsystems declare
// their accessors; this layer, which sees them all, holds the objects.
#include <memory>

#include "catalogue/part_numbers.h"
#include "foundation/globals.h"
#include "machine/pc_info.h"
#include "ui/language_text.h"

namespace ostrel {

namespace {

struct SubsystemObjects : ApartmentObjects {
    Ref<clsLanguageText> languageText;  // created on first touch
    Ref<wncPCInfo> pcInfo;
    std::unique_ptr<PartNumberTable> partNumbers;  // built at the first look-up
};

SubsystemObjects& subsystemObjects() {
    std::unique_ptr<ApartmentObjects>& held = apartment().wiring;
    if (!held) held = std::make_unique<SubsystemObjects>();
    return static_cast<SubsystemObjects&>(*held);
}

}  // namespace

clsLanguageText& gobjLanguageText() {
    Ref<clsLanguageText>& text = subsystemObjects().languageText;
    if (!text) text = makeRef<clsLanguageText>();
    return *text;
}

Ref<wncPCInfo>& gobjPCInfo() {
    return subsystemObjects().pcInfo;
}

std::unique_ptr<PartNumberTable>& apartmentPartNumbers() {
    return subsystemObjects().partNumbers;
}

}  // namespace ostrel
