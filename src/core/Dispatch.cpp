#include "tylhart/core/Dispatch.hpp"

#include <iterator>

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

ClassInfo::ClassInfo(Text name, Factory factory, std::vector<MemberInfo> members)
    : name_(std::move(name)), factory_(factory), members_(std::move(members)) {
    for (std::size_t i = 0; i < members_.size(); ++i) {
        byName_.emplace(foldCase(members_[i].name), i);
        byId_.emplace(members_[i].id, i);
    }
    protocol_ = {find(u"GetCopy"), find(u"Compare"), find(u"ToString")};
}

const MemberInfo* ClassInfo::find(DispId id) const noexcept {
    auto it = byId_.find(id);
    return it == byId_.end() ? nullptr : &members_[it->second];
}

const MemberInfo* ClassInfo::find(TextView name) const {
    // Member names are short, so the folded probe is built on the stack; a
    // longer name is folded into a text.
    char16_t buffer[64];
    Text longName;
    TextView folded;
    if (name.size() <= std::size(buffer)) {
        for (std::size_t i = 0; i < name.size(); ++i) buffer[i] = foldCase(name[i]);
        folded = TextView(buffer, name.size());
    } else {
        longName = foldCase(name);
        folded = longName;
    }
    auto it = byName_.find(folded);
    return it == byName_.end() ? nullptr : &members_[it->second];
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
