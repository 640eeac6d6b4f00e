// CObject: a handle that holds any one top-level construct without knowing
// its class, and hands it back through checked Make... accessors.
#pragma once

#include "tylhart/core/CDefinition.hpp"

namespace tylhart {

class CVariable;
class CCommand;
class CMenu;
class CEditDisplay;
class CMethod;
class CRefresh;
class CUnit;
class CWriteAsOne;
class CArray;
class CCollection;

// The classes a handle may hold.
inline constexpr const char16_t* TopLevelClassNames[] = {
    u"CVariable", u"CCommand", u"CMenu",  u"CEditDisplay", u"CMethod",
    u"CRefresh",  u"CUnit",    u"CWriteAsOne", u"CArray",  u"CCollection"};
bool isTopLevelClassName(TextView name) noexcept;

class CObject final : public Object {
    TYLHART_CLASS(CObject)
public:
    // Free client data: never changed or interpreted by the handle.
    std::int32_t ChangeLevel = 0;
    std::int32_t LastChangeLevel = 0;
    bool AttributesAvailable = false;

    Ref<CObject> GetCopy() const;
    void SetFromObject(const Ref<CObject>& toCopy);
    bool Compare(const Ref<CObject>& toCompare) const;

    Ref<Object> UntypedObject() const { return held_; }
    // Accepts Nothing or a construct of the ten classes whose Definition.Kind
    // can be read by name; the held object stays on refusal.
    void SetUntypedObject(const Ref<Object>& newObject);
    Ref<CDefinition> ObjectDefinition() const;

    // The held construct as class T: Nothing when empty, the runtime's type
    // mismatch when it is of another class. Templates so that the construct
    // classes need only be complete where an accessor is used.
    template <class T>
    Ref<T> makeAs() const {
        Ref<Object> o = checkedHeld(T::TypeName);
        return Ref<T>(static_cast<T*>(o.get()));
    }
    template <class T = CVariable> Ref<T> MakeVariable() const { return makeAs<T>(); }
    template <class T = CCommand> Ref<T> MakeCommand() const { return makeAs<T>(); }
    template <class T = CMenu> Ref<T> MakeMenu() const { return makeAs<T>(); }
    template <class T = CEditDisplay> Ref<T> MakeEditDisplay() const { return makeAs<T>(); }
    template <class T = CMethod> Ref<T> MakeMethod() const { return makeAs<T>(); }
    template <class T = CRefresh> Ref<T> MakeRefresh() const { return makeAs<T>(); }
    template <class T = CUnit> Ref<T> MakeUnit() const { return makeAs<T>(); }
    template <class T = CWriteAsOne> Ref<T> MakeWriteAsOne() const { return makeAs<T>(); }
    template <class T = CArray> Ref<T> MakeArray() const { return makeAs<T>(); }
    template <class T = CCollection> Ref<T> MakeCollection() const { return makeAs<T>(); }

    Variant ToString(std::int16_t infoLevel = 1) const;

    // The held object when its class is ClassName, Nothing when empty, else
    // the type mismatch.
    Ref<Object> checkedHeld(TextView className) const;

private:
    Ref<Object> held_;
};

}  // namespace tylhart
