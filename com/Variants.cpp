#include <cstring>
#include <new>

#include "Com.hpp"

namespace tylhart::com {
namespace {

[[noreturn]] void mismatch() { errors::raise(errors::Runtime::TypeMismatch); }

Text textOf(BSTR b) {
    return b ? Text(reinterpret_cast<const char16_t*>(b), SysStringLen(b)) : Text();
}

BSTR bstrOf(const Text& t) {
    BSTR b = SysAllocStringLen(wide(t), static_cast<UINT>(t.size()));
    if (!b) throw std::bad_alloc();
    return b;
}

ByteArray bytesOf(SAFEARRAY* sa) {
    if (!sa) return {};
    if (SafeArrayGetDim(sa) != 1) mismatch();
    LONG lower = 0, upper = -1;
    SafeArrayGetLBound(sa, 1, &lower);
    SafeArrayGetUBound(sa, 1, &upper);
    ByteArray out(static_cast<std::size_t>(upper - lower + 1));
    void* data = nullptr;
    if (out.empty()) return out;
    if (FAILED(SafeArrayAccessData(sa, &data))) mismatch();
    std::memcpy(out.data(), data, out.size());
    SafeArrayUnaccessData(sa);
    return out;
}

}  // namespace

GUID toGuid(const automation::Guid& g) noexcept {
    GUID out;
    std::memcpy(static_cast<void*>(&out), &g, sizeof out);
    return out;
}

GUID toGuid(const char16_t* registryForm) noexcept { return toGuid(*automation::parseGuid(registryForm)); }

automation::Guid fromGuid(const GUID& g) noexcept {
    automation::Guid out;
    std::memcpy(static_cast<void*>(&out), &g, sizeof out);
    return out;
}

std::wstring wstr(TextView t) { return std::wstring(t.begin(), t.end()); }

Variant fromVariant(const VARIANT& v) {
    // A reference to a Variant holds the value itself, never another
    // reference to a Variant, so one step is all there is to follow.
    if (v.vt == (VT_BYREF | VT_VARIANT)) {
        if (!v.pvarVal || v.pvarVal->vt == (VT_BYREF | VT_VARIANT)) mismatch();
        return fromVariant(*v.pvarVal);
    }
    const bool ref = (v.vt & VT_BYREF) != 0;
    if (ref && !v.byref) mismatch();
    switch (v.vt & ~VT_BYREF) {
        case VT_EMPTY: return ref ? mismatch(), Variant() : Variant();
        case VT_NULL: return ref ? mismatch(), Variant() : Variant(Null{});
        case VT_I2: return ref ? *v.piVal : v.iVal;
        case VT_I4: return static_cast<std::int32_t>(ref ? *v.plVal : v.lVal);
        case VT_R4: return ref ? *v.pfltVal : v.fltVal;
        case VT_R8: return ref ? *v.pdblVal : v.dblVal;
        case VT_CY: return Currency{ref ? v.pcyVal->int64 : v.cyVal.int64};
        case VT_DATE: return Date{ref ? *v.pdate : v.date};
        case VT_BSTR: return textOf(ref ? *v.pbstrVal : v.bstrVal);
        case VT_BOOL: return (ref ? *v.pboolVal : v.boolVal) != VARIANT_FALSE;
        case VT_UI1: return ref ? *v.pbVal : v.bVal;
        case VT_ERROR:
            // The one error value a client passes is the "left out" marker.
            if ((ref ? *v.pscode : v.scode) == DISP_E_PARAMNOTFOUND) return Missing{};
            mismatch();
        case VT_DISPATCH: return unwrap(ref ? *v.ppdispVal : v.pdispVal);
        case VT_UNKNOWN: return unwrap(ref ? *v.ppunkVal : v.punkVal);
        case VT_ARRAY | VT_UI1: return bytesOf(ref ? *v.pparray : v.parray);
        default: mismatch();
    }
}

void toVariant(const Variant& v, VARIANT& out) {
    switch (v.type()) {
        case VarType::Empty: out.vt = VT_EMPTY; return;
        case VarType::Null: out.vt = VT_NULL; return;
        case VarType::Integer: out.vt = VT_I2; out.iVal = *v.get<std::int16_t>(); return;
        case VarType::Long: out.vt = VT_I4; out.lVal = *v.get<std::int32_t>(); return;
        case VarType::Single: out.vt = VT_R4; out.fltVal = *v.get<float>(); return;
        case VarType::Double: out.vt = VT_R8; out.dblVal = *v.get<double>(); return;
        case VarType::Currency: out.vt = VT_CY; out.cyVal.int64 = v.get<Currency>()->scaled; return;
        case VarType::Date: out.vt = VT_DATE; out.date = v.get<Date>()->days; return;
        case VarType::String: out.bstrVal = bstrOf(*v.get<Text>()); out.vt = VT_BSTR; return;
        case VarType::Boolean: out.vt = VT_BOOL; out.boolVal = *v.get<bool>() ? VARIANT_TRUE : VARIANT_FALSE; return;
        case VarType::Byte: out.vt = VT_UI1; out.bVal = *v.get<std::uint8_t>(); return;
        case VarType::Error: out.vt = VT_ERROR; out.scode = DISP_E_PARAMNOTFOUND; return;
        case VarType::ByteArray: {
            const ByteArray& bytes = *v.get<ByteArray>();
            SAFEARRAY* sa = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
            if (!sa) throw std::bad_alloc();
            if (!bytes.empty()) std::memcpy(sa->pvData, bytes.data(), bytes.size());
            out.vt = VT_ARRAY | VT_UI1;
            out.parray = sa;
            return;
        }
        case VarType::Object: {
            const Ref<Object>& o = *v.get<Ref<Object>>();
            out.pdispVal = o ? dispatchFor(o) : nullptr;
            // NewEnum's enumerator is declared as IUnknown.
            out.vt = dynamic_cast<const Enumerator*>(o.get()) ? VT_UNKNOWN : VT_DISPATCH;
            return;
        }
    }
    mismatch();
}

void writeBack(const Variant& v, const VARIANT& byRef) {
    const VARTYPE target = byRef.vt & ~VT_BYREF;
    if (!(byRef.vt & VT_BYREF) || !byRef.byref) return;
    if (target == VT_VARIANT) {
        VARIANT fresh;
        VariantInit(&fresh);
        toVariant(v, fresh);
        VariantClear(byRef.pvarVal);
        *byRef.pvarVal = fresh;
        return;
    }
    // Converted first, so a value that does not fit leaves the caller's
    // variable as it was.
    VARIANT fresh;
    VariantInit(&fresh);
    const bool object = target == VT_DISPATCH || target == VT_UNKNOWN;
    if (object) toVariant(Variant(v.toObject()), fresh);
    else if (target == (VT_ARRAY | VT_UI1)) {
        if (v.type() != VarType::ByteArray) mismatch();
        toVariant(v, fresh);
    } else toVariant(v.changeType(static_cast<VarType>(target)), fresh);
    switch (target) {
        case VT_I2: *byRef.piVal = fresh.iVal; return;
        case VT_I4: *byRef.plVal = fresh.lVal; return;
        case VT_R4: *byRef.pfltVal = fresh.fltVal; return;
        case VT_R8: *byRef.pdblVal = fresh.dblVal; return;
        case VT_CY: *byRef.pcyVal = fresh.cyVal; return;
        case VT_DATE: *byRef.pdate = fresh.date; return;
        case VT_BOOL: *byRef.pboolVal = fresh.boolVal; return;
        case VT_UI1: *byRef.pbVal = fresh.bVal; return;
        case VT_BSTR: SysFreeString(*byRef.pbstrVal); *byRef.pbstrVal = fresh.bstrVal; return;
        case VT_DISPATCH:
        case VT_UNKNOWN:
            if (*byRef.ppunkVal) (*byRef.ppunkVal)->Release();
            *byRef.ppunkVal = fresh.punkVal;
            return;
        case VT_ARRAY | VT_UI1: SafeArrayDestroy(*byRef.pparray); *byRef.pparray = fresh.parray; return;
        default: VariantClear(&fresh); mismatch();
    }
}

}  // namespace tylhart::com
