#include "TestSupport.hpp"

#include <map>
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
        {ddoKVariableDef, 1, KindFixed},   {ddoKVariableDef, 10, KindFixed},  // the kind check runs first
        {ddoKCollectionDef, -1, KindFixed}, {ddoKUndefined, 10, KindRange},
        {ddoKUndefined, -1, KindRange},     {ddoKUndefined, -2, KindRange}};
    for (const auto& [kind, attempted, expected] : cases) {
        auto d = make<CDefinition>();
        if (kind >= 0) d->Initialize(u"kept", kind);
        const std::string before = text(d->ToString(2));
        EXPECT_EQ(raised([&] { d->Initialize(u"new", static_cast<enumDDObjectKind>(attempted)); }), expected);
        EXPECT_EQ(text(d->ToString(2)), before);
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
    auto copy = a->GetCopy();
    EXPECT_NE(copy.get(), a.get());
    EXPECT_TRUE(copy->Compare(a));
    copy->SetName(u"other");
    EXPECT_EQ(a->Name(), u"pressure");
    EXPECT_EQ(raised([&] { a->SetFromObject(makeDefinition(u"cmd", ddoKCommandDef)); }), KindFixed);
    EXPECT_EQ(text(a->ToString(2)), "Definition{Name:pressure, Kind:0}");

    EXPECT_EQ(make<CDefinition>()->GetCopy()->Kind(), -1);
    a->SetFromObject(make<CDefinition>());
    EXPECT_EQ(text(a->ToString(2)), "Definition{Name:unknown, Kind:-1}");
}

TEST(Definition, EveryMemberIsReachableByNameAndIdentifier) {
    Ref<Object> d = make<CDefinition>();
    call(d, u"INITIALIZE", Text(u"pressure"), Text(u"0"));  // names ignore case; "0" coerces
    EXPECT_EQ(text(get(d, u"name")), "pressure");
    let(d, u"Name", Text(u"flow"));
    EXPECT_EQ(get(d, u"Kind"), Variant(std::int32_t{0}));
    EXPECT_EQ(text(invoke(*d, 0x68030000, Access::Get)), "flow");
    EXPECT_EQ(text(call(d, u"ToString")), "Definition{Name:flow}");  // optional level defaults to 1
    auto copy = call(d, u"GetCopy").toObject();
    EXPECT_TRUE(call(d, u"Compare", copy).toBoolean());
}

TEST(Definition, DispatchRefusesBadCallsWithTheRuntimeErrors) {
    auto definition = make<CDefinition>();
    Ref<Object> d = definition;
    EXPECT_EQ(raised([&] { call(d, u"Rename"); }), platformError(errors::Runtime::NoSuchMember));
    EXPECT_EQ(raised([&] { invoke(*d, 0x60030099, Access::Method); }), platformError(errors::Runtime::NoSuchMember));
    EXPECT_EQ(raised([&] { call(d, u"GetCopy", 1); }), platformError(errors::Runtime::WrongArgumentCount));
    EXPECT_EQ(raised([&] { call(d, u"Initialize", Text(u"x"), Text(u"abc")); }),
              platformError(errors::Runtime::TypeMismatch));
    EXPECT_EQ(raised([&] { call(d, u"Compare", Text(u"x")); }), platformError(errors::Runtime::TypeMismatch));
    EXPECT_EQ(raised([&] { call(d, u"Initialize", Text(u"x")); }).description, "Argument not optional");
    EXPECT_EQ(raised([&] { let(d, u"Kind", std::int32_t{1}); }), platformError(errors::Runtime::NoSuchMember));
    EXPECT_EQ(definition->Kind(), -1);  // nothing above changed it
}

TEST(Enumerations, MetadataMatchesTheDeclaredValuesIncludingDuplicates) {
    std::map<std::string, std::int32_t> all;
    for (const EnumInfo& e : enumerations())
        for (const EnumMember& m : e.members) all[toUtf8(m.name)] = m.value;
    // The listed values are the declared ones, duplicates and all.
    for (const auto& [name, value] : {std::pair{"ddvTMax", 14}, {"ddvTMax15", 15}, {"ddvTTimeValue", 15},
                                      {"ddmiqTReview", 1}, {"ddmCAnalogOutput", 3}, {"ddvCAnalogOutput", 4}})
        EXPECT_EQ(all.at(name), value) << name;
    EXPECT_EQ(all.count("sqTMax"), 0u);
    EXPECT_EQ(toUtf8(enumerations().back().guid), "{3011BB1A-F89F-4304-B971-CDE7B9CC97EE}");
    EXPECT_EQ(toUtf8(enumerations()[12].guid), "{285215E7-027B-11D5-8152-00E0291221F9}");
}

}  // namespace
}  // namespace tylhart::test
