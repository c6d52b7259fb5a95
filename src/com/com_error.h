// Run-time errors leave the component as HRESULTs: MAKE_HRESULT(1,
// FACILITY_CONTROL, number) with IErrorInfo set for a caller through the
// vtable, and EXCEPINFO filled for a caller through IDispatch::Invoke.
// No C++ exception crosses the boundary.
#pragma once

#include "com/ostrel_h.h"

#include <optional>

#include "runtime/automation_error.h"

namespace ostrel::com {

// Sets the thread's error object from the error and answers its HRESULT.
HRESULT reportError(const AutomationError& error, REFIID iid) noexcept;

// The last error reported on this thread, for Invoke to copy into EXCEPINFO.
struct ReportedError {
    HRESULT hr;
    AutomationError error;
};
void forgetReportedError() noexcept;
std::optional<ReportedError> takeReportedError() noexcept;

// E_POINTER for a missing out- or in-pointer, with the thread's error
// object cleared, so that no earlier failure seems to be this one's.
HRESULT pointerMissing() noexcept;

// Fills EXCEPINFO (strings newly allocated) from an error.
void fillExcepInfo(EXCEPINFO& info, const ReportedError& reported) noexcept;

// The body of every interface method: runs the body, maps whatever it raises.
template <class Body>
HRESULT guarded(REFIID iid, Body&& body) noexcept {
    try {
        body();
        return S_OK;
    } catch (...) {
        return reportError(currentError(), iid);
    }
}

}  // namespace ostrel::com
