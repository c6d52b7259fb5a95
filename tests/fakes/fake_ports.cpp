#include "fakes/fake_ports.h"

namespace ostrel::fakes {

namespace {

bool answerName(const std::map<int32_t, std::string>& names, int32_t format, std::string& buffer,
                uint32_t& size) {
    const auto found = names.find(format);
    if (found == names.end()) return false;
    const std::string& name = found->second;
    const size_t needed = name.size() + 1;
    if (size < needed || buffer.size() < needed) {
        size = static_cast<uint32_t>(needed);
        return false;
    }
    buffer.replace(0, needed, name + '\0');
    size = static_cast<uint32_t>(name.size());
    return true;
}

}  // namespace

std::optional<std::string> FakeEnvironment::variable(std::string_view name) {
    const auto found = variables.find(name);
    if (found == variables.end()) return std::nullopt;
    return found->second;
}

bool FakeSystemInfo::getVersionEx(platform::OsVersionRecord& record) {
    versionAskedWith = record;
    if (!versionSucceeds) return false;
    record = version;
    return true;
}

bool FakeSystemInfo::computerNameEx(int32_t format, std::string& buffer, uint32_t& size) {
    return answerName(computerNames, format, buffer, size);
}

bool FakeSystemInfo::userNameEx(int32_t format, std::string& buffer, uint32_t& size) {
    return answerName(userNames, format, buffer, size);
}

}  // namespace ostrel::fakes
