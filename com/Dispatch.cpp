// The COM face of every library object: IDispatch over the class's member
// table, ISupportErrorInfo, and IEnumVARIANT for NewEnum's enumerator.
#include <atomic>
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

class Wrapper final : public IDispatch, public ISupportErrorInfo, public IProvideClassInfo, public IEnumVARIANT {
public:
    explicit Wrapper(Ref<Object> object)
        : object_(std::move(object)),
          entry_(automation::findClass(object_->className())),
          enumerator_(dynamic_cast<Enumerator*>(object_.get())) {
        objectCreated();
    }
    ~Wrapper() { objectDestroyed(); }

    Object& object() noexcept { return *object_; }

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        if (iid == IID_IUnknown || iid == IID_IDispatch || iid == IidLibraryObject ||
            (entry_ && iid == toGuid(entry_->iid)))
            *out = static_cast<IDispatch*>(this);
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

    // IDispatch
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        if (!count) return E_POINTER;
        *count = entry_ ? 1 : 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
        if (index != 0 || !entry_) return DISP_E_BADINDEX;
        return typeInfoOf(entry_->iid, info);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
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
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID riid, LCID, WORD flags, DISPPARAMS* params,
                                     VARIANT* result, EXCEPINFO* exception, UINT* argError) override {
        if (riid != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
        DISPPARAMS none{};
        if (!params) params = &none;
        if (params->cNamedArgs > params->cArgs || (params->cArgs && !params->rgvarg) ||
            (params->cNamedArgs && !params->rgdispidNamedArgs))
            return E_INVALIDARG;
        SetErrorInfo(0, nullptr);
        const MemberInfo* m = object_->classInfo().find(static_cast<DispId>(id));
        if (!m) return DISP_E_MEMBERNOTFOUND;
        // Nothing may leave a COM method as an exception.
        try {
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

            std::vector<Variant> args(sources.size(), Variant(Missing{}));
            for (std::size_t i = 0; i < sources.size(); ++i)
                if (sources[i]) args[i] = fromVariant(*sources[i]);
            Variant out;
            try {
                out = tylhart::invoke(*object_, static_cast<DispId>(id), kind, args);
            } catch (...) {
                writeBackAll(*m, sources, args);
                throw;
            }
            writeBackAll(*m, sources, args);
            if (result) {
                VariantInit(result);
                toVariant(out, *result);
            }
            return S_OK;
        } catch (const Error& e) {
            return reportError(e, entry_ ? toGuid(entry_->iid) : IID_IDispatch, exception);
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        } catch (...) {
            return E_UNEXPECTED;
        }
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
    // Only parameters the member declares by reference change the caller's
    // variable; written back even when the member raised, as in place.
    static void writeBackAll(const MemberInfo& m, const std::vector<const VARIANT*>& sources,
                             const std::vector<Variant>& args) {
        for (std::size_t i = 0; i < sources.size() && i < m.params.size(); ++i)
            if (m.params[i].byRef && sources[i] && (sources[i]->vt & VT_BYREF)) writeBack(args[i], *sources[i]);
    }

    std::atomic<ULONG> references_{0};
    Ref<Object> object_;
    const automation::ClassEntry* entry_;
    Enumerator* enumerator_;
};

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
    return it->second;
}

Ref<Object> unwrap(IUnknown* unknown) {
    if (!unknown) return {};
    IUnknown* ours = nullptr;
    if (FAILED(unknown->QueryInterface(IidLibraryObject, reinterpret_cast<void**>(&ours))) || !ours)
        errors::raise(errors::Runtime::TypeMismatch);
    Ref<Object> object(&static_cast<Wrapper*>(static_cast<IDispatch*>(ours))->object());
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
        return DISP_E_EXCEPTION;
    }
    *info = EXCEPINFO{};
    info->bstrSource = source;
    info->bstrDescription = description;
    info->scode = error.number();
    return DISP_E_EXCEPTION;
}

}  // namespace tylhart::com
