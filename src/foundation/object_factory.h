// How the core makes its public objects. A host that adds an automation
// interface supplies a factory that makes its subclasses, so the objects the
// core hands out (records of a collection, the shared machine facts) are the
// host's objects themselves.
#pragma once

#include "runtime/object.h"

namespace ostrel {

class wncPCInfo;
class wncSoftwareProduct;
class wncSoftwareProducts;

class ObjectFactory {
  public:
    virtual ~ObjectFactory() = default;
    virtual Ref<wncPCInfo> newPCInfo() = 0;
    virtual Ref<wncSoftwareProduct> newSoftwareProduct() = 0;
    virtual Ref<wncSoftwareProducts> newSoftwareProducts() = 0;
};

// Through apartment().factory, or plain core objects when there is none.
// Each is defined beside its class.
Ref<wncPCInfo> newPCInfo();
Ref<wncSoftwareProduct> newSoftwareProduct();
Ref<wncSoftwareProducts> newSoftwareProducts();

}  // namespace ostrel
