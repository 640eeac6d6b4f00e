#include "tylhart/core/Dispatch.hpp"

#include <bit>
#include <stdexcept>

#include "tylhart/core/Limits.hpp"

namespace tylhart {

bool MemberInfo::has(Access a) const {
    switch (a) {
        case Access::Method: return static_cast<bool>(method);
        case Access::Get: return static_cast<bool>(get);
        case Access::Let: return static_cast<bool>(let);
        case Access::Set: return static_cast<bool>(set);
    }
    return false;
}

namespace {
// Folds Name into Folded (room for Name's length) and hashes it, in one
// pass: even and odd characters in two chains of multiplies, which run
// side by side, so a name costs half the latency of one chain.
std::size_t foldAndHash(TextView name, char16_t* folded) noexcept {
    constexpr std::size_t Prime = 1099511628211ull;
    std::size_t even = 14695981039346656037ull, odd = name.size();
    std::size_t i = 0;
    for (; i + 2 <= name.size(); i += 2) {
        even = (even ^ (folded[i] = foldCase(name[i]))) * Prime;
        odd = (odd ^ (folded[i + 1] = foldCase(name[i + 1]))) * Prime;
    }
    if (i < name.size()) even = (even ^ (folded[i] = foldCase(name[i]))) * Prime;
    return (even ^ (odd >> 7)) + odd * 0x9E3779B97F4A7C15ull;
}
}  // namespace

ClassInfo::ClassInfo(Text name, Factory factory, std::vector<MemberInfo> members, DirectCalls direct)
    : name_(std::move(name)), factory_(factory), members_(std::move(members)), direct_(direct) {
    nameSlots_.assign(std::bit_ceil(2 * members_.size() + 1), 0);
    idSlots_.assign(nameSlots_.size(), 0);
    const std::size_t mask = nameSlots_.size() - 1;
    for (std::size_t i = 0; i < members_.size(); ++i) {
        const Text& name = members_[i].name;
        if (name.size() > MaxNameLength) throw std::logic_error("member name longer than ClassInfo::MaxNameLength");
        Text folded(name.size(), u'\0');
        std::size_t slot = foldAndHash(name, folded.data()) & mask;
        while (nameSlots_[slot] != 0 && foldedNames_[nameSlots_[slot] - 1] != folded) slot = (slot + 1) & mask;
        if (nameSlots_[slot] == 0) nameSlots_[slot] = static_cast<std::uint16_t>(i + 1);  // the first of a name wins
        foldedNames_.push_back(std::move(folded));
        slot = idHash(members_[i].id) & mask;
        while (idSlots_[slot] != 0 && members_[idSlots_[slot] - 1].id != members_[i].id) slot = (slot + 1) & mask;
        if (idSlots_[slot] == 0) idSlots_[slot] = static_cast<std::uint16_t>(i + 1);
    }
    protocol_ = {find(u"GetCopy"), find(u"Compare"), find(u"ToString"), find(u"Definition")};
    // A direct call stands only for the member that a call by name finds.
    const auto finds = [&](Protocol p, std::size_t i) { return protocol_[static_cast<std::size_t>(p)] == &members_[i]; };
    if (direct_.copy && !finds(Protocol::GetCopy, direct_.member[0])) direct_.copy = nullptr;
    if (direct_.compare && !finds(Protocol::Compare, direct_.member[1])) direct_.compare = nullptr;
    if (direct_.render && !finds(Protocol::ToString, direct_.member[2])) direct_.render = nullptr;
}

const MemberInfo* ClassInfo::find(DispId id) const noexcept {
    const std::size_t mask = idSlots_.size() - 1;
    for (std::size_t slot = idHash(id) & mask;; slot = (slot + 1) & mask) {
        const std::uint16_t member = idSlots_[slot];
        if (member == 0) return nullptr;
        if (members_[member - 1].id == id) return &members_[member - 1];
    }
}

const MemberInfo* ClassInfo::find(TextView name) const {
    if (name.size() > MaxNameLength) return nullptr;
    char16_t folded[MaxNameLength];
    const std::size_t mask = nameSlots_.size() - 1;
    const TextView probe(folded, name.size());
    for (std::size_t slot = foldAndHash(name, folded) & mask;; slot = (slot + 1) & mask) {
        const std::uint16_t member = nameSlots_[slot];
        if (member == 0) return nullptr;
        if (foldedNames_[member - 1] == probe) return &members_[member - 1];
    }
}

namespace detail {
void raiseMissingArgument() {
    throw Error(static_cast<std::int32_t>(0x800A01C1u), errors::RuntimeSource, u"Argument not optional");
}
void raiseArgumentCount() { errors::raise(errors::Runtime::WrongArgumentCount); }
}  // namespace detail

namespace {

// Picks the accessor for the requested kind. Methods and property gets
// answer each other, as Automation lets a caller read a property with a
// method call and call a parameterless method as a property; a let of an
// object falls back to set and a set to let, as Visual Basic's default
// assignment does.
const Invoker* accessor(const MemberInfo& m, Access kind) {
    switch (kind) {
        case Access::Method:
            if (m.method) return &m.method;
            if (m.get) return &m.get;
            break;
        case Access::Get:
            if (m.get) return &m.get;
            if (m.method) return &m.method;
            break;
        case Access::Let:
            if (m.let) return &m.let;
            if (m.set) return &m.set;
            break;
        case Access::Set:
            if (m.set) return &m.set;
            if (m.let) return &m.let;
            break;
    }
    return nullptr;
}

Variant invokeMember(Object& target, const MemberInfo* m, Access kind, Args args) {
    if (!m) errors::raise(errors::Runtime::NoSuchMember);
    const Invoker* fn = accessor(*m, kind);
    if (!fn) errors::raise(errors::Runtime::NoSuchMember);
    if ((kind == Access::Let || kind == Access::Set) && args.empty()) detail::raiseArgumentCount();
    // Late-bound calls nest when one object renders, copies or compares
    // another through its members; the guard bounds that nesting.
    DepthGuard nested;
    return (*fn)(target, args);
}

}  // namespace

Variant invoke(Object& target, DispId id, Access kind, Args args) {
    return invokeMember(target, target.classInfo().find(id), kind, args);
}

Variant invoke(Object& target, TextView name, Access kind, Args args) {
    return invokeMember(target, target.classInfo().find(name), kind, args);
}

Variant invoke(Object& target, Protocol member, Access kind, Args args) {
    return invokeMember(target, target.classInfo().find(member), kind, args);
}

Variant invoke(const Ref<Object>& target, TextView name, Access kind, Args args) {
    if (!target) errors::raise(errors::Runtime::ObjectNotSet);
    return invoke(*target, name, kind, args);
}

// Each opens the guard that invokeMember opens, so that nesting is bounded
// at the same depth on either path.
Ref<Object> copyThrough(Object& target) {
    if (const auto copy = target.classInfo().direct().copy) {
        DepthGuard nested;
        return copy(target);
    }
    return invoke(target, Protocol::GetCopy, Access::Method).toObject();
}

bool compareThrough(Object& target, const Ref<Object>& other) {
    // Direct only where the argument needs no conversion: an object of
    // another class is the conversion's error, raised late bound.
    const auto compare = target.classInfo().direct().compare;
    if (compare && other && &other->classInfo() == &target.classInfo()) {
        DepthGuard nested;
        return compare(target, *other);
    }
    Variant argument[] = {Variant(other)};
    return invoke(target, Protocol::Compare, Access::Method, argument).toBoolean();
}

Variant renderThrough(Object& target, std::int16_t infoLevel) {
    if (const auto render = target.classInfo().direct().render) {
        DepthGuard nested;
        return render(target, infoLevel);
    }
    Variant level[] = {Variant(infoLevel)};
    return invoke(target, Protocol::ToString, Access::Method, level);
}

DispId dispIdOfName(const Object& target, TextView name) {
    const MemberInfo* m = target.classInfo().find(name);
    if (!m) errors::raise(errors::Runtime::NoSuchMember);
    return m->id;
}

bool Enumerator::next(Variant& out) {
    if (position_ >= items_.size()) return false;
    out = items_[position_++];
    return true;
}

const ClassInfo& Enumerator::staticClassInfo() {
    static const ClassInfo info = ClassBuilder<Enumerator>(TypeName)
                                      .rawMethod(u"Next", u"Variant", {},
                                                 [](Enumerator& e, Args) {
                                                     Variant v;
                                                     if (!e.next(v)) return Variant(Missing{});
                                                     return v;
                                                 })
                                      .rawMethod(u"Reset", Text(), {},
                                                 [](Enumerator& e, Args) {
                                                     e.reset();
                                                     return Variant();
                                                 })
                                      .build(nullptr);
    return info;
}

}  // namespace tylhart
