// The factory the core makes its public objects through inside the DLL: it
// makes the automation subclasses, so a record the collection hands out is
// the host's object itself.
#pragma once

#include "catalogue/catalogue_factory.h"
#include "machine/pc_info.h"

namespace ostrel::com {

class AutomationFactory final : public CatalogueFactory, public PCInfoFactory {
  public:
    Ref<wncPCInfo> newPCInfo() override;
    Ref<wncSoftwareProduct> newSoftwareProduct() override;
    Ref<wncSoftwareProducts> newSoftwareProducts() override;
};

// Stateless, so one serves every apartment.
AutomationFactory& automationFactory();

}  // namespace ostrel::com
