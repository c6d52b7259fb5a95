#include "foundation/file_system_object.h"

#include "foundation/globals.h"
#include "runtime/automation_error.h"
#include "runtime/text.h"

namespace ostrel {

namespace {

constexpr char kKeySeparator = '\\';
constexpr std::string_view kDataFolder = "QUORL";

// Where the last folder of a path ends: with '\\' as the separator '/'
// counts too, as Windows takes both.
size_t lastSeparator(std::string_view path, char separator) {
    return separator == '/' ? path.rfind('/') : path.find_last_of("/\\");
}

}  // namespace

FileSystemObject::FileSystemObject(platform::FileSystemPort* port) : port_(port) {
    if (!port_) raise(kErrCantCreate);
}

std::string FileSystemObject::BuildPath(std::string_view path, std::string_view name) const {
    return joinPath(path, name, port_->separator());
}

std::string FileSystemObject::GetFileName(std::string_view path) const {
    const size_t cut = lastSeparator(path, port_->separator());
    return std::string(cut == std::string_view::npos ? path : path.substr(cut + 1));
}

std::string FileSystemObject::GetParentFolderName(std::string_view path) const {
    const size_t cut = lastSeparator(path, port_->separator());
    if (cut == std::string_view::npos) return std::string();
    // A root keeps its separator: the parent of "/x" is "/", of "C:\\x" "C:\\".
    const std::string_view parent = path.substr(0, cut);
    if (parent.empty() || (parent.size() == 2 && parent[1] == ':')) {
        return std::string(path.substr(0, cut + 1));
    }
    return std::string(parent);
}

std::string FileSystemObject::GetBaseName(std::string_view path) const {
    const std::string name = GetFileName(path);
    const size_t dot = name.rfind('.');
    return dot == std::string::npos ? name : name.substr(0, dot);
}

std::string FileSystemObject::GetExtensionName(std::string_view path) const {
    const std::string name = GetFileName(path);
    const size_t dot = name.rfind('.');
    return dot == std::string::npos ? std::string() : name.substr(dot + 1);
}

bool FileSystemObject::FileExists(std::string_view path) const {
    return port_->fileExists(path);
}

bool FileSystemObject::FolderExists(std::string_view path) const {
    return port_->folderExists(path);
}

int64_t FileSystemObject::FileSize(std::string_view path) const {
    const auto size = port_->fileSize(path);
    if (!size) raise(kErrFileNotFound);
    return *size;
}

void FileSystemObject::DeleteFile(std::string_view path, bool force) const {
    if (!port_->deleteFile(path, force)) {
        raise(port_->fileExists(path) ? kErrPermissionDenied : kErrFileNotFound);
    }
}

void FileSystemObject::AppendLine(std::string_view path, std::string_view text) const {
    if (!port_->appendLine(path, text)) {
        const size_t cut = lastSeparator(path, port_->separator());
        const std::string_view folder =
            cut == std::string_view::npos ? std::string_view() : path.substr(0, cut);
        // A missing file is created, a missing folder never.
        raise(folder.empty() || port_->folderExists(folder) ? kErrPermissionDenied
                                                            : kErrPathNotFound);
    }
}

std::string FileSystemObject::ReadAll(std::string_view path) const {
    auto text = port_->readTextFile(path);
    if (!text) raise(kErrFileNotFound);
    return std::move(*text);
}

FileSystemObject& fileSystem() {
    const Ref<FileSystemObject>& fso = apartment().gobjFileSystem;
    if (!fso) raise(kErrObjectNotSet);
    return *fso;
}

std::string dataFolderFile(std::string_view name) {
    FileSystemObject& fso = fileSystem();
    std::string programData;
    if (auto* environment = apartment().ports.environment) {
        programData = environment->variable("ProgramData").value_or(std::string());
    }
    return fso.BuildPath(fso.BuildPath(programData, kDataFolder), name);
}

std::string buildKeyPath(std::string_view path, std::string_view name) {
    fileSystem();  // raises 91, as every path operation does, when Main couldn't make it
    return joinPath(path, name, kKeySeparator);
}

}  // namespace ostrel
