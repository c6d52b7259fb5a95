#include "com/automation_factory.h"

#include "com/pc_info_object.h"
#include "com/software_product_object.h"
#include "com/software_products_object.h"

namespace ostrel::com {

Ref<wncPCInfo> AutomationFactory::newPCInfo() {
    return Ref<wncPCInfo>(new PCInfoObject());
}

Ref<wncSoftwareProduct> AutomationFactory::newSoftwareProduct() {
    return Ref<wncSoftwareProduct>(new SoftwareProductObject());
}

Ref<wncSoftwareProducts> AutomationFactory::newSoftwareProducts() {
    return Ref<wncSoftwareProducts>(new SoftwareProductsObject());
}

AutomationFactory& automationFactory() {
    static AutomationFactory factory;
    return factory;
}

}  // namespace ostrel::com
