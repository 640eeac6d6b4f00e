// Rendering and member-table helpers of the construct classes in this
// folder (private to the library).
#pragma once

#include "tylhart/containers/Elements.hpp"
#include "tylhart/core/CObject.hpp"

namespace tylhart::detail {

inline std::int16_t childLevel(std::int16_t infoLevel) { return static_cast<std::int16_t>(infoLevel - 1); }

// The label and the child one level down; nothing at all, not even the
// label, when the child is Nothing.
template <class C>
Text childText(const char16_t* label, const Ref<C>& child, std::int16_t infoLevel) {
    if (!child) return Text();
    return label + concatText(child->ToString(childLevel(infoLevel)));
}

// The label and "True" or "False".
inline Text flagText(const char16_t* label, bool flag) { return label + Variant(flag).toText(); }

// Definition (let), GetCopy, SetFromObject, Compare, MakeObject, ToString:
// the members a construct lists after its fields, in this order.
template <class C>
ClassInfo describeConstructMembers(ClassBuilder<C>& b) {
    b.property(u"Definition", &C::Definition, &C::SetDefinition)
        .asLet()
        .method(u"GetCopy", &C::GetCopy)
        .method(u"SetFromObject", &C::SetFromObject, {required(u"ToCopy")})
        .method(u"Compare", &C::Compare, {required(u"ToCompare")})
        .method(u"MakeObject", &C::MakeObject)
        .method(u"ToString", &C::ToString, {optional(u"InfoLevel", std::int16_t{1})});
    return b.build([] { return Ref<Object>(make<C>()); });
}

}  // namespace tylhart::detail
