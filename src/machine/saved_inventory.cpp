// The objects the inventory reads, saved as JSON for a tool to replay them.
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "machine/wmi_info.h"
#include "runtime/automation_error.h"
#include "runtime/convert.h"

namespace ostrel {

namespace {

using Json = nlohmann::ordered_json;

Json jsonOf(const Variant& value) {
    const auto& storage = value.storage();
    if (const auto* text = std::get_if<std::string>(&storage)) return *text;
    if (const auto* flag = std::get_if<bool>(&storage)) return *flag;
    if (const auto* small = std::get_if<int16_t>(&storage)) return *small;
    if (const auto* whole = std::get_if<int32_t>(&storage)) return *whole;
    if (const auto* number = std::get_if<double>(&storage)) return *number;
    if (std::holds_alternative<DateValue>(storage)) return toText(value);
    return nullptr;  // Null, Empty, an object
}

// The properties the inventory reads, as far as the object has them: one it
// lacks stays out, so that replaying the file fails at its read as here.
Json objectOf(platform::WmiObject& object, std::span<const std::string_view> properties) {
    Json result = Json::object();
    for (const std::string_view name : properties) {
        try {
            result[std::string(name)] = jsonOf(object.property(name));
        } catch (const AutomationError&) {
        }
    }
    return result;
}

// The next object of a result set; null after the last, and when the
// enumeration fails, which `failed` then says.
std::unique_ptr<platform::WmiObject> nextOf(platform::WmiResultSet& set, bool& failed) {
    try {
        return set.next();
    } catch (const AutomationError&) {
        failed = true;
        return nullptr;
    }
}

}  // namespace

std::string wmiSavedInventory(platform::WmiServices& services) {
    Json inventory = Json::object();
    for (const WmiClassReading& reading : wmiInventoryReadings()) {
        std::unique_ptr<platform::WmiResultSet> set;
        try {
            set = services.execQuery(reading.query);
        } catch (const AutomationError&) {
        }
        if (!set) continue;
        Json& objects = inventory[std::string(reading.className)] = Json::array();
        bool failed = false;
        while (const auto object = nextOf(*set, failed)) {
            Json saved = objectOf(*object, reading.properties);
            if (reading.className == "Win32_LogonSession" && saved.contains("LogonId")) {
                std::unique_ptr<platform::WmiResultSet> accounts;
                try {
                    accounts =
                        services.execQuery(wmiLogonAccountsQuery(object->property("LogonId")));
                } catch (const AutomationError&) {
                }
                if (accounts) {
                    Json& list = saved["Accounts"] = Json::array();
                    bool accountsFailed = false;
                    while (const auto account = nextOf(*accounts, accountsFailed)) {
                        list.push_back(objectOf(*account, wmiAccountProperties()));
                    }
                    if (accountsFailed) saved.erase("Accounts");  // no result, as a null set
                }
            }
            objects.push_back(std::move(saved));
        }
        if (failed) inventory.erase(std::string(reading.className));
    }
    return inventory.dump(2);
}

}  // namespace ostrel
