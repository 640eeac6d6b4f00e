#include "tylhart/core/CObject.hpp"

#include <algorithm>
#include <string>

namespace tylhart {

bool isTopLevelClassName(TextView name) noexcept {
    return std::any_of(std::begin(TopLevelClassNames), std::end(TopLevelClassNames),
                       [&](const char16_t* n) { return name == n; });
}

Ref<CObject> CObject::GetCopy() const {
    return copyOf(*this);
}

void CObject::SetFromObject(const Ref<CObject>& toCopy) {
    if (!toCopy) errors::raise(errors::Runtime::ObjectNotSet);
    if (!toCopy->held_) {
        // Copying an empty handle keeps this handle's bookkeeping fields.
        held_ = nullptr;
        return;
    }
    // The construct copies itself; the result is held without the check.
    held_ = copyThrough(*toCopy->held_);
    ChangeLevel = toCopy->ChangeLevel;
    LastChangeLevel = toCopy->LastChangeLevel;
    AttributesAvailable = toCopy->AttributesAvailable;
}

bool CObject::Compare(const Ref<CObject>& toCompare) const {
    if (!toCompare) errors::raise(errors::Runtime::ObjectNotSet);
    if (!held_) return !toCompare->held_;
    if (!toCompare->held_) return false;
    return compareThrough(*held_, toCompare->held_);
}

void CObject::SetUntypedObject(const Ref<Object>& newObject) {
    if (!newObject) {
        held_ = nullptr;
        return;
    }
    bool readable = true;
    try {
        Ref<Object> definition = invoke(*newObject, Protocol::Definition, Access::Get).toObject();
        (void)invoke(definition, u"Kind", Access::Get).toInteger();
    } catch (const Error&) {
        readable = false;
    }
    if (!readable || !isTopLevelClassName(newObject->className()))
        errors::raise(u"CObject.UntypedObject", errors::TopLevelOnly);
    held_ = newObject;
}

Ref<CDefinition> CObject::ObjectDefinition() const {
    if (!held_) errors::raise(errors::Runtime::ObjectNotSet);
    Ref<Object> d = invoke(*held_, Protocol::Definition, Access::Get).toObject();
    Ref<CDefinition> definition = refCast<CDefinition>(d);
    if (d && !definition) errors::raise(errors::Runtime::TypeMismatch);
    return definition;
}

Ref<Object> CObject::checkedHeld(TextView className) const {
    if (!held_) return {};
    if (held_->className() != className) errors::raise(errors::Runtime::TypeMismatch);
    return held_;
}

Variant CObject::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out;
    if (held_) {
        // Same level as the handle's own, unlike containers.
        Variant inner = renderThrough(*held_, infoLevel);
        if (!inner.isEmpty() && !inner.isNull()) out = std::move(inner).toText();
    }
    out.insert(0, u"OBJECT{");  // in front of the held object's text, which is not copied
    if (infoLevel > 1) {
        out.append(u", AttributesAvailable:"sv).append(Variant(AttributesAvailable).toText());
        out.append(u", ChangeLevel:"sv).append(decimal(ChangeLevel));
        out.append(u", LastChangeLevel:"sv).append(decimal(LastChangeLevel));
    }
    out += u"}";
    return out;
}

const ClassInfo& CObject::staticClassInfo() {
    static const ClassInfo info = [] {
        // The ten accessors are described by class name, so the handle works
        // before (and without linking) the construct classes.
        ClassBuilder<CObject> b(TypeName);
        b.field(u"ChangeLevel", &CObject::ChangeLevel)
            .field(u"LastChangeLevel", &CObject::LastChangeLevel)
            .field(u"AttributesAvailable", &CObject::AttributesAvailable)
            .method(u"GetCopy", &CObject::GetCopy)
            .method(u"SetFromObject", &CObject::SetFromObject, {required(u"ToCopy")})
            .method(u"Compare", &CObject::Compare, {required(u"ToCompare")})
            .property(u"UntypedObject", &CObject::UntypedObject, &CObject::SetUntypedObject)
            .asLet()
            .getter(u"ObjectDefinition", &CObject::ObjectDefinition);
        for (const char16_t* className : TopLevelClassNames) {
            const Text name = u"Make" + Text(className + 1);
            b.rawMethod(name.c_str(), className, {}, [className](CObject& self, Args args) -> Variant {
                if (!args.empty()) errors::raise(errors::Runtime::WrongArgumentCount);
                return Variant(self.checkedHeld(className));
            });
        }
        b.method(u"ToString", &CObject::ToString, {optional(u"InfoLevel", std::int16_t{1})});
        return b.build();
    }();
    return info;
}

}  // namespace tylhart
