#include "platform/common/xml_rules.h"

#include "runtime/automation_error.h"

namespace ostrel::platform {

namespace {

// The name characters of XML, with every non-ASCII character let through.
bool isNameStart(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == ':' || c >= 0x80;
}
bool isNameChar(unsigned char c) {
    return isNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

}  // namespace

void raiseXmlFailure(std::string description) {
    throw AutomationError(kXmlFailure, std::move(description));
}

void checkElementName(std::string_view name) {
    if (name.empty()) raiseXmlFailure("An element name must not be empty.");
    if (!isNameStart(static_cast<unsigned char>(name.front()))) {
        raiseXmlFailure("This name may not begin with the '" + std::string(1, name.front()) +
                        "' character: " + std::string(name));
    }
    for (const char c : name) {
        if (!isNameChar(static_cast<unsigned char>(c))) {
            raiseXmlFailure("This name may not contain the '" + std::string(1, c) +
                            "' character: " + std::string(name));
        }
    }
}

void checkSelectionPath(std::string_view path) {
    try {
        for (size_t start = 0;;) {
            const size_t slash = path.find('/', start);
            checkElementName(path.substr(start, slash - start));
            if (slash == std::string_view::npos) return;
            start = slash + 1;
        }
    } catch (const AutomationError& error) {
        raiseXmlFailure("Incorrect query: " + std::string(path) + ". " + error.description);
    }
}

void raiseSecondDocumentElement() {
    raiseXmlFailure("Only one top level element is allowed in an XML document.");
}

}  // namespace ostrel::platform
