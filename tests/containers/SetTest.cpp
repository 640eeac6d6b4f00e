#include "TestSupport.hpp"
#include "support/TestConstructs.hpp"
#include "tylhart/containers/CDefinitionSet.hpp"
#include "tylhart/containers/CObjectSet.hpp"
#include "tylhart/containers/CValueSet.hpp"

namespace tylhart::test {
namespace {

const ErrorRecord WrongKind = libraryError("CDefinitionSet.Add", errors::WrongKind);
const ErrorRecord Duplicate = platformError(errors::Runtime::DuplicateKey);
const ErrorRecord MissingKey = platformError(errors::Runtime::InvalidCall);

template <class S>
std::string names(const S& set) {
    std::string out;
    set.elements().forEach([&](const auto& d) { out += (out.empty() ? "" : " ") + toUtf8(d->rawName()); });
    return out;
}

template <class S = CDefinitionSet>
Ref<S> setOf(std::vector<const char16_t*> items, enumDDObjectKind kind = ddoKVariableDef) {
    auto set = make<S>();
    for (auto name : items) set->Add(makeDefinition(name, kind));
    return set;
}

TEST(DefinitionSet, KeysIgnoreCaseAndDuplicatesAreRefused) {
    auto set = setOf({u"Flow"});
    EXPECT_EQ(raised([&] { set->Add(makeDefinition(u"FLOW", ddoKVariableDef)); }), Duplicate);
    EXPECT_EQ(set->Count(), 1);
    EXPECT_TRUE(set->IsInSet(makeDefinition(u"flow", ddoKCommandDef)));  // kind is not part of the key
    EXPECT_FALSE(set->IsInSet(make<CDefinition>()));
    EXPECT_EQ(raised([&] { set->Add(make<CDefinition>()); }),
              libraryError("CDefinition.DefName", errors::NotInitialized));
    set->Remove(make<CDefinition>());  // no key: ignored
    set->Remove(makeDefinition(u"absent", ddoKVariableDef));
    EXPECT_EQ(names(*set), "Flow");
    set->Remove(makeDefinition(u"fLoW", ddoKMenuDef));  // an equal key suffices
    EXPECT_EQ(set->Count(), 0);
}

TEST(DefinitionSet, InsertReplacesAndMovesToTheEnd) {
    auto set = setOf({u"a", u"b", u"c"});
    auto replacement = makeDefinition(u"A", ddoKMenuDef);
    set->Insert(replacement);
    EXPECT_EQ(names(*set), "b c A");
    EXPECT_EQ(set->Count(), 3);
}

TEST(DefinitionSet, ItemAndFindItemHandOutCopiesNewEnumTheElements) {
    auto a = makeDefinition(u"a", ddoKVariableDef);
    auto set = make<CDefinitionSet>();
    set->Add(a);
    auto item = set->Item(1);
    EXPECT_NE(item.get(), a.get());
    item->SetName(u"changed");
    EXPECT_EQ(set->Item(1)->Name(), u"a");
    EXPECT_NE(set->FindItem(u"A").get(), a.get());
    EXPECT_TRUE(set->FindItem(u"A")->Compare(a));
    EXPECT_EQ(raised([&] { set->FindItem(u"b"); }), MissingKey);
    EXPECT_EQ(raised([&] { set->Item(2); }), platformError(errors::Runtime::SubscriptOutOfRange));
    Variant v;
    ASSERT_TRUE(set->NewEnum()->next(v));
    EXPECT_EQ(v.toObject().get(), a.get());
}

TEST(DefinitionSet, CompareLooksAtKeysOnlyInAnyOrder) {
    auto vars = setOf({u"a", u"b"});
    auto menus = setOf({u"B", u"A"}, ddoKMenuDef);
    EXPECT_TRUE(vars->Compare(menus));
    EXPECT_FALSE(vars->Compare(setOf({u"a"})));
    EXPECT_FALSE(vars->Compare(setOf({u"a", u"c"})));
    menus->UseExactKind = true;
    EXPECT_FALSE(vars->Compare(menus));  // the header counts for definition sets
}

TEST(DefinitionSet, CopyIsShallowAndMergesIntoWhatTheReceiverHolds) {
    auto set = setOf({u"a", u"b"});
    auto copy = set->GetCopy();
    EXPECT_TRUE(copy->Compare(set));
    EXPECT_EQ(copy->elements()[0].get(), set->elements()[0].get());  // shared elements

    auto receiver = setOf({u"x", u"B"});
    EXPECT_EQ(raised([&] { receiver->SetFromObject(set); }), Duplicate);
    EXPECT_EQ(names(*receiver), "x B a");  // elements added before the failure stay
    auto other = setOf({u"y"});
    other->SetFromObject(set);
    EXPECT_EQ(names(*other), "y a b");
}

TEST(DefinitionSet, UnionInsertsTheOtherSetIntoACopy) {
    auto left = setOf({u"a", u"b"});
    auto right = setOf({u"B", u"c"}, ddoKMenuDef);
    auto result = left->Union(right);
    EXPECT_EQ(names(*result), "a B c");
    EXPECT_EQ(result->elements()[1].get(), right->elements()[0].get());
    EXPECT_EQ(names(*left), "a b");
    EXPECT_EQ(names(*right), "B c");
}

TEST(DefinitionSet, ExactKindRuleAndItsCheckedHeader) {
    auto set = make<CDefinitionSet>();
    set->UseExactKind = true;
    set->Add(makeDefinition(u"v", ddoKVariableDef));
    EXPECT_EQ(raised([&] { set->Add(makeDefinition(u"c", ddoKCommandDef)); }), WrongKind);
    // A duplicate is refused before the kind is fixed: the set stays as it was.
    auto fresh = make<CDefinitionSet>();
    fresh->Add(makeDefinition(u"v", ddoKMenuDef));
    fresh->UseExactKind = true;
    EXPECT_EQ(raised([&] { fresh->Add(makeDefinition(u"V", ddoKCommandDef)); }), Duplicate);
    EXPECT_EQ(fresh->KindUsed(), -1);

    auto menus = make<CDefinitionSet>();
    menus->UseExactKind = true;
    menus->SetKindUsed(ddoKMenuDef);
    EXPECT_EQ(raised([&] { menus->SetFromObject(set); }), WrongKind);
    EXPECT_EQ(menus->KindUsed(), ddoKMenuDef);
    EXPECT_EQ(menus->Count(), 0);
}

TEST(VariableDefinitionSet, AcceptsOnlyVariablesAndItsUnionAlwaysFails) {
    auto set = setOf<CVariableDefinitionSet>({u"a"});
    EXPECT_EQ(raised([&] { set->Add(makeDefinition(u"m", ddoKMenuDef)); }), WrongKind);
    EXPECT_EQ(raised([&] { set->Union(make<CDefinitionSet>()); }), platformError(errors::Runtime::TypeMismatch));
    EXPECT_EQ(raised([&] { call(set, u"Union", set); }), platformError(errors::Runtime::TypeMismatch));
    EXPECT_EQ(text(set->ToString(0)), "DefinitionSet{Count:1}");
    EXPECT_EQ(text(set->ToString(-5)), "DefinitionSet{Count:1}");
    EXPECT_EQ(text(set->ToString(1)), "VariableDefinitionSet{Count:1}");
    EXPECT_EQ(text(set->ToString(2)), "VariableDefinitionSet{Count:1, Items: { Definition{Name:a}}}");
    EXPECT_EQ(names(*set), "a");
}

TEST(ValueSet, KeysAreTextFormsSoANumberAndItsTextCollide) {
    auto set = make<CValueSet>();
    set->Add(Variant(std::int16_t{1}));
    EXPECT_TRUE(set->IsInSet(Variant(Text(u"1"))));
    EXPECT_EQ(raised([&] { set->Add(Variant(Text(u"1"))); }), Duplicate);
    set->Add(Variant(Text(u"Bar")));
    set->Add(Variant(true));
    EXPECT_TRUE(set->IsInSet(Variant(Text(u"TRUE"))));
    EXPECT_FALSE(set->IsInSet(Variant(Null{})));
    EXPECT_EQ(set->FindItem(Variant(Text(u"1"))), Variant(std::int16_t{1}));  // the stored value
    EXPECT_EQ(set->FindItem(Variant(Text(u"bar"))), Variant(Text(u"Bar")));
    EXPECT_EQ(set->Item(3), Variant(true));
    EXPECT_EQ(text(set->ToString(2)), "ValueSet{Count:3, Items: { (1) (Bar) (True)}}");
    EXPECT_TRUE(set->ToString(0).isEmpty());
    set->Insert(Variant(1.0));
    EXPECT_EQ(text(set->ToString(2)), "ValueSet{Count:3, Items: { (Bar) (True) (1)}}");
    EXPECT_TRUE(set->GetCopy()->Compare(set));
}

Ref<CObject> handleOn(const char16_t* name) {
    auto menu = make<FakeMenu>();
    menu->Definition()->SetName(name);
    return menu->MakeObject();
}

TEST(ObjectSet, KeysAreTheHeldDefinitionsNamesAndCopiesReplace) {
    auto set = make<CObjectSet>();
    set->Add(handleOn(u"main"));
    EXPECT_EQ(raised([&] { set->Add(make<CObject>()); }), platformError(errors::Runtime::ObjectNotSet));
    EXPECT_EQ(raised([&] { set->Add(handleOn(u"MAIN")); }), Duplicate);
    auto found = set->FindItem(makeDefinition(u"Main", ddoKMenuDef));
    EXPECT_NE(found.get(), set->elements()[0].get());  // a copy of the handle ...
    EXPECT_NE(found->UntypedObject().get(), set->elements()[0]->UntypedObject().get());  // ... and its construct
    EXPECT_TRUE(found->Compare(set->elements()[0]));

    auto receiver = make<CObjectSet>();
    receiver->Add(handleOn(u"main"));
    receiver->Add(handleOn(u"other"));
    receiver->SetFromObject(set);  // replaces: no duplicate error
    EXPECT_EQ(receiver->Count(), 1);
    EXPECT_EQ(receiver->elements()[0].get(), set->elements()[0].get());
    EXPECT_EQ(text(receiver->ToString(2)), "ObjectSet{Count:1, Items: { OBJECT{MENU{Definition{Name:main}}}}}");
}

TEST(Sets, MembersCarryTheirSlotIdentifiers) {
    const ClassInfo& defs = CDefinitionSet::staticClassInfo();
    const std::pair<const char16_t*, DispId> expected[] = {
        {u"UseExactKind", 0x40030000}, {u"KindUsed", 0x68030000}, {u"Add", 0x60030001},
        {u"Insert", 0x60030002},       {u"Union", 0x60030003},    {u"Item", 0x60030004},
        {u"FindItem", 0x60030005},     {u"Remove", 0x60030006},   {u"Count", 0x68030007},
        {u"NewEnum", DispIdNewEnum},   {u"IsInSet", 0x60030009}, {u"ToString", 0x6003000D}};
    for (const auto& [name, id] : expected) EXPECT_EQ(defs.find(name)->id, id) << toUtf8(name);
    EXPECT_EQ(CValueSet::staticClassInfo().find(u"Add")->id, 0x60030000);
    EXPECT_EQ(CObjectSet::staticClassInfo().find(u"ToString")->id, 0x6003000C);

    Ref<Object> set = make<CValueSet>();
    call(set, u"Add", 2.5);
    call(set, u"add", Text(u"x"));
    EXPECT_EQ(get(set, u"Count"), Variant(std::int32_t{2}));
    EXPECT_TRUE(call(set, u"IsInSet", Text(u"2.5")).toBoolean());
    EXPECT_EQ(call(set, u"FindItem", Text(u"X")), Variant(Text(u"x")));
}

}  // namespace
}  // namespace tylhart::test
