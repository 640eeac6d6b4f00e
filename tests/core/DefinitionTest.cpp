#include "TestSupport.hpp"

#include "tylhart/core/CDefinition.hpp"

namespace tylhart::test {
namespace {

const ErrorRecord NotInitialized = libraryError("CDefinition.DefName", errors::NotInitialized);
const ErrorRecord KindFixed = libraryError("CDefinition.Initialize", errors::KindFixed);
const ErrorRecord KindRange = libraryError("CDefinition.Initialize", errors::IndexOutOfRange);

TEST(Definition, NewDefinitionRendersButRefusesItsNameAndReinitialisingRenames) {
    auto d = make<CDefinition>();
    EXPECT_EQ(text(d->ToString(1)), "Definition{Name:unknown}");
    EXPECT_TRUE(d->ToString(0).isEmpty());
    EXPECT_EQ(raised([&] { d->Name(); }), NotInitialized);
    EXPECT_EQ(raised([&] { d->SetName(u"x"); }), NotInitialized);
    d->Initialize(u"a", ddoKVariableDef);
    d->Initialize(u"b", ddoKVariableDef);
    EXPECT_EQ(d->Name(), u"b");
    d->SetName(u"");  // any text, the empty one included
    EXPECT_EQ(d->Name(), u"");
}

TEST(Definition, RefusedInitializeReportsTheFirstFailingCheckAndChangesNothing) {
    const std::tuple<enumDDObjectKind, std::int32_t, ErrorRecord> cases[] = {  // kind before, attempted
        {ddoKVariableDef, 10, KindFixed}, {ddoKCollectionDef, -1, KindFixed},  // the kind check runs first
        {ddoKUndefined, 10, KindRange},   {ddoKUndefined, -1, KindRange}};
    for (const auto& [kind, attempted, expected] : cases) {
        auto d = make<CDefinition>();
        if (kind >= 0) d->Initialize(u"kept", kind);
        expectRefused(d, [&] { d->Initialize(u"new", static_cast<enumDDObjectKind>(attempted)); }, expected);
    }
}

TEST(Definition, CompareIsExactOnNamesAndIgnoresNamesWhenUninitialised) {
    auto a = makeDefinition(u"Flow", ddoKVariableDef);
    EXPECT_FALSE(a->Compare(makeDefinition(u"flow", ddoKVariableDef)));
    EXPECT_FALSE(a->Compare(makeDefinition(u"Flow", ddoKCommandDef)));
    EXPECT_TRUE(a->Compare(makeDefinition(u"Flow", ddoKVariableDef)));
    EXPECT_TRUE(make<CDefinition>()->Compare(make<CDefinition>()));
    EXPECT_FALSE(make<CDefinition>()->Compare(a));
}

TEST(Definition, CopiesAreIndependentAnotherKindIsRefusedAndUninitialisedSourcesReset) {
    auto a = makeDefinition(u"pressure", ddoKVariableDef);
    expectOwnCopies<CDefinition>(a, {[](CDefinition& copy) { copy.SetName(u"other"); }});
    auto sharing = a->GetCopy();  // copies share the name until one is renamed
    a->SetName(u"renamed");
    EXPECT_EQ(sharing->Name(), u"pressure");
    expectRefused(a, [&] { a->SetFromObject(makeDefinition(u"cmd", ddoKCommandDef)); }, KindFixed);

    EXPECT_EQ(make<CDefinition>()->GetCopy()->Kind(), -1);
    a->SetFromObject(make<CDefinition>());
    EXPECT_EQ(text(a->ToString(2)), "Definition{Name:unknown, Kind:-1}");
}

TEST(Definition, DispatchRefusesBadCallsWithTheRuntimeErrorsAndReachesEveryMemberByNameAndIdentifier) {
    auto definition = make<CDefinition>();
    Ref<Object> d = definition;
    EXPECT_EQ(raised([&] { call(d, u"Rename"); }), NoSuchMember);
    EXPECT_EQ(raised([&] { invoke(*d, 0x60030099, Access::Method); }), NoSuchMember);
    EXPECT_EQ(raised([&] { call(d, u"GetCopy", 1); }), WrongArgumentCount);
    EXPECT_EQ(raised([&] { call(d, u"Initialize", Text(u"x"), Text(u"abc")); }), TypeMismatch);
    EXPECT_EQ(raised([&] { call(d, u"Compare", Text(u"x")); }), TypeMismatch);
    EXPECT_EQ(raised([&] { call(d, u"Initialize", Text(u"x")); }), NotOptional);
    EXPECT_EQ(raised([&] { let(d, u"Kind", std::int32_t{1}); }), NoSuchMember);
    EXPECT_EQ(definition->Kind(), -1);  // nothing above changed it

    call(d, u"INITIALIZE", Text(u"pressure"), Text(u"0"));  // names ignore case; "0" coerces
    EXPECT_EQ(text(get(d, u"name")), "pressure");
    let(d, u"Name", Text(u"flow"));
    EXPECT_EQ(get(d, u"Kind"), Variant(std::int32_t{0}));
    EXPECT_EQ(text(invoke(*d, 0x68030000, Access::Get)), "flow");
    EXPECT_EQ(text(call(d, u"ToString")), "Definition{Name:flow}");  // optional level defaults to 1
    auto copy = call(d, u"GetCopy").toObject();
    EXPECT_TRUE(call(d, u"Compare", copy).toBoolean());
}

}  // namespace
}  // namespace tylhart::test
