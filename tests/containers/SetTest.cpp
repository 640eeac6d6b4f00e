#include "TestSupport.hpp"
#include "tylhart/constructs/Collections.hpp"
#include "tylhart/containers/CDefinitionSet.hpp"
#include "tylhart/containers/CObjectSet.hpp"
#include "tylhart/containers/CValueSet.hpp"

namespace tylhart::test {
namespace {

// The generic set behaviour is proven on CDefinitionSet; the other sets
// keep only where they deviate (key, FindItem, copy, rendering).

const ErrorRecord WrongKind = libraryError("CDefinitionSet.Add", errors::WrongKind);

template <class S = CDefinitionSet>
Ref<S> setOf(std::vector<const char16_t*> items, enumDDObjectKind kind = ddoKVariableDef) {
    auto set = make<S>();
    for (auto name : items) set->Add(makeDefinition(name, kind));
    return set;
}

TEST(DefinitionSet, KeysIgnoreCaseAndDuplicatesAreRefused) {
    auto set = setOf({u"Flow"});
    EXPECT_EQ(raised([&] { set->Add(makeDefinition(u"FLOW", ddoKVariableDef)); }), Duplicate);
    EXPECT_TRUE(set->IsInSet(makeDefinition(u"flow", ddoKCommandDef)));  // kind is not part of the key
    EXPECT_FALSE(set->IsInSet(make<CDefinition>()));
    const ErrorRecord notInitialized = libraryError("CDefinition.DefName", errors::NotInitialized);
    EXPECT_EQ(raised([&] { set->Add(make<CDefinition>()); }), notInitialized);
    set->Remove(make<CDefinition>());  // no key: ignored
    EXPECT_EQ(names(*set), "Flow");
    set->Remove(makeDefinition(u"fLoW", ddoKMenuDef));  // an equal key suffices
    EXPECT_EQ(set->Count(), 0);
}

TEST(DefinitionSet, InsertReplacesAndMovesToTheEndUnionInsertsIntoACopy) {
    auto set = setOf({u"a", u"b", u"c"});
    set->Insert(makeDefinition(u"A", ddoKMenuDef));
    EXPECT_EQ(names(*set), "b c A");

    auto left = setOf({u"a", u"b"});
    auto right = setOf({u"B", u"c"}, ddoKMenuDef);
    auto result = left->Union(right);
    EXPECT_EQ(names(*result), "a B c");
    EXPECT_EQ(result->elements()[1].get(), right->elements()[0].get());
    EXPECT_EQ(names(*left), "a b");
    EXPECT_EQ(names(*right), "B c");
}

TEST(DefinitionSet, ItemAndFindItemHandOutCopiesNewEnumTheElements) {
    auto a = makeDefinition(u"a", ddoKVariableDef);
    auto set = make<CDefinitionSet>();
    set->Add(a);
    set->Item(1)->SetName(u"changed");
    EXPECT_EQ(set->Item(1)->Name(), u"a");
    EXPECT_NE(set->FindItem(u"A").get(), a.get());
    EXPECT_TRUE(set->FindItem(u"A")->Compare(a));
    EXPECT_EQ(raised([&] { set->FindItem(u"b"); }), InvalidCall);
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

TEST(DefinitionSet, DuplicateIsRefusedBeforeTheKindIsFixedAndTheHeaderTravelsFirst) {
    auto fresh = setOf({u"v"}, ddoKMenuDef);
    fresh->UseExactKind = true;
    EXPECT_EQ(raised([&] { fresh->Add(makeDefinition(u"V", ddoKCommandDef)); }), Duplicate);
    EXPECT_EQ(fresh->KindUsed(), -1);

    auto vars = setOf({u"x"}), menus = make<CDefinitionSet>();
    vars->UseExactKind = true, vars->SetKindUsed(ddoKVariableDef);
    EXPECT_TRUE(vars->GetCopy()->Compare(vars));  // rule and kind are copied
    menus->UseExactKind = true, menus->SetKindUsed(ddoKMenuDef);
    EXPECT_EQ(raised([&] { menus->SetFromObject(vars); }), WrongKind);
    EXPECT_TRUE(menus->KindUsed() == ddoKMenuDef && menus->Count() == 0);
}

TEST(VariableDefinitionSet, AcceptsOnlyVariablesItsUnionAlwaysFailsAndItHasAShortLabel) {
    auto set = setOf<CVariableDefinitionSet>({u"a"});
    EXPECT_EQ(raised([&] { set->Add(makeDefinition(u"m", ddoKMenuDef)); }), WrongKind);
    EXPECT_EQ(raised([&] { set->Union(make<CDefinitionSet>()); }), TypeMismatch);
    EXPECT_EQ(names(*set), "a");
    const auto built = [&] { return set; };
    expectRenderings({{"set", built, 0}, {"set", built, 1}, {"set", built, 2}});
}

TEST(ValueSet, KeysAreTextFormsSoANumberAndItsTextCollide) {
    Ref<Object> dispatched = make<CValueSet>();
    call(dispatched, u"add", std::int16_t{1});
    auto set = refCast<CValueSet>(dispatched);
    EXPECT_TRUE(set->IsInSet(Variant(Text(u"1"))));
    EXPECT_EQ(raised([&] { set->Add(Variant(Text(u"1"))); }), Duplicate);
    set->Add(Variant(Text(u"Bar")));
    EXPECT_EQ(call(set, u"FindItem", Text(u"1")), Variant(std::int16_t{1}));  // the stored value
    EXPECT_EQ(set->FindItem(Variant(Text(u"bar"))), Variant(Text(u"Bar")));
    EXPECT_EQ(text(set->ToString(2)), "ValueSet{Count:2, Items: { (1) (Bar)}}");
    EXPECT_TRUE(set->ToString(0).isEmpty());  // no short label
}

// A copy reads its source's store (the same elements() object) until either
// side changes; every change parts them and leaves the other side as it was.
TEST(ValueSet, ACopySharesTheStoreUntilEitherSideChanges) {
    const auto valueSet = [](std::vector<const char16_t*> values) {
        auto set = make<CValueSet>();
        for (auto v : values) set->Add(Variant(Text(v)));
        return set;
    };
    const std::vector<std::pair<const char*, std::function<void(CValueSet&)>>> changes = {
        {"Add", [](CValueSet& s) { s.Add(Variant(Text(u"c"))); }},
        {"Insert", [](CValueSet& s) { s.Insert(Variant(Text(u"A"))); }},
        {"Remove", [](CValueSet& s) { s.Remove(Variant(Text(u"b"))); }},
        {"SetFromObject", [&](CValueSet& s) { s.SetFromObject(valueSet({u"d"})); }},
    };
    for (const auto& [what, change] : changes)
        for (bool changeTheCopy : {false, true}) {
            SCOPED_TRACE(std::string(what) + (changeTheCopy ? " on the copy" : " on the source"));
            auto source = valueSet({u"a", u"b"});
            auto copy = source->GetCopy();
            EXPECT_EQ(&copy->elements(), &source->elements());
            change(changeTheCopy ? *copy : *source);
            EXPECT_NE(&copy->elements(), &source->elements());
            EXPECT_EQ(text((changeTheCopy ? source : copy)->ToString(2)), "ValueSet{Count:2, Items: { (a) (b)}}");
        }
    auto source = valueSet({u"a"});
    auto copy = source->GetCopy();
    copy->Remove(Variant(Text(u"x")));  // nothing to remove: nothing to part
    EXPECT_EQ(&copy->elements(), &source->elements());
    source = nullptr;  // the copy keeps the store alive
    EXPECT_EQ(text(copy->ToString(2)), "ValueSet{Count:1, Items: { (a)}}");
}

Ref<CObject> handleOn(const char16_t* name) {
    return made<CCollection>([&](CCollection& c) { c.Definition()->SetName(name); })->MakeObject();
}

TEST(ObjectSet, KeysAreTheHeldDefinitionsNamesAndCopiesReplace) {
    auto set = make<CObjectSet>();
    set->Add(handleOn(u"main"));
    EXPECT_EQ(raised([&] { set->Add(make<CObject>()); }), NotSet);
    EXPECT_EQ(raised([&] { set->Add(handleOn(u"MAIN")); }), Duplicate);
    auto found = set->FindItem(makeDefinition(u"Main", ddoKCollectionDef));
    EXPECT_TRUE(found.get() != set->elements()[0].get() && found->Compare(set->elements()[0]));  // a copy ...
    EXPECT_NE(found->UntypedObject().get(), set->elements()[0]->UntypedObject().get());  // ... of the construct too

    auto receiver = made<CObjectSet>([](CObjectSet& s) { s.Add(handleOn(u"main")), s.Add(handleOn(u"other")); });
    receiver->SetFromObject(set);  // replaces: no duplicate error, and shares the handles
    EXPECT_EQ(receiver->elements()[0].get(), set->elements()[0].get());
    EXPECT_EQ(text(receiver->ToString(2)), "ObjectSet{Count:1, Items: { OBJECT{COLLECTION{Definition{Name:main}}}}}");
}

// A copy adds the elements under the keys they have now: one renamed since
// it was added is keyed anew, or collides, and the source keeps its keys.
TEST(ObjectSet, ACopyKeysElementsRenamedSinceTheyWereAddedAnew) {
    auto set = make<CObjectSet>();
    auto renamed = handleOn(u"a");
    set->Add(renamed);
    set->Add(handleOn(u"b"));
    renamed->ObjectDefinition()->SetName(u"c");
    auto copy = set->GetCopy();
    EXPECT_NE(&copy->elements(), &set->elements());
    EXPECT_TRUE(copy->IsInSet(renamed));
    EXPECT_FALSE(set->IsInSet(renamed));
    renamed->ObjectDefinition()->SetName(u"B");
    EXPECT_EQ(raised([&] { set->GetCopy(); }), Duplicate);
}

}  // namespace
}  // namespace tylhart::test
