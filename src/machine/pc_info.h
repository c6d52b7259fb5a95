// wncPCInfo: the machine facts, taken once while the object is constructed,
// then a read-only snapshot.
#pragma once

#include <string>

#include "platform/system_info_port.h"
#include "runtime/object.h"

namespace ostrel {

class wncPCInfo : public Object {
  public:
    // The seven construction steps; reports nothing and raises nothing.
    wncPCInfo();

    // Public members. The rows that nothing fills are declared but never
    // assigned on purpose: hosts always read them empty.
    const std::string& ClientSiteName() const { return ClientSiteName_; }
    const std::string& ComputerName() const { return ComputerName_; }
    const std::string& DomainName() const { return DomainName_; }
    const std::string& DomainControllerAddress() const { return DomainControllerAddress_; }
    const std::string& DomainControllerName() const { return DomainControllerName_; }
    const std::string& ForestName() const { return ForestName_; }
    Ref<Object> Groups() const { return Groups_; }  // always Nothing
    const std::string& PrimaryDomainController() const { return PrimaryDomainController_; }
    const std::string& SiteName() const { return SiteName_; }
    const std::string& UserName() const { return UserName_; }
    bool IsMemberOfGroup(std::string& strGroupName) const;
    void DebugPrint() const;
    bool GetNetworkInfo() const;

    // For the component's own use.
    bool IsNTPlatform() const;
    bool IsNT4() const;
    bool IsX64Based() const;
    bool IsXPOrHigher() const;
    bool IsXPEmbedded() const;

    const platform::OsVersionRecord& versionRecord() const { return version_; }
    const platform::SystemRecord& systemRecord() const { return system_; }

  private:
    void msubLogVersionInfo();
    void msubLogProcessorInfo() const;

    std::string ClientSiteName_, ComputerName_, DomainName_, DomainControllerAddress_,
        DomainControllerName_, ForestName_, PrimaryDomainController_, SiteName_, UserName_;
    Ref<Object> Groups_;
    platform::OsVersionRecord version_;
    platform::SystemRecord system_;
};

// How the shared instance is made: a host that adds an automation interface
// sets a factory that makes its subclass.
class PCInfoFactory {
  public:
    virtual ~PCInfoFactory() = default;
    virtual Ref<wncPCInfo> newPCInfo() = 0;
};

// This apartment's factory; null (the default): a plain core object.
void setPCInfoFactory(PCInfoFactory* factory);
// Through this apartment's factory.
Ref<wncPCInfo> newPCInfo();

// The apartment's shared instance, made on first use.
Ref<wncPCInfo> gfobjGetPCInfo();
// Where the apartment keeps it; null when released.
Ref<wncPCInfo>& gobjPCInfo();
// Clears the shared instance; the next gfobjGetPCInfo takes a fresh snapshot.
void gsubReleasePCInfo();

}  // namespace ostrel
