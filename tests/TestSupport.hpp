// Shared helpers for the test suites: exact error records and texts.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

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

// The runtime's records, spelled out as callers compare them.
inline ErrorRecord runtimeRecord(std::uint32_t code, const char* description) {
    return {static_cast<std::int32_t>(0x800A0000u + code), "TylHartTypes", description};
}
inline const ErrorRecord InvalidCall = runtimeRecord(5, "Invalid procedure call or argument");
inline const ErrorRecord Overflow = runtimeRecord(6, "Overflow");
inline const ErrorRecord Subscript = runtimeRecord(9, "Subscript out of range");
inline const ErrorRecord TypeMismatch = runtimeRecord(13, "Type mismatch");
inline const ErrorRecord NotSet = runtimeRecord(91, "Object variable or With block variable not set");
inline const ErrorRecord NullUse = runtimeRecord(94, "Invalid use of Null");
inline const ErrorRecord CannotCreate = runtimeRecord(429, "ActiveX component can't create object");
inline const ErrorRecord NoSuchMember = runtimeRecord(438, "Object doesn't support this property or method");
inline const ErrorRecord NotOptional = runtimeRecord(449, "Argument not optional");
inline const ErrorRecord WrongArgumentCount =
    runtimeRecord(450, "Wrong number of arguments or invalid property assignment");
inline const ErrorRecord Duplicate =
    runtimeRecord(457, "This key is already associated with an element of this collection");

// Names of a container's elements in order, e.g. "a b c".
template <class C>
std::string names(const C& container) {
    std::string out;
    container.elements().forEach([&](const auto& d) { out += (out.empty() ? "" : " ") + toUtf8(d->rawName()); });
    return out;
}

// A new T after `setup` ran on it, so a test object is built in one expression.
template <class T, class Setup>
Ref<T> made(Setup&& setup) {
    auto object = make<T>();
    setup(*object);
    return object;
}

inline std::string text(const Variant& v) { return v.isEmpty() ? std::string("<empty>") : toUtf8(v.toText()); }

// Late-bound access with natural argument order, by name or identifier: a
// let or set takes the value last, after the property's parameters.
template <class Member, class... A>
Variant invokeWith(const Ref<Object>& o, Member member, Access access, A... args) {
    Variant list[] = {Variant(), Variant(args)...};
    const std::span<Variant> passed(list + 1, sizeof...(A));
    if constexpr (std::is_integral_v<Member>) return invoke(*o, member, access, passed);
    else return invoke(o, member, access, passed);
}
template <class... A>
Variant call(const Ref<Object>& o, const char16_t* name, A... args) {
    return invokeWith(o, name, Access::Method, args...);
}
template <class Member, class... A>
Variant get(const Ref<Object>& o, Member member, A... args) {
    return invokeWith(o, member, Access::Get, args...);
}
template <class Member, class... A>
void let(const Ref<Object>& o, Member member, A... args) {
    invokeWith(o, member, Access::Let, args...);
}
template <class Member, class... A>
void setObject(const Ref<Object>& o, Member member, A... args) {
    invokeWith(o, member, Access::Set, args...);
}

// Compare gives `equal` in both directions.
template <class R>
void expectCompare(const Ref<R>& a, const Ref<R>& b, bool equal) {
    EXPECT_EQ(a->Compare(b), equal) << text(a->ToString(2)) << " / " << text(b->ToString(2));
    EXPECT_EQ(b->Compare(a), equal) << text(b->ToString(2)) << " / " << text(a->ToString(2));
}

// Two equal objects, then each change on one side makes them differ both ways.
template <class R>
void expectEachChangeDiffers(const std::function<Ref<R>()>& build,
                             std::initializer_list<std::function<void(R&)>> changes) {
    for (const auto& change : changes) {
        auto a = build(), b = build();
        EXPECT_TRUE(a->Compare(b));
        change(*b);
        expectCompare(a, b, false);
    }
}

// A copy equals its source both ways; each change made to a new copy makes
// the two differ both ways and leaves the source's full rendering as it was,
// so no child the change reaches is shared.
template <class R>
void expectOwnCopies(const Ref<R>& source, std::initializer_list<std::function<void(R&)>> changes) {
    const auto full = [&] { return text(source->ToString(INT16_MAX)); };
    const std::string before = full();
    int row = 0;
    for (const auto& change : changes) {
        SCOPED_TRACE("change " + std::to_string(row++));
        auto copy = source->GetCopy();
        expectCompare(copy, source, true);
        change(*copy);
        expectCompare(copy, source, false);
        EXPECT_EQ(full(), before);
    }
}

// One refused call per row: on a new object from `build` it raises its
// record, and `state` reads the same before and after.
template <class T>
struct Refusal {
    std::function<void(T&)> call;
    ErrorRecord expected;
};
template <class T, class State>
void expectRefusals(const std::function<Ref<T>()>& build, State state, std::initializer_list<Refusal<T>> rows) {
    int row = 0;
    for (const Refusal<T>& r : rows) {
        SCOPED_TRACE("row " + std::to_string(row++));
        auto object = build();
        const auto before = state(*object);
        EXPECT_EQ(raised([&] { r.call(*object); }), r.expected);
        EXPECT_EQ(state(*object), before);
    }
}

// A refused call on `o` raises its record and leaves `o` as it was: its
// full rendering, and the very definition it held where it has one.
inline void expectRefused(const Ref<Object>& o, const std::function<void()>& refused, const ErrorRecord& expected) {
    const auto state = [&] {
        Ref<Object> definition;
        raised([&] { definition = get(o, u"Definition").toObject(); });
        return std::pair{text(call(o, u"ToString", std::int16_t{3})), definition};
    };
    const auto before = state();
    EXPECT_EQ(raised(refused), expected) << toUtf8(o->className());
    EXPECT_EQ(state(), before) << toUtf8(o->className());
}

// A long text compared whole with its file under tests/data. A difference
// reports the first line that differs and leaves the whole text in
// <file name>.actual in the working directory, to review and copy over.
inline void expectMatchesFile(const std::string& file, const std::string& actual) {
    std::ifstream in(TYLHART_TEST_DATA_DIR "/" + file, std::ios::binary);
    std::stringstream stored;
    stored << in.rdbuf();
    if (actual == stored.str()) return;
    std::ofstream(std::filesystem::path(file).filename().string() + ".actual", std::ios::binary) << actual;
    std::istringstream want(stored.str()), got(actual);
    std::string w, g;
    for (int line = 1;; ++line) {
        const bool moreWanted = !!std::getline(want, w), moreGot = !!std::getline(got, g);
        if (moreWanted && moreGot && w == g) continue;
        ADD_FAILURE() << file << " line " << line << "\n  want " << (moreWanted ? w : "(end)") << "\n  got  "
                      << (moreGot ? g : "(end)");
        return;
    }
}

// One row per object: a name, the object, the level or levels, each
// rendered on a new object. The exact texts are
// tests/data/renderings/<suite>.<test>.txt, a line "name level: text" per
// level (<empty> for Empty), so that long renderings read whole and in order.
struct Rendering {
    struct Levels : std::vector<std::int16_t> {
        Levels(std::int16_t level) : vector{level} {}
        Levels(std::initializer_list<std::int16_t> levels) : vector(levels) {}
    };
    const char* name;
    std::function<Ref<Object>()> build;
    Levels levels;
};
inline void expectRenderings(std::initializer_list<Rendering> rows) {
    std::string listing;
    for (const Rendering& r : rows)
        for (const std::int16_t level : r.levels)
            listing += std::string(r.name) + " " + std::to_string(level) + ": " +
                       text(call(r.build(), u"ToString", level)) + "\n";
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    expectMatchesFile(std::string("renderings/") + test->test_suite_name() + "." + test->name() + ".txt", listing);
}

}  // namespace test
}  // namespace tylhart
