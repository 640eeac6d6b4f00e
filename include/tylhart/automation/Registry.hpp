// The identities under which clients create the library's classes: class
// and interface identifiers, programmatic names and the type library.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "tylhart/core/Dispatch.hpp"

namespace tylhart::automation {

// A globally unique identifier in the memory layout of the platform's GUID,
// so that the entry points can hand it through unchanged.
struct Guid {
    std::uint32_t data1 = 0;
    std::uint16_t data2 = 0;
    std::uint16_t data3 = 0;
    std::uint8_t data4[8] = {};

    friend bool operator==(const Guid&, const Guid&) = default;
};
static_assert(sizeof(Guid) == 16);

// Reads "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}"; the braces may be left out
// (both together), hex digits in either case. Anything else is nullopt.
std::optional<Guid> parseGuid(TextView text) noexcept;
// Braces and upper-case hex digits, as the registry writes identifiers.
Text formatGuid(const Guid& guid);

// One creatable class. The identifier texts are in the registry's form.
struct ClassEntry {
    const char16_t* name;    // "CDefinition"
    const char16_t* progId;  // "TylHartTypes.CDefinition"
    const char16_t* clsid;
    const char16_t* iid;     // of its one interface, "_" + name
    // The class's member table; null while the class is not built yet.
    const ClassInfo& (*classInfo)();

    bool built() const noexcept { return classInfo != nullptr; }
    Text interfaceName() const { return u"_" + Text(name); }
    // A new object; raises 429 when the class is not built.
    Ref<Object> create() const;
};

struct TypeLibraryInfo {
    const char16_t* name;
    const char16_t* guid;
    std::uint32_t locale;
};

// The type library that holds every class and enumeration.
const TypeLibraryInfo& typeLibrary() noexcept;

// Every class of the type library, in its order.
std::span<const ClassEntry> classes() noexcept;

// Lookups answer nullptr when nothing matches. Names ignore case, as the
// registry and Automation name lookup do; identifiers accept the forms
// parseGuid reads.
const ClassEntry* findClass(TextView className) noexcept;
const ClassEntry* findClassByProgId(TextView progId) noexcept;
const ClassEntry* findClassByClsid(const Guid& clsid) noexcept;
const ClassEntry* findClassByClsid(TextView clsid) noexcept;
const ClassEntry* findClassByIid(const Guid& iid) noexcept;

// A new object of the named class. An unknown name or identifier and a
// class that is not built raise 429 "ActiveX component can't create
// object", as a scripting client's CreateObject reports it.
Ref<Object> CreateObject(TextView progId);
Ref<Object> CreateObjectFromClsid(TextView clsid);

// The 429 error record.
Error cannotCreateObject();

}  // namespace tylhart::automation
