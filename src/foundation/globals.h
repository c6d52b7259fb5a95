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

class clsLanguageText;
class FileSystemObject;
class wncPCInfo;
class PartNumberTable;
class ObjectFactory;
namespace platform {
class XmlDocument;
}

enum class StartState { NotStarted, Started, Failed };

struct OstrelGlobals {
    OstrelGlobals();
    explicit OstrelGlobals(platform::Ports ports);
    OstrelGlobals(OstrelGlobals&&) noexcept;
    OstrelGlobals& operator=(OstrelGlobals&&) noexcept;
    ~OstrelGlobals();

    platform::Ports ports;
    ObjectFactory* factory = nullptr;  // how public classes are made; null: plain core objects
    StartState startState = StartState::NotStarted;

    Ref<clsLanguageText> languageText;  // created on first touch, see gobjLanguageText()
    Ref<FileSystemObject> gobjFileSystem;
    bool gblnDebug = false;
    int32_t glngDebugLevel = 0;
    std::string gstrLogFilename;
    Ref<wncPCInfo> gobjPCInfo;
    std::unique_ptr<PartNumberTable> partNumbers;            // built at the first look-up
    std::unique_ptr<platform::XmlDocument> gobjSettingsDoc;  // the settings file in memory
    std::string helpFile;  // the component's help file (App.HelpFile), empty until set
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

// The language text object of this apartment, created on first touch.
clsLanguageText& gobjLanguageText();

// Runs Main unless this apartment has started (or failed) already: what the
// class factory and the tool's main do before the first object is made.
void ensureStarted();

}  // namespace ostrel
