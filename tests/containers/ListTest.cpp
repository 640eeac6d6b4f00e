#include "TestSupport.hpp"
#include "tylhart/containers/CDefinitionList.hpp"
#include "tylhart/containers/CValueList.hpp"

namespace tylhart::test {
namespace {

const ErrorRecord WrongKind = libraryError("CDefinitionSet.Add", errors::WrongKind);
const Variant At1(std::int32_t{1}), At2(std::int32_t{2});

Ref<CDefinitionList> listOf(const std::vector<const char16_t*>& items, bool exact = false) {
    auto list = make<CDefinitionList>();
    list->UseExactKind = exact;
    for (auto name : items) list->Add(makeDefinition(name, ddoKVariableDef));
    return list;
}

TEST(List, AddPlacesTheElementOrRefusesThePositionUnchanged) {
    const std::tuple<std::vector<const char16_t*>, std::int32_t, std::int32_t, const char*> cases[] = {
        // start, Before, After, order after adding "x" (nullptr: the position error)
        {{}, 5, 0, "x"}, {{}, 0, 7, "x"},  // an empty list ignores positions
        {{u"a", u"b"}, 0, 0, "a b x"},   {{u"a", u"b"}, 1, 1, "x a b"},  // Before wins
        {{u"a", u"b"}, 2, 0, "a x b"},   {{u"a", u"b"}, 0, 1, "a x b"},   {{u"a", u"b"}, 0, 2, "a b x"},
        {{u"a", u"b"}, -1, -1, "a b x"}, {{u"a", u"b"}, 3, 0, nullptr},   {{u"a", u"b"}, 0, 3, nullptr}};
    for (const auto& [start, before, after, expected] : cases) {
        auto list = listOf(start);
        const std::string old = names(*list);
        const ErrorRecord error = raised([&] { list->Add(makeDefinition(u"x", ddoKVariableDef), before, after); });
        EXPECT_EQ(error, expected ? NoError : Subscript) << before << "/" << after;
        EXPECT_EQ(names(*list), expected ? expected : old) << before << "/" << after;
    }
}

TEST(List, ItemRemoveAndNewEnumAddressPositionsAndTheStoredElements) {
    auto list = listOf({u"a", u"b", u"c"});
    auto b = list->Item(Variant(2.0));
    EXPECT_EQ(b->Name(), u"b");
    EXPECT_EQ(raised([&] { list->Item(Variant(Text(u"b"))); }), InvalidCall);
    Ref<Enumerator> e = list->NewEnum();
    Variant v;
    ASSERT_TRUE(e->next(v) && e->next(v));
    EXPECT_EQ(v.toObject().get(), b.get());  // the stored element, not a copy
    list->Remove(At2);
    EXPECT_EQ(names(*list), "a c");
}

// An equal definition is found, not only the same object; the kind counts.
TEST(List, FindFirstUsesTheFullCompareFromStart) {
    auto list = make<CDefinitionList>();
    auto a = makeDefinition(u"a", ddoKVariableDef);
    EXPECT_EQ(list->FindFirst(a), -1);
    list->Add(makeDefinition(u"a", ddoKMenuDef));
    list->Add(a);
    list->Add(a);
    EXPECT_EQ(list->FindFirst(makeDefinition(u"a", ddoKVariableDef)), 2);
    EXPECT_EQ(list->FindFirst(a, 3), 3);
    EXPECT_EQ(list->FindFirst(a, 4), -1);
    EXPECT_EQ(raised([&] { list->FindFirst(a, 0); }), Subscript);
}

// The rule is shared with CDefinitionSet; it is proven here once.
TEST(List, ExactKindRuleFixesTheFirstKindAndRefusesOthers) {
    auto list = listOf({u"v"}, true);
    EXPECT_EQ(list->KindUsed(), ddoKVariableDef);
    EXPECT_EQ(raised([&] { list->Add(makeDefinition(u"c", ddoKCommandDef)); }), WrongKind);
    EXPECT_EQ(raised([&] { list->SetKindUsed(ddoKMenuDef); }), WrongKind);
    list->SetKindUsed(ddoKVariableDef);  // the same kind is accepted silently
    EXPECT_TRUE(names(*list) == "v" && list->KindUsed() == ddoKVariableDef);

    auto free = listOf({u"v"});
    free->Add(makeDefinition(u"c", ddoKCommandDef));
    EXPECT_EQ(free->KindUsed(), -1);
    free->SetKindUsed(ddoKMenuDef);  // no rule: stored as given
    EXPECT_EQ(free->KindUsed(), ddoKMenuDef);

    // The rule is a condition: Null is no rule, a text that is no Boolean is refused.
    auto nullRule = listOf({u"v"});
    nullRule->UseExactKind = Null{};
    nullRule->Add(makeDefinition(u"c", ddoKCommandDef));
    EXPECT_TRUE(nullRule->KindUsed() == -1 && nullRule->GetCopy()->Count() == 2);
    nullRule->UseExactKind = u"maybe";
    EXPECT_EQ(raised([&] { nullRule->Add(makeDefinition(u"d", ddoKCommandDef)); }), TypeMismatch);
    EXPECT_EQ(names(*nullRule), "v c");
}

TEST(List, CopyIsDeepAndComparesEqualUntilAnElementChanges) {
    auto list = listOf({u"a", u"b"}, true);
    expectOwnCopies<CDefinitionList>(list, {[](CDefinitionList& copy) { copy.Item(At1)->SetName(u"changed"); }});

    auto reversed = listOf({u"b", u"a"}, true);
    EXPECT_FALSE(reversed->Compare(list));  // order matters
    reversed->SetFromObject(reversed);      // into itself: content kept
    EXPECT_EQ(names(*reversed), "b a");

    auto late = listOf({u"a"});
    late->UseExactKind = true;
    auto lateCopy = late->GetCopy();  // re-adding under the rule fixes the copy's kind
    EXPECT_TRUE(late->KindUsed() == -1 && lateCopy->KindUsed() == ddoKVariableDef);
    EXPECT_FALSE(lateCopy->Compare(late));
}

TEST(List, CopyRefusedPartWayKeepsWhatWasCopied) {
    auto source = listOf({u"v"});
    source->Add(makeDefinition(u"c", ddoKCommandDef));
    source->Add(makeDefinition(u"w", ddoKVariableDef));
    source->UseExactKind = true;
    source->SetKindUsed(ddoKVariableDef);  // allowed: no kind was fixed yet
    auto receiver = listOf({u"old"});
    EXPECT_EQ(raised([&] { receiver->SetFromObject(source); }), WrongKind);
    EXPECT_EQ(names(*receiver), "v");

    auto fixed = listOf({}, true);
    fixed->Add(makeDefinition(u"m", ddoKMenuDef));
    EXPECT_EQ(raised([&] { fixed->SetFromObject(source); }), WrongKind);  // header check first
    EXPECT_TRUE(names(*fixed) == "m" && fixed->KindUsed() == ddoKMenuDef);
}

TEST(List, RendersLabelCountAndItemsOneLevelDown) {
    auto list = make<CDefinitionList>();
    list->Add(makeDefinition(u"a", ddoKVariableDef));
    list->Add(Ref<CDefinition>());  // Nothing renders nothing; the rest still prints
    list->Add(makeDefinition(u"b", ddoKMenuDef));
    const auto built = [&] { return list; };
    expectRenderings({{"list", built, 0}, {"list", built, 1}, {"list", built, 2}, {"list", built, 3}});
}

TEST(ValueList, StoresValuesAndComparesThemByVariantEquality) {
    auto values = make<CValueList>();
    for (const Variant& v : {Variant(std::int16_t{1}), Variant(Text(u"bar")), Variant(Null{}), Variant(2.5)})
        values->Add(v);
    EXPECT_EQ(text(values->ToString(2)), "ValueList{Count:4, Items: { (1) (bar) () (2.5)}}");
    EXPECT_EQ(values->FindFirst(Variant(1.0)), 1);     // numbers across kinds
    EXPECT_EQ(values->FindFirst(Variant(Null{})), -1);  // Null equals nothing, and raises nothing
    auto copy = values->GetCopy();
    EXPECT_FALSE(copy->Compare(values));  // the Null element never compares equal
    copy->Remove(Variant(std::int32_t{3}));
    values->Remove(Variant(std::int32_t{3}));
    EXPECT_TRUE(copy->Compare(values));
}

TEST(List, MembersCoerceThroughDispatch) {
    Ref<Object> list = make<CDefinitionList>();
    let(list, u"UseExactKind", true);
    call(list, u"Add", makeDefinition(u"a", ddoKVariableDef));
    call(list, u"Add", makeDefinition(u"b", ddoKVariableDef));
    call(list, u"add", makeDefinition(u"c", ddoKVariableDef), Variant(Missing{}), std::int32_t{1});
    EXPECT_EQ(names(*refCast<CDefinitionList>(list)), "a c b");
    EXPECT_EQ(get(list, u"KindUsed"), Variant(std::int32_t{0}));
}

}  // namespace
}  // namespace tylhart::test
