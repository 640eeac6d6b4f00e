// Shared helpers for the test suites: exact error records and texts.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "tylhart/core/Dispatch.hpp"

namespace tylhart {

// Lets GoogleTest print UTF-16 texts and Variants readably.
inline void PrintTo(const Text& t, std::ostream* os) { *os << '"' << toUtf8(t) << '"'; }
inline void PrintTo(const Variant& v, std::ostream* os) {
    *os << toUtf8(typeName(v.type()));
    if (!v.isObject() && !v.isNull() && !v.isMissing() && v.type() != VarType::ByteArray)
        *os << '(' << toUtf8(v.toText()) << ')';
}

namespace test {

struct ErrorRecord {
    std::int32_t number;
    std::string source;
    std::string description;
    friend bool operator==(const ErrorRecord&, const ErrorRecord&) = default;
    friend std::ostream& operator<<(std::ostream& os, const ErrorRecord& e) {
        return os << std::hex << "0x" << static_cast<std::uint32_t>(e.number) << std::dec << " [" << e.source
                  << "] " << e.description;
    }
};

// The record a call raised; NoError when it raised nothing.
inline const ErrorRecord NoError{0, "", "(no error)"};
inline ErrorRecord raised(const std::function<void()>& call) {
    try {
        call();
    } catch (const Error& e) {
        return {e.number(), toUtf8(e.source()), toUtf8(e.description())};
    }
    return NoError;
}

inline ErrorRecord libraryError(const char* source, const char16_t* description) {
    return {errors::InvalidArgument, source, toUtf8(description)};
}
inline ErrorRecord platformError(errors::Runtime code) {
    return {errors::numberOf(code), "TylHartTypes", toUtf8(errors::descriptionOf(code))};
}

// Names of a container's elements in order, e.g. "a b c".
template <class C>
std::string names(const C& container) {
    std::string out;
    container.elements().forEach([&](const auto& d) { out += (out.empty() ? "" : " ") + toUtf8(d->rawName()); });
    return out;
}

inline std::string text(const Variant& v) { return v.isEmpty() ? std::string("<empty>") : toUtf8(v.toText()); }

// Late-bound call with natural argument order.
template <class... A>
Variant call(const Ref<Object>& o, const char16_t* name, A... args) {
    Variant list[] = {Variant(), Variant(args)...};
    return invoke(o, name, Access::Method, std::span<Variant>(list + 1, sizeof...(A)));
}
inline Variant get(const Ref<Object>& o, const char16_t* name) { return invoke(o, name, Access::Get); }
inline void let(const Ref<Object>& o, const char16_t* name, Variant value) {
    Variant list[] = {std::move(value)};
    invoke(o, name, Access::Let, list);
}

// Slots are numbered by declaration order (fields from FirstFieldId, code
// members from one counter under FirstMethodId or FirstPropertyId), so a few
// probes, the last slot among them, pin a class's whole numbering.
inline void expectSlots(const ClassInfo& info, std::initializer_list<std::pair<const char16_t*, DispId>> probes) {
    for (const auto& [name, id] : probes) {
        const MemberInfo* m = info.find(name);
        EXPECT_TRUE(m && m->id == id) << toUtf8(name) << " should be " << std::hex << id;
    }
}

// One row per rendering: the object, the level, the exact text (nullptr: Empty).
struct Rendering {
    std::function<Ref<Object>()> build;
    std::int16_t level;
    const char* expected;
};
inline void expectRenderings(std::initializer_list<Rendering> rows) {
    for (const Rendering& r : rows) {
        const Variant v = call(r.build(), u"ToString", r.level);
        if (r.expected) EXPECT_EQ(text(v), r.expected) << "level " << r.level;
        else EXPECT_TRUE(v.isEmpty()) << "level " << r.level << ": " << text(v);
    }
}

}  // namespace test
}  // namespace tylhart
