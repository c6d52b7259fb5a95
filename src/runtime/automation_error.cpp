#include "runtime/automation_error.h"

#include <new>

namespace ostrel {

std::string standardDescription(int32_t number) {
    switch (number) {
        case 5:
            return "Invalid procedure call or argument";
        case 6:
            return "Overflow";
        case 7:
            return "Out of memory";
        case 9:
            return "Subscript out of range";
        case 11:
            return "Division by zero";
        case 13:
            return "Type mismatch";
        case 51:
            return "Internal error";
        case 52:
            return "Bad file name or number";
        case 53:
            return "File not found";
        case 57:
            return "Device I/O error";
        case 58:
            return "File already exists";
        case 61:
            return "Disk full";
        case 62:
            return "Input past end of file";
        case 70:
            return "Permission denied";
        case 75:
            return "Path/File access error";
        case 76:
            return "Path not found";
        case 91:
            return "Object variable or With block variable not set";
        case 94:
            return "Invalid use of Null";
        case 424:
            return "Object required";
        case 429:
            return "ActiveX component can't create object";
        case 438:
            return "Object doesn't support this property or method";
        case 440:
            return "Automation error";
        case 450:
            return "Wrong number of arguments or invalid property assignment";
        case 457:
            return "This key is already associated with an element of this collection";
        default:
            return "Application-defined or object-defined error";
    }
}

void raise(int32_t number) {
    throw AutomationError(number, standardDescription(number));
}

void raise(int32_t number, std::string description) {
    throw AutomationError(number, std::move(description));
}

AutomationError currentError() noexcept {
    const std::exception_ptr inFlight = std::current_exception();
    // Outside a handler there is no error, as Err reads after Err.Clear.
    if (!inFlight) return AutomationError(0, std::string());
    try {
        std::rethrow_exception(inFlight);
    } catch (const AutomationError& error) {
        return error;
    } catch (const std::bad_alloc&) {
        return AutomationError(kErrOutOfMemory, standardDescription(kErrOutOfMemory));
    } catch (...) {
        return AutomationError(kErrInternal, standardDescription(kErrInternal));
    }
}

}  // namespace ostrel
