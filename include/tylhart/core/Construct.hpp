// The shape that the top-level construct classes share: an own definition
// ("unknown" of the class's kind until one is set), a kind-checked Definition, MakeObject, deep copy
// and a tagged rendering.
#pragma once

#include "tylhart/core/CObject.hpp"

namespace tylhart {

// The kind check of a definition-valued let: Nothing is the call on
// Nothing (91), another kind the wrong-kind error under the given Source.
// Copies that check everything before assigning anything call it directly.
inline void requireKind(const Ref<CDefinition>& definition, enumDDObjectKind kind, TextView source) {
    if (checked(definition).Kind() != kind) errors::raise(source, errors::WrongKind);
}

// Derived supplies:
//   static constexpr enumDDObjectKind ObjectKind;          its definition kind
//   static constexpr const char16_t* DefinitionSource;     Source of the kind check
template <class Derived>
class Construct : public Object {
public:
    // The definition object itself, shared, not a copy.
    Ref<CDefinition> Definition() const { return definition_; }

    // Stores the given definition without copying it, after checking that it
    // is of the class's kind.
    void SetDefinition(const Ref<CDefinition>& newDefinition) {
        requireKind(newDefinition, Derived::ObjectKind, Derived::DefinitionSource);
        definition_ = newDefinition;
    }

    // A handle on this construct (a reference, not a copy), unchecked.
    Ref<CObject> MakeObject() {
        auto handle = make<CObject>();
        handle->SetUntypedObject(Ref<Object>(this));
        return handle;
    }

    Ref<Derived> GetCopy() const {
        return copyOf(static_cast<const Derived&>(*this));
    }

protected:
    Construct() = default;

    // The deep copy of the definition, through the checked setter.
    void copyDefinitionFrom(const Derived& other) {
        if (!other.definition_) errors::raise(errors::Runtime::ObjectNotSet);
        SetDefinition(other.definition_->GetCopy());
    }

    bool definitionEquals(const Derived& other) const {
        if (!definition_ || !other.definition_) return !definition_ && !other.definition_;
        return definition_->Compare(other.definition_);
    }

    // Tag, then the definition rendered at the same level when one is set.
    Text renderHead(TextView tag, std::int16_t infoLevel) const {
        Text out;
        // Room for a typical rendering of the level, so the fields that
        // follow are appended without growing the text again and again.
        out.reserve(infoLevel > 2 ? 960 : infoLevel > 1 ? 480 : 64);
        out += tag;
        if (definition_) out += concatDefinition(infoLevel);
        return out;
    }

    // The members every construct lists, in the order it lists them. The
    // definition is assigned with let.
    static void describeDefinition(ClassBuilder<Derived>& b) {
        b.property(u"Definition", &Construct::Definition, &Construct::SetDefinition).asLet();
    }
    static void describeMakeObject(ClassBuilder<Derived>& b) { b.method(u"MakeObject", &Construct::MakeObject); }
    static void describeGetCopy(ClassBuilder<Derived>& b) { b.method(u"GetCopy", &Construct::GetCopy); }
    // Definition, GetCopy, SetFromObject, Compare, MakeObject, ToString: what
    // most constructs list after their fields, in this order.
    static ClassBuilder<Derived>& describeConstructMembers(ClassBuilder<Derived>& b) {
        describeDefinition(b);
        describeGetCopy(b);
        b.method(u"SetFromObject", &Derived::SetFromObject, {required(u"ToCopy")})
            .method(u"Compare", &Derived::Compare, {required(u"ToCompare")});
        describeMakeObject(b);
        return b.method(u"ToString", &Derived::ToString, {optional(u"InfoLevel", std::int16_t{1})});
    }

    // Made on first use: most constructs are given a definition, or copy
    // one, before anyone reads the "unknown" one.
    struct UnknownDefinition {
        Ref<CDefinition> operator()() const { return makeDefinition(u"unknown", Derived::ObjectKind); }
    };
    Child<CDefinition, UnknownDefinition> definition_;

private:
    Text concatDefinition(std::int16_t infoLevel) const {
        Variant v = definition_->ToString(infoLevel);
        return v.isEmpty() ? Text() : std::move(v).toText();
    }
};

}  // namespace tylhart
