// How the catalogue makes its public objects. A host that adds an automation
// interface sets a factory that makes its subclasses, so the records a
// collection hands out are the host's objects themselves.
#pragma once

#include "runtime/object.h"

namespace ostrel {

class wncSoftwareProduct;
class wncSoftwareProducts;

class CatalogueFactory {
  public:
    virtual ~CatalogueFactory() = default;
    virtual Ref<wncSoftwareProduct> newSoftwareProduct() = 0;
    virtual Ref<wncSoftwareProducts> newSoftwareProducts() = 0;
};

// This apartment's factory; null (the default): plain core objects.
void setCatalogueFactory(CatalogueFactory* factory);
CatalogueFactory* catalogueFactory();

// Through this apartment's factory. Each is defined beside its class.
Ref<wncSoftwareProduct> newSoftwareProduct();
Ref<wncSoftwareProducts> newSoftwareProducts();

}  // namespace ostrel
