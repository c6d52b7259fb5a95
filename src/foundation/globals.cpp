#include "foundation/globals.h"

#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include "foundation/file_system_object.h"

namespace ostrel {

// Defined here, where the types behind the references are complete.
OstrelGlobals::OstrelGlobals() : OstrelGlobals(platform::defaultPorts()) {}
OstrelGlobals::OstrelGlobals(platform::Ports p) : ports(p) {}
OstrelGlobals::OstrelGlobals(OstrelGlobals&&) noexcept = default;
OstrelGlobals& OstrelGlobals::operator=(OstrelGlobals&&) noexcept = default;
OstrelGlobals::~OstrelGlobals() {
    while (!slots_.empty()) {
        // Out of the list before it goes, in case its release touches another slot.
        const std::unique_ptr<ApartmentSlot> last = std::move(slots_.back().second);
        slots_.pop_back();
    }
}

ApartmentSlot& OstrelGlobals::slot(const void* key, std::unique_ptr<ApartmentSlot> (*make)()) {
    for (auto& [held, value] : slots_) {
        if (held == key) return *value;
    }
    // Made before it is listed: a slot whose making throws leaves none behind.
    std::unique_ptr<ApartmentSlot> made = make();
    return *slots_.emplace_back(key, std::move(made)).second;
}

namespace {

// Each thread's globals, by thread. They are not a thread_local object of
// their own: mingw's emulated thread-local storage frees a thread's block
// before its thread_local destructors run, which then read freed memory.
using GlobalsTable = std::map<std::thread::id, std::unique_ptr<OstrelGlobals>>;
std::mutex tableLock;

GlobalsTable& globalsTable() {
    // Never destroyed: at unload the objects of threads that have not ended
    // can't be released from the unloading one, as before.
    static GlobalsTable* const table = std::make_unique<GlobalsTable>().release();
    return *table;
}

// Drops the ending thread's globals; reads nothing of its own storage.
struct ThreadEnd {
    ThreadEnd() = default;
    ThreadEnd(const ThreadEnd&) = delete;
    ThreadEnd& operator=(const ThreadEnd&) = delete;
    ~ThreadEnd() {
        std::unique_ptr<OstrelGlobals> ending;
        {
            const std::lock_guard<std::mutex> hold(tableLock);
            const auto found = globalsTable().find(std::this_thread::get_id());
            if (found == globalsTable().end()) return;
            ending = std::move(found->second);
            globalsTable().erase(found);
        }
        // Destroyed outside the lock: its objects may still report on the way.
    }
};

}  // namespace

OstrelGlobals& apartment() {
    // One set per thread: each apartment that uses the component has its own.
    thread_local OstrelGlobals* globals = nullptr;
    if (!globals) {
        thread_local ThreadEnd end;
        auto made = std::make_unique<OstrelGlobals>();
        globals = made.get();
        const std::lock_guard<std::mutex> hold(tableLock);
        globalsTable()[std::this_thread::get_id()] = std::move(made);
    }
    return *globals;
}

}  // namespace ostrel
