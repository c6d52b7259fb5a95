// The bare queries WmiInfo is set beside: resolve the same moniker, run the
// same six queries (and one more per logon session) and read every property
// the sections read, building no text.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "machine/wmi_info.h"
#include "platform/wmi_port.h"

namespace ostrel::bench {

// Properties read; `sink` keeps the reads from being optimised away.
inline int bareWmiQueries(platform::WmiPort& wmi, const std::string& moniker, size_t& sink) {
    const std::unique_ptr<platform::WmiServices> services = wmi.connect(moniker);
    if (!services) return 0;
    int reads = 0;
    const auto readAll = [&](platform::WmiObject& object, auto properties) {
        for (const std::string_view name : properties) {
            try {
                sink += object.property(name).storage().index();
                ++reads;
            } catch (...) {
            }
        }
    };
    for (const WmiClassReading& reading : wmiInventoryReadings()) {
        const auto set = services->execQuery(reading.query);
        if (!set) continue;
        while (const auto object = set->next()) {
            readAll(*object, reading.properties);
            if (reading.className != "Win32_LogonSession") continue;
            const auto accounts =
                services->execQuery(wmiLogonAccountsQuery(object->property("LogonId")));
            if (!accounts) continue;
            sink += static_cast<size_t>(set->count());
            while (const auto account = accounts->next()) readAll(*account, wmiAccountProperties());
        }
    }
    return reads;
}

}  // namespace ostrel::bench
