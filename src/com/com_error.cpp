#include "com/com_error.h"

#include <cstring>
#include <string>

#include "com/automation_types.h"

namespace ostrel::com {

namespace {

thread_local std::optional<ReportedError> lastReported;

BSTR bstrOrNull(const std::string& text) noexcept {
    try {
        return toBstr(text);
    } catch (...) {
        return nullptr;
    }
}

}  // namespace

HRESULT reportError(const AutomationError& error, REFIID iid) noexcept {
    const HRESULT hr = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL,
                                    static_cast<uint32_t>(error.number) & 0xFFFFu);
    try {
        lastReported = ReportedError{hr, error};
    } catch (...) {
        lastReported.reset();
    }

    ICreateErrorInfo* create = nullptr;
    if (SUCCEEDED(CreateErrorInfo(&create))) {
        create->SetGUID(iid);
        if (BSTR source = bstrOrNull(error.source)) {
            create->SetSource(source);
            SysFreeString(source);
        }
        if (BSTR description = bstrOrNull(error.description)) {
            create->SetDescription(description);
            SysFreeString(description);
        }
        IErrorInfo* info = nullptr;
        if (SUCCEEDED(create->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&info)))) {
            SetErrorInfo(0, info);
            info->Release();
        }
        create->Release();
    }
    return hr;
}

HRESULT pointerMissing() noexcept {
    SetErrorInfo(0, nullptr);
    lastReported.reset();
    return E_POINTER;
}

void forgetReportedError() noexcept {
    lastReported.reset();
}

std::optional<ReportedError> takeReportedError() noexcept {
    std::optional<ReportedError> taken;
    taken.swap(lastReported);
    return taken;
}

void fillExcepInfo(EXCEPINFO& info, const ReportedError& reported) noexcept {
    SysFreeString(info.bstrSource);
    SysFreeString(info.bstrDescription);
    SysFreeString(info.bstrHelpFile);
    std::memset(&info, 0, sizeof info);
    info.bstrSource = bstrOrNull(reported.error.source);
    info.bstrDescription = bstrOrNull(reported.error.description);
    info.scode = reported.hr;
}

}  // namespace ostrel::com
