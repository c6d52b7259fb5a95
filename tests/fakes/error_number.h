// The automation error number an operation raises, or 0 when it raises none.
#pragma once

#include <cstdint>

#include "runtime/automation_error.h"

namespace ostrel::fakes {

template <class Operation>
int32_t errorNumberOf(Operation operation) {
    try {
        operation();
    } catch (const AutomationError& error) {
        return error.number;
    }
    return 0;
}

}  // namespace ostrel::fakes
