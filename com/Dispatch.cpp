// The COM face of every library object: its class's dual interface (the
// IDispatch entries and one vtable slot per accessor, both over the member
// table), ISupportErrorInfo, and IEnumVARIANT for NewEnum's enumerator.
#include <algorithm>
#include <atomic>
#include <cstring>
#include <map>
#include <mutex>
#include <new>
#include <unordered_map>
#include <vector>

#include "Com.hpp"

namespace tylhart::com {
namespace {

class Wrapper;

// One wrapper per library object, so every hand-out is the same IUnknown
// and identity checks (`Is`, pointer comparison) hold.
std::mutex identitiesLock;
std::unordered_map<const Object*, Wrapper*> identities;

Access accessOf(WORD flags) {
    if (flags & DISPATCH_PROPERTYPUTREF) return Access::Set;
    if (flags & DISPATCH_PROPERTYPUT) return Access::Let;
    if (flags & DISPATCH_METHOD) return Access::Method;
    return Access::Get;
}

// The type library written next to this DLL at registration.
HRESULT typeInfoOf(const char16_t* guid, ITypeInfo** info) {
    if (!info) return E_POINTER;
    *info = nullptr;
    ITypeLib* library = nullptr;
    HRESULT hr = LoadTypeLibEx(typeLibraryPath().c_str(), REGKIND_NONE, &library);
    if (FAILED(hr)) return hr;
    hr = library->GetTypeInfoOfGuid(toGuid(guid), info);
    library->Release();
    return hr;
}

// What an object's vtable holds for its class: the accessors in slot order
// and the vtable itself, IDispatch's seven entries followed by the thunks.
struct Layout {
    std::vector<Accessor> accessors;
    std::vector<const void*> vtable;
};
const Layout& layoutOf(const ClassInfo& c);

// The interface pointer every client holds: a vtable pointer, as the
// binary standard wants it, and the wrapper it belongs to.
struct Face {
    const void* const* vtable;
    Wrapper* owner;
};

class Wrapper final : public ISupportErrorInfo, public IProvideClassInfo, public IEnumVARIANT {
public:
    explicit Wrapper(Ref<Object> object)
        : object_(std::move(object)),
          entry_(automation::findClass(object_->className())),
          enumerator_(dynamic_cast<Enumerator*>(object_.get())),
          layout_(layoutOf(object_->classInfo())),
          face_{layout_.vtable.data(), this} {
        objectCreated();
    }
    ~Wrapper() { objectDestroyed(); }

    Object& object() noexcept { return *object_; }
    IDispatch* face() noexcept { return reinterpret_cast<IDispatch*>(&face_); }

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        if (iid == IID_IUnknown || iid == IID_IDispatch || iid == IidLibraryObject ||
            (entry_ && iid == toGuid(entry_->iid)))
            *out = face();
        else if (iid == IID_ISupportErrorInfo)
            *out = static_cast<ISupportErrorInfo*>(this);
        else if (iid == IID_IProvideClassInfo && entry_)
            *out = static_cast<IProvideClassInfo*>(this);
        else if (iid == IID_IEnumVARIANT && enumerator_)
            *out = static_cast<IEnumVARIANT*>(this);
        else
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        ULONG left;
        {
            std::lock_guard guard(identitiesLock);
            left = --references_;
            if (left == 0) identities.erase(object_.get());
        }
        if (left == 0) delete this;
        return left;
    }

    // IDispatch, reached through the face's first seven slots
    HRESULT GetTypeInfoCount(UINT* count) {
        if (!count) return E_POINTER;
        *count = entry_ ? 1 : 0;
        return S_OK;
    }
    // The dispatch view of the dual interface, as IDispatch describes itself.
    HRESULT GetTypeInfo(UINT index, LCID, ITypeInfo** info) {
        if (index != 0 || !entry_) return DISP_E_BADINDEX;
        HRESULT hr = typeInfoOf(entry_->iid, info);
        TYPEATTR* attr = nullptr;
        if (FAILED(hr) || FAILED((*info)->GetTypeAttr(&attr))) return hr;
        const bool vtableView = attr->typekind == TKIND_INTERFACE;
        (*info)->ReleaseTypeAttr(attr);
        if (!vtableView) return S_OK;
        ITypeInfo* dual = *info;
        HREFTYPE view = 0;
        hr = dual->GetRefTypeOfImplType(static_cast<UINT>(-1), &view);
        *info = nullptr;
        if (SUCCEEDED(hr)) hr = dual->GetRefTypeInfo(view, info);
        dual->Release();
        return hr;
    }
    HRESULT GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) {
        if (!names || !ids || count == 0) return E_INVALIDARG;
        const MemberInfo* m = nullptr;
        try {
            m = object_->classInfo().find(TextView(reinterpret_cast<const char16_t*>(names[0])));
        } catch (...) {
            return E_OUTOFMEMORY;
        }
        HRESULT hr = S_OK;
        ids[0] = m ? m->id : DISPID_UNKNOWN;
        if (!m) hr = DISP_E_UNKNOWNNAME;
        // Named arguments are numbered by their position.
        for (UINT i = 1; i < count; ++i) {
            ids[i] = DISPID_UNKNOWN;
            for (std::size_t p = 0; m && p < m->params.size(); ++p)
                if (equalsIgnoringCase(m->params[p].name, reinterpret_cast<const char16_t*>(names[i])))
                    ids[i] = static_cast<DISPID>(p);
            if (ids[i] == DISPID_UNKNOWN) hr = DISP_E_UNKNOWNNAME;
        }
        return hr;
    }
    HRESULT Invoke(DISPID id, REFIID riid, LCID, WORD flags, DISPPARAMS* params, VARIANT* result,
                   EXCEPINFO* exception, UINT* argError) {
        if (riid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
        DISPPARAMS none{};
        if (!params) params = &none;
        if (params->cNamedArgs > params->cArgs || (params->cArgs && !params->rgvarg) ||
            (params->cNamedArgs && !params->rgdispidNamedArgs))
            return E_INVALIDARG;
        SetErrorInfo(0, nullptr);
        const MemberInfo* m = object_->classInfo().find(static_cast<DispId>(id));
        if (!m) return DISP_E_MEMBERNOTFOUND;
        return guarded(exception, [&]() -> HRESULT {
            const Access kind = accessOf(flags);
            const bool put = kind == Access::Let || kind == Access::Set;

            // Where each argument came from, in the caller's order, so by-reference
            // arguments can be written back; the assigned value of a put goes last.
            const UINT named = params->cNamedArgs, positional = params->cArgs - named;
            std::vector<const VARIANT*> sources(positional, nullptr);
            const VARIANT* assigned = nullptr;
            for (UINT i = 0; i < positional; ++i) sources[i] = &params->rgvarg[params->cArgs - 1 - i];
            for (UINT i = 0; i < named; ++i) {
                const DISPID slot = params->rgdispidNamedArgs[i];
                if (slot == DISPID_PROPERTYPUT && put) {
                    assigned = &params->rgvarg[i];
                    continue;
                }
                if (slot < 0 || static_cast<std::size_t>(slot) >= m->params.size()) {
                    if (argError) *argError = i;
                    return DISP_E_PARAMNOTFOUND;
                }
                if (static_cast<std::size_t>(slot) >= sources.size()) sources.resize(slot + 1, nullptr);
                sources[slot] = &params->rgvarg[i];
            }
            if (put && !assigned && !sources.empty()) {  // a client that does not name the value
                assigned = sources.back();
                sources.pop_back();
            }
            if (assigned) sources.push_back(assigned);

            const Variant out = run(*m, kind, sources);
            if (result) {
                VariantInit(result);
                toVariant(out, *result);
            }
            return S_OK;
        });
    }

    // A call through vtable slot `slot`. positions[0] is the face, then the
    // arguments in 8-byte slots as the caller placed them; xmm holds XMM1-XMM3,
    // where floating arguments in positions 1-3 arrive instead. Each argument
    // becomes the VARIANT a late-bound caller would have passed (a pointer
    // parameter a VT_BYREF one), and the call takes Invoke's path.
    HRESULT callSlot(unsigned slot, const std::uint64_t* positions, const std::uint64_t* xmm) {
        if (slot >= layout_.accessors.size()) return E_UNEXPECTED;  // the vtable has no such slot
        const Accessor& a = layout_.accessors[slot];
        const MemberInfo& m = *a.member;
        const bool put = a.kind == Access::Let || a.kind == Access::Set;
        const std::size_t count = m.params.size() + (put ? 1 : 0);
        SetErrorInfo(0, nullptr);
        return guarded(nullptr, [&]() -> HRESULT {
            std::vector<VARIANT> given(count);
            std::vector<const VARIANT*> sources(count, nullptr);
            for (std::size_t i = 0; i < count; ++i) {
                const bool byRef = i < m.params.size() && m.params[i].byRef;
                const VARTYPE vt = vartypeOf(i < m.params.size() ? m.params[i].type : m.type);
                const bool floating = vt == VT_R4 || vt == VT_R8 || vt == VT_DATE;
                const std::uint64_t raw = floating && !byRef && i < 3 ? xmm[i] : positions[i + 1];
                VARIANT& v = given[i];
                VariantInit(&v);
                // VARIANTs by value come as a pointer to the caller's copy.
                if (byRef || vt == VT_VARIANT) {
                    if (!raw) continue;  // no variable given: the argument is left out
                    v.vt = VT_BYREF | vt;
                    v.byref = reinterpret_cast<void*>(raw);
                } else {
                    std::memcpy(&v.llVal, &raw, sizeof raw);
                    v.vt = vt;
                }
                sources[i] = &v;
            }
            // The result's place is the caller's, uninitialised: cleared first so
            // it holds nothing to free, and nothing stale if the call fails.
            VARIANT out;
            VariantInit(&out);
            if (!put && !m.type.empty()) {
                out.vt = VT_BYREF | vartypeOf(m.type);
                out.byref = reinterpret_cast<void*>(positions[count + 1]);
                if (!out.byref) return E_POINTER;
                if (out.vt == (VT_BYREF | VT_VARIANT)) VariantInit(out.pvarVal);
                else if (out.vt == (VT_BYREF | VT_BSTR) || out.vt == (VT_BYREF | VT_DISPATCH) ||
                         out.vt == (VT_BYREF | VT_UNKNOWN) || out.vt == (VT_BYREF | VT_ARRAY | VT_UI1))
                    *out.ppunkVal = nullptr;
            }
            const Variant result = run(m, a.kind, sources);
            if (out.byref) writeBack(result, out);
            return S_OK;
        });
    }

    // ISupportErrorInfo
    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) override {
        return iid == IID_IDispatch || (entry_ && iid == toGuid(entry_->iid)) ? S_OK : S_FALSE;
    }

    // IProvideClassInfo: the coclass, whose name scripting clients show as
    // the object's type name.
    HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo** info) override { return typeInfoOf(entry_->clsid, info); }

    // IEnumVARIANT, answered only by NewEnum's enumerators
    HRESULT STDMETHODCALLTYPE Next(ULONG count, VARIANT* items, ULONG* fetched) override {
        if (!items && count) return E_POINTER;
        ULONG n = 0;
        try {
            Variant item;
            while (n < count && enumerator_->next(item)) {
                VariantInit(&items[n]);
                toVariant(item, items[n]);
                ++n;
            }
        } catch (...) {
            for (ULONG i = 0; i < n; ++i) VariantClear(&items[i]);
            if (fetched) *fetched = 0;
            return E_OUTOFMEMORY;
        }
        if (fetched) *fetched = n;
        return n == count ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
        Variant item;
        for (ULONG i = 0; i < count; ++i)
            if (!enumerator_->next(item)) return S_FALSE;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Reset() override {
        enumerator_->reset();
        return S_OK;
    }
    // A new enumerator over the same snapshot, at the same place.
    HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        try {
            IDispatch* copy = dispatchFor(enumerator_->clone());
            const HRESULT hr = copy->QueryInterface(IID_IEnumVARIANT, reinterpret_cast<void**>(out));
            copy->Release();
            return hr;
        } catch (...) {
            return E_OUTOFMEMORY;
        }
    }

private:
    // Nothing may leave a COM method as an exception.
    template <class F>
    HRESULT guarded(EXCEPINFO* exception, F&& body) {
        try {
            return body();
        } catch (const Error& e) {
            return reportError(e, entry_ ? toGuid(entry_->iid) : IID_IDispatch, exception);
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        } catch (...) {
            return E_UNEXPECTED;
        }
    }

    // The one call path of Invoke and the vtable: the caller's VARIANTs
    // converted, the member run by the dispatch layer, and the parameters it
    // declares by reference written back into the caller's variables, on
    // return and on raise alike, as they would be changed in place.
    Variant run(const MemberInfo& m, Access kind, const std::vector<const VARIANT*>& sources) {
        std::vector<Variant> args(sources.size(), Variant(Missing{}));
        for (std::size_t i = 0; i < sources.size(); ++i)
            if (sources[i]) args[i] = fromVariant(*sources[i]);
        const auto writeBackAll = [&] {
            for (std::size_t i = 0; i < sources.size() && i < m.params.size(); ++i)
                if (m.params[i].byRef && sources[i] && (sources[i]->vt & VT_BYREF)) writeBack(args[i], *sources[i]);
        };
        Variant out;
        try {
            out = tylhart::invoke(*object_, m.id, kind, args);
        } catch (...) {
            writeBackAll();
            throw;
        }
        writeBackAll();
        return out;
    }

    std::atomic<ULONG> references_{0};
    Ref<Object> object_;
    const automation::ClassEntry* entry_;
    Enumerator* enumerator_;
    const Layout& layout_;
    Face face_;
};

// The face's IDispatch entries, handing the call to its wrapper.
HRESULT STDMETHODCALLTYPE faceQueryInterface(Face* f, REFIID iid, void** out) { return f->owner->QueryInterface(iid, out); }
ULONG STDMETHODCALLTYPE faceAddRef(Face* f) { return f->owner->AddRef(); }
ULONG STDMETHODCALLTYPE faceRelease(Face* f) { return f->owner->Release(); }
HRESULT STDMETHODCALLTYPE faceGetTypeInfoCount(Face* f, UINT* count) { return f->owner->GetTypeInfoCount(count); }
HRESULT STDMETHODCALLTYPE faceGetTypeInfo(Face* f, UINT index, LCID locale, ITypeInfo** info) {
    return f->owner->GetTypeInfo(index, locale, info);
}
HRESULT STDMETHODCALLTYPE faceGetIDsOfNames(Face* f, REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) {
    return f->owner->GetIDsOfNames(iid, names, count, locale, ids);
}
HRESULT STDMETHODCALLTYPE faceInvoke(Face* f, DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* params,
                                     VARIANT* result, EXCEPINFO* exception, UINT* argError) {
    return f->owner->Invoke(id, iid, locale, flags, params, result, exception, argError);
}

const Layout& layoutOf(const ClassInfo& c) {
    static std::mutex lock;
    static std::map<const ClassInfo*, Layout> layouts;
    std::lock_guard guard(lock);
    auto [it, added] = layouts.try_emplace(&c);
    Layout& layout = it->second;
    if (!added) return layout;
    try {
        layout.accessors = accessorsOf(c);
        // The type library refuses a class with more accessors than thunks.
        layout.accessors.resize(std::min(layout.accessors.size(), SlotCapacity));
        layout.vtable = {reinterpret_cast<const void*>(&faceQueryInterface), reinterpret_cast<const void*>(&faceAddRef),
                         reinterpret_cast<const void*>(&faceRelease), reinterpret_cast<const void*>(&faceGetTypeInfoCount),
                         reinterpret_cast<const void*>(&faceGetTypeInfo), reinterpret_cast<const void*>(&faceGetIDsOfNames),
                         reinterpret_cast<const void*>(&faceInvoke)};
        layout.vtable.insert(layout.vtable.end(), tylhartSlotThunks, tylhartSlotThunks + layout.accessors.size());
    } catch (...) {
        layouts.erase(it);
        throw;
    }
    return layout;
}

}  // namespace

IDispatch* dispatchFor(const Ref<Object>& object) {
    std::lock_guard guard(identitiesLock);
    auto [it, added] = identities.try_emplace(object.get(), nullptr);
    if (added) {
        try {
            it->second = new Wrapper(object);
        } catch (...) {
            identities.erase(it);
            throw;
        }
    }
    it->second->AddRef();
    return it->second->face();
}

Ref<Object> unwrap(IUnknown* unknown) {
    if (!unknown) return {};
    IUnknown* ours = nullptr;
    if (FAILED(unknown->QueryInterface(IidLibraryObject, reinterpret_cast<void**>(&ours))) || !ours)
        errors::raise(errors::Runtime::TypeMismatch);
    Ref<Object> object(&reinterpret_cast<Face*>(ours)->owner->object());
    ours->Release();
    return object;
}

HRESULT reportError(const Error& error, const GUID& iid, EXCEPINFO* info) {
    const BSTR source = SysAllocStringLen(wide(error.source()), static_cast<UINT>(error.source().size()));
    const BSTR description =
        SysAllocStringLen(wide(error.description()), static_cast<UINT>(error.description().size()));
    ICreateErrorInfo* create = nullptr;
    if (SUCCEEDED(CreateErrorInfo(&create))) {
        create->SetGUID(iid);
        create->SetSource(source);
        create->SetDescription(description);
        IErrorInfo* errorInfo = nullptr;
        if (SUCCEEDED(create->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&errorInfo)))) {
            SetErrorInfo(0, errorInfo);
            errorInfo->Release();
        }
        create->Release();
    }
    if (!info) {
        SysFreeString(source);
        SysFreeString(description);
        return error.number() < 0 ? error.number() : E_FAIL;
    }
    *info = EXCEPINFO{};
    info->bstrSource = source;
    info->bstrDescription = description;
    info->scode = error.number();
    return DISP_E_EXCEPTION;
}

}  // namespace tylhart::com

// Entered from the slot thunks (Thunks.cpp) with the face in positions[0].
extern "C" HRESULT tylhartCallSlot(unsigned slot, const std::uint64_t* positions, const std::uint64_t* xmm) {
    using namespace tylhart::com;
    return reinterpret_cast<Face*>(positions[0])->owner->callSlot(slot, positions, xmm);
}
