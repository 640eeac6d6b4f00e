// The component's four exported entry points, with their COM meaning, and
// the class factory that DllGetClassObject hands out.
//
// The entry points carry the exact exported names with C linkage (and the
// platform's calling convention on Windows), so a Windows build exports these
// same functions through its module definition file. Their parameter types
// are our own portable spellings of HRESULT, GUID and REFIID; a translation
// unit that sees the platform's declarations of the same names must not
// include this header.
#pragma once

#include <cstdint>

#include "tylhart/automation/Registry.hpp"

namespace tylhart::automation {

using HResult = std::int32_t;

// Status codes the entry points answer, valued as their COM namesakes.
namespace status {
inline constexpr HResult Ok = 0;                                                  // S_OK
inline constexpr HResult False = 1;                                               // S_FALSE
inline constexpr HResult Unexpected = static_cast<HResult>(0x8000FFFFu);          // E_UNEXPECTED
inline constexpr HResult NoInterface = static_cast<HResult>(0x80004002u);         // E_NOINTERFACE
inline constexpr HResult Pointer = static_cast<HResult>(0x80004003u);             // E_POINTER
inline constexpr HResult OutOfMemory = static_cast<HResult>(0x8007000Eu);         // E_OUTOFMEMORY
inline constexpr HResult ClassNotAvailable = static_cast<HResult>(0x80040111u);   // CLASS_E_CLASSNOTAVAILABLE
}  // namespace status

// The interfaces a class factory answers besides its class's own.
inline constexpr Guid IidUnknown{0x00000000u, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr Guid IidClassFactory{0x00000001u, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

// Creates new objects of one class of the type library. It is an object of
// the library like any other, so it counts as alive for DllCanUnloadNow and
// its CreateInstance is reachable by dispatch.
class ClassFactory final : public Object {
    TYLHART_CLASS(ClassFactory)
public:
    explicit ClassFactory(const ClassEntry& entry) noexcept : entry_(&entry) {}

    Ref<Object> CreateInstance() const;
    const ClassEntry& entry() const noexcept { return *entry_; }

private:
    const ClassEntry* entry_;
};

}  // namespace tylhart::automation

#if defined(_WIN32)
#define TYLHART_ENTRY_EXPORT
#define TYLHART_ENTRY_CALL __stdcall
#else
#define TYLHART_ENTRY_EXPORT __attribute__((visibility("default")))
#define TYLHART_ENTRY_CALL
#endif

extern "C" {

// On success *ppv is the class factory as an Object* with one reference that
// the caller gives back with release(). rclsid names a built class of the
// registry; riid is IUnknown, IClassFactory or the class's own interface.
TYLHART_ENTRY_EXPORT tylhart::automation::HResult TYLHART_ENTRY_CALL DllGetClassObject(
    const tylhart::automation::Guid& rclsid, const tylhart::automation::Guid& riid, void** ppv);

// Ok when no object of the library (class factories included) is alive,
// else False.
TYLHART_ENTRY_EXPORT tylhart::automation::HResult TYLHART_ENTRY_CALL DllCanUnloadNow();

TYLHART_ENTRY_EXPORT tylhart::automation::HResult TYLHART_ENTRY_CALL DllRegisterServer();
TYLHART_ENTRY_EXPORT tylhart::automation::HResult TYLHART_ENTRY_CALL DllUnregisterServer();

}  // extern "C"
