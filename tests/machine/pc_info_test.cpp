#include "machine/pc_info.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "catalogue/software_product.h"
#include "catalogue/software_products.h"
#include "fakes/test_apartment.h"
#include "foundation/globals.h"

namespace ostrel {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PcInfoTest : public ::testing::Test {
  protected:
    PcInfoTest() {
        // 6.1.7601, NT platform, SP 1, suite 256, workstation.
        const std::string csd = "Service Pack 1" + std::string(114, '\0');
        apt.systemInfo.version = {0, 6, 1, 7601, 2, csd, 1, 0, 256, 1};
        apt.systemInfo.system = {0, 1, 1, 586, 6, 0x0F0B};
        apt.systemInfo.nativeSystem = {9, 15, 4, 8664, 6, 0x3A09};
        apt.systemInfo.computerNames[7] = "pc7.example.org";
        apt.environment.variables["USERNAME"] = "pat";
    }

    // The globals were replaced, so the log state is set afresh.
    static void debug(bool on, int32_t level) {
        apartment().gblnDebug = on;
        apartment().glngDebugLevel = level;
    }

    fakes::TestApartment apt;
};

TEST_F(PcInfoTest, TakesTheSnapshotAndFallsBackToUsernameForTheUser) {
    const auto info = makeRef<wncPCInfo>();
    // The record goes to the call cleared, with the size of its ANSI form.
    const auto& asked = apt.systemInfo.versionAskedWith;
    ASSERT_TRUE(asked);
    EXPECT_EQ(asked->dwOSVersionInfoSize, 156);
    EXPECT_EQ(asked->dwMajorVersion + asked->dwPlatformId, 0);
    EXPECT_EQ(asked->szCSDVersion.find_first_not_of('\0'), std::string::npos);
    EXPECT_EQ(info->ClientSiteName() + info->DomainName() + info->DomainControllerAddress() +
                  info->DomainControllerName() + info->ForestName() +
                  info->PrimaryDomainController() + info->SiteName(),
              "");
    EXPECT_FALSE(info->Groups());
    std::string group = "Administrators";
    EXPECT_FALSE(info->IsMemberOfGroup(group) || info->GetNetworkInfo());
    info->DebugPrint();
    EXPECT_THAT(apt.debugStream.lines(), IsEmpty());

    apt.systemInfo.userNames[7] = "example.org/Users/pat";
    EXPECT_EQ(makeRef<wncPCInfo>()->UserName(), "example.org/Users/pat");
    // A local account: format 7 fails, format 2 succeeds and is thrown away.
    apt.systemInfo.userNames = {{2, "PC7\\pat"}};
    EXPECT_EQ(makeRef<wncPCInfo>()->UserName(), "pat");
    apt.environment.variables.erase("USERNAME");
    EXPECT_EQ(makeRef<wncPCInfo>()->UserName(), "");
}

// Before XP, or when the version can't be read, the plain system record is read.
TEST_F(PcInfoTest, VersionClassificationsAndTheSystemRecordTheyChoose) {
    struct Case {
        int32_t major, minor, platform;
        bool versionRead, xpOrHigher, nt4;
        int32_t architecture;
    };
    // NT4 doesn't look at the platform; a later system reporting 6.2 is still XP or higher.
    for (const Case c : {Case{4, 0, 1, true, false, true, 0}, Case{5, 0, 2, true, false, false, 0},
                         Case{5, 1, 2, true, true, false, 9}, Case{6, 2, 2, true, true, false, 9},
                         Case{6, 1, 2, false, false, false, 0}}) {
        apt.systemInfo.version.dwMajorVersion = c.major;
        apt.systemInfo.version.dwMinorVersion = c.minor;
        apt.systemInfo.version.dwPlatformId = c.platform;
        apt.systemInfo.versionSucceeds = c.versionRead;
        const auto info = makeRef<wncPCInfo>();
        SCOPED_TRACE(std::to_string(c.major) + "." + std::to_string(c.minor));
        EXPECT_EQ(info->IsXPOrHigher(), c.xpOrHigher);
        EXPECT_EQ(info->IsNT4(), c.nt4);
        EXPECT_EQ(info->IsNTPlatform(), c.versionRead && c.platform == 2);
        EXPECT_EQ(info->systemRecord().wProcessorArchitecture, c.architecture);
    }
}

// Fails every name call but scribbles on the buffer first. Notes each call ("user2:255", with "!"
// for a buffer that wasn't 256 NULs).
class ScribblingSystemInfo : public fakes::FakeSystemInfo {
  public:
    std::vector<std::string> calls;
    bool computerNameEx(int32_t format, std::string& buffer, uint32_t& size) override {
        return scribble("computer", format, buffer, size);
    }
    bool userNameEx(int32_t format, std::string& buffer, uint32_t& size) override {
        return scribble("user", format, buffer, size);
    }
    bool scribble(const std::string& kind, int32_t format, std::string& buffer, uint32_t size) {
        calls.push_back(kind + std::to_string(format) + ":" + std::to_string(size) +
                        (buffer == std::string(256, '\0') ? "" : "!"));
        buffer.replace(0, 255, std::string(255, 'c'));
        return false;
    }
};

TEST_F(PcInfoTest, NameCallsGetFreshNulBuffersAndOneComputerFormat) {
    ScribblingSystemInfo scribbling;
    apt.use(&platform::Ports::systemInfo, &scribbling);
    const auto info = makeRef<wncPCInfo>();
    // No second computer format, no bigger buffer.
    EXPECT_THAT(scribbling.calls, ElementsAre("computer7:255", "user7:255", "user2:255"));
    EXPECT_EQ(info->ComputerName(), "");
}

TEST_F(PcInfoTest, DumpsFollowTheDebugLevel) {
    std::vector<std::string> lines = {
        "Version: Major: 6 Minor: 1 Build: 7601", "CSDVersion: Service Pack 1",
        "ServicePack: Major: 1 Minor: 0", "ProductType: 1 PlatformId: 2 Suite: 256"};
    debug(false, 10);
    makeRef<wncPCInfo>();
    EXPECT_THAT(apt.debugStream.lines(), IsEmpty());

    debug(false, 11);
    EXPECT_EQ(makeRef<wncPCInfo>()->versionRecord().szCSDVersion, "Service Pack 1");
    EXPECT_EQ(apt.debugStream.lines(), lines);

    apt.systemInfo.version.szCSDVersion = std::string(128, '\0');
    debug(false, 1001);
    makeRef<wncPCInfo>();
    lines.erase(lines.begin() + 1);  // no CSD line for an empty text
    lines.push_back("Processor Architecture: 9 Type: 8664 Level: 6 Revision: 14857");
    lines.push_back("Number Processors: 4 ActiveProcessorMask: 15");
    EXPECT_EQ(apt.debugStream.lines(), lines);
}

TEST_F(PcInfoTest, ClassificationsLogEachTimeTheyAnswerTrue) {
    apt.systemInfo.version.wSuiteMask = 64 | 256;
    debug(true, 1);
    const auto info = makeRef<wncPCInfo>();  // asks for XP or higher itself
    EXPECT_TRUE(info->IsNTPlatform() && info->IsNTPlatform() && info->IsX64Based() &&
                info->IsXPOrHigher() && info->IsXPEmbedded());
    EXPECT_THAT(apt.debugStream.lines(),
                ElementsAre("OS is XP or higher", "Is NT platform", "Is NT platform",
                            "OS is X64 based", "OS is XP or higher", "OS is XP embedded"));
    debug(false, 1);
    EXPECT_TRUE(info->IsNTPlatform() && info->IsX64Based() && info->IsXPOrHigher() &&
                info->IsXPEmbedded());
    EXPECT_THAT(apt.debugStream.lines(), IsEmpty());
}

class PcInfoFactory : public PCInfoFactory {
  public:
    Ref<wncPCInfo> made = makeRef<wncPCInfo>();
    Ref<wncPCInfo> newPCInfo() override { return made; }
};

TEST_F(PcInfoTest, SharedInstanceIsRenewedOnlyAfterRelease) {
    const auto first = gfobjGetPCInfo();
    apt.systemInfo.computerNames[7] = "renamed.example.org";
    EXPECT_EQ(gfobjGetPCInfo(), first);
    gsubReleasePCInfo();
    EXPECT_FALSE(gobjPCInfo());
    EXPECT_EQ(gfobjGetPCInfo()->ComputerName(), "renamed.example.org");

    // The host's factory makes the shared instance too.
    PcInfoFactory factory;
    setPCInfoFactory(&factory);
    gsubReleasePCInfo();
    EXPECT_EQ(gfobjGetPCInfo(), factory.made);
    setPCInfoFactory(nullptr);
}

}  // namespace
}  // namespace ostrel
