// The automation error an operation raises (number 0 when it raises none),
// or only its number.
#pragma once

#include <cstdint>

#include "runtime/automation_error.h"

namespace ostrel::fakes {

template <class Operation>
AutomationError errorOf(Operation operation) {
    try {
        operation();
    } catch (const AutomationError& error) {
        return error;
    }
    return AutomationError(0, "");
}

template <class Operation>
int32_t errorNumberOf(Operation operation) {
    return errorOf(operation).number;
}

}  // namespace ostrel::fakes
