#include "machine/pc_info.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "catalogue/software_product.h"
#include "catalogue/software_products.h"
#include "fakes/test_apartment.h"
#include "foundation/globals.h"
#include "foundation/object_factory.h"

namespace ostrel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PcInfoTest : public ::testing::Test {
  protected:
    PcInfoTest() {
        auto& version = apt.systemInfo.version;
        version.dwMajorVersion = 6;
        version.dwMinorVersion = 1;
        version.dwBuildNumber = 7601;
        version.dwPlatformId = 2;
        version.szCSDVersion = std::string("Service Pack 1") + std::string(114, '\0');
        version.wServicePackMajor = 1;
        version.wSuiteMask = 256;
        version.wProductType = 1;
        apt.systemInfo.system = {0, 1, 1, 586, 6, 0x0F0B};
        apt.systemInfo.nativeSystem = {9, 15, 4, 8664, 6, 0x3A09};
        apt.systemInfo.computerNames[7] = "pc7.example.org";
        apt.environment.variables["USERNAME"] = "pat";
    }

    // This apartment's log state; the globals were replaced, so set it afresh.
    static void debug(bool on, int32_t level) {
        apartment().gblnDebug = on;
        apartment().glngDebugLevel = level;
    }
    // What reached the debugger stream, without the CR LF the log adds.
    std::vector<std::string> logged() const {
        std::vector<std::string> lines;
        for (const std::string& text : apt.debugStream.texts)
            lines.push_back(text.substr(0, text.find("\r\n")));
        return lines;
    }

    fakes::TestApartment apt;
};

TEST_F(PcInfoTest, TakesTheSnapshotAndLeavesTheUnfilledMembersEmpty) {
    const auto info = makeRef<wncPCInfo>();
    EXPECT_EQ(info->ComputerName(), "pc7.example.org");
    EXPECT_EQ(info->UserName(), "pat");
    EXPECT_EQ(info->versionRecord().dwBuildNumber, 7601);
    // From XP on the native record: a 32-bit process on x64 still sees x64.
    EXPECT_EQ(info->systemRecord().wProcessorArchitecture, 9);
    for (const std::string& empty :
         {info->ClientSiteName(), info->DomainName(), info->DomainControllerAddress(),
          info->DomainControllerName(), info->ForestName(), info->PrimaryDomainController(),
          info->SiteName()})
        EXPECT_EQ(empty, "");
    EXPECT_FALSE(info->Groups());
    std::string group = "Administrators";
    EXPECT_FALSE(info->IsMemberOfGroup(group));
    EXPECT_EQ(group, "Administrators");
    EXPECT_FALSE(info->GetNetworkInfo());
    info->DebugPrint();
    EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(PcInfoTest, BeforeXpOrWithoutAVersionThePlainSystemRecordIsRead) {
    apt.systemInfo.version.dwMajorVersion = 5;
    apt.systemInfo.version.dwMinorVersion = 0;
    EXPECT_EQ(makeRef<wncPCInfo>()->systemRecord().wProcessorArchitecture, 0);

    apt.systemInfo.versionSucceeds = false;
    apt.systemInfo.system.wProcessorArchitecture = 9;
    const auto info = makeRef<wncPCInfo>();
    EXPECT_EQ(info->systemRecord().dwProcessorType, 586);
    EXPECT_FALSE(info->IsNTPlatform() || info->IsNT4() || info->IsXPOrHigher());
    EXPECT_TRUE(info->IsX64Based());
}

// Records what the core hands to the calls, and lets a test answer freely.
class ProbingSystemInfo : public fakes::FakeSystemInfo {
  public:
    struct Call {
        int32_t format;
        std::string buffer;
        uint32_t size;
    };
    std::vector<Call> computerCalls, userCalls;
    int32_t sizeSeen = 0;
    std::string (*answer)(int32_t format, bool& ok) = nullptr;

    bool getVersionEx(platform::OsVersionRecord& record) override {
        sizeSeen = record.dwOSVersionInfoSize;
        return FakeSystemInfo::getVersionEx(record);
    }
    bool computerNameEx(int32_t format, std::string& buffer, uint32_t& size) override {
        computerCalls.push_back({format, buffer, size});
        return respond(format, buffer);
    }
    bool userNameEx(int32_t format, std::string& buffer, uint32_t& size) override {
        userCalls.push_back({format, buffer, size});
        return respond(format, buffer);
    }

  private:
    bool respond(int32_t format, std::string& buffer) const {
        bool ok = false;
        const std::string text = answer(format, ok);
        buffer.replace(0, text.size(), text);
        return ok;
    }
};

TEST_F(PcInfoTest, NameCallsGetFreshNulBuffersAndTheSecondUserCallIsInverted) {
    ProbingSystemInfo probe;
    apt.ports.systemInfo = &probe;
    apt.install();
    const std::string fresh(256, '\0');

    // Format 7 fails but scribbles; format 2 fails leaving a name: that name is kept.
    probe.answer = [](int32_t format, bool& ok) {
        ok = false;
        return format == 7 ? std::string(255, 'c') : std::string("EXAMPLE\\pat") + '\0';
    };
    auto info = makeRef<wncPCInfo>();
    EXPECT_EQ(probe.sizeSeen, 156);
    ASSERT_EQ(probe.computerCalls.size(), 1u);  // no second format, no bigger buffer
    EXPECT_EQ(probe.computerCalls[0].format, 7);
    EXPECT_EQ(probe.computerCalls[0].buffer, fresh);
    EXPECT_EQ(probe.computerCalls[0].size, 255u);
    EXPECT_EQ(info->ComputerName(), "");
    ASSERT_EQ(probe.userCalls.size(), 2u);
    EXPECT_EQ(probe.userCalls[1].format, 2);
    EXPECT_EQ(probe.userCalls[1].buffer, fresh);
    EXPECT_EQ(probe.userCalls[1].size, 255u);
    EXPECT_EQ(info->UserName(), "EXAMPLE\\pat");

    // A name that fills all 255 characters is taken whole.
    probe.answer = [](int32_t format, bool& ok) {
        ok = format != 2;
        return std::string(255, 'n');
    };
    info = makeRef<wncPCInfo>();
    EXPECT_EQ(info->ComputerName(), std::string(255, 'n'));
    EXPECT_EQ(info->UserName(), std::string(255, 'n'));
}

TEST_F(PcInfoTest, UserNameFallsBackToTheEnvironment) {
    apt.systemInfo.userNames[7] = "example.org/Users/pat";
    EXPECT_EQ(makeRef<wncPCInfo>()->UserName(), "example.org/Users/pat");

    // A local account: format 7 fails, format 2 succeeds and is thrown away.
    apt.systemInfo.userNames = {{2, "PC7\\pat"}};
    EXPECT_EQ(makeRef<wncPCInfo>()->UserName(), "pat");
    apt.systemInfo.userNames.clear();
    EXPECT_EQ(makeRef<wncPCInfo>()->UserName(), "pat");
    apt.environment.variables.erase("USERNAME");
    EXPECT_EQ(makeRef<wncPCInfo>()->UserName(), "");
}

TEST_F(PcInfoTest, DumpsFollowTheDebugLevel) {
    const std::vector<std::string> versionLines = {
        "Version: Major: 6 Minor: 1 Build: 7601", "CSDVersion: Service Pack 1",
        "ServicePack: Major: 1 Minor: 0", "ProductType: 1 PlatformId: 2 Suite: 256"};
    const std::vector<std::string> processorLines = {
        "Processor Architecture: 9 Type: 8664 Level: 6 Revision: 14857",
        "Number Processors: 4 ActiveProcessorMask: 15"};

    debug(false, 10);
    makeRef<wncPCInfo>();
    EXPECT_THAT(logged(), IsEmpty());

    debug(false, 11);
    const auto info = makeRef<wncPCInfo>();
    EXPECT_EQ(logged(), versionLines);
    EXPECT_EQ(info->versionRecord().szCSDVersion, "Service Pack 1");  // cut at its NUL

    apt.debugStream.texts.clear();
    apt.systemInfo.version.szCSDVersion = std::string(128, '\0');
    debug(false, 1001);
    makeRef<wncPCInfo>();
    std::vector<std::string> expected = versionLines;
    expected.erase(expected.begin() + 1);  // no CSD line for an empty text
    expected.insert(expected.end(), processorLines.begin(), processorLines.end());
    EXPECT_EQ(logged(), expected);
}

TEST_F(PcInfoTest, ClassificationsLogEachTimeTheyAnswerTrue) {
    apt.systemInfo.version.wSuiteMask = 64 | 256;
    debug(true, 1);
    const auto info = makeRef<wncPCInfo>();
    EXPECT_THAT(logged(), ElementsAre("OS is XP or higher"));  // step 5 of the construction
    apt.debugStream.texts.clear();

    EXPECT_TRUE(info->IsNTPlatform() && info->IsNTPlatform());
    EXPECT_TRUE(info->IsX64Based());
    EXPECT_TRUE(info->IsXPOrHigher());
    EXPECT_TRUE(info->IsXPEmbedded());
    EXPECT_FALSE(info->IsNT4());
    EXPECT_THAT(logged(), ElementsAre("Is NT platform", "Is NT platform", "OS is X64 based",
                                      "OS is XP or higher", "OS is XP embedded"));

    apt.debugStream.texts.clear();
    debug(false, 1);
    EXPECT_TRUE(info->IsNTPlatform() && info->IsX64Based() && info->IsXPOrHigher() &&
                info->IsXPEmbedded());
    EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(PcInfoTest, VersionClassifications) {
    struct Case {
        int32_t major, minor, platform;
        bool xpOrHigher, nt4;
    };
    // NT4 doesn't look at the platform; a later system reporting 6.2 is still XP or higher.
    for (const Case c : {Case{4, 0, 1, false, true}, Case{5, 0, 2, false, false},
                         Case{5, 1, 2, true, false}, Case{6, 2, 2, true, false}}) {
        apt.systemInfo.version.dwMajorVersion = c.major;
        apt.systemInfo.version.dwMinorVersion = c.minor;
        apt.systemInfo.version.dwPlatformId = c.platform;
        const auto info = makeRef<wncPCInfo>();
        EXPECT_EQ(info->IsXPOrHigher(), c.xpOrHigher) << c.major << "." << c.minor;
        EXPECT_EQ(info->IsNT4(), c.nt4) << c.major << "." << c.minor;
        EXPECT_EQ(info->IsNTPlatform(), c.platform == 2);
    }
}

class PcInfoSubclass : public wncPCInfo {};

class PcInfoFactory : public ObjectFactory {
  public:
    int made = 0;
    Ref<wncPCInfo> newPCInfo() override {
        ++made;
        return makeRef<PcInfoSubclass>();
    }
    Ref<wncSoftwareProduct> newSoftwareProduct() override { return nullptr; }
    Ref<wncSoftwareProducts> newSoftwareProducts() override { return nullptr; }
};

TEST_F(PcInfoTest, SharedInstanceIsRenewedOnlyAfterRelease) {
    const auto first = gfobjGetPCInfo();
    EXPECT_EQ(gfobjGetPCInfo(), first);
    apt.systemInfo.computerNames[7] = "renamed.example.org";
    EXPECT_EQ(gfobjGetPCInfo()->ComputerName(), "pc7.example.org");

    gsubReleasePCInfo();
    EXPECT_FALSE(apartment().gobjPCInfo);
    const auto second = gfobjGetPCInfo();
    EXPECT_NE(second.get(), first.get());
    EXPECT_EQ(second->ComputerName(), "renamed.example.org");

    // The host's factory makes the shared instance too.
    PcInfoFactory factory;
    apartment().factory = &factory;
    gsubReleasePCInfo();
    EXPECT_NE(dynamic_cast<PcInfoSubclass*>(gfobjGetPCInfo().get()), nullptr);
    EXPECT_EQ(factory.made, 1);
    apartment().factory = nullptr;
}

}  // namespace
}  // namespace ostrel
