// What a container needs of its elements: copy, compare, render. Objects
// use their own GetCopy, Compare and ToString; values use the Variant rules.
#pragma once

#include "tylhart/core/Dispatch.hpp"
#include "tylhart/core/Limits.hpp"

namespace tylhart {

// The level a child renders at: one less than its owner's, so each level
// of nesting loses one level of detail.
inline std::int16_t childLevel(std::int16_t infoLevel) { return static_cast<std::int16_t>(infoLevel - 1); }

// A Boolean as renderings print it.
inline Text boolText(bool value) { return value ? u"True" : u"False"; }

// The label and the child one level down; nothing at all, not even the
// label, when the child is Nothing.
template <class C>
Text childText(const char16_t* label, const Ref<C>& child, std::int16_t infoLevel) {
    if (!child) return Text();
    DepthGuard nested;
    Text part = concatText(child->ToString(childLevel(infoLevel)));
    return Text(label).append(part);
}
template <class C>
Text childText(const char16_t* label, const Child<C>& child, std::int16_t infoLevel) {
    if constexpr (!Child<C>::StandsInFresh) {
        return childText(label, child.ref(), infoLevel);
    } else {
        if (!child) return Text();
        DepthGuard nested;
        Text part = concatText(child.render(childLevel(infoLevel)));
        return Text(label).append(part);
    }
}

// Both Nothing, or both present and equal by the child's own Compare; one
// Nothing and one present differ.
template <class C>
bool childrenEqual(const Ref<C>& mine, const Ref<C>& theirs) {
    if (!mine || !theirs) return !mine && !theirs;
    DepthGuard nested;
    return mine->Compare(theirs);
}

template <class E>
struct ElementOps;

template <class C>
struct ElementOps<Ref<C>> {
    static Ref<C> copy(const Ref<C>& e) {
        if (!e) errors::raise(errors::Runtime::ObjectNotSet);
        return e->GetCopy();  // every GetCopy goes through copyOf, which counts the level
    }
    // Probe.Compare(element): the element class's full comparison.
    static bool equal(const Ref<C>& probe, const Ref<C>& element) {
        if (!probe) errors::raise(errors::Runtime::ObjectNotSet);
        DepthGuard nested;
        return probe->Compare(element);
    }
    // Appends one item of a container rendering: a blank and the element's
    // text. Nothing is appended when the element fails.
    static void renderItem(Text& out, const Ref<C>& e, std::int16_t level) {
        if (!e) errors::raise(errors::Runtime::ObjectNotSet);
        DepthGuard nested;
        Text item = concatText(e->ToString(level));
        out.append(u" "sv).append(item);
    }
    static Variant toVariant(const Ref<C>& e) { return Variant(Ref<Object>(e)); }
};

template <>
struct ElementOps<Variant> {
    static Variant copy(const Variant& v) { return v; }
    static bool equal(const Variant& probe, const Variant& element) { return variantEquals(probe, element); }
    static void renderItem(Text& out, const Variant& v, std::int16_t) {
        Text item = concatText(v);
        out.append(u" ("sv).append(item).append(u")"sv);
    }
    static Variant toVariant(const Variant& v) { return v; }
};

}  // namespace tylhart
