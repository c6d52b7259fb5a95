// Errors as the automation run time numbers and describes them: what hosts
// see as Err.Number and Err.Description, and what the log lines print.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>

namespace ostrel {

// The run time's own error numbers used by this component.
enum ErrorNumber : int32_t {
    kErrInvalidCall = 5,        // "Invalid procedure call or argument"
    kErrOverflow = 6,           // "Overflow"
    kErrOutOfMemory = 7,        // "Out of memory"
    kErrSubscript = 9,          // "Subscript out of range"
    kErrDivisionByZero = 11,    // "Division by zero"
    kErrTypeMismatch = 13,      // "Type mismatch"
    kErrInternal = 51,          // "Internal error"
    kErrFileNotFound = 53,      // "File not found"
    kErrPermissionDenied = 70,  // "Permission denied"
    kErrPathNotFound = 76,      // "Path not found"
    kErrObjectNotSet = 91,      // "Object variable or With block variable not set"
    kErrInvalidNull = 94,       // "Invalid use of Null"
    kErrObjectRequired = 424,   // "Object required"
    kErrCantCreate = 429,       // "ActiveX component can't create object"
    kErrNoMember = 438,         // "Object doesn't support this property or method"
    kErrDuplicateKey = 457,  // "This key is already associated with an element of this collection"
};

// The standard description of a run-time error number; "Application-defined or
// object-defined error" for a number the run time has no text for.
std::string standardDescription(int32_t number);

struct AutomationError : std::exception {
    AutomationError(int32_t num, std::string desc, std::string src = "Ostrel")
        : number(num), description(std::move(desc)), source(std::move(src)) {}
    const char* what() const noexcept override { return description.c_str(); }

    int32_t number;
    std::string description;
    std::string source;
};

// Raises the run-time error with its standard description.
[[noreturn]] void raise(int32_t number);
// Raises an error with a description of its own.
[[noreturn]] void raise(int32_t number, std::string description);

// Inside a catch block: the error in flight as the run time would report it.
// Anything that is not an AutomationError becomes one (std::bad_alloc is 7,
// every other exception 51 "Internal error"), so a handler always has a
// number and a description to print. Outside a handler: number 0, no text.
AutomationError currentError() noexcept;

// One step of a resume-next sequence: a failing step is skipped and the next
// one runs. A step that must stop the sequence is not a resume-next step.
template <class Step>
void resumeNext(Step&& step) noexcept {
    try {
        step();
    } catch (...) {
    }
}

}  // namespace ostrel
