// What a container needs of its elements: copy, compare, render. Objects
// use their own GetCopy, Compare and ToString; values use the Variant rules.
#pragma once

#include "tylhart/core/Dispatch.hpp"

namespace tylhart {

// Text of a rendering part as string concatenation sees it: Empty and Null
// add nothing.
inline Text concatText(const Variant& v) {
    if (v.isEmpty() || v.isNull()) return Text();
    return v.toText();
}

template <class E>
struct ElementOps;

template <class C>
struct ElementOps<Ref<C>> {
    static Ref<C> copy(const Ref<C>& e) {
        if (!e) errors::raise(errors::Runtime::ObjectNotSet);
        return e->GetCopy();
    }
    // Probe.Compare(element): the element class's full comparison.
    static bool equal(const Ref<C>& probe, const Ref<C>& element) {
        if (!probe) errors::raise(errors::Runtime::ObjectNotSet);
        return probe->Compare(element);
    }
    // One item of a container rendering: a blank and the element's text.
    static Text renderItem(const Ref<C>& e, std::int16_t level) {
        if (!e) errors::raise(errors::Runtime::ObjectNotSet);
        return u" " + concatText(e->ToString(level));
    }
    static Variant toVariant(const Ref<C>& e) { return Variant(Ref<Object>(e)); }
};

template <>
struct ElementOps<Variant> {
    static Variant copy(const Variant& v) { return v; }
    static bool equal(const Variant& probe, const Variant& element) { return variantEquals(probe, element); }
    static Text renderItem(const Variant& v, std::int16_t) { return u" (" + concatText(v) + u")"; }
    static Variant toVariant(const Variant& v) { return v; }
};

}  // namespace tylhart
