// What a menu item and an edit display item share: the definition of the
// item they refer to and a CObject handle on that item, kept consistent
// with each other.
#pragma once

#include "tylhart/core/CObject.hpp"

namespace tylhart {

// Derived supplies:
//   static constexpr const char16_t* Tag;        "MenuItem{", opens ToString
//   static constexpr const char16_t* ObjSource;  "CMenuItem.Obj", Source of the obj let
//   static constexpr bool ShortForm;             whether ToString below level 1
//                                                gives Tag + definition + "}"
// and may hide the hooks below for the fields it adds.
template <class Derived>
class HandleItem : public Object {
public:
    // The referenced item's definition: a plain field, set without a check.
    Child<CDefinition> Definition;

    // The handle itself, shared, not a copy.
    Ref<CObject> obj() const { return obj_; }
    // Nothing, or a handle holding nothing, is the call on Nothing (91). Once
    // the item's Definition is initialised, the handle must hold an item with
    // an equal definition, else "No compatible Definition!" and both old
    // references stay. Stores the held construct's own definition object and
    // the handle, both by reference.
    void SetObj(const Ref<CObject>& newObj);

    Ref<Derived> GetCopy() const;
    // A deep copy of the definition and of the handle (its construct copied
    // by the construct), plus what Derived adds. Every copy is made and every
    // check run before anything is assigned: a refused copy changes nothing.
    void SetFromObject(const Ref<Derived>& toCopy);
    // Definition, what Derived adds, then the handles by CObject.Compare.
    bool Compare(const Ref<Derived>& toCompare) const;
    // Tag and definition; above level 1 what Derived adds and the handle one
    // level down.
    Variant ToString(std::int16_t infoLevel = 1) const;

protected:
    HandleItem() : obj_(make<CObject>()) {}

    // Hooks. What Derived adds is copied and compared as one text: a copy
    // writes the source's text between the definition and the handle, so
    // setOwnState may refuse and must change nothing when it does.
    Text ownState() const { return Text(); }
    void setOwnState(const Text&) {}
    Text ownDetails() const { return Text(); }
    static void describeOwn(ClassBuilder<Derived>&) {}

    static ClassInfo describe();

private:
    Derived& self() { return static_cast<Derived&>(*this); }
    const Derived& self() const { return static_cast<const Derived&>(*this); }

    Ref<CObject> obj_;
};

}  // namespace tylhart
