#include "machine/network.h"

#include "foundation/debug_log.h"
#include "foundation/file_system_object.h"
#include "foundation/wnc_registry.h"
#include "runtime/automation_error.h"
#include "runtime/text.h"

namespace ostrel {

namespace {

constexpr int32_t kTraceLevel = 100000;

void logFailure(std::string_view routine) {
    const AutomationError error = currentError();
    gsubDebugPrint("[OstrelGlobals." + std::string(routine) + "] ERROR(" +
                   std::to_string(error.number) + "): " + error.description);
}

void traceAdapter(const std::string& name) {
    if (glngDebugLevel() > kTraceLevel) gsubDebugPrint("Network Adapter: " + name);
}

}  // namespace

NameList gfcolGetNetworkCards() {
    try {
        NameList colCards;
        WNCRegistry objList;
        WNCRegistry objCard;
        if (!objList.TryOpenKey(platform::kHiveLocalMachine, kNetworkCardsPath, kKeyRead, 0)) {
            return colCards;
        }
        for (std::string strName = trimBlanks(enumSubKeyName(objList, true)); !strName.empty();
             strName = trimBlanks(enumSubKeyName(objList, false))) {
            // A card seen by the walk but not opened fails the whole list.
            objCard.OpenKey(platform::kHiveLocalMachine, buildKeyPath(kNetworkCardsPath, strName),
                            kKeyRead, 0);
            const std::string strService = gfstrGetRegValue(&objCard, "ServiceName", "");
            if (strService.empty()) continue;  // a card without a service is passed over
            traceAdapter(strService);
            colCards.add(strService, strService);
        }
        return colCards;
    } catch (...) {
        // One duplicate (in any case) throws away what was gathered.
        logFailure("gfcolGetNetworkCards");
        return NameList();
    }
}

NameList gfcolGetAdapters() {
    try {
        NameList colAdapters;
        WNCRegistry objList;
        if (!objList.TryOpenKey(platform::kHiveLocalMachine, kAdaptersPath, kKeyRead, 0)) {
            return colAdapters;
        }
        // The sub-key name itself, untrimmed: only an empty one ends the walk.
        for (std::string strName = enumSubKeyName(objList, true); !strName.empty();
             strName = enumSubKeyName(objList, false)) {
            traceAdapter(strName);
            colAdapters.add(strName, strName);
        }
        return colAdapters;
    } catch (...) {
        logFailure("gfcolGetAdapters");
        return NameList();
    }
}

Ref<Dictionary> gfdicGetInterfaceData(std::string_view vstrInterfaceName) {
    try {
        auto dicData = makeRef<Dictionary>();
        WNCRegistry objRegistry;
        const std::string strPath = std::string(kInterfacesPath) + std::string(vstrInterfaceName);
        if (!objRegistry.TryOpenKey(platform::kHiveLocalMachine, strPath, kKeyRead, 0)) {
            return dicData;  // no such interface: empty, not null
        }
        for (const char* name : {"HostName", "DefaultGateway", "Domain", "IPAddress", "SubnetMask",
                                 "Server", "NameServer"}) {
            fstrAddNetworkInterfaceValue(objRegistry, *dicData, name, "");
        }
        flngAddNetworkInterfaceValue(objRegistry, *dicData, "EnableDHCP", 0);
        for (const char* name :
             {"DhcpIPAddress", "DhcpSubnetMask", "DhcpServer", "DhcpNameServer", "DhcpDomain"}) {
            fstrAddNetworkInterfaceValue(objRegistry, *dicData, name, "");
        }
        return dicData;
    } catch (...) {
        logFailure("gfdicGetInterfaceData");
        return nullptr;
    }
}

// The two value routines log and add in opposite orders: after a failed add
// the number's line is in the log, the string's is not. Kept so.
std::string fstrAddNetworkInterfaceValue(WNCRegistry& vobjRegistry, Dictionary& vdicData,
                                         std::string_view vstrValueName,
                                         std::string_view vstrDefault) {
    std::string strValue;
    try {
        strValue = gfstrGetRegValue(&vobjRegistry, vstrValueName, vstrDefault);
        vdicData.Add(vstrValueName, Variant(strValue));
        if (glngDebugLevel() > kTraceLevel) {
            gsubDebugPrint(std::string(vstrValueName) + " := '" + strValue + "'");
        }
        return strValue;
    } catch (...) {
        logFailure("fstrAddNetworkInterfaceValue");
        return strValue;
    }
}

int32_t flngAddNetworkInterfaceValue(WNCRegistry& vobjRegistry, Dictionary& vdicData,
                                     std::string_view vstrValueName, int32_t vlngDefault) {
    int32_t lngValue = 0;
    try {
        lngValue = gflngGetRegValue(&vobjRegistry, vstrValueName, vlngDefault);
        if (glngDebugLevel() > kTraceLevel) {
            gsubDebugPrint(std::string(vstrValueName) + " := '" + std::to_string(lngValue) + "'");
        }
        vdicData.Add(vstrValueName, Variant(lngValue));
        return lngValue;
    } catch (...) {
        logFailure("flngAddNetworkInterfaceValue");
        return lngValue;
    }
}

}  // namespace ostrel
