// WMI answered from plain records: what the Linux provider and a saved
// inventory (--wmi FILE) share. They understand the two kinds of query the
// inventory runs: "Select * from CLASS [Where ...]" and "Associators of
// {CLASS.KEY=VALUE} Where ...", whose objects are those a record lists as
// associated with it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/wmi_port.h"

namespace ostrel::platform {

struct WmiRecord {
    // Properties in order; names compare without case, as WMI's do.
    std::vector<std::pair<std::string, Variant>> properties;
    // The objects an associators query of this one gives; none: a null result set.
    std::optional<std::vector<WmiRecord>> associated;

    WmiRecord& set(std::string name, Variant value) {
        properties.emplace_back(std::move(name), std::move(value));
        return *this;
    }
};

// The objects of a class; none for a class that isn't supported (a null result set).
using WmiClassRecords = std::optional<std::vector<WmiRecord>>;

class WmiRecordServices final : public WmiServices {
  public:
    // Gives the records of a class when a query asks for it.
    using Source = std::function<WmiClassRecords(std::string_view className)>;
    explicit WmiRecordServices(Source source) : source_(std::move(source)) {}
    // A query of another form fails with WMI's "Invalid query".
    std::unique_ptr<WmiResultSet> execQuery(std::string_view query) override;

  private:
    Source source_;
};

// A result set over records, for an adapter that has them.
std::unique_ptr<WmiResultSet> recordResultSet(std::vector<WmiRecord> records);

// WBEM_E_INVALID_QUERY, as a late-bound caller sees it.
inline constexpr int32_t kWbemInvalidQuery = static_cast<int32_t>(0x80041017);

}  // namespace ostrel::platform
