// Writes the type library with the runtime's ICreateTypeLib2, from the same
// class table, member tables and enumeration listing that drive dispatch.
#include <deque>
#include <map>
#include <memory>
#include <vector>

#include "Com.hpp"

namespace tylhart::com {
namespace {

// The three interfaces that the library also declares under a second name.
constexpr const char16_t* aliases[][2] = {
    {u"CMenu", u"ICMenu"},
    {u"CType", u"ICType"},
    {u"CVariable", u"ICVariable"},
};

// stdole2, where IDispatch is described.
constexpr GUID LibidStdOle = {0x00020430, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

template <class T>
struct Releaser {
    void operator()(T* p) const {
        if (p) p->Release();
    }
};
template <class T>
using Com = std::unique_ptr<T, Releaser<T>>;

bool isEnumeration(const Text& name) {
    for (const EnumInfo& e : enumerations())
        if (name == e.name) return true;
    return false;
}

#define CHECK(call)                          \
    do {                                     \
        const HRESULT hr_ = (call);          \
        if (FAILED(hr_)) return hr_;         \
    } while (0)

struct Described {
    Com<ICreateTypeInfo> create;
    Com<ITypeInfo> info;
};

class Writer {
public:
    ~Writer() {
        for (PARAMDESCEX& d : defaults_) VariantClear(&d.varDefaultValue);
    }

    HRESULT write(const std::wstring& path) {
        const automation::TypeLibraryInfo& lib = automation::typeLibrary();
        ICreateTypeLib2* created = nullptr;
        CHECK(CreateTypeLib2(SYS_WIN64, path.c_str(), &created));
        lib_.reset(created);
        CHECK(lib_->SetName(const_cast<LPOLESTR>(wide(lib.name))));
        CHECK(lib_->SetGuid(toGuid(lib.guid)));
        CHECK(lib_->SetLcid(lib.locale));
        CHECK(lib_->SetVersion(1, 0));
        CHECK(lib_->SetDocString(const_cast<LPOLESTR>(L"TylHartTypes: HART Device Description object model")));

        ITypeLib* stdole = nullptr;
        CHECK(LoadRegTypeLib(LibidStdOle, 2, 0, 0, &stdole));
        Com<ITypeLib> stdoleLib(stdole);
        ITypeInfo* dispatch = nullptr;
        CHECK(stdoleLib->GetTypeInfoOfGuid(IID_IDispatch, &dispatch));
        dispatch_.reset(dispatch);

        for (const EnumInfo& e : enumerations()) CHECK(enumeration(e));
        // Every interface exists before any member refers to one.
        for (const automation::ClassEntry& c : automation::classes())
            if (c.built()) CHECK(declareInterface(c));
        for (const automation::ClassEntry& c : automation::classes())
            if (c.built()) CHECK(members(c));
        for (const automation::ClassEntry& c : automation::classes())
            if (c.built()) CHECK(coclass(c));
        for (const auto& [className, alias] : aliases) CHECK(declareAlias(className, alias));
        for (auto& [name, d] : types_) CHECK(d.create->LayOut());
        return lib_->SaveAllChanges();
    }

private:
    HRESULT newType(const Text& name, TYPEKIND kind, const GUID* guid, Described*& out) {
        ICreateTypeInfo* create = nullptr;
        CHECK(lib_->CreateTypeInfo(const_cast<LPOLESTR>(wide(name)), kind, &create));
        Described& d = types_[name];
        d.create.reset(create);
        ITypeInfo* info = nullptr;
        CHECK(create->QueryInterface(IID_ITypeInfo, reinterpret_cast<void**>(&info)));
        d.info.reset(info);
        if (guid) CHECK(create->SetGuid(*guid));
        out = &d;
        return S_OK;
    }

    HRESULT enumeration(const EnumInfo& e) {
        Described* d = nullptr;
        const GUID guid = toGuid(e.guid);
        CHECK(newType(e.name, TKIND_ENUM, &guid, d));
        UINT index = 0;
        for (const EnumMember& m : e.members) {
            VARIANT value;
            VariantInit(&value);
            value.vt = VT_I4;
            value.lVal = m.value;
            VARDESC var{};
            var.memid = static_cast<MEMBERID>(0x40000000 + index);
            var.varkind = VAR_CONST;
            var.lpvarValue = &value;
            var.elemdescVar.tdesc.vt = VT_I4;
            CHECK(d->create->AddVarDesc(index, &var));
            CHECK(d->create->SetVarName(index, const_cast<LPOLESTR>(wide(m.name))));
            ++index;
        }
        return S_OK;
    }

    // Dual: a vtable of IDispatch's seven functions and one per accessor,
    // and the dispatch view the runtime derives from it.
    HRESULT declareInterface(const automation::ClassEntry& c) {
        if (accessorsOf(c.classInfo()).size() > SlotCapacity) return TYPE_E_SIZETOOBIG;
        Described* d = nullptr;
        const GUID iid = toGuid(c.iid);
        CHECK(newType(c.interfaceName(), TKIND_INTERFACE, &iid, d));
        HREFTYPE base = 0;
        CHECK(d->create->AddRefTypeInfo(dispatch_.get(), &base));
        CHECK(d->create->AddImplType(0, base));
        return d->create->SetTypeFlags(TYPEFLAG_FHIDDEN | TYPEFLAG_FDUAL | TYPEFLAG_FOLEAUTOMATION |
                                       TYPEFLAG_FDISPATCHABLE);
    }

    HRESULT coclass(const automation::ClassEntry& c) {
        Described* d = nullptr;
        const GUID clsid = toGuid(c.clsid);
        CHECK(newType(c.name, TKIND_COCLASS, &clsid, d));
        CHECK(d->create->SetTypeFlags(TYPEFLAG_FCANCREATE));
        HREFTYPE href = 0;
        CHECK(d->create->AddRefTypeInfo(types_.at(c.interfaceName()).info.get(), &href));
        CHECK(d->create->AddImplType(0, href));
        return d->create->SetImplTypeFlags(0, IMPLTYPEFLAG_FDEFAULT);
    }

    HRESULT declareAlias(const char16_t* className, const char16_t* alias) {
        const automation::ClassEntry* c = automation::findClass(className);
        if (!c || !c->built()) return S_OK;
        Described* d = nullptr;
        CHECK(newType(alias, TKIND_ALIAS, nullptr, d));
        TYPEDESC target{};
        target.vt = VT_USERDEFINED;
        CHECK(d->create->AddRefTypeInfo(types_.at(c->interfaceName()).info.get(), &target.hreftype));
        return d->create->SetTypeDescAlias(&target);
    }

    // The type description of a member table's type name. Classes of the
    // table are their interfaces, enumerations their own types.
    HRESULT typeOf(ICreateTypeInfo* owner, const Text& name, TYPEDESC& out) {
        out = TYPEDESC{};
        out.vt = vartypeOf(name);
        if (out.vt == (VT_ARRAY | VT_UI1)) {
            out.vt = VT_SAFEARRAY;
            out.lptdesc = &nested_.emplace_back(TYPEDESC{{nullptr}, VT_UI1});
            return S_OK;
        }
        const automation::ClassEntry* c = automation::findClass(name);
        const bool isClass = out.vt == VT_DISPATCH && c && c->built();
        if (!isClass && !isEnumeration(name)) return S_OK;
        TYPEDESC user{};
        user.vt = VT_USERDEFINED;
        CHECK(owner->AddRefTypeInfo(types_.at(isClass ? c->interfaceName() : name).info.get(), &user.hreftype));
        if (!isClass) {
            out = user;
            return S_OK;
        }
        out.vt = VT_PTR;
        out.lptdesc = &nested_.emplace_back(user);
        return S_OK;
    }

    // A parameter: in (and out when by reference), optional, with its
    // default converted to the parameter's own type.
    HRESULT parameter(ICreateTypeInfo* owner, const ParamInfo& p, ELEMDESC& out) {
        out = ELEMDESC{};
        TYPEDESC type{};
        CHECK(typeOf(owner, p.type, type));
        out.paramdesc.wParamFlags = PARAMFLAG_FIN;
        if (p.byRef) {
            out.tdesc.vt = VT_PTR;
            out.tdesc.lptdesc = &nested_.emplace_back(type);
            out.paramdesc.wParamFlags |= PARAMFLAG_FOUT;
        } else {
            out.tdesc = type;
        }
        if (p.optional || !p.defaultValue.isMissing()) out.paramdesc.wParamFlags |= PARAMFLAG_FOPT;
        if (p.defaultValue.isMissing() || p.defaultValue.isObject()) return S_OK;
        PARAMDESCEX& ex = defaults_.emplace_back();
        ex.cBytes = sizeof(PARAMDESCEX);
        VariantInit(&ex.varDefaultValue);
        try {
            Variant value = p.defaultValue;
            if (type.vt != VT_VARIANT && type.vt != VT_USERDEFINED && type.vt != VT_PTR && type.vt != VT_SAFEARRAY)
                value = value.changeType(static_cast<VarType>(type.vt));
            else if (type.vt == VT_USERDEFINED)
                value = value.changeType(VarType::Long);
            toVariant(value, ex.varDefaultValue);
        } catch (...) {
            defaults_.pop_back();
            return S_OK;  // a default the type cannot hold is left to the member
        }
        out.paramdesc.wParamFlags |= PARAMFLAG_FHASDEFAULT;
        out.paramdesc.pparamdescex = &ex;
        return S_OK;
    }

    // One vtable function: the member's parameters, the assigned value of a
    // put, and the result of a get or method as a final [out, retval].
    HRESULT function(Described& d, const Accessor& a, UINT index) {
        const MemberInfo& m = *a.member;
        const bool put = a.kind == Access::Let || a.kind == Access::Set;
        const bool retval = !put && !m.type.empty();
        std::vector<ELEMDESC> params(m.params.size() + (put || retval ? 1 : 0));
        for (std::size_t i = 0; i < m.params.size(); ++i) CHECK(parameter(d.create.get(), m.params[i], params[i]));
        if (put || retval) {
            ELEMDESC& last = params.back();
            CHECK(typeOf(d.create.get(), m.type, last.tdesc));
            last.paramdesc.wParamFlags = PARAMFLAG_FIN;
            if (retval) {
                last.tdesc = TYPEDESC{{&nested_.emplace_back(last.tdesc)}, VT_PTR};
                last.paramdesc.wParamFlags = PARAMFLAG_FOUT | PARAMFLAG_FRETVAL;
            }
        }
        FUNCDESC f{};
        f.memid = m.id;
        f.funckind = FUNC_PUREVIRTUAL;
        f.invkind = static_cast<INVOKEKIND>(a.kind);  // valued as the invocation kinds
        f.callconv = CC_STDCALL;
        f.oVft = static_cast<SHORT>((7 + index) * sizeof(void*));
        f.cParams = static_cast<SHORT>(params.size());
        f.lprgelemdescParam = params.empty() ? nullptr : params.data();
        f.elemdescFunc.tdesc.vt = VT_HRESULT;
        if (m.hidden) f.wFuncFlags |= FUNCFLAG_FHIDDEN;
        if (m.id == DispIdNewEnum) f.wFuncFlags |= FUNCFLAG_FRESTRICTED;
        CHECK(d.create->AddFuncDesc(index, &f));
        // The assigned value of a put and the result have no names of their own.
        std::vector<LPOLESTR> names{const_cast<LPOLESTR>(wide(m.name))};
        for (const ParamInfo& p : m.params) names.push_back(const_cast<LPOLESTR>(wide(p.name)));
        return d.create->SetFuncAndParamNames(index, names.data(), static_cast<UINT>(names.size()));
    }

    HRESULT members(const automation::ClassEntry& c) {
        Described& d = types_.at(c.interfaceName());
        UINT index = 0;
        for (const Accessor& a : accessorsOf(c.classInfo())) CHECK(function(d, a, index++));
        return S_OK;
    }

    Com<ICreateTypeLib2> lib_;
    Com<ITypeInfo> dispatch_;
    std::map<Text, Described> types_;
    std::deque<TYPEDESC> nested_;
    std::deque<PARAMDESCEX> defaults_;
};

}  // namespace

std::vector<Accessor> accessorsOf(const ClassInfo& c) {
    std::vector<Accessor> out;
    for (const MemberInfo& m : c.members()) {
        if (m.get) out.push_back({&m, Access::Get});
        else if (m.method) out.push_back({&m, Access::Method});
        if (m.let) out.push_back({&m, Access::Let});
        if (m.set) out.push_back({&m, Access::Set});
    }
    return out;
}

VARTYPE vartypeOf(const Text& name) {
    static const std::map<Text, VARTYPE> scalars = {
        {u"Integer", VT_I2}, {u"Long", VT_I4},     {u"Single", VT_R4},    {u"Double", VT_R8},
        {u"Currency", VT_CY}, {u"Date", VT_DATE},  {u"String", VT_BSTR},  {u"Boolean", VT_BOOL},
        {u"Byte", VT_UI1},   {u"Variant", VT_VARIANT}, {u"Object", VT_DISPATCH}, {u"IUnknown", VT_UNKNOWN},
        {u"Byte()", VT_ARRAY | VT_UI1}, {u"", VT_VOID},
    };
    if (auto it = scalars.find(name); it != scalars.end()) return it->second;
    return isEnumeration(name) ? VT_I4 : VT_DISPATCH;
}

HRESULT writeTypeLibrary(const std::wstring& path) {
    Writer writer;
    const HRESULT hr = writer.write(path);
    return hr;
}

}  // namespace tylhart::com
