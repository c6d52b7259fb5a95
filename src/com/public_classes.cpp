#include "com/public_classes.h"

#include "catalogue/catalogue_factory.h"
#include "com/pc_info_object.h"
#include "com/services_object.h"
#include "com/software_product_object.h"
#include "com/software_products_object.h"
#include "machine/pc_info.h"

namespace ostrel::com {

namespace {

template <class Face, class Core>
HRESULT query(const Ref<Core>& made, REFIID riid, void** object) {
    auto* face = dynamic_cast<Face*>(made.get());
    if (!face) return E_UNEXPECTED;
    return face->QueryInterface(riid, object);
}

HRESULT createSoftwareProducts(REFIID riid, void** object) {
    return query<SoftwareProductsObject>(newSoftwareProducts(), riid, object);
}
HRESULT createSoftwareProduct(REFIID riid, void** object) {
    return query<SoftwareProductObject>(newSoftwareProduct(), riid, object);
}
HRESULT createPCInfo(REFIID riid, void** object) {
    return query<PCInfoObject>(newPCInfo(), riid, object);
}
// Stateless: the core never makes one, so no factory is asked.
HRESULT createServices(REFIID riid, void** object) {
    return query<ServicesObject>(Ref<ServicesObject>(new ServicesObject()), riid, object);
}

}  // namespace

const std::array<PublicClass, 4>& publicClasses() {
    static const std::array<PublicClass, 4> classes = {{
        {CLSID_wncSoftwareProducts, IID__wncSoftwareProducts, createSoftwareProducts},
        {CLSID_wncSoftwareProduct, IID__wncSoftwareProduct, createSoftwareProduct},
        {CLSID_wncPCInfo, IID__wncPCInfo, createPCInfo},
        {CLSID_wncServices, IID__wncServices, createServices},
    }};
    return classes;
}

}  // namespace ostrel::com
