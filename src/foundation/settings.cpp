#include "foundation/settings.h"

#include <memory>

#include "foundation/debug_log.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "foundation/named_mutex.h"
#include "runtime/automation_error.h"
#include "runtime/text.h"

namespace ostrel {

namespace {

using platform::XmlDocument;
using platform::XmlNode;

constexpr std::string_view kSettingsFileName = "ot_settings.xml";

std::string mfstrGetApplicationSettingsPathFileName() {
    try {
        return dataFolderFile(kSettingsFileName);
    } catch (...) {
        gsubDebugPrint(
            "[mfstrGetApplicationSettingsPathFileName] Failed to define application settings "
            "path and filename.  ERROR: " +
            currentError().description);
        return std::string();
    }
}

// Fills rstrFile with the settings file's name; true when the file is there.
bool mfblnGetApplicationSettingsFile(std::string& rstrFile) {
    try {
        rstrFile = mfstrGetApplicationSettingsPathFileName();
        // A file system object of its own, as the routine always made one.
        const FileSystemObject objFileSystem(apartment().ports.fileSystem);
        if (objFileSystem.FileExists(rstrFile)) return true;
        // A missing file is no failure; the only message here behind the flag.
        if (gblnDebug()) gsubDebugPrint("Ostrel settings file not found.  file: " + rstrFile);
        return false;
    } catch (...) {
        gsubDebugPrint("[mfblnGetApplicationSettingsFile] Unable to find settings file.  ERROR: " +
                       currentError().description);
        return false;
    }
}

// The new element appended as the parent's last child, or nothing.
std::unique_ptr<XmlNode> mfobjCreateXmlElement(XmlDocument* vobjDoc, XmlNode* vobjParent,
                                               std::string_view vstrName) {
    try {
        if (!vobjDoc || !vobjParent) return nullptr;
        std::unique_ptr<XmlNode> element = vobjDoc->createElement(vstrName);
        vobjParent->appendChild(*element);
        return element;
    } catch (...) {
        // kept: the message speaks of a newline, which the routine never adds
        gsubDebugPrint("[mfobjCreateXmlElement] Unable to add newline to xml doc.  ERROR: " +
                       currentError().description);
        return nullptr;
    }
}

platform::ProgramSettingsPort& olderStore() {
    return requirePort(apartment().ports.programSettings);
}

std::string settingName(std::string_view application, std::string_view section,
                        std::string_view key) {
    std::string name(application);
    name += ':';
    name += section;
    name += '[';
    name += key;
    name += ']';
    return name;
}

XmlDocument& settingsDocument() {
    const auto& doc = apartment().gobjSettingsDoc;
    if (!doc) raise(kErrObjectNotSet);
    return *doc;
}

}  // namespace

std::string gfstrGetApplicationSetting(std::string_view vstrApplication,
                                       std::string_view vstrSection, std::string_view vstrKey,
                                       std::string_view vstrDefault) {
    OstrelGlobals& g = apartment();
    int32_t lngMutex = 0;
    try {
        std::string strResult(vstrDefault);
        if (!g.gobjSettingsDoc) {
            // The lock guards the first load only; the read path sets no
            // loading property, so the document keeps its defaults.
            lngMutex = GetMutex(kSettingsMutexName, kSettingsMutexTimeoutMs);
            if (lngMutex > 0) {
                g.gobjSettingsDoc = requirePort(g.ports.xml).createDocument();
                std::string strFile;
                if (mfblnGetApplicationSettingsFile(strFile)) g.gobjSettingsDoc->load(strFile);
            }
            ReleaseMutexHandle(lngMutex);
        }

        // One query from the document: section, then key. Without the lock
        // there is no document, and this fails.
        std::string strPath(vstrSection);
        strPath += '/';
        strPath += vstrKey;
        if (auto node = settingsDocument().node().selectSingleNode(strPath)) {
            return node->text();  // also when empty: the default plays no part
        }

        // Not in the file: the older store, whose value moves into the file.
        const std::string strOlder =
            olderStore().get(vstrApplication, vstrSection, vstrKey, vstrDefault);
        if (!equalsText(vstrDefault, strOlder)) {
            strResult = strOlder;
            gsubSaveApplicationSetting(vstrApplication, vstrSection, vstrKey, strOlder);
        }
        return strResult;
    } catch (...) {
        gsubDebugPrint("[gfstrGetApplicationSetting] Unable to read " +
                       settingName(vstrApplication, vstrSection, vstrKey) +
                       " setting.  ERROR: " + currentError().description);
        ReleaseMutexHandle(lngMutex);
        return std::string(vstrDefault);
    }
}

void gsubSaveApplicationSetting(std::string_view vstrApplication, std::string_view vstrSection,
                                std::string_view vstrKey, std::string_view vstrValue) {
    OstrelGlobals& g = apartment();
    int32_t lngMutex = 0;
    try {
        lngMutex = GetMutex(kSettingsMutexName, kSettingsMutexTimeoutMs);
        if (lngMutex == 0) return;  // stored nowhere; the guard has said why

        if (!g.gobjSettingsDoc) {
            // Only the routine that creates the document sets these two.
            g.gobjSettingsDoc = requirePort(g.ports.xml).createDocument();
            g.gobjSettingsDoc->setPreserveWhiteSpace(true);
            g.gobjSettingsDoc->setAsync(false);
        }
        // Reloaded on every save, so that what another process saved in
        // between is kept; a missing file leaves the document as it is.
        std::string strFile;
        if (mfblnGetApplicationSettingsFile(strFile)) g.gobjSettingsDoc->load(strFile);

        XmlDocument* objDoc = g.gobjSettingsDoc.get();
        std::unique_ptr<XmlNode> objSection;
        std::unique_ptr<XmlNode> objKey;
        if (objDoc) {
            objSection = objDoc->node().selectSingleNode(vstrSection);
            if (!objSection)
                objSection = mfobjCreateXmlElement(objDoc, &objDoc->node(), vstrSection);
        }
        if (objSection) {
            objKey = objSection->selectSingleNode(vstrKey);
            if (!objKey) objKey = mfobjCreateXmlElement(objDoc, objSection.get(), vstrKey);
        }
        if (objKey) {
            objKey->setText(vstrValue);
            objDoc->save(mfstrGetApplicationSettingsPathFileName());
        } else {
            olderStore().save(vstrApplication, vstrSection, vstrKey, vstrValue);
        }
        ReleaseMutexHandle(lngMutex);
    } catch (...) {
        gsubDebugPrint("[gsubSaveApplicationSetting] Unable to save " +
                       settingName(vstrApplication, vstrSection, vstrKey) +
                       " setting.  ERROR: " + currentError().description);
        ReleaseMutexHandle(lngMutex);
    }
}

}  // namespace ostrel
