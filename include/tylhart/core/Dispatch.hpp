// Late binding: each class describes its members once, in slot order, and
// that one description serves invoke by identifier, name lookup, argument
// coercion, the type library listing and the Python module.
#pragma once

#include <array>
#include <functional>
#include <initializer_list>
#include <span>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "tylhart/core/Child.hpp"
#include "tylhart/core/Enums.hpp"
#include "tylhart/core/Error.hpp"
#include "tylhart/core/Object.hpp"
#include "tylhart/core/Variant.hpp"

namespace tylhart {

using DispId = std::int32_t;
inline constexpr DispId DispIdNewEnum = -4;
inline constexpr DispId DispIdValue = 0;  // the default member
inline constexpr DispId FirstFieldId = 0x40030000;
inline constexpr DispId FirstMethodId = 0x60030000;
inline constexpr DispId FirstPropertyId = 0x68030000;

// Invocation kinds, valued as the Automation DISPATCH_* flags.
enum class Access : std::uint8_t { Method = 1, Get = 2, Let = 4, Set = 8 };

// The caller's arguments. They are the caller's own variables: a member
// whose C++ parameter is a non-const reference writes its final value back
// into the argument, as a by-reference parameter of Automation does.
using Args = std::span<Variant>;
using Invoker = std::function<Variant(Object&, Args)>;

// One parameter as a caller sees it. A parameter with a default value is
// optional; `optional` alone marks one whose absence reaches the member as
// the Missing marker.
struct Param {
    const char16_t* name;
    Variant defaultValue = Missing{};
    bool optional = false;
    bool byRef = false;

    bool hasDefault() const { return !defaultValue.isMissing(); }
    bool isOptional() const { return optional || hasDefault(); }
};
inline Param required(const char16_t* name) { return Param{name}; }
inline Param optional(const char16_t* name, Variant defaultValue = Missing{}) {
    return Param{name, std::move(defaultValue), true};
}

struct ParamInfo {
    Text name;
    Text type;
    bool optional = false;
    Variant defaultValue = Missing{};
    bool byRef = false;
};

// One member: a method, a property with code, or a public data field.
// Get, let and set of one property share the entry and its identifier.
struct MemberInfo {
    Text name;
    DispId id = 0;
    bool hidden = false;
    bool field = false;
    Text type;                     // result (method, get) or value type (let, set)
    std::vector<ParamInfo> params;  // without the assigned value of let/set
    Invoker method, get, let, set;

    bool has(Access a) const;
};

// The members the object handle calls on whatever object it holds (the
// copy protocol and the definition its sets key by); each table finds them
// once, not by name on every call.
enum class Protocol : std::uint8_t { GetCopy, Compare, ToString, Definition };

// The same GetCopy, Compare and ToString as plain function pointers, where a
// class binds them with their usual signatures: the handle copies, compares
// and renders every object of a set through them, and packing each call's
// arguments and result into Variants was a twentieth of a FindItem. Empty
// where a class binds them otherwise; the handle then calls late bound.
struct DirectCalls {
    Ref<Object> (*copy)(const Object&) = nullptr;
    bool (*compare)(const Object&, const Object&) = nullptr;  // both of the class
    Variant (*render)(const Object&, std::int16_t) = nullptr;
    // The members bound to them, so that the table can check that they are
    // the ones it finds under those names.
    std::array<std::size_t, 3> member{};
};

class ClassInfo {
public:
    using Factory = Ref<Object> (*)();

    ClassInfo(Text name, Factory factory, std::vector<MemberInfo> members, DirectCalls direct = {});
    // Moved, never copied: protocol_ points into members_.
    ClassInfo(ClassInfo&&) noexcept = default;
    ClassInfo(const ClassInfo&) = delete;
    ClassInfo& operator=(const ClassInfo&) = delete;

    const Text& name() const noexcept { return name_; }
    std::span<const MemberInfo> members() const noexcept { return members_; }
    const MemberInfo* find(DispId id) const noexcept;
    const MemberInfo* find(TextView name) const;  // ignores case, as Automation does
    const MemberInfo* find(Protocol member) const noexcept { return protocol_[static_cast<std::size_t>(member)]; }
    Ref<Object> create() const { return factory_(); }
    const DirectCalls& direct() const noexcept { return direct_; }

private:
    Text name_;
    Factory factory_;
    std::vector<MemberInfo> members_;
    // Folded name -> member and identifier -> member: open-addressed tables
    // of member numbers (0 = empty) with at least twice as many slots as
    // members, so that a look-up hashes once and compares one or two
    // entries. A name is folded and hashed in one pass on the stack.
    // Late-bound callers look a member up on every call.
    static constexpr std::size_t MaxNameLength = 64;  // no member name is longer
    std::vector<Text> foldedNames_;
    std::vector<std::uint16_t> nameSlots_;
    std::vector<std::uint16_t> idSlots_;
    static std::size_t idHash(DispId id) noexcept {
        return static_cast<std::size_t>((static_cast<std::uint64_t>(static_cast<std::uint32_t>(id)) *
                                         0x9E3779B97F4A7C15ull) >> 32);
    }
    std::array<const MemberInfo*, 4> protocol_{};  // into members_, whose elements never move
    DirectCalls direct_;
};

// Late-bound calls. Arguments in the order the caller writes them; for let
// and set the last argument is the assigned value. Unknown members raise
// 438, a wrong argument count 450, a left-out required argument 449.
Variant invoke(Object& target, DispId id, Access kind, Args args = {});
Variant invoke(Object& target, TextView name, Access kind, Args args = {});
Variant invoke(Object& target, Protocol member, Access kind, Args args = {});
Variant invoke(const Ref<Object>& target, TextView name, Access kind, Args args = {});
DispId dispIdOfName(const Object& target, TextView name);

// GetCopy, Compare and ToString as the object handle calls them on what it
// holds: direct where the class has DirectCalls, late bound otherwise, with
// the same results, errors and nesting count either way.
Ref<Object> copyThrough(Object& target);
bool compareThrough(Object& target, const Ref<Object>& other);
Variant renderThrough(Object& target, std::int16_t infoLevel);

// The object behind a reference, or the runtime's "object not set" error
// that a call on Nothing raises.
template <class T>
T& checked(const Ref<T>& object) {
    if (!object) errors::raise(errors::Runtime::ObjectNotSet);
    return *object;
}
template <class T, class Maker>
T& checked(const Child<T, Maker>& child) {
    return checked(child.ref());
}

// ---- Coercion between Variant and the C++ types of the typed API ----------

template <class T>
struct Marshal;  // from(Variant) -> T, to(T) -> Variant, typeName()

#define TYLHART_SCALAR_MARSHAL(T, conv, tname)                              \
    template <>                                                             \
    struct Marshal<T> {                                                     \
        static T from(const Variant& v) { return v.conv(); }                \
        static Variant to(T v) { return Variant(std::move(v)); }            \
        static Text typeName() { return tname; }                            \
    };
TYLHART_SCALAR_MARSHAL(std::int16_t, toInteger, u"Integer")
TYLHART_SCALAR_MARSHAL(std::int32_t, toLong, u"Long")
TYLHART_SCALAR_MARSHAL(float, toSingle, u"Single")
TYLHART_SCALAR_MARSHAL(double, toDouble, u"Double")
TYLHART_SCALAR_MARSHAL(Currency, toCurrency, u"Currency")
TYLHART_SCALAR_MARSHAL(Date, toDate, u"Date")
TYLHART_SCALAR_MARSHAL(bool, toBoolean, u"Boolean")
TYLHART_SCALAR_MARSHAL(std::uint8_t, toByte, u"Byte")
TYLHART_SCALAR_MARSHAL(Text, toText, u"String")
#undef TYLHART_SCALAR_MARSHAL

template <>
struct Marshal<Variant> {
    static const Variant& from(const Variant& v) { return v; }
    static Variant to(Variant v) { return v; }
    static Text typeName() { return u"Variant"; }
};

// Enumerations travel as 32-bit integers and list under their own name.
#define TYLHART_ENUM_MARSHAL(enumName, guid)                                            \
    template <>                                                                         \
    struct Marshal<enumName> {                                                          \
        static enumName from(const Variant& v) { return static_cast<enumName>(v.toLong()); } \
        static Variant to(enumName v) { return Variant(static_cast<std::int32_t>(v)); }  \
        static Text typeName() { return u"" #enumName; }                                \
    };
TYLHART_ENUMERATIONS(TYLHART_ENUM_MARSHAL)
#undef TYLHART_ENUM_MARSHAL

// Object parameters accept Nothing and objects of the declared class; any
// other value or class is the runtime's type mismatch.
template <class T>
struct Marshal<Ref<T>> {
    static Ref<T> from(const Variant& v) {
        Ref<Object> o = v.toObject();
        if (!o) return {};
        Ref<T> typed = refCast<T>(o);
        if (!typed) errors::raise(errors::Runtime::TypeMismatch);
        return typed;
    }
    static Variant to(Ref<T> v) { return Variant(Ref<Object>(std::move(v))); }
    static Text typeName() {
        if constexpr (std::is_same_v<T, Object>) return u"Object";
        else return T::TypeName;
    }
};
// A child field travels as the object it stands for.
template <class T>
struct Marshal<Child<T>> : Marshal<Ref<T>> {
    static Variant to(const Child<T>& v) { return Marshal<Ref<T>>::to(v.ref()); }
};

namespace detail {

template <class T>
using Bare = std::remove_cvref_t<T>;

[[noreturn]] void raiseMissingArgument();
[[noreturn]] void raiseArgumentCount();

// The value for parameter i: given, defaulted, Missing, or a raise.
inline const Variant& argumentAt(Args args, const std::vector<ParamInfo>& params, std::size_t i) {
    static const Variant missing{Missing{}};
    if (i < args.size() && !args[i].isMissing()) return args[i];
    if (i < params.size() && !params[i].defaultValue.isMissing()) return params[i].defaultValue;
    if (i < params.size() && params[i].optional) return missing;
    raiseMissingArgument();
}

template <class R, class Call>
Variant result(Call&& call) {
    if constexpr (std::is_void_v<R>) {
        call();
        return Variant();
    } else {
        return Marshal<Bare<R>>::to(call());
    }
}

template <class A>
constexpr bool writesBack = std::is_lvalue_reference_v<A> && !std::is_const_v<std::remove_reference_t<A>>;

// One argument converted for the call. A parameter taken by value or const
// reference gets the converted value (a Variant is not even copied); a
// non-const reference parameter gets a local whose final value goes back
// into the caller's argument, if the caller gave one (a Missing placeholder
// in the arguments is a place the caller gave, so it receives the value).
template <class A>
struct Converted {
    using Stored = decltype(Marshal<Bare<A>>::from(std::declval<const Variant&>()));
    Stored value;
    explicit Converted(const Variant& v) : value(Marshal<Bare<A>>::from(v)) {}
    decltype(auto) pass() {
        if constexpr (std::is_reference_v<Stored>) return (value);
        else return std::move(value);
    }
    void writeBack(Variant*) const {}
};
template <class A>
    requires writesBack<A>
struct Converted<A> {
    Bare<A> value;
    explicit Converted(const Variant& v) : value(Marshal<Bare<A>>::from(v)) {}
    Bare<A>& pass() { return value; }
    void writeBack(Variant* slot) const {
        if (slot) *slot = Marshal<Bare<A>>::to(value);
    }
};

// Arguments are converted left to right; written-back values reach the
// caller whether the member returns or raises, as they would in place.
template <class C, class F, class R, class... A, std::size_t... I>
Variant call(C& self, F fn, Args args, const std::vector<ParamInfo>& params,
             std::index_sequence<I...>) {
    if (args.size() > sizeof...(A)) raiseArgumentCount();
    std::tuple<Converted<A>...> converted{Converted<A>(argumentAt(args, params, I))...};
    const auto writeBack = [&] {
        [[maybe_unused]] const auto slot = [&](std::size_t i) { return i < args.size() ? &args[i] : nullptr; };
        (std::get<I>(converted).writeBack(slot(I)), ...);
    };
    try {
        Variant out = result<R>([&]() -> R { return (self.*fn)(std::get<I>(converted).pass()...); });
        writeBack();
        return out;
    } catch (...) {
        writeBack();
        throw;
    }
}

template <class... A>
std::vector<ParamInfo> describe(const std::vector<Param>& given) {
    std::vector<Text> types{Marshal<Bare<A>>::typeName()...};
    std::vector<ParamInfo> out;
    auto it = given.begin();
    for (std::size_t i = 0; i < types.size(); ++i, ++it) {
        ParamInfo p;
        p.type = types[i];
        if (it != given.end()) {
            p.name = it->name;
            p.optional = it->isOptional();
            p.defaultValue = it->defaultValue;
            p.byRef = it->byRef;
        } else {
            p.name = u"Value";
        }
        out.push_back(std::move(p));
    }
    return out;
}

template <class Sig>
struct MemberFn;
template <class C, class R, class... A>
struct MemberFn<R (C::*)(A...)> {
    using Result = R;
    static constexpr std::size_t arity = sizeof...(A);
    static std::vector<ParamInfo> params(const std::vector<Param>& p) { return describe<A...>(p); }
    template <class Self, class F>
    static Variant invoke(Self& self, F fn, Args args, const std::vector<ParamInfo>& params) {
        return call<Self, F, R, A...>(self, fn, args, params, std::index_sequence_for<A...>{});
    }
    using Last = typename decltype((std::type_identity<void>{}, ..., std::type_identity<A>{}))::type;
};
template <class C, class R, class... A>
struct MemberFn<R (C::*)(A...) const> : MemberFn<R (C::*)(A...)> {};
template <class C, class R, class... A>
struct MemberFn<R (C::*)(A...) noexcept> : MemberFn<R (C::*)(A...)> {};
template <class C, class R, class... A>
struct MemberFn<R (C::*)(A...) const noexcept> : MemberFn<R (C::*)(A...)> {};

}  // namespace detail

// Builds a class's member table in slot order and numbers the members:
// data fields 0x40030000 + n, methods 0x60030000 + m, property procedures
// 0x68030000 + m, where m counts the members with code in slot order.
template <class C>
class ClassBuilder {
public:
    explicit ClassBuilder(Text name) : name_(std::move(name)) {}

    // A public data field: get and let, get and set for objects, all three
    // for a Variant.
    // The field may live in a base class of C, as the shared fields of a
    // family of classes do.
    template <class T, class Owner>
    ClassBuilder& field(const char16_t* name, T Owner::*member) {
        static_assert(std::is_base_of_v<Owner, C>);
        MemberInfo m = entry(name, FirstFieldId + fields_++);
        m.field = true;
        m.type = Marshal<T>::typeName();
        m.get = [member](Object& o, Args args) -> Variant {
            if (!args.empty()) detail::raiseArgumentCount();
            return Marshal<T>::to(static_cast<C&>(o).*member);
        };
        Invoker put = [member](Object& o, Args args) -> Variant {
            if (args.size() != 1) detail::raiseArgumentCount();
            static_cast<C&>(o).*member = Marshal<T>::from(args[0]);
            return Variant();
        };
        assignPut(m, std::move(put), kindOf<T>());
        members_.push_back(std::move(m));
        return *this;
    }

    template <class F>
    ClassBuilder& method(const char16_t* name, F fn, const std::vector<Param>& params = {}) {
        MemberInfo m = entry(name, FirstMethodId + code_++);
        using Fn = detail::MemberFn<F>;
        m.params = Fn::params(params);
        m.type = resultName<typename Fn::Result>();
        m.method = bind(fn, m.params);
        noteDirect(name, fn);
        members_.push_back(std::move(m));
        return *this;
    }

    // A method whose arguments the member reads itself (raw arguments).
    ClassBuilder& rawMethod(const char16_t* name, Text resultType, std::vector<ParamInfo> params,
                            std::function<Variant(C&, Args)> fn) {
        MemberInfo m = entry(name, FirstMethodId + code_++);
        m.params = std::move(params);
        m.type = std::move(resultType);
        m.method = [fn = std::move(fn)](Object& o, Args args) { return fn(static_cast<C&>(o), args); };
        members_.push_back(std::move(m));
        return *this;
    }

    // A read-only property with code.
    template <class G>
    ClassBuilder& getter(const char16_t* name, G get, const std::vector<Param>& params = {}) {
        MemberInfo m = entry(name, FirstPropertyId + code_++);
        using Fn = detail::MemberFn<G>;
        m.params = Fn::params(params);
        m.type = resultName<typename Fn::Result>();
        m.get = bind(get, m.params);
        members_.push_back(std::move(m));
        return *this;
    }

    // A property with code: get and a let or set chosen by the value type
    // (objects are set, Variants both, everything else let). The setter
    // takes the property's parameters first and the value last.
    template <class G, class S>
    ClassBuilder& property(const char16_t* name, G get, S put, const std::vector<Param>& params = {}) {
        getter(name, get, params);
        MemberInfo& m = members_.back();
        using Value = detail::Bare<typename detail::MemberFn<S>::Last>;
        std::vector<ParamInfo> putParams = m.params;
        putParams.push_back(ParamInfo{u"Value", Marshal<Value>::typeName()});
        assignPut(m, bind(put, putParams), kindOf<Value>());
        return *this;
    }

    // The hidden enumerator member (-4).
    template <class F>
    ClassBuilder& newEnum(F fn) {
        MemberInfo m = entry(u"NewEnum", DispIdNewEnum);
        ++code_;  // it holds its slot like any other member with code
        m.hidden = true;
        m.type = u"IUnknown";
        m.get = bind(fn, {});
        m.method = m.get;
        members_.push_back(std::move(m));
        return *this;
    }

    // Makes the object-valued property just added a let, not a set, where
    // callers assign it with a plain assignment.
    ClassBuilder& asLet() {
        MemberInfo& m = members_.back();
        if (m.set) m.let = std::move(m.set);
        m.set = nullptr;
        return *this;
    }

    // Gives the member just added another identifier (a default member).
    ClassBuilder& withId(DispId id) {
        members_.back().id = id;
        return *this;
    }

    ClassInfo build(ClassInfo::Factory factory) { return ClassInfo(name_, factory, std::move(members_), direct_); }
    // Objects of the class are created by its default constructor.
    ClassInfo build() {
        return build([] { return Ref<Object>(make<C>()); });
    }

private:
    enum class PutKind { Let, Set, Both };

    template <class T>
    static constexpr PutKind kindOf() {
        if constexpr (std::is_same_v<T, Variant>) return PutKind::Both;
        else if constexpr (requires(T t) { t.get(); t.ref(); } || requires(T t) { t.get(); t.detach(); })
            return PutKind::Set;
        else return PutKind::Let;
    }

    static void assignPut(MemberInfo& m, Invoker put, PutKind kind) {
        if (kind != PutKind::Set) m.let = put;
        if (kind != PutKind::Let) m.set = std::move(put);
    }

    template <class R>
    static Text resultName() {
        if constexpr (std::is_void_v<R>) return Text();
        else return Marshal<detail::Bare<R>>::typeName();
    }

    template <class F>
    static Invoker bind(F fn, std::vector<ParamInfo> params) {
        return [fn, params = std::move(params)](Object& o, Args args) -> Variant {
            return detail::MemberFn<F>::invoke(static_cast<C&>(o), fn, args, params);
        };
    }

    // The bound member functions behind DirectCalls, one set per class.
    struct Direct {
        static inline Ref<C> (C::*copy)() const = nullptr;
        static inline bool (C::*compare)(const Ref<C>&) const = nullptr;
        static inline Variant (C::*render)(std::int16_t) const = nullptr;
        static Ref<Object> callCopy(const Object& o) { return (static_cast<const C&>(o).*copy)(); }
        static bool callCompare(const Object& o, const Object& other) {
            return (static_cast<const C&>(o).*compare)(Ref<C>(static_cast<C*>(const_cast<Object*>(&other))));
        }
        static Variant callRender(const Object& o, std::int16_t level) {
            return (static_cast<const C&>(o).*render)(level);
        }
    };

    // Keeps Fn as Bound when it is bound under Expected with Bound's signature.
    template <class Bound, class F>
    static bool keep(TextView name, const char16_t* expected, Bound& bound, F fn) {
        if constexpr (std::is_convertible_v<F, Bound>) {
            if (name == expected) return bound = fn, true;
        }
        return false;
    }
    // Called before the member is added: its index is members_.size().
    template <class F>
    void noteDirect(TextView name, F fn) {
        const std::size_t index = members_.size();
        if (keep(name, u"GetCopy", Direct::copy, fn)) direct_.copy = &Direct::callCopy, direct_.member[0] = index;
        if (keep(name, u"Compare", Direct::compare, fn)) direct_.compare = &Direct::callCompare, direct_.member[1] = index;
        if (keep(name, u"ToString", Direct::render, fn)) direct_.render = &Direct::callRender, direct_.member[2] = index;
    }

    MemberInfo entry(const char16_t* name, DispId id) {
        MemberInfo m;
        m.name = name;
        m.id = id;
        return m;
    }

    Text name_;
    std::vector<MemberInfo> members_;
    DispId fields_ = 0;
    DispId code_ = 0;
    DirectCalls direct_;
};

// The enumerator that NewEnum hands out: walks a snapshot of the elements
// taken when it was made, so changing the container while iterating is safe.
class Enumerator final : public Object {
public:
    static constexpr const char16_t* TypeName = u"IEnumVARIANT";
    static const ClassInfo& staticClassInfo();
    const ClassInfo& classInfo() const override { return staticClassInfo(); }

    explicit Enumerator(std::vector<Variant> items) : items_(std::move(items)) {}
    bool next(Variant& out);  // false at the end
    void reset() noexcept { position_ = 0; }
    // Another enumerator over the same snapshot, at the same place.
    Ref<Enumerator> clone() const {
        Ref<Enumerator> copy = make<Enumerator>(items_);
        copy->position_ = position_;
        return copy;
    }
    std::size_t remaining() const noexcept { return items_.size() - position_; }

private:
    std::vector<Variant> items_;
    std::size_t position_ = 0;
};

}  // namespace tylhart

// Declares the class's identity and member table inside a class body.
#define TYLHART_CLASS(Class)                                                   \
public:                                                                        \
    static constexpr const char16_t* TypeName = u"" #Class;                    \
    static const ::tylhart::ClassInfo& staticClassInfo();                      \
    const ::tylhart::ClassInfo& classInfo() const override { return staticClassInfo(); }
