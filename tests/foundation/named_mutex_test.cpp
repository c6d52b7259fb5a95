#include <gtest/gtest.h>

#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#endif

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "fakes/test_apartment.h"
#include "foundation/globals.h"
#include "foundation/named_mutex.h"
#include "platform/adapters.h"

namespace ostrel {
namespace {

using Port = platform::NamedMutexPort;
using Calls = std::vector<std::string>;

class MutexGuard : public ::testing::Test {
  protected:
    const std::vector<std::string>& said() const { return fx.debugStream.texts; }
    fakes::TestApartment fx;
};

TEST_F(MutexGuard, ObtainsAndReleasesSilentlyUpToLevel1000AndTracesAbove) {
    apartment().glngDebugLevel = 1000;
    int32_t handle = GetMutex("M", 250);
    EXPECT_TRUE(ReleaseMutexHandle(handle));

    apartment().glngDebugLevel = 1001;
    handle = GetMutex("M", 0);
    ReleaseMutexHandle(handle);
    EXPECT_EQ(said(), (Calls{"Obtained mutex(M,2)\r\n", "Released mutex handle(2)\r\n",
                             "Closed mutex handle(2)\r\n"}));

    // The same variable a second time (released, it holds 0), or an empty name: nothing at all.
    fx.namedMutex.calls.clear();
    EXPECT_TRUE(ReleaseMutexHandle(handle));
    EXPECT_EQ(GetMutex("", 100), 0);
    EXPECT_TRUE(fx.namedMutex.calls.empty());
}

// An abandoned mutex is a success, told at every level.
TEST_F(MutexGuard, FailedWaitsAndCreationsGiveZeroAndTheirLineAnAbandonedOneIsASuccess) {
    fx.namedMutex.waitAnswer = Port::kWaitTimeout;
    EXPECT_EQ(GetMutex("M", 10), 0);
    fx.namedMutex.waitAnswer = Port::kWaitFailed;
    EXPECT_EQ(GetMutex("M", 10), 0);
    EXPECT_EQ(fx.namedMutex.calls, (Calls{"create M", "wait 1 10", "create M", "wait 2 10"}))
        << "kept: the handle of a failed wait stays open";
    fx.namedMutex.waitAnswer = Port::kWaitAbandoned;
    EXPECT_EQ(GetMutex("M", 10), 3);
    fx.namedMutex.createFails = true;
    EXPECT_EQ(GetMutex("M", 10), 0);
    EXPECT_EQ(said(), (Calls{"Failed getting mutex(M)\r\n", "Failed getting mutex(M)\r\n",
                             "Obtained abandoned mutex(M,3)\r\n", "Failed creating mutex(M)\r\n"}));
}

TEST_F(MutexGuard, RefusedReleaseAndCloseAreToldInTheReleasesWords) {
    fx.namedMutex.releaseFails = true;
    int32_t handle = GetMutex("M", 10);
    EXPECT_FALSE(ReleaseMutexHandle(handle));
    EXPECT_EQ(handle, 0);
    EXPECT_EQ(fx.namedMutex.calls.back(), "close 1") << "closed although the release failed";

    fx.namedMutex.releaseFails = false;
    fx.namedMutex.closeFails = true;
    handle = GetMutex("M", 10);
    EXPECT_TRUE(ReleaseMutexHandle(handle)) << "a failed close doesn't change the result";
    EXPECT_EQ(handle, 0);
    EXPECT_EQ(said(), (Calls{"Released mutex handle(1) = 288\ttext of 288\r\n",
                             "Released mutex handle(2) = 289\ttext of 289\r\n"}));
}

TEST_F(MutexGuard, WithoutALockServiceTheRunTimeErrorIsLogged) {
    fx.use(&platform::Ports::namedMutex, nullptr);
    EXPECT_EQ(GetMutex("M", 10), 0);
    EXPECT_EQ(said(), Calls{"[GetMutex] Name: M ERROR: 429 - ActiveX component can't create "
                            "object\r\n"});
    int32_t handle = 7;
    EXPECT_FALSE(ReleaseMutexHandle(handle));
    EXPECT_EQ(handle, 0);
}

#ifndef _WIN32
// On Linux the lock files of these tests go to a private folder of their own.
struct PrivateLockFolder {
    PrivateLockFolder() {
        char made[] = "/tmp/ostrel-locks-XXXXXX";
        path = ::mkdtemp(made);
        ::setenv("XDG_RUNTIME_DIR", made, 1);
    }
    ~PrivateLockFolder() {
        ::unsetenv("XDG_RUNTIME_DIR");
        std::filesystem::remove_all(path);
    }
    std::filesystem::path file(const std::string& name) const {
        return path / ("ostrel-" + name + ".lock");
    }
    std::filesystem::path path;
};
#else
struct PrivateLockFolder {};
#endif

// The system's own lock: what a wait answers from another thread, which
// owns a mutex on Windows and Linux alike.
TEST(SystemNamedMutex, WaitsTimesOutRecursesAndReportsADeadOwner) {
    [[maybe_unused]] const PrivateLockFolder folder;
    Port& port = platform::systemNamedMutex();
    const std::string name =
        "ostrel-test-" +
        std::to_string(std::chrono::steady_clock::now().time_since_epoch().count());
    const int32_t mine = port.create(name);
    ASSERT_GT(mine, 0);
    EXPECT_EQ(port.wait(mine, 0), Port::kWaitObtained);
    EXPECT_EQ(port.wait(mine, 0), Port::kWaitObtained) << "the owner gets it again at once";

    // Another thread's wait: its answer; `released` tells whether it could release.
    bool released = true;
    const auto other = [&](int32_t timeoutMs) {
        uint32_t answer = 0;
        std::thread([&] {
            const int32_t theirs = port.create(name);
            answer = port.wait(theirs, timeoutMs);
            released = port.release(theirs);  // owned or not, as the answer says
            port.close(theirs);
        }).join();
        return answer;
    };
    EXPECT_EQ(other(0), Port::kWaitTimeout);
    EXPECT_FALSE(released) << "a thread that doesn't own it can't release it";
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(other(150), Port::kWaitTimeout);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(140));
    EXPECT_FALSE(port.errorText(port.lastError()).empty());

    EXPECT_TRUE(port.release(mine));
    EXPECT_TRUE(port.release(mine));
    EXPECT_FALSE(port.release(mine)) << "released as often as it was taken";
    EXPECT_EQ(other(0), Port::kWaitObtained);
    EXPECT_TRUE(released);

    // A thread that ends while it owns the lock leaves it abandoned, also
    // after it released and closed the first of two handles.
    std::thread([&] {
        int32_t theirs[2] = {port.create(name), port.create(name)};
        for (const int32_t handle : theirs) port.wait(handle, 0);
        port.release(theirs[0]);
        port.close(theirs[0]);
    }).join();
    EXPECT_EQ(port.wait(mine, 1000), Port::kWaitAbandoned);
    EXPECT_TRUE(port.release(mine));
    EXPECT_EQ(port.wait(mine, 0), Port::kWaitObtained) << "plain again after the abandoned wait";
    EXPECT_TRUE(port.release(mine));
    EXPECT_TRUE(port.close(mine));
}

#ifndef _WIN32
// What is found in the lock folder and wasn't made as the lock makes its
// files is refused, never used.
TEST(SystemNamedMutex, RefusesWhatItDidNotMakeItself) {
    namespace fs = std::filesystem;
    const PrivateLockFolder folder;
    Port& port = platform::systemNamedMutex();
    const auto put = [&](const std::string& name, const std::string& bytes, fs::perms mode) {
        std::ofstream(folder.file(name)) << bytes;
        fs::permissions(folder.file(name), mode);
    };
    port.close(port.create("fine"));
    EXPECT_EQ(fs::status(folder.file("fine")).permissions(), fs::perms(0600));
    fs::remove(folder.file("fine"));
    port.close(port.create("fine"));
    EXPECT_TRUE(fs::exists(folder.file("fine"))) << "a deleted lock file is made again";

    fs::create_symlink(folder.file("fine"), folder.file("link"));
    ::mkfifo(folder.file("fifo").c_str(), 0600);
    fs::create_directory(folder.file("folder"));
    put("wide", "", fs::perms(0644));
    put("long", "nine byte", fs::perms(0600));
    put("twice", "", fs::perms(0600));
    fs::create_hard_link(folder.file("twice"), folder.file("twin"));
    put("theirs", "", fs::perms(0600));
    if (::geteuid() == 0) ::chown(folder.file("theirs").c_str(), 65534, 65534);
    for (const char* name : {"link", "fifo", "folder", "wide", "long", "twice", "theirs"}) {
        EXPECT_EQ(port.create(name), 0) << name;
    }
    // A record this code didn't write: opened, but never taken.
    put("forged", "XXXXXXXX", fs::perms(0600));
    const int32_t forged = port.create("forged");
    EXPECT_EQ(port.wait(forged, 0), Port::kWaitFailed);
    port.close(forged);
}
#endif

}  // namespace
}  // namespace ostrel
