#include "TestSupport.hpp"
#include "tylhart/constructs/Collections.hpp"
#include "tylhart/variables/CVariable.hpp"

namespace tylhart::test {
namespace {

const ErrorRecord TopLevelOnly = libraryError("CObject.UntypedObject", errors::TopLevelOnly);

// Carries the name of a top-level class, but its Definition is Nothing, so
// its kind cannot be read.
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

// Binds its own lower-case getcopy, compare and tostring before the typed
// members: calls by name find those first, and so must the handle.
class ShadowedCollection final : public Object {
public:
    static constexpr const char16_t* TypeName = u"CCollection";
    Ref<CDefinition> Definition() const { return makeDefinition(u"s", ddoKCollectionDef); }
    Ref<ShadowedCollection> GetCopy() const { return make<ShadowedCollection>(); }
    bool Compare(const Ref<ShadowedCollection>&) const { return true; }
    Variant ToString(std::int16_t) const { return Variant(Text(u"typed")); }
    static const ClassInfo& staticClassInfo() {
        using S = ShadowedCollection;
        static const ClassInfo info =
            ClassBuilder<S>(TypeName)
                .getter(u"Definition", &S::Definition)
                .rawMethod(u"getcopy", u"Object", {}, [](S&, Args) { return Variant(Ref<Object>(make<CArray>())); })
                .rawMethod(u"compare", u"Boolean", {}, [](S&, Args) { return Variant(false); })
                .rawMethod(u"tostring", u"String", {}, [](S&, Args) { return Variant(Text(u"raw")); })
                .method(u"GetCopy", &S::GetCopy)
                .method(u"Compare", &S::Compare, {required(u"ToCompare")})
                .method(u"ToString", &S::ToString, {optional(u"InfoLevel", std::int16_t{1})})
                .build(nullptr);
        return info;
    }
    const ClassInfo& classInfo() const override { return staticClassInfo(); }
};

TEST(ObjectHandle, CallsTheMembersThatACallByNameFinds) {
    auto handle = make<CObject>(), other = make<CObject>();
    handle->SetUntypedObject(make<ShadowedCollection>());
    other->SetUntypedObject(make<ShadowedCollection>());
    EXPECT_TRUE(refCast<CArray>(handle->GetCopy()->UntypedObject()));
    EXPECT_FALSE(handle->Compare(other));
    EXPECT_EQ(text(handle->ToString(1)), "OBJECT{raw}");
}

Ref<CCollection> collectionNamed(const char16_t* name) {
    return made<CCollection>([&](CCollection& c) { c.Definition()->SetName(name); });
}

// A member offers a readable definition but is no top-level class.
TEST(ObjectHandle, RefusesObjectsThatAreNotTopLevelConstructsAndKeepsTheHeldOne) {
    auto handle = make<CObject>();
    auto collection = collectionNamed(u"main");
    handle->SetUntypedObject(collection);
    const std::vector<Ref<Object>> refused = {makeDefinition(u"d", ddoKMenuDef), make<CObject>(), make<CMember>(),
                                              make<DefinitionlessVariable>()};
    for (const auto& candidate : refused) {
        SCOPED_TRACE(toUtf8(candidate->className()));
        EXPECT_EQ(raised([&] { handle->SetUntypedObject(candidate); }), TopLevelOnly);
        EXPECT_EQ(handle->UntypedObject().get(), collection.get());
    }
    handle->SetUntypedObject(nullptr);
    EXPECT_FALSE(handle->UntypedObject());
}

TEST(ObjectHandle, AnEmptyHandleMakesNothingAndHasNoDefinition) {
    auto handle = make<CObject>();
    EXPECT_FALSE(handle->MakeCollection());  // empty handle: Nothing, no error
    EXPECT_TRUE(call(handle, u"MakeVariable").toObject() == nullptr);
    EXPECT_EQ(raised([&] { handle->ObjectDefinition(); }), NotSet);
    // A filled handle's accessors are tried on every construct with the constructs.
    auto collection = collectionNamed(u"main");
    handle->SetUntypedObject(collection);
    EXPECT_EQ(handle->ObjectDefinition().get(), collection->Definition().get());
}

TEST(ObjectHandle, CompareLooksOnlyAtTheHeldConstructs) {
    auto a = make<CObject>(), b = make<CObject>();
    a->ChangeLevel = 1;
    b->ChangeLevel = 2;
    expectCompare(a, b, true);
    a->SetUntypedObject(collectionNamed(u"main"));
    expectCompare(a, b, false);
    b->SetUntypedObject(collectionNamed(u"main"));
    expectCompare(a, b, true);
    b->SetUntypedObject(collectionNamed(u"Main"));
    expectCompare(a, b, false);
    // Another class is the argument conversion's error, as by name.
    b->SetUntypedObject(make<CVariable>());
    EXPECT_EQ(raised([&] { a->Compare(b); }), TypeMismatch);
    EXPECT_EQ(raised([&] { call(a->UntypedObject(), u"Compare", b->UntypedObject()); }), TypeMismatch);
}

TEST(ObjectHandle, CopyHoldsADeepCopyAndAnEmptySourceKeepsTheBookkeeping) {
    auto source = collectionNamed(u"main")->MakeObject();
    source->ChangeLevel = 7;
    source->LastChangeLevel = 6;
    source->AttributesAvailable = true;
    auto copy = source->GetCopy();
    EXPECT_NE(copy->UntypedObject().get(), source->UntypedObject().get());
    EXPECT_TRUE(copy->Compare(source));
    EXPECT_TRUE(copy->ChangeLevel == 7 && copy->LastChangeLevel == 6 && copy->AttributesAvailable);

    auto empty = make<CObject>();
    empty->ChangeLevel = 5;
    copy->SetFromObject(empty);
    EXPECT_TRUE(!copy->UntypedObject() && copy->ChangeLevel == 7 && copy->AttributesAvailable);
}

TEST(ObjectHandle, RendersTheHeldObjectAtTheSameLevel) {
    const auto filled = [] {
        auto handle = made<CObject>([](CObject& h) { h.AttributesAvailable = true, h.ChangeLevel = -3; });
        auto collection = made<CCollection>([](CCollection& c) { c.Definition()->SetName(u"main"), c.Label = u"Main"; });
        return handle->SetUntypedObject(collection), handle;
    };
    expectRenderings({{"new", make<CObject>, 1}, {"new", make<CObject>, 0}, {"new", make<CObject>, 2},
                      {"on a collection", filled, 1}, {"on a collection", filled, 2}});
}

TEST(ObjectHandle, FieldsAndTheHeldObjectThroughDispatch) {
    Ref<Object> handle = make<CObject>();
    let(handle, u"changelevel", Text(u"12"));
    EXPECT_EQ(get(handle, u"ChangeLevel"), Variant(std::int32_t{12}));
    Ref<Object> array = make<CArray>();
    let(handle, u"UntypedObject", Variant(array));
    EXPECT_EQ(get(handle, u"UntypedObject").toObject().get(), array.get());
}

}  // namespace
}  // namespace tylhart::test
