// A list of names as hosts see it (wncNames): read-only, with Item as the
// default member (a position from 1, or a key that ignores case) and NewEnum
// for For Each.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "com/automation_object.h"
#include "runtime/keyed_list.h"

namespace ostrel::com {

extern const ClassIdentity kNamesIdentity;

class NamesObject final : public AutomationObject<Object, _wncNames> {
  public:
    explicit NamesObject(KeyedList<std::string> names)
        : AutomationObject(kNamesIdentity), names_(std::move(names)) {}

    HRESULT STDMETHODCALLTYPE get_Item(VARIANT Index, BSTR* item) override;
    HRESULT STDMETHODCALLTYPE get_Count(LONG* count) override;
    HRESULT STDMETHODCALLTYPE get_NewEnum(IUnknown** enumerator) override;

  private:
    KeyedList<std::string> names_;
};

// A new list for a host, AddRef'd once.
_wncNames* handOutNames(KeyedList<std::string> names);

}  // namespace ostrel::com
