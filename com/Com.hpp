// The COM side of the library: what the wrappers, the class factories, the
// registration and the type library share. Windows only.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <ocidl.h>

#include <string>
#include <vector>

#include "tylhart/automation/Registry.hpp"
#include "tylhart/core/Dispatch.hpp"

namespace tylhart::com {

// Identifiers in the platform's layout; both structures are the same 16 bytes.
GUID toGuid(const automation::Guid& g) noexcept;
GUID toGuid(const char16_t* registryForm) noexcept;
automation::Guid fromGuid(const GUID& g) noexcept;

inline const wchar_t* wide(const Text& t) noexcept { return reinterpret_cast<const wchar_t*>(t.c_str()); }
inline const wchar_t* wide(const char16_t* t) noexcept { return reinterpret_cast<const wchar_t*>(t); }
std::wstring wstr(TextView t);

// The server's own count of live COM objects (wrappers, enumerators, class
// factories) and LockServer locks, for DllCanUnloadNow.
void objectCreated() noexcept;
void objectDestroyed() noexcept;
void lockServer(bool lock) noexcept;
bool serverIdle() noexcept;

// This DLL and the type library written next to it.
HMODULE module() noexcept;
std::wstring modulePath();
std::wstring typeLibraryPath();

// Exact conversions between the platform's VARIANT and the library's
// Variant. fromVariant reads through VT_BYREF; a kind the library does not
// hold, a multi-dimensional array or an object that is not one of ours raises
// the runtime's type mismatch (13). toVariant fills an initialised, empty
// VARIANT.
Variant fromVariant(const VARIANT& v);
void toVariant(const Variant& v, VARIANT& out);
// Stores v into the caller's VT_BYREF argument, converted to the kind the
// argument points at.
void writeBack(const Variant& v, const VARIANT& byRef);

// The one COM identity of a library object, with a reference for the caller.
IDispatch* dispatchFor(const Ref<Object>& object);
// The library object behind one of our wrappers; Nothing for null; any other
// object raises type mismatch.
Ref<Object> unwrap(IUnknown* unknown);
// A private interface only our wrappers answer, so an object of ours passed
// back in is recognised and a foreign one is not.
inline constexpr GUID IidLibraryObject = {0x02881c59, 0xc8f0, 0x4036, {0x92, 0x08, 0x8b, 0xe4, 0x19, 0xac, 0x2a, 0xe2}};

// Hands a raised error to the client: EXCEPINFO (if given) and the thread's
// error information carry number, Source and Description. The status to
// return: DISP_E_EXCEPTION where EXCEPINFO carries the number, else the
// number itself (a vtable call or a factory has nowhere else to put it).
HRESULT reportError(const Error& error, const GUID& iid, EXCEPINFO* info);

// Writes the type library file from the member tables.
HRESULT writeTypeLibrary(const std::wstring& path);

// ---- The dual interfaces' vtables ----

// One vtable slot per accessor, after IDispatch's seven: for each member in
// table order its get (or else its method), then its let, then its set. The
// type library and every object's vtable follow this one list.
struct Accessor {
    const MemberInfo* member;
    Access kind;
};
std::vector<Accessor> accessorsOf(const ClassInfo& c);

// The kind a member table's type name has on the vtable: enumerations are
// VT_I4, objects VT_DISPATCH (NewEnum's VT_UNKNOWN), "Byte()" a byte
// SAFEARRAY, no type VT_VOID.
VARTYPE vartypeOf(const Text& typeName);

// The slot thunks, the same for every class: thunk k hands slot k and the
// caller's spilled argument registers to the wrapper (Dispatch.cpp). A class
// with more accessors than thunks is refused at registration.
#define TYLHART_SLOT_CAPACITY 512  // a literal: the thunks' assembly repeats this often
inline constexpr std::size_t SlotCapacity = TYLHART_SLOT_CAPACITY;
extern "C" const void* const tylhartSlotThunks[SlotCapacity];

}  // namespace tylhart::com
