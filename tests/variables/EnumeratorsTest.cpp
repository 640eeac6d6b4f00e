#include "TestSupport.hpp"
#include "tylhart/variables/EnumeratorSets.hpp"

namespace tylhart::test {
namespace {

template <class E = CEnumerator>
Ref<E> item(std::int32_t value, const char16_t* description, const char16_t* help = u"") {
    auto e = make<E>();
    return e->Value = value, e->Description = description, e->Help = help, e;
}
Ref<CBitEnumerator> bit(std::int32_t value, const char16_t* description, const char16_t* help = u"") {
    return item<CBitEnumerator>(value, description, help);
}
// Children that render and compare distinguishably.
Ref<CVariableClass> variableClass(enumDDVariableClassType flag) {
    auto c = make<CVariableClass>();
    return c->SetClassInfo(flag, true), c;
}
Ref<CStatusClass> statusClass(enumDDStatusOtherType flag) {
    auto s = make<CStatusClass>();
    return s->SetOther(flag, true), s;
}
Ref<CBitEnumerator> fullBit() {
    auto b = bit(4, u"Sensor failure", u"Replace it");
    b->Class = variableClass(ddvCDiagnostic), b->Status = statusClass(ddsoTHardware);
    return b->Method = makeDefinition(u"reset", ddoKMethodDef), b;
}
Ref<CBitEnumerator> methodOnlyBit() {
    auto b = bit(8, u"Calibrate");
    return b->Method = makeDefinition(u"cal", ddoKMethodDef), b;
}
template <class S, class... E>
Ref<S> setOf(E... elements) {
    auto s = make<S>();
    return (s->Add(elements), ..., s);
}
Ref<Object> twoEnumerators() { return setOf<CEnumeratorSet>(item(0, u"Off"), item(1, u"On", u"running")); }

TEST(Enumerators, RenderExactly) {
    auto low = [] { return item(-3, u"Low", u"below range"); };
    expectRenderings({
        {"enumerator", low, {-1, 3}},
        // Each child one level down; an absent child leaves out its label too.
        {"bit enumerator with every child", fullBit, 3},
        {"bit enumerator with a method", methodOnlyBit, {0, 2}},
        // Below level 1 the sets print a short label instead of nothing.
        {"two enumerators", twoEnumerators, {-2, 2}},
        {"new bit enumerator set", make<CBitEnumeratorSet>, 0},
        {"bit enumerator set", [] { return setOf<CBitEnumeratorSet>(methodOnlyBit()); }, 3},
    });
}

void none(CBitEnumerator&) {}
void newClass(CBitEnumerator& b) { b.Class = make<CVariableClass>(); }
void newStatus(CBitEnumerator& b) { b.Status = make<CStatusClass>(); }
void methodM(CBitEnumerator& b) { b.Method = makeDefinition(u"m", ddoKMethodDef); }

TEST(BitEnumerator, CompareFieldsThenClassStatusMethodBothWays) {
    using Change = void (*)(CBitEnumerator&);
    const std::tuple<Change, Change, bool> cases[] = {  // left, right, equal
        {none, none, true}, {[](CBitEnumerator& b) { b.Value = 2; }, none, false},
        {[](CBitEnumerator& b) { b.Description = u"B"; }, none, false},
        {[](CBitEnumerator& b) { b.Help = u"H"; }, none, false},
        {newClass, none, false}, {newClass, newClass, true},
        {newClass, [](CBitEnumerator& b) { b.Class = variableClass(ddvCLocal); }, false},
        {none, newStatus, false}, {newStatus, newStatus, true},
        {[](CBitEnumerator& b) { b.Status = statusClass(ddsoTMore); }, newStatus, false},
        {methodM, none, false}, {methodM, methodM, true},
        {methodM, [](CBitEnumerator& b) { b.Method = makeDefinition(u"M", ddoKMethodDef); }, false}};
    for (const auto& [changeLeft, changeRight, equal] : cases) {
        auto left = bit(1, u"b", u"h"), right = bit(1, u"b", u"h");
        changeLeft(*left);
        changeRight(*right);
        expectCompare(left, right, equal);
    }
}

TEST(Enumerator, CompareValueDescriptionAndHelpExactly) {
    using E = CEnumerator&;
    expectEachChangeDiffers<CEnumerator>([] { return item(2, u"High", u"h")->GetCopy(); },
        {[](E e) { e.Value = 3; }, [](E e) { e.Description = u"HIGH"; }, [](E e) { e.Help = u"H"; }});
    EXPECT_EQ(raised([] { item(2, u"High")->Compare(nullptr); }), NotSet);
}

// A status class without its output set cannot compare; an earlier
// difference must decide before it is reached.
TEST(BitEnumerator, CompareStopsAtTheFirstDifference) {
    auto left = bit(1, u"b"), right = bit(1, u"b");
    newStatus(*left), newStatus(*right), left->Status->Output = nullptr;
    EXPECT_EQ(raised([&] { left->Compare(right); }), NotSet);
    newClass(*right);
    EXPECT_FALSE(left->Compare(right));
    right->Class = nullptr, right->Value = 2;
    EXPECT_FALSE(left->Compare(right));
}

TEST(BitEnumerator, GetCopyCopiesEveryChildDeep) {
    using B = CBitEnumerator&;
    expectOwnCopies<CBitEnumerator>(fullBit(), {[](B b) { b.Class->SetClassInfo(ddvCService, true); },
        [](B b) { b.Status->Output->Add(make<COutputStatusClass>()); }, [](B b) { b.Method->SetName(u"other"); }});
}

TEST(BitEnumerator, ChildrenTheSourceLacksAreKeptNotCleared) {
    auto receiver = fullBit();
    const Object* kept[] = {receiver->Class.get(), receiver->Status.get(), receiver->Method.get()};
    auto bare = bit(16, u"Bare", u"none");
    receiver->SetFromObject(bare);
    EXPECT_TRUE(receiver->Description == u"Bare" && receiver->Value == 16 && receiver->Help == u"none");
    const Object* after[] = {receiver->Class.get(), receiver->Status.get(), receiver->Method.get()};
    EXPECT_TRUE(std::equal(std::begin(kept), std::end(kept), std::begin(after)));
    EXPECT_FALSE(receiver->Compare(bare));  // so a copy need not equal its source

    newStatus(*bare);  // a present child replaces the receiver's with a copy
    receiver->SetFromObject(bare);
    EXPECT_TRUE(receiver->Status.get() != kept[1] && receiver->Status != bare->Status);
    EXPECT_FALSE(receiver->Status->Other(ddsoTHardware));
}

TEST(BitEnumerator, ARefusedCopyOrObjectFieldLeavesTheReceiverUnchanged) {
    auto receiver = fullBit();
    const Object* keptClass = receiver->Class.get();
    auto source = bit(99, u"Broken");
    newClass(*source), newStatus(*source);
    source->Status->Output = nullptr;  // its status class cannot copy itself
    for (const auto& bad : {source, Ref<CBitEnumerator>()})
        expectRefused(receiver, [&] { receiver->SetFromObject(bad); }, NotSet);
    // An object field takes only its own class.
    expectRefused(receiver, [&] { setObject(receiver, u"Class", make<CStatusClass>()); }, TypeMismatch);
    EXPECT_EQ(receiver->Class.get(), keptClass);
}

// Only where the two sets deviate from the generic set.

TEST(EnumeratorSet, KeyedByValueWithNothingForAnAbsentValueAndACopyMerges) {
    auto lowest = item(-1, u"Low");
    auto set = setOf<CEnumeratorSet>(lowest, item(1, u"High"));
    EXPECT_EQ(raised([&] { set->Add(item(-1, u"same value")); }), Duplicate);
    EXPECT_TRUE(set->FindItem(-1)->Compare(lowest) && !set->FindItem(0));
    EXPECT_EQ(raised([&] { set->SetFromObject(setOf<CEnumeratorSet>(item(1, u"again"))); }), Duplicate);  // merges
}

TEST(BitEnumeratorSet, AbsentValueFailsAndACopyMerges) {
    auto stored = fullBit();
    auto set = setOf<CBitEnumeratorSet>(stored);
    EXPECT_EQ(raised([&] { call(set, u"FindItem", std::int32_t{5}); }), InvalidCall);
    EXPECT_TRUE(set->FindItem(4)->Compare(stored));
    EXPECT_EQ(raised([&] { set->SetFromObject(setOf<CBitEnumeratorSet>(bit(4, u"again"))); }), Duplicate);
}

}  // namespace
}  // namespace tylhart::test
