// Class factories, the four exported entry points and self-registration.
#include <olectl.h>

#include <atomic>
#include <new>

#include "Com.hpp"

namespace tylhart::com {
namespace {

HMODULE thisModule = nullptr;
std::atomic<long> liveComObjects{0};
std::atomic<long> serverLocks{0};

const automation::TypeLibraryInfo& library() { return automation::typeLibrary(); }

// Creates new objects of one class of the table, each wrapped once.
class ClassFactory final : public IClassFactory {
public:
    explicit ClassFactory(const automation::ClassEntry& entry) : entry_(entry) { objectCreated(); }
    ~ClassFactory() { objectDestroyed(); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        if (iid != IID_IUnknown && iid != IID_IClassFactory) return E_NOINTERFACE;
        *out = static_cast<IClassFactory*>(this);
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** out) override {
        if (!out) return E_POINTER;
        *out = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        try {
            IDispatch* object = dispatchFor(entry_.create());
            const HRESULT hr = object->QueryInterface(iid, out);
            object->Release();
            return hr;
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        } catch (const Error& e) {
            // The record reaches the client through its error information;
            // the number is already an HRESULT.
            return reportError(e, IID_IClassFactory, nullptr);
        } catch (...) {
            return E_UNEXPECTED;
        }
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        lockServer(lock != FALSE);
        return S_OK;
    }

private:
    std::atomic<ULONG> references_{0};
    const automation::ClassEntry& entry_;
};

// ---- registry ----------------------------------------------------------------

LONG setValue(const std::wstring& key, const wchar_t* name, const std::wstring& value) {
    HKEY handle = nullptr;
    LONG rc = RegCreateKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, &handle, nullptr);
    if (rc != ERROR_SUCCESS) return rc;
    rc = RegSetValueExW(handle, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                        static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    RegCloseKey(handle);
    return rc;
}

// A key that is already gone is what removal wants, so it counts as success.
LONG removeKey(const std::wstring& key) {
    const LONG rc = RegDeleteTreeW(HKEY_CLASSES_ROOT, key.c_str());
    if (rc == ERROR_SUCCESS || rc == ERROR_FILE_NOT_FOUND) {
        RegDeleteKeyW(HKEY_CLASSES_ROOT, key.c_str());  // the tree's own key
        return ERROR_SUCCESS;
    }
    return rc;
}

HRESULT registerClasses() {
    const std::wstring path = modulePath();
    const std::wstring libid = wstr(library().guid);
    for (const automation::ClassEntry& c : automation::classes()) {
        if (!c.built()) continue;
        const std::wstring clsidKey = L"CLSID\\" + wstr(c.clsid), progId = wstr(c.progId);
        const LONG rc[] = {
            setValue(clsidKey, nullptr, progId),
            setValue(clsidKey + L"\\ProgID", nullptr, progId),
            setValue(clsidKey + L"\\InprocServer32", nullptr, path),
            setValue(clsidKey + L"\\InprocServer32", L"ThreadingModel", L"Apartment"),
            setValue(clsidKey + L"\\TypeLib", nullptr, libid),
            setValue(clsidKey + L"\\VERSION", nullptr, L"1.0"),
            setValue(clsidKey + L"\\Programmable", nullptr, L""),
            setValue(progId, nullptr, progId),
            setValue(progId + L"\\CLSID", nullptr, wstr(c.clsid)),
        };
        for (LONG r : rc)
            if (r != ERROR_SUCCESS) return SELFREG_E_CLASS;
    }
    return S_OK;
}

HRESULT registerTypeLibrary() {
    const std::wstring path = typeLibraryPath();
    HRESULT hr = writeTypeLibrary(path);
    if (FAILED(hr)) return hr;
    ITypeLib* typeLib = nullptr;
    hr = LoadTypeLibEx(path.c_str(), REGKIND_NONE, &typeLib);
    if (FAILED(hr)) return hr;
    std::wstring folder = path.substr(0, path.find_last_of(L'\\'));
    std::wstring file = path;
    hr = RegisterTypeLib(typeLib, file.data(), folder.data());
    typeLib->Release();
    return FAILED(hr) ? SELFREG_E_TYPELIB : S_OK;
}

HRESULT unregisterAll() {
    bool ok = true;
    // The runtime removes what RegisterTypeLib wrote while the file is still
    // there; the keys are removed by name below as well, so unregistration
    // also completes when the file was deleted by hand.
    UnRegisterTypeLib(toGuid(library().guid), 1, 0, library().locale, SYS_WIN64);
    for (const automation::ClassEntry& c : automation::classes()) {
        ok &= removeKey(L"CLSID\\" + wstr(c.clsid)) == ERROR_SUCCESS;
        ok &= removeKey(wstr(c.progId)) == ERROR_SUCCESS;
        ok &= removeKey(L"Interface\\" + wstr(c.iid)) == ERROR_SUCCESS;
    }
    ok &= removeKey(L"TypeLib\\" + wstr(library().guid)) == ERROR_SUCCESS;
    const std::wstring file = typeLibraryPath();
    if (!DeleteFileW(file.c_str()) && GetLastError() != ERROR_FILE_NOT_FOUND) ok = false;
    return ok ? S_OK : SELFREG_E_CLASS;
}

}  // namespace

void objectCreated() noexcept { ++liveComObjects; }
void objectDestroyed() noexcept { --liveComObjects; }
void lockServer(bool lock) noexcept { lock ? ++serverLocks : --serverLocks; }
bool serverIdle() noexcept {
    return liveComObjects == 0 && serverLocks <= 0 && Object::liveObjects() == 0;
}

HMODULE module() noexcept { return thisModule; }

std::wstring modulePath() {
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD n = GetModuleFileNameW(thisModule, path.data(), static_cast<DWORD>(path.size()));
        if (n < path.size()) {
            path.resize(n);
            return path;
        }
        path.resize(path.size() * 2);
    }
}

std::wstring typeLibraryPath() {
    std::wstring path = modulePath();
    path.resize(path.find_last_of(L'\\') + 1);
    return path + wstr(library().name) + L".tlb";
}

}  // namespace tylhart::com

using namespace tylhart::com;

extern "C" {

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        thisModule = instance;
        DisableThreadLibraryCalls(instance);
    }
    return TRUE;
}

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, LPVOID* out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    const tylhart::automation::ClassEntry* entry = tylhart::automation::findClassByClsid(fromGuid(clsid));
    if (!entry || !entry->built()) return CLASS_E_CLASSNOTAVAILABLE;
    IClassFactory* factory = new (std::nothrow) ClassFactory(*entry);
    if (!factory) return E_OUTOFMEMORY;
    factory->AddRef();
    const HRESULT hr = factory->QueryInterface(iid, out);
    factory->Release();
    return hr;
}

STDAPI DllCanUnloadNow() { return serverIdle() ? S_OK : S_FALSE; }

// Both can run any number of times: registration overwrites, and removal
// treats what is already gone as removed. A registration that fails
// part-way takes back what it wrote.
STDAPI DllRegisterServer() {
    try {
        HRESULT hr = registerClasses();
        if (SUCCEEDED(hr)) hr = registerTypeLibrary();
        if (FAILED(hr)) unregisterAll();
        return hr;
    } catch (...) {
        unregisterAll();
        return E_UNEXPECTED;
    }
}

STDAPI DllUnregisterServer() {
    try {
        return unregisterAll();
    } catch (...) {
        return E_UNEXPECTED;
    }
}

}  // extern "C"
