#include "tylhart/constructs/HandleItem.hpp"

#include <string>

#include "tylhart/constructs/EditDisplays.hpp"
#include "tylhart/constructs/Menus.hpp"
#include "tylhart/containers/Elements.hpp"

namespace tylhart {

template <class Derived>
void HandleItem<Derived>::SetObj(const Ref<CObject>& newObj) {
    // The held construct's own definition; a handle holding nothing fails
    // here, before anything is compared or stored.
    Ref<CDefinition> target = checked(newObj).ObjectDefinition();
    if (Definition && Definition->Kind() != ddoKUndefined && !Definition->Compare(target))
        errors::raise(Derived::ObjSource, errors::NoCompatibleDefinition);
    Definition = std::move(target);
    obj_ = newObj;
}

template <class Derived>
Ref<Derived> HandleItem<Derived>::GetCopy() const {
    return copyOf(self());
}

template <class Derived>
void HandleItem<Derived>::SetFromObject(const Ref<Derived>& toCopy) {
    const Derived& source = checked(toCopy);
    // GetCopy on Nothing fails, as a definition or handle of Nothing would.
    Ref<CDefinition> definition = checked(source.Definition).GetCopy();
    const Text ownBefore = self().ownState();
    self().setOwnState(source.ownState());
    Ref<CObject> handle;
    try {
        handle = checked(source.obj_).GetCopy();
    } catch (...) {
        self().setOwnState(ownBefore);  // this item's own text always fits it again
        throw;
    }
    Definition = std::move(definition);
    obj_ = std::move(handle);
}

template <class Derived>
bool HandleItem<Derived>::Compare(const Ref<Derived>& toCompare) const {
    const Derived& other = checked(toCompare);
    return checked(Definition).Compare(other.Definition) && self().ownState() == other.ownState() &&
           checked(obj_).Compare(other.obj_);
}

template <class Derived>
Variant HandleItem<Derived>::ToString(std::int16_t infoLevel) const {
    if constexpr (Derived::ShortForm) {
        // Built before the level is looked at, so a definition of Nothing
        // fails at every level.
        Text shortForm = Derived::Tag + concatText(checked(Definition).ToString(1)) + u"}";
        if (infoLevel < 1) return shortForm;
    } else {
        if (infoLevel < 1) return Variant();
    }
    Text out = Derived::Tag;
    if (Definition) out += concatText(Definition->ToString(infoLevel));
    if (infoLevel > 1) {
        out += self().ownDetails();
        if (obj_) out.append(u", Object:"sv).append(concatText(obj_->ToString(childLevel(infoLevel))));
    }
    return std::move(out) + u"}";
}

template <class Derived>
ClassInfo HandleItem<Derived>::describe() {
    ClassBuilder<Derived> b(Derived::TypeName);
    b.field(u"Definition", &HandleItem::Definition);
    Derived::describeOwn(b);
    b.method(u"GetCopy", &HandleItem::GetCopy)
        .method(u"SetFromObject", &HandleItem::SetFromObject, {required(u"ToCopy")})
        .method(u"Compare", &HandleItem::Compare, {required(u"ToCompare")})
        .property(u"obj", &HandleItem::obj, &HandleItem::SetObj, {})
        .asLet()
        .method(u"ToString", &HandleItem::ToString, {optional(u"InfoLevel", std::int16_t{1})});
    return b.build();
}

template class HandleItem<CMenuItem>;
template class HandleItem<CEditDisplayItem>;

}  // namespace tylhart
