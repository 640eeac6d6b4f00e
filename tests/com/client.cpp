// A compiled COM client of the registered server: creation by class
// identifier, calls through IDispatch, the type library against the member
// tables, error records, VARIANT round trips, and the unload answer once
// everything is released. Prints each failure; the exit code counts them.
#include <windows.h>
#include <oaidl.h>
#include <ole2.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tylhart/automation/Registry.hpp"

using namespace tylhart;

namespace {

int failures = 0, passes = 0;

void check(bool ok, const std::string& what) {
    if (ok) ++passes;
    else ++failures, std::printf("FAILED: %s\n", what.c_str());
}

GUID guidOf(const char16_t* text) {
    GUID g;
    CLSIDFromString(reinterpret_cast<LPCOLESTR>(text), &g);
    return g;
}

std::string narrow(const std::wstring& w) { return toUtf8(Text(w.begin(), w.end())); }
std::string narrow(BSTR b) { return b ? narrow(std::wstring(b, SysStringLen(b))) : std::string(); }

struct Var : VARIANT {
    Var() { VariantInit(this); }
    explicit Var(long v) : Var() { vt = VT_I4; lVal = v; }
    explicit Var(const wchar_t* s) : Var() { vt = VT_BSTR; bstrVal = SysAllocString(s); }
    explicit Var(IDispatch* d) : Var() { vt = VT_DISPATCH; pdispVal = d; if (d) d->AddRef(); }
    Var(const Var& o) : Var() { VariantCopy(this, const_cast<Var*>(&o)); }
    ~Var() { VariantClear(this); }
};

struct Outcome {
    HRESULT hr = S_OK;
    Var result;
    EXCEPINFO error{};
    ~Outcome() {
        SysFreeString(error.bstrSource);
        SysFreeString(error.bstrDescription);
    }
    std::string record() const {
        char number[16];
        std::snprintf(number, sizeof number, "%08lX", static_cast<unsigned long>(error.scode));
        return std::string(number) + "|" + narrow(error.bstrSource) + "|" + narrow(error.bstrDescription);
    }
};

// A late-bound call; arguments in the caller's order.
Outcome call(IDispatch* d, const wchar_t* name, WORD flags, std::vector<VARIANT> args = {}) {
    Outcome out;
    DISPID id = DISPID_UNKNOWN;
    LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
    out.hr = d->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
    if (FAILED(out.hr)) return out;
    std::vector<VARIANT> reversed(args.rbegin(), args.rend());
    DISPID put = DISPID_PROPERTYPUT;
    DISPPARAMS params{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
    if (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) {
        params.rgdispidNamedArgs = &put;
        params.cNamedArgs = 1;
    }
    out.hr = d->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, &out.result, &out.error, nullptr);
    return out;
}

std::string text(const Outcome& o) {
    return o.hr == S_OK && o.result.vt == VT_BSTR ? narrow(o.result.bstrVal) : "<" + o.record() + ">";
}

// The thread's error information as "Source|Description".
std::string errorInfo() {
    IErrorInfo* info = nullptr;
    BSTR source = nullptr, description = nullptr;
    if (GetErrorInfo(0, &info) == S_OK && info) {
        info->GetSource(&source);
        info->GetDescription(&description);
        info->Release();
    }
    const std::string out = narrow(source) + "|" + narrow(description);
    SysFreeString(source);
    SysFreeString(description);
    return out;
}

IDispatch* create(const automation::ClassEntry& c) {
    IDispatch* d = nullptr;
    const HRESULT hr = CoCreateInstance(guidOf(c.clsid), nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                        reinterpret_cast<void**>(&d));
    check(hr == S_OK && d, "CoCreateInstance " + toUtf8(c.name));
    return d;
}
IDispatch* create(const char16_t* className) { return create(*automation::findClass(className)); }

// The vtable view of a dual interface, from its dispatch view.
ITypeInfo* vtableView(ITypeInfo* dispatchView) {
    HREFTYPE ref = 0;
    ITypeInfo* view = nullptr;
    if (dispatchView->GetRefTypeOfImplType(static_cast<UINT>(-1), &ref) == S_OK) dispatchView->GetRefTypeInfo(ref, &view);
    return view;
}

// Each function a type describes, in its order.
template <class F>
void eachFunction(ITypeInfo* info, F&& f) {
    TYPEATTR* attr = nullptr;
    if (!info || info->GetTypeAttr(&attr) != S_OK) return;
    for (UINT i = 0; i < attr->cFuncs; ++i) {
        FUNCDESC* d = nullptr;
        if (info->GetFuncDesc(i, &d) != S_OK) continue;
        f(d);
        info->ReleaseFuncDesc(d);
    }
    info->ReleaseTypeAttr(attr);
}

// The vtable: IDispatch's seven slots, then one per accessor in table order
// (each member's get or else method, its let, its set), every one returning
// HRESULT, with a get's or method's result as a final [out, retval].
void vtableMatches(ITypeInfo* dispatchView, const automation::ClassEntry& c) {
    const std::string cls = toUtf8(c.name);
    ITypeInfo* view = vtableView(dispatchView);
    TYPEATTR* attr = nullptr;
    check(view && view->GetTypeAttr(&attr) == S_OK && attr->typekind == TKIND_INTERFACE &&
              (attr->wTypeFlags & TYPEFLAG_FDUAL) && (attr->wTypeFlags & TYPEFLAG_FOLEAUTOMATION),
          cls + ": dual interface's vtable view");
    if (!attr) return;
    std::string want, got;
    UINT slot = 0;
    for (const MemberInfo& m : c.classInfo().members())
        for (const INVOKEKIND kind : {m.get ? INVOKE_PROPERTYGET : m.method ? INVOKE_FUNC : INVOKEKIND(0),
                                      m.let ? INVOKE_PROPERTYPUT : INVOKEKIND(0), m.set ? INVOKE_PROPERTYPUTREF : INVOKEKIND(0)}) {
            if (!kind) continue;
            const bool put = kind & (INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF), retval = !put && !m.type.empty();
            want += std::to_string((7 + slot++) * 8) + ":" + std::to_string(m.id) + "/" + std::to_string(kind) + "/" +
                    std::to_string(m.params.size() + put + retval) + (retval ? "r " : " ");
        }
    eachFunction(view, [&](FUNCDESC* f) {
        const bool retval = f->cParams && (f->lprgelemdescParam[f->cParams - 1].paramdesc.wParamFlags & PARAMFLAG_FRETVAL);
        const bool virt = f->funckind == FUNC_PUREVIRTUAL && f->elemdescFunc.tdesc.vt == VT_HRESULT;
        got += std::to_string(f->oVft) + ":" + std::to_string(f->memid) + "/" + std::to_string(f->invkind) + "/" +
               std::to_string(f->cParams) + (retval ? "r" : "") + (virt ? " " : "? ");
    });
    check(got == want && attr->cbSizeVft == (7 + slot) * 8, cls + ": vtable " + got + " described as " + want);
    view->ReleaseTypeAttr(attr);
    view->Release();
}

// The interface's type information lists every accessor of every member
// of the table: identifier, name, parameter names, and for each parameter
// whether it is optional, by reference, and its default as text.
void typeInfoMatches(IDispatch* d, const automation::ClassEntry& c) {
    const std::string cls = toUtf8(c.name);
    ITypeInfo* info = nullptr;
    check(d->GetTypeInfo(0, 0, &info) == S_OK && info, cls + ": GetTypeInfo");
    if (!info) return;
    TYPEATTR* attr = nullptr;
    info->GetTypeAttr(&attr);
    check(IsEqualGUID(attr->guid, guidOf(c.iid)) && attr->typekind == TKIND_DISPATCH && (attr->wTypeFlags & TYPEFLAG_FDUAL),
          cls + ": interface identity");
    info->ReleaseTypeAttr(attr);
    vtableMatches(info, c);
    std::size_t expected = 0, own = 0;
    for (const MemberInfo& m : c.classInfo().members()) expected += (m.get || m.method) + !!m.let + !!m.set;
    eachFunction(info, [&](FUNCDESC* f) {
        const auto group = static_cast<unsigned long>(f->memid) & 0xFFFF0000u;
        const MemberInfo* m = c.classInfo().find(static_cast<DispId>(f->memid));
        if (group != 0x60000000u && group != 0x60010000u) {  // not one of the seven IDispatch inherits
            ++own;
            BSTR names[16] = {};
            UINT count = 0;
            info->GetNames(f->memid, names, 16, &count);
            std::string got = count ? narrow(names[0]) : "", want = m ? toUtf8(m->name) : "?";
            for (std::size_t k = 0; m && k < m->params.size() && k < static_cast<std::size_t>(f->cParams); ++k) {
                const ParamInfo& p = m->params[k];
                const PARAMDESC& pd = f->lprgelemdescParam[k].paramdesc;
                want += "," + toUtf8(p.name) + (p.optional ? " opt" : "") + (p.byRef ? " ref" : "");
                got += "," + (k + 1 < count ? narrow(names[k + 1]) : "?") + (pd.wParamFlags & PARAMFLAG_FOPT ? " opt" : "") +
                       (pd.wParamFlags & PARAMFLAG_FOUT ? " ref" : "");
                if (!p.defaultValue.isMissing() && !p.defaultValue.isObject()) want += "=" + toUtf8(p.defaultValue.toText());
                if (pd.wParamFlags & PARAMFLAG_FHASDEFAULT) {
                    Var text;
                    VariantChangeTypeEx(&text, &pd.pparamdescex->varDefaultValue, 0x409, VARIANT_ALPHABOOL, VT_BSTR);
                    got += "=" + narrow(text.bstrVal);
                }
            }
            for (UINT k = 0; k < count; ++k) SysFreeString(names[k]);
            check(got == want, cls + ": " + got + " described as " + want);
        }
    });
    check(own == expected, cls + ": function count");
    info->Release();
}

void everyClass() {
    for (const automation::ClassEntry& c : automation::classes()) {
        IDispatch* d = create(c);
        if (!d) continue;
        IUnknown *a = nullptr, *b = nullptr;
        IDispatch* own = nullptr;
        check(d->QueryInterface(guidOf(c.iid), reinterpret_cast<void**>(&own)) == S_OK, toUtf8(c.name) + ": own interface");
        d->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&a));
        own->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&b));
        check(a && a == b, toUtf8(c.name) + ": one identity");
        typeInfoMatches(d, c);
        for (IUnknown* u : {static_cast<IUnknown*>(own), a, b, static_cast<IUnknown*>(d)})
            if (u) u->Release();
    }
}

void library() {
    ITypeLib* lib = nullptr;
    check(LoadRegTypeLib(guidOf(automation::typeLibrary().guid), 1, 0, 0x409, &lib) == S_OK, "registered type library");
    if (!lib) return;
    int kinds[TKIND_MAX] = {}, dualAliases = 0;
    for (UINT i = 0; i < lib->GetTypeInfoCount(); ++i) {
        TYPEKIND k;
        lib->GetTypeInfoType(i, &k);
        ++kinds[k];
        ITypeInfo *alias = nullptr, *target = nullptr;
        TYPEATTR *a = nullptr, *t = nullptr;
        if (k == TKIND_ALIAS && lib->GetTypeInfo(i, &alias) == S_OK && alias->GetTypeAttr(&a) == S_OK &&
            a->tdescAlias.vt == VT_USERDEFINED && alias->GetRefTypeInfo(a->tdescAlias.hreftype, &target) == S_OK &&
            target->GetTypeAttr(&t) == S_OK)
            dualAliases += (t->wTypeFlags & TYPEFLAG_FDUAL) != 0;
        if (t) target->ReleaseTypeAttr(t);
        if (target) target->Release();
        if (a) alias->ReleaseTypeAttr(a);
        if (alias) alias->Release();
    }
    check(dualAliases == 3, "the three aliases name dual interfaces");
    check(kinds[TKIND_COCLASS] == 48 && kinds[TKIND_DISPATCH] == 48 && kinds[TKIND_ENUM] == 14 && kinds[TKIND_ALIAS] == 3,
          "48 coclasses, 48 interfaces, 14 enumerations, 3 aliases");
    lib->Release();
}

// Calls, by-reference write-back and error records as scripts see them are
// the VBScript suite's; here what a script cannot reach.
void callsAndErrors() {
    IDispatch* def = create(u"CDefinition");
    call(def, L"initialize", DISPATCH_METHOD, {Var(L"pressure"), Var(0L)});
    Outcome refused = call(def, L"Initialize", DISPATCH_METHOD, {Var(L"x"), Var(2L)});
    const std::string record = "80070057|CDefinition.Initialize|Once a Kind is initialized, it must not be changed anymore!";
    check(refused.hr == DISP_E_EXCEPTION && refused.record() == record, "EXCEPINFO " + refused.record());
    check(errorInfo() == record.substr(9), "IErrorInfo");
    ISupportErrorInfo* support = nullptr;
    def->QueryInterface(IID_ISupportErrorInfo, reinterpret_cast<void**>(&support));
    check(support && support->InterfaceSupportsErrorInfo(guidOf(u"{729158C8-9D51-4DB2-96AA-0E9801C2A6FB}")) == S_OK,
          "ISupportErrorInfo");
    if (support) support->Release();

    // Every kind travels into a value list and back out unchanged; objects
    // come back as the same identity.
    IDispatch* values = create(u"CValueList");
    std::vector<Var> kinds(12);
    kinds[0].vt = VT_EMPTY;
    kinds[1].vt = VT_NULL;
    kinds[2].vt = VT_I2, kinds[2].iVal = -7;
    kinds[3].vt = VT_I4, kinds[3].lVal = 1 << 30;
    kinds[4].vt = VT_R4, kinds[4].fltVal = 0.1f;
    kinds[5].vt = VT_R8, kinds[5].dblVal = 1e300;
    kinds[6].vt = VT_CY, kinds[6].cyVal.int64 = -15000;
    kinds[7].vt = VT_DATE, kinds[7].date = 36526.5;
    kinds[8].vt = VT_BSTR, kinds[8].bstrVal = SysAllocStringLen(L"a\0b", 3);
    kinds[9].vt = VT_BOOL, kinds[9].boolVal = VARIANT_TRUE;
    kinds[10].vt = VT_UI1, kinds[10].bVal = 255;
    kinds[11].vt = VT_ARRAY | VT_UI1, kinds[11].parray = SafeArrayCreateVector(VT_UI1, 0, 2);
    static_cast<BYTE*>(kinds[11].parray->pvData)[1] = 0xFF;
    kinds.push_back(Var(def));
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        check(call(values, L"Add", DISPATCH_METHOD, {kinds[i]}).hr == S_OK, "Add kind " + std::to_string(kinds[i].vt));
        Outcome back = call(values, L"Item", DISPATCH_METHOD | DISPATCH_PROPERTYGET, {Var(static_cast<long>(i + 1))});
        bool same = back.hr == S_OK && back.result.vt == kinds[i].vt;
        if (same && kinds[i].vt == VT_DISPATCH) same = back.result.pdispVal == def;
        else if (same && kinds[i].vt == (VT_ARRAY | VT_UI1))
            same = back.result.parray->rgsabound[0].cElements == 2 && static_cast<BYTE*>(back.result.parray->pvData)[1] == 0xFF;
        else if (same && kinds[i].vt == VT_BSTR) same = SysStringLen(back.result.bstrVal) == 3 && back.result.bstrVal[2] == L'b';
        else if (same) same = VarCmp(&back.result, &kinds[i], 0x409, 0) == VARCMP_EQ || kinds[i].vt == VT_NULL;
        check(same, "round trip of kind " + std::to_string(kinds[i].vt));
    }
    // Kinds the library does not hold and objects not of this library.
    ITypeLib* foreign = nullptr;
    LoadRegTypeLib(guidOf(automation::typeLibrary().guid), 1, 0, 0x409, &foreign);
    Var i8, unknown;
    i8.vt = VT_I8, i8.llVal = 1;
    unknown.vt = VT_UNKNOWN, unknown.punkVal = foreign;
    for (const Var& bad : {i8, unknown})
        check(call(values, L"Add", DISPATCH_METHOD, {bad}).record() == "800A000D|TylHartTypes|Type mismatch",
              "type mismatch for kind " + std::to_string(bad.vt));

    // NewEnum hands out IEnumVARIANT over the elements.
    Outcome e = call(values, L"NewEnum", DISPATCH_METHOD | DISPATCH_PROPERTYGET);
    IEnumVARIANT* items = nullptr;
    if (e.hr == S_OK && e.result.vt == VT_UNKNOWN)
        e.result.punkVal->QueryInterface(IID_IEnumVARIANT, reinterpret_cast<void**>(&items));
    ULONG fetched = 0;
    Var first[3];
    check(items && items->Next(3, first, &fetched) == S_OK && fetched == 3 && first[2].vt == VT_I2, "IEnumVARIANT");
    // A clone goes on from the same place, independently.
    IEnumVARIANT* clone = nullptr;
    Var fourth[2];
    check(items && items->Clone(&clone) == S_OK && clone->Next(1, &fourth[0], nullptr) == S_OK &&
              items->Next(1, &fourth[1], nullptr) == S_OK && fourth[0].vt == VT_I4 && fourth[1].vt == VT_I4 &&
              fourth[0].lVal == 1 << 30 && fourth[1].lVal == 1 << 30,
          "IEnumVARIANT::Clone");
    for (IEnumVARIANT* e : {items, clone})
        if (e) e->Release();

    // The default member answers dispatch identifier 0, for a put as well.
    IDispatch* chars = create(u"CCharArray");
    call(chars, L"Size", DISPATCH_PROPERTYPUT, {Var(4L)});
    Var value(L"wxyz");
    DISPID named = DISPID_PROPERTYPUT;
    DISPPARAMS put{&value, &named, 1, 1};
    check(chars->Invoke(DISPID_VALUE, IID_NULL, 0, DISPATCH_PROPERTYPUT, &put, nullptr, nullptr, nullptr) == S_OK &&
              text(call(chars, L"ToString", DISPATCH_METHOD, {Var(2L)})) == "CharArray{Text:wxyz, Size:4}",
          "default member let");

    for (IDispatch* d : {chars, values, def}) d->Release();
}

// The vtable view of an object's dual interface.
ITypeInfo* vtableOf(IDispatch* d) {
    ITypeInfo* info = nullptr;
    if (d->GetTypeInfo(0, 0, &info) != S_OK) return nullptr;
    ITypeInfo* view = vtableView(info);
    info->Release();
    return view;
}

MEMBERID idOf(ITypeInfo* info, const wchar_t* name) {
    MEMBERID id = MEMBERID_NIL;
    LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
    if (info) info->GetIDsOfNames(names, 1, &id);
    return id;
}

// A call through the vtable slot the type library gives the accessor, typed
// as a compiled client declares it.
template <class... A>
HRESULT vcall(IDispatch* d, const wchar_t* name, INVOKEKIND kind, A... args) {
    ITypeInfo* view = vtableOf(d);
    const MEMBERID id = idOf(view, name);
    UINT slot = 0;
    eachFunction(view, [&](FUNCDESC* f) {
        if (f->memid == id && f->invkind == kind) slot = f->oVft / sizeof(void*);
    });
    if (view) view->Release();
    if (slot < 7) return E_NOTIMPL;
    using Slot = HRESULT(STDMETHODCALLTYPE*)(IDispatch*, A...);
    return reinterpret_cast<Slot>((*reinterpret_cast<void***>(d))[slot])(d, args...);
}

// A put through the vtable, then the get into `back`.
template <class T>
bool vput(IDispatch* d, const wchar_t* name, T value, T& back, INVOKEKIND put = INVOKE_PROPERTYPUT) {
    return vcall(d, name, put, value) == S_OK && vcall(d, name, INVOKE_PROPERTYGET, &back) == S_OK;
}

// Calls through the vtable of every kind of signature, checked against the
// same members reached through Invoke.
void vtableCalls() {
    IDispatch* def = create(u"CDefinition");
    IDispatch* var = create(u"CVariable");
    IDispatch* type = create(u"CType");
    BSTR name = SysAllocString(L"level");
    Var shown;
    check(vcall(def, L"Initialize", INVOKE_FUNC, name, 0L) == S_OK &&
              vcall(def, L"ToString", INVOKE_FUNC, short{2}, static_cast<VARIANT*>(&shown)) == S_OK &&
              shown.vt == VT_BSTR && narrow(shown.bstrVal) == "Definition{Name:level, Kind:0}",
          "vtable method with a text argument");
    check(vcall(def, L"Initialize", INVOKE_FUNC, name, 2L) == E_INVALIDARG &&
              errorInfo() == "CDefinition.Initialize|Once a Kind is initialized, it must not be changed anymore!",
          "vtable call that raises: HRESULT and IErrorInfo");

    // Each kind of value put and read back through the vtable, then read
    // through Invoke; an object comes back as the same identity.
    long code = 0;
    short timeout = 0;
    DATE stamp = 0;
    BSTR help = nullptr;
    IDispatch* stored = nullptr;
    Var given(L"12.5"), back;
    const auto get = [&](const wchar_t* member) { return call(var, member, DISPATCH_PROPERTYGET); };
    check(vput(var, L"ErrorCode", 42L, code) && code == 42 && get(L"ErrorCode").result.lVal == 42, "vtable Long let and get");
    check(vput(var, L"ReadTimeout", short{-7}, timeout) && timeout == -7 && get(L"ReadTimeout").result.iVal == -7,
          "vtable Integer let and get");
    check(vput(var, L"LastSetTime", DATE{36526.75}, stamp) && stamp == 36526.75 && get(L"LastSetTime").result.date == 36526.75,
          "vtable Date let (in XMM1) and get");
    check(vput(var, L"Help", name, help) && narrow(help) == "level" && text(get(L"Help")) == "level", "vtable String let and get");
    check(vput<VARIANT>(var, L"DefaultValue", given, back) && back.vt == VT_BSTR && narrow(back.bstrVal) == "12.5",
          "vtable Variant let (a pointer to a copy) and get");
    check(vput(var, L"TypeInfo", type, stored, INVOKE_PROPERTYPUTREF) && stored == type &&
              get(L"TypeInfo").result.pdispVal == type,
          "vtable object set and get");
    check(vcall(var, L"TypeInfo", INVOKE_PROPERTYPUTREF, def) == static_cast<HRESULT>(0x800A000D) &&
              errorInfo() == "TylHartTypes|Type mismatch" && get(L"TypeInfo").result.pdispVal == type,
          "vtable set refused: the object keeps its value");
    check(vcall(var, L"ErrorCode", INVOKE_PROPERTYGET, static_cast<long*>(nullptr)) == E_POINTER, "vtable get without a result place");
    // By reference: the member's final value reaches the caller's variable.
    call(type, L"Kind", DISPATCH_PROPERTYPUT, {Var(7L)});
    call(type, L"Size", DISPATCH_PROPERTYPUT, {Var(8L)});
    Var testValue(L"abcdefgh");
    long size = -1;
    VARIANT_BOOL legal = VARIANT_FALSE;
    check(vcall(var, L"IsString", INVOKE_FUNC, static_cast<VARIANT*>(&testValue), &size, &legal) == S_OK &&
              legal == VARIANT_TRUE && size == 8,
          "vtable by-reference write-back");

    // The runtime's own call through the vtable: a left-out optional
    // parameter gets its default, a raise comes back as the record.
    ITypeInfo* view = vtableOf(def);
    DISPPARAMS none{};
    Var viaDefault;
    EXCEPINFO error{};
    check(view && view->Invoke(def, idOf(view, L"ToString"), DISPATCH_METHOD, &none, &viaDefault, &error, nullptr) == S_OK &&
              viaDefault.vt == VT_BSTR && narrow(viaDefault.bstrVal) == text(call(def, L"ToString", DISPATCH_METHOD, {Var(1L)})),
          "ITypeInfo::Invoke with the default of an optional parameter");
    Var arguments[] = {Var(2L), Var(L"other")};
    DISPPARAMS twoArgs{arguments, nullptr, 2, 0};
    check(view && view->Invoke(def, idOf(view, L"Initialize"), DISPATCH_METHOD, &twoArgs, nullptr, &error, nullptr) == DISP_E_EXCEPTION &&
              error.scode == E_INVALIDARG && narrow(error.bstrSource) == "CDefinition.Initialize",
          "ITypeInfo::Invoke of a raising member");
    SysFreeString(error.bstrSource);
    SysFreeString(error.bstrDescription);
    if (view) view->Release();

    SysFreeString(name);
    SysFreeString(help);
    for (IDispatch* d : {stored, type, var, def})
        if (d) d->Release();
}

// Ok only when no object, factory or lock of the server is left.
void unloading() {
    HMODULE dll = GetModuleHandleW(L"TylHartTypes.dll");
    auto canUnload = reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(reinterpret_cast<void*>(GetProcAddress(dll, "DllCanUnloadNow")));
    check(canUnload != nullptr, "DllCanUnloadNow exported");
    if (!canUnload) return;
    check(canUnload() == S_OK, "DllCanUnloadNow after releasing everything");
    IClassFactory* factory = nullptr;
    CoGetClassObject(guidOf(automation::classes()[0].clsid), CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                     reinterpret_cast<void**>(&factory));
    check(factory && canUnload() == S_FALSE, "a live factory keeps the server");
    factory->LockServer(TRUE);
    factory->Release();
    check(canUnload() == S_FALSE, "a lock keeps the server");
    CoGetClassObject(guidOf(automation::classes()[0].clsid), CLSCTX_INPROC_SERVER, nullptr, IID_IClassFactory,
                     reinterpret_cast<void**>(&factory));
    factory->LockServer(FALSE);
    factory->Release();
    check(canUnload() == S_OK, "unlocked and released");
}

}  // namespace

int main() {
    if (FAILED(CoInitialize(nullptr))) return 1;
    everyClass();
    library();
    callsAndErrors();
    vtableCalls();
    unloading();
    CoUninitialize();
    std::printf("client: %d passed, %d failed\n", passes, failures);
    return failures == 0 ? 0 : 1;
}
