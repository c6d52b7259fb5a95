// pcinfo: the machine facts object, as a host reads it.
#include <iostream>

#include "commands.h"
#include "machine/pc_info.h"
#include "output.h"

namespace ostrel::cli {

namespace {

int run() {
    const Ref<wncPCInfo> info = gfobjGetPCInfo();
    Record record;
    record["ComputerName"] = info->ComputerName();
    record["UserName"] = info->UserName();
    record["ClientSiteName"] = info->ClientSiteName();
    record["DomainName"] = info->DomainName();
    record["DomainControllerAddress"] = info->DomainControllerAddress();
    record["DomainControllerName"] = info->DomainControllerName();
    record["ForestName"] = info->ForestName();
    record["PrimaryDomainController"] = info->PrimaryDomainController();
    record["SiteName"] = info->SiteName();
    record["Groups"] = nullptr;  // no code fills the collection: always Nothing
    record["IsNTPlatform"] = info->IsNTPlatform();
    record["IsNT4"] = info->IsNT4();
    record["IsX64Based"] = info->IsX64Based();
    record["IsXPOrHigher"] = info->IsXPOrHigher();
    record["IsXPEmbedded"] = info->IsXPEmbedded();
    printRecord(std::cout, record, globalOptions().json);
    return kExitOk;
}

[[maybe_unused]] const bool registered = registerCommand({
    "pcinfo",
    "Show the machine facts: computer and user names and the system's classification",
    {},
    run,
});

}  // namespace

}  // namespace ostrel::cli
