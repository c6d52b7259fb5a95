// The module globals of OstrelGlobals: one set per apartment (thread) that
// uses the component. Main fills them once per apartment; nothing undoes
// that until the module unloads.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/ports.h"
#include "runtime/automation_error.h"
#include "runtime/object.h"

namespace ostrel {

class FileSystemObject;
namespace platform {
class XmlDocument;
}

enum class StartState { NotStarted, Started, Failed };

// What a subsystem above keeps per apartment (its shared objects, the host's
// factory for its public classes): held here so that it goes with the
// apartment, opaque to foundation. See apartmentSlot.
struct ApartmentSlot {
    virtual ~ApartmentSlot() = default;
};

struct OstrelGlobals {
    OstrelGlobals();
    explicit OstrelGlobals(platform::Ports ports);
    OstrelGlobals(OstrelGlobals&&) noexcept;
    OstrelGlobals& operator=(OstrelGlobals&&) noexcept;
    ~OstrelGlobals();

    platform::Ports ports;
    StartState startState = StartState::NotStarted;

    Ref<FileSystemObject> gobjFileSystem;
    bool gblnDebug = false;
    int32_t glngDebugLevel = 0;
    std::string gstrLogFilename;
    std::unique_ptr<platform::XmlDocument> gobjSettingsDoc;  // the settings file in memory
    std::string helpFile;  // the component's help file (App.HelpFile), empty until set
    // The slot kept under key, made by make on first use.
    ApartmentSlot& slot(const void* key, std::unique_ptr<ApartmentSlot> (*make)());

  private:
    // Last, so released first, while the log state their objects report
    // through still stands; the newest first.
    std::vector<std::pair<const void*, std::unique_ptr<ApartmentSlot>>> slots_;
};

// This thread's globals.
OstrelGlobals& apartment();

// This apartment's slot of type Slot (an ApartmentSlot with a default
// constructor), made on first use.
template <class Slot>
Slot& apartmentSlot() {
    static const char key = 0;  // one address per slot type
    return static_cast<Slot&>(
        apartment().slot(&key, [] { return std::unique_ptr<ApartmentSlot>(new Slot); }));
}

// A port of this apartment; error 429 when it has none, as for a service
// that can't be created.
template <class Port>
Port& requirePort(Port* port) {
    if (!port) raise(kErrCantCreate);
    return *port;
}

}  // namespace ostrel
