// The module globals of OstrelGlobals: one set per apartment (thread) that
// uses the component. Main fills them once per apartment; nothing undoes
// that until the module unloads.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/ports.h"
#include "runtime/automation_error.h"
#include "runtime/object.h"

namespace ostrel {

class FileSystemObject;
class ObjectFactory;
namespace platform {
class XmlDocument;
}

enum class StartState { NotStarted, Started, Failed };

// What the wiring layer keeps per apartment (the objects of the subsystems
// above): held here so that it goes with the apartment, opaque to foundation.
struct ApartmentObjects {
    virtual ~ApartmentObjects() = default;
};

struct OstrelGlobals {
    OstrelGlobals();
    explicit OstrelGlobals(platform::Ports ports);
    OstrelGlobals(OstrelGlobals&&) noexcept;
    OstrelGlobals& operator=(OstrelGlobals&&) noexcept;
    ~OstrelGlobals();

    platform::Ports ports;
    ObjectFactory* factory = nullptr;  // how public classes are made; null: plain core objects
    StartState startState = StartState::NotStarted;

    Ref<FileSystemObject> gobjFileSystem;
    bool gblnDebug = false;
    int32_t glngDebugLevel = 0;
    std::string gstrLogFilename;
    std::unique_ptr<platform::XmlDocument> gobjSettingsDoc;  // the settings file in memory
    std::string helpFile;  // the component's help file (App.HelpFile), empty until set
    // Last, so released first, while the log state its objects report through still stands.
    std::unique_ptr<ApartmentObjects> wiring;
};

// This thread's globals.
OstrelGlobals& apartment();

// A port of this apartment; error 429 when it has none, as for a service
// that can't be created.
template <class Port>
Port& requirePort(Port* port) {
    if (!port) raise(kErrCantCreate);
    return *port;
}

}  // namespace ostrel
