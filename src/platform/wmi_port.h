// Windows Management Instrumentation as its scripting interface shows it to a
// late-bound caller: a moniker resolves to a services object, a query gives
// a result set (or nothing), a result set counts and enumerates its objects,
// and an object answers a property by name. A property the object's class
// doesn't have fails when it is read (438), not before.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "runtime/variant.h"

namespace ostrel::platform {

// One object of a result set (SWbemObject).
class WmiObject {
  public:
    virtual ~WmiObject() = default;
    // The value of the named property, names compared without case; raises
    // 438 when the class has no such property.
    virtual Variant property(std::string_view name) = 0;
};

// The objects of one query (SWbemObjectSet), enumerated once, in order.
class WmiResultSet {
  public:
    virtual ~WmiResultSet() = default;
    virtual int32_t count() = 0;
    // The next object; null past the last.
    virtual std::unique_ptr<WmiObject> next() = 0;
};

// SWbemServices.
class WmiServices {
  public:
    virtual ~WmiServices() = default;
    // ExecQuery: null for a null result set; raises when the query fails.
    virtual std::unique_ptr<WmiResultSet> execQuery(std::string_view query) = 0;
};

class WmiPort {
  public:
    virtual ~WmiPort() = default;
    // GetObject on a "winmgmts:" moniker: null, or a raise, when it can't be resolved.
    virtual std::unique_ptr<WmiServices> connect(std::string_view moniker) = 0;
};

}  // namespace ostrel::platform
