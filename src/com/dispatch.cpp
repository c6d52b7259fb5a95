#include "com/dispatch.h"

#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

#include "com/automation_types.h"
#include "com/com_error.h"
#include "com/module.h"

namespace ostrel::com {

namespace {

// One parameter as the host fills it; the return value and an lcid
// parameter are not among them.
struct ParamShape {
    VARTYPE type = VT_EMPTY;  // the base type, VT_PTR stripped
    bool byRef = false;
    bool optional = false;
};

struct MemberShape {
    MEMBERID id = DISPID_UNKNOWN;
    INVOKEKIND kind = INVOKE_FUNC;
    std::vector<ParamShape> params;
};

struct InterfaceShape {
    IID iid{};
    ComPtr<ITypeInfo> dispatch;  // what Invoke and GetIDsOfNames forward to
    std::vector<MemberShape> members;

    const MemberShape* find(DISPID id, WORD flags) const {
        for (const MemberShape& member : members) {
            if (member.id == id && (static_cast<WORD>(member.kind) & flags) != 0) return &member;
        }
        return nullptr;
    }
};

// Shared by every apartment: type infos of the system's type library
// implementation are not bound to an apartment. Kept until the process ends.
struct Cache {
    std::mutex lock;
    ComPtr<ITypeLib> lib;
    std::vector<std::unique_ptr<InterfaceShape>> shapes;
};

Cache& cache() {
    // Never destroyed: at process exit oleaut32 may be gone before us.
    static Cache* instance = new Cache();
    return *instance;
}

HRESULT loadTypeLibLocked(Cache& c) {
    if (c.lib) return S_OK;
    const std::wstring path = modulePath();
    if (path.empty()) return HRESULT_FROM_WIN32(GetLastError());
    return LoadTypeLibEx(path.c_str(), REGKIND_NONE, c.lib.put());
}

ParamShape paramShape(const ELEMDESC& element) {
    ParamShape shape;
    const TYPEDESC* type = &element.tdesc;
    if (type->vt == VT_PTR && type->lptdesc) {
        shape.byRef = true;
        type = type->lptdesc;
    }
    shape.type = type->vt;
    const USHORT flags = element.paramdesc.wParamFlags;
    shape.optional = (flags & (PARAMFLAG_FOPT | PARAMFLAG_FHASDEFAULT)) != 0;
    return shape;
}

HRESULT describeMembers(ITypeInfo* info, std::vector<MemberShape>& members) {
    TYPEATTR* attr = nullptr;
    HRESULT hr = info->GetTypeAttr(&attr);
    if (FAILED(hr)) return hr;
    const WORD count = attr->cFuncs;
    info->ReleaseTypeAttr(attr);

    for (UINT i = 0; i < count; ++i) {
        FUNCDESC* func = nullptr;
        hr = info->GetFuncDesc(i, &func);
        if (FAILED(hr)) return hr;
        MemberShape member;
        member.id = func->memid;
        member.kind = func->invkind;
        for (SHORT p = 0; p < func->cParams; ++p) {
            const ELEMDESC& element = func->lprgelemdescParam[p];
            if ((element.paramdesc.wParamFlags & (PARAMFLAG_FRETVAL | PARAMFLAG_FLCID)) != 0) {
                continue;
            }
            member.params.push_back(paramShape(element));
        }
        info->ReleaseFuncDesc(func);
        members.push_back(std::move(member));
    }
    return S_OK;
}

HRESULT shapeOf(REFIID iid, const InterfaceShape*& shape) noexcept {
    try {
        Cache& c = cache();
        std::lock_guard<std::mutex> hold(c.lock);
        for (const auto& known : c.shapes) {
            if (IsEqualGUID(known->iid, iid)) {
                shape = known.get();
                return S_OK;
            }
        }
        HRESULT hr = loadTypeLibLocked(c);
        if (FAILED(hr)) return hr;

        auto fresh = std::make_unique<InterfaceShape>();
        fresh->iid = iid;
        hr = c.lib->GetTypeInfoOfGuid(iid, fresh->dispatch.put());
        if (FAILED(hr)) return hr;

        // A dual interface: the parameter types are those of its vtable half.
        ComPtr<ITypeInfo> vtableHalf;
        HREFTYPE ref = 0;
        if (SUCCEEDED(fresh->dispatch->GetRefTypeOfImplType(static_cast<UINT>(-1), &ref)) &&
            SUCCEEDED(fresh->dispatch->GetRefTypeInfo(ref, vtableHalf.put()))) {
            hr = describeMembers(vtableHalf.get(), fresh->members);
        } else {
            hr = describeMembers(fresh->dispatch.get(), fresh->members);
        }
        if (FAILED(hr)) return hr;

        shape = fresh.get();
        c.shapes.push_back(std::move(fresh));
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

bool isMissing(const VARIANT& arg) {
    return V_VT(&arg) == VT_ERROR && V_ERROR(&arg) == DISP_E_PARAMNOTFOUND;
}

void* valueAddress(VARIANT& v) {
    return &V_I8(&v);
}

void passByReference(VARIANT& out, VARTYPE type, VARIANT& holder) {
    VariantInit(&out);
    V_VT(&out) = static_cast<VARTYPE>(VT_BYREF | type);
    V_BYREF(&out) = valueAddress(holder);
}

// The arguments as the type library's Invoke wants them: every parameter
// present, each of its declared type. Values made here live in temps and
// are cleared when the set goes; what the host passed is never cleared.
class ArgumentSet {
  public:
    ArgumentSet() = default;
    ArgumentSet(const ArgumentSet&) = delete;
    ArgumentSet& operator=(const ArgumentSet&) = delete;
    ~ArgumentSet() {
        for (VARIANT& temp : temps_) VariantClear(&temp);
    }

    // Every parameter of the member from the host's arguments: positional
    // ones in order, named ones (the parameter's position as its DISPID, and
    // DISPID_PROPERTYPUT for the value of a put) in their place. Omitted
    // optional parameters get their zero, as the type library's Invoke does.
    HRESULT build(const MemberShape& member, WORD flags, const DISPPARAMS& in, UINT* argErr) {
        const bool put = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0 &&
                         (member.kind & (INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF)) != 0;
        if (in.cArgs > 0 && !in.rgvarg) return E_INVALIDARG;
        if (in.cNamedArgs > in.cArgs || (in.cNamedArgs > 0 && !in.rgdispidNamedArgs)) {
            return E_INVALIDARG;
        }
        const UINT count = static_cast<UINT>(member.params.size());
        if (put && count == 0) return DISP_E_BADPARAMCOUNT;

        // Which of the host's arguments fills each parameter.
        sources_.assign(count, kNoSource);
        const UINT positional = in.cArgs - in.cNamedArgs;
        const UINT positionalSlots = put ? count - 1 : count;
        if (positional > positionalSlots) return DISP_E_BADPARAMCOUNT;
        for (UINT i = 0; i < positional; ++i) sources_[i] = in.cArgs - 1 - i;
        bool putValueGiven = false;
        for (UINT k = 0; k < in.cNamedArgs; ++k) {
            const DISPID id = in.rgdispidNamedArgs[k];
            UINT slot = 0;
            if (id == DISPID_PROPERTYPUT && put) {
                slot = count - 1;
                putValueGiven = true;
            } else if (id >= 0 && static_cast<UINT>(id) < positionalSlots) {
                slot = static_cast<UINT>(id);
            } else {
                if (argErr) *argErr = k;
                return DISP_E_PARAMNOTFOUND;
            }
            if (sources_[slot] != kNoSource) {  // named twice, or also given by position
                if (argErr) *argErr = k;
                return DISP_E_PARAMNOTFOUND;
            }
            sources_[slot] = k;
        }
        if (put && !putValueGiven) return DISP_E_PARAMNOTFOUND;

        temps_.resize(count);
        args_.resize(count);
        for (VARIANT& temp : temps_) VariantInit(&temp);
        for (UINT i = 0; i < count; ++i) {
            VARIANT* source = sources_[i] == kNoSource ? nullptr : &in.rgvarg[sources_[i]];
            const HRESULT hr =
                shapeArgument(member.params[i], source, temps_[i], args_[count - 1 - i]);
            if (FAILED(hr)) {
                if (argErr && source) *argErr = sources_[i];
                return hr;
            }
        }
        params_.rgvarg = args_.empty() ? nullptr : args_.data();
        params_.cArgs = count;
        params_.rgdispidNamedArgs = put ? &putId_ : nullptr;
        params_.cNamedArgs = put ? 1 : 0;
        return S_OK;
    }

    // The host's index of an argument that the reshaped call names by its
    // index in the full list.
    UINT hostIndex(UINT reshapedIndex) const {
        const size_t param = args_.size() - 1 - reshapedIndex;
        if (reshapedIndex >= args_.size() || sources_[param] == kNoSource) return reshapedIndex;
        return sources_[param];
    }

    DISPPARAMS* params() { return &params_; }

  private:
    static HRESULT shapeArgument(const ParamShape& param, VARIANT* source, VARIANT& temp,
                                 VARIANT& out) {
        VariantInit(&out);
        // Too few arguments is the run time's "wrong number of arguments";
        // one passed as omitted where none may be is "not found".
        if (!source && !param.optional) return DISP_E_BADPARAMCOUNT;
        if (!source || (isMissing(*source) && param.type != VT_VARIANT)) {
            if (!param.optional) return DISP_E_PARAMNOTFOUND;
            if (param.type == VT_VARIANT) {
                V_VT(&temp) = VT_ERROR;
                V_ERROR(&temp) = DISP_E_PARAMNOTFOUND;
            } else {
                V_VT(&temp) = param.type;  // the zero of its type; a null BSTR is ""
            }
            if (param.byRef) {
                passByReference(out, param.type, temp);
            } else {
                out = temp;
            }
            return S_OK;
        }

        if (param.type == VT_VARIANT) {
            if (param.byRef && V_VT(source) == (VT_BYREF | VT_VARIANT)) {
                out = *source;
                return S_OK;
            }
            const HRESULT hr = VariantCopyInd(&temp, source);
            if (FAILED(hr)) return hr;
            if (param.byRef) {
                VariantInit(&out);
                V_VT(&out) = VT_BYREF | VT_VARIANT;
                V_VARIANTREF(&out) = &temp;
            } else {
                out = temp;
            }
            return S_OK;
        }

        VARIANT* inner = source;
        while (V_VT(inner) == (VT_BYREF | VT_VARIANT) && V_VARIANTREF(inner)) {
            inner = V_VARIANTREF(inner);
        }
        if (param.byRef) {
            // The host's own variable, when its type fits: a real reference.
            if (V_VT(inner) == (VT_BYREF | param.type)) {
                out = *inner;
                return S_OK;
            }
            if (inner != source && V_VT(inner) == param.type) {
                passByReference(out, param.type, *inner);
                return S_OK;
            }
        }
        HRESULT hr = VariantCopyInd(&temp, inner);
        if (SUCCEEDED(hr) && V_VT(&temp) != param.type) {
            hr = VariantChangeType(&temp, &temp, 0, param.type);
        }
        if (FAILED(hr)) return hr;
        if (param.byRef) {
            passByReference(out, param.type, temp);
        } else {
            out = temp;
        }
        return S_OK;
    }

    static constexpr UINT kNoSource = ~0u;
    std::vector<UINT> sources_;  // per parameter, the host's argument index
    std::vector<VARIANT> temps_;
    std::vector<VARIANT> args_;
    DISPID putId_ = DISPID_PROPERTYPUT;
    DISPPARAMS params_{};
};

}  // namespace

HRESULT componentTypeLib(ITypeLib** lib) noexcept {
    if (!lib) return E_POINTER;
    *lib = nullptr;
    try {
        Cache& c = cache();
        std::lock_guard<std::mutex> hold(c.lock);
        const HRESULT hr = loadTypeLibLocked(c);
        if (FAILED(hr)) return hr;
        *lib = c.lib.copy();
        return S_OK;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

HRESULT typeInfoOf(REFGUID guid, ITypeInfo** info) noexcept {
    if (!info) return E_POINTER;
    *info = nullptr;
    ComPtr<ITypeLib> lib;
    const HRESULT hr = componentTypeLib(lib.put());
    if (FAILED(hr)) return hr;
    return lib->GetTypeInfoOfGuid(guid, info);
}

HRESULT dispatchGetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, DISPID* ids) noexcept {
    if (!names || !ids) return E_POINTER;
    const InterfaceShape* shape = nullptr;
    const HRESULT hr = shapeOf(iid, shape);
    if (FAILED(hr)) return hr;
    return DispGetIDsOfNames(shape->dispatch.get(), names, count, ids);
}

HRESULT dispatchInvoke(REFIID iid, void* instance, DISPID member, WORD flags, DISPPARAMS* params,
                       VARIANT* result, EXCEPINFO* excepInfo, UINT* argErr) noexcept {
    if (!params) return E_INVALIDARG;
    const InterfaceShape* shape = nullptr;
    HRESULT hr = shapeOf(iid, shape);
    if (FAILED(hr)) return hr;
    if (excepInfo) std::memset(excepInfo, 0, sizeof *excepInfo);
    try {
        ArgumentSet arguments;
        DISPPARAMS* forwarded = params;
        const MemberShape* found = shape->find(member, flags);
        if (found) {
            hr = arguments.build(*found, flags, *params, argErr);
            if (FAILED(hr)) return hr;
            forwarded = arguments.params();
        }
        forgetReportedError();
        hr = shape->dispatch->Invoke(instance, member, flags, forwarded, result, excepInfo, argErr);
        // Only a failing call has an error to report: what an inner call
        // reported and its caller handled stays behind.
        const auto reported = takeReportedError();
        if (FAILED(hr) && reported) {
            if (excepInfo) fillExcepInfo(*excepInfo, *reported);
            hr = DISP_E_EXCEPTION;
        }
        if (FAILED(hr) && found && argErr &&
            (hr == DISP_E_TYPEMISMATCH || hr == DISP_E_PARAMNOTFOUND)) {
            *argErr = arguments.hostIndex(*argErr);
        }
        return hr;
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace ostrel::com
