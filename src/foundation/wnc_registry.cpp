#include "foundation/wnc_registry.h"

#include "foundation/globals.h"
#include "runtime/automation_error.h"

namespace ostrel {

namespace {

// The run-time error for a key that can't be opened, by the system's error
// code: the same numbers the run time gives those codes for files, so a log
// line reads "File not found" for a missing key and "Permission denied" for
// a refused one. Any other code is an invalid call.
int32_t openError(int32_t systemCode) {
    switch (systemCode) {
        case 2:  // not found
            return kErrFileNotFound;
        case 3:  // path not found
            return kErrPathNotFound;
        case 5:  // access denied
            return kErrPermissionDenied;
        default:
            return kErrInvalidCall;
    }
}

}  // namespace

WNCRegistry::WNCRegistry() : port_(apartment().ports.registry) {
    if (port_ == nullptr) raise(kErrCantCreate);
}

void WNCRegistry::OpenKey(int32_t vlngHive, std::string_view vstrPath, int32_t vlngAccess,
                          int32_t /*vlngFlag: always 0, no meaning*/) {
    // A failed open drops the key held before, so nothing reads a stale key.
    key_.reset();
    nextIndex_ = 0;
    int32_t systemCode = 0;
    key_ = port_->open(vlngHive, vstrPath, vlngAccess, systemCode);
    if (!key_) raise(openError(systemCode));
}

bool WNCRegistry::TryOpenKey(int32_t vlngHive, std::string_view vstrPath, int32_t vlngAccess,
                             int32_t /*vlngFlag*/) {
    key_.reset();
    nextIndex_ = 0;
    int32_t systemCode = 0;
    key_ = port_->open(vlngHive, vstrPath, vlngAccess, systemCode);
    return key_ != nullptr;
}

bool WNCRegistry::GetStringValue(std::string_view vstrName, std::string& rstrValue) {
    if (!key_) return false;
    if (auto value = key_->stringValue(vstrName)) {
        rstrValue = std::move(*value);
        return true;
    }
    const auto entries = key_->multiStringValue(vstrName);
    if (!entries) return false;
    std::string joined;
    for (const std::string& entry : *entries) {
        if (&entry != &entries->front()) joined += platform::kMultiStringSeparator;
        joined += entry;
    }
    rstrValue = std::move(joined);
    return true;
}

bool WNCRegistry::EnumFirstSubKey(std::string& rstrName) {
    nextIndex_ = 0;
    return EnumNextSubKey(rstrName);
}

bool WNCRegistry::EnumNextSubKey(std::string& rstrName) {
    if (!key_) return false;
    auto name = key_->subKeyName(nextIndex_);
    if (!name) return false;
    ++nextIndex_;
    rstrName = std::move(*name);
    return true;
}

bool WNCRegistry::GetLongValue(std::string_view vstrName, int32_t& rlngValue) {
    if (!key_) return false;
    auto value = key_->dwordValue(vstrName);
    if (!value) return false;
    rlngValue = *value;
    return true;
}

std::string enumSubKeyName(WNCRegistry& vobjRegistry, bool first) {
    std::string name;
    const bool found =
        first ? vobjRegistry.EnumFirstSubKey(name) : vobjRegistry.EnumNextSubKey(name);
    if (!found) name.clear();
    return name;
}

std::string gfstrGetRegValue(WNCRegistry* vobjRegistry, std::string_view vstrValueName,
                             std::string_view vstrDefault) {
    try {
        std::string strValue;
        if (vobjRegistry != nullptr && vobjRegistry->GetStringValue(vstrValueName, strValue)) {
            return strValue;
        }
        return std::string(vstrDefault);
    } catch (...) {
        // kept: a read that fails at run time gives the default, silently
        return std::string(vstrDefault);
    }
}

int32_t gflngGetRegValue(WNCRegistry* vobjRegistry, std::string_view vstrValueName,
                         int32_t vlngDefault) {
    try {
        int32_t lngValue = 0;
        if (vobjRegistry != nullptr && vobjRegistry->GetLongValue(vstrValueName, lngValue)) {
            return lngValue;
        }
        return vlngDefault;
    } catch (...) {
        // kept: a read that fails at run time gives the default, silently
        return vlngDefault;
    }
}

}  // namespace ostrel
