// Stand-ins for construct classes, built on the shared construct pattern,
// so the handle and the object set can be tested before the real constructs.
#pragma once

#include "tylhart/core/Construct.hpp"

namespace tylhart::test {

template <class Self, enumDDObjectKind Kind>
class FakeConstruct : public Construct<Self> {
public:
    static constexpr enumDDObjectKind ObjectKind = Kind;
    Text Label;

    void SetFromObject(const Ref<Self>& other) {
        Label = other->Label;
        this->copyDefinitionFrom(*other);
    }
    bool Compare(const Ref<Self>& other) const { return this->definitionEquals(*other) && Label == other->Label; }
    Variant ToString(std::int16_t level = 1) const {
        if (level < 1) return Variant();
        Text out = this->renderHead(Self::Tag, level);
        if (level > 1) out += u", Label:" + Label;
        return out + u"}";
    }

    static ClassInfo describe() {
        ClassBuilder<Self> b(Self::TypeName);
        b.field(u"Label", static_cast<Text Self::*>(&FakeConstruct::Label));
        Construct<Self>::describeDefinition(b);
        Construct<Self>::describeMakeObject(b);
        Construct<Self>::describeGetCopy(b);
        b.method(u"SetFromObject", &Self::SetFromObject, {required(u"ToCopy")})
            .method(u"Compare", &Self::Compare, {required(u"ToCompare")})
            .method(u"ToString", &Self::ToString, {optional(u"InfoLevel", std::int16_t{1})});
        return b.build([] { return Ref<Object>(make<Self>()); });
    }
    static const ClassInfo& staticClassInfo() {
        static const ClassInfo info = describe();
        return info;
    }
    const ClassInfo& classInfo() const override { return staticClassInfo(); }
};

// Class names are what the handle checks, so these carry real ones.
class FakeMenu final : public FakeConstruct<FakeMenu, ddoKMenuDef> {
public:
    static constexpr const char16_t* TypeName = u"CMenu";
    static constexpr const char16_t* Tag = u"MENU{";
    static constexpr const char16_t* DefinitionSource = u"Menu.Definition";
};

class FakeUnit final : public FakeConstruct<FakeUnit, ddoKUnitDef> {
public:
    static constexpr const char16_t* TypeName = u"CUnit";
    static constexpr const char16_t* Tag = u"UNIT{";
    static constexpr const char16_t* DefinitionSource = u"CUnit.Definition";
};

// Offers everything the handle asks for, under a name that is not one of
// the ten top-level classes.
class NotTopLevel final : public FakeConstruct<NotTopLevel, ddoKMenuDef> {
public:
    static constexpr const char16_t* TypeName = u"CMenuItem";
    static constexpr const char16_t* Tag = u"ITEM{";
    static constexpr const char16_t* DefinitionSource = u"CMenuItem.Definition";
};

// A variable whose Definition is Nothing: its kind cannot be read.
class DefinitionlessVariable final : public Object {
public:
    static constexpr const char16_t* TypeName = u"CVariable";
    Ref<CDefinition> Definition() const { return {}; }
    static const ClassInfo& staticClassInfo() {
        static const ClassInfo info = ClassBuilder<DefinitionlessVariable>(TypeName)
                                          .getter(u"Definition", &DefinitionlessVariable::Definition)
                                          .build(nullptr);
        return info;
    }
    const ClassInfo& classInfo() const override { return staticClassInfo(); }
};

}  // namespace tylhart::test
