#include "foundation/paths.h"

#include "foundation/debug_log.h"
#include "foundation/file_system_object.h"
#include "foundation/globals.h"
#include "runtime/automation_error.h"
#include "runtime/text.h"

namespace ostrel {

namespace {

constexpr uint32_t kMaxPath = 260;

platform::PathPort& pathPort() {
    return requirePort(apartment().ports.paths);
}

}  // namespace

std::string gfstrGetLongPathFilename(std::string_view vstrPathFilename) {
    const std::string input(vstrPathFilename);
    try {
        uint32_t size = kMaxPath;
        std::string buffer(size, '\0');
        uint32_t result = 0;
        // A failure of this one call counts as 0: so the routine also works
        // where the system lacks the call.
        resumeNext([&] { result = pathPort().getLongPathName(input, buffer, size); });
        if (result == 0) return input;
        if (result <= size) return gfstrTrimAtNull(buffer);
        // kept: one more than the call asked for, and no third attempt.
        size = result + 1;
        buffer.assign(size, '\0');
        result = pathPort().getLongPathName(input, buffer, size);
        if (result == 0 || result > size) return input;
        return gfstrTrimAtNull(buffer);
    } catch (...) {
        gsubDebugPrint("[gfstrGetLongPathFilename] vstrPathFilename: '" + input +
                       "' ERROR: " + currentError().description);
        return input;
    }
}

std::string gfstrBrowseForFolder(int32_t vlngOwnerHwnd, std::string_view vstrTitle,
                                 int32_t vlngOptions, std::string_view vstrRootFolder) {
    try {
        // A new shell object for every call.
        const auto shell = requirePort(apartment().ports.shell).createApplication();
        const auto folder =
            shell->browseForFolder(vlngOwnerHwnd, vstrTitle, vlngOptions, vstrRootFolder);
        if (!folder) return std::string();
        const auto item = folder->self();
        if (!item) return std::string();
        // The path as the shell gives it: no separator added or removed at its end.
        return item->path();
    } catch (...) {
        const AutomationError error = currentError();
        gsubDebugPrint("ERROR: " + std::to_string(error.number) + " - " + error.description);
        return std::string();
    }
}

std::string gfstrSetCurrentFolder(std::string_view vstrNewFolder) {
    if (vstrNewFolder.empty()) return std::string();
    platform::PathPort& port = pathPort();
    std::string buffer(kMaxPath + 1, '\0');
    const uint32_t length = port.getCurrentDirectory(kMaxPath, buffer);
    // kept: a failed call leaves the buffer of NULs as the result, and a
    // folder too long for it the whole buffer; the change is made all the same.
    if (length > 0) buffer = buffer.substr(0, length);
    port.setCurrentDirectory(vstrNewFolder);
    return buffer;
}

bool gfblnDeleteFile(std::string_view vstrPathFilename) {
    OstrelGlobals& globals = apartment();
    bool gone = false;
    resumeNext([&] {
        if (!globals.gobjFileSystem) {
            globals.gobjFileSystem = makeRef<FileSystemObject>(globals.ports.fileSystem);
        }
    });
    if (!globals.gobjFileSystem) return false;
    const FileSystemObject& fso = *globals.gobjFileSystem;
    resumeNext([&] { fso.DeleteFile(vstrPathFilename, true); });
    resumeNext([&] { gone = !fso.FileExists(vstrPathFilename); });
    return gone;
}

}  // namespace ostrel
