#include <array>

#include "VariableSupport.hpp"

namespace tylhart::test {
namespace {

const auto bit = [](std::int32_t value, const char16_t* description, const char16_t* help = u"") {
    return enumerator<CBitEnumerator>(value, description, help);
};
// Children that render and compare distinguishably.
auto variableClass(auto flag) { return made<CVariableClass>([&](auto& c) { c.SetClassInfo(flag, true); }); }
auto statusClass(auto flag) { return made<CStatusClass>([&](auto& s) { s.SetOther(flag, true); }); }
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
Ref<Object> twoEnumerators() { return setOf<CEnumeratorSet>(enumerator(0, u"Off"), enumerator(1, u"On", u"running")); }

TEST(Enumerators, RenderExactly) {
    auto low = [] { return enumerator(-3, u"Low", u"below range"); };
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
    expectEachChangeDiffers<CEnumerator>([] { return enumerator(2, u"High", u"h")->GetCopy(); },
        {[](E e) { e.Value = 3; }, [](E e) { e.Description = u"HIGH"; }, [](E e) { e.Help = u"H"; }});
    EXPECT_EQ(raised([] { enumerator(2, u"High")->Compare(nullptr); }), NotSet);
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

// Children the source lacks are kept, not cleared, so a copy need not equal
// its source; a refusal leaves the receiver and its very children as they were.
TEST(BitEnumerator, SetFromObjectKeepsWhatTheSourceLacksAndARefusalChangesNothing) {
    auto receiver = fullBit();
    const auto children = [&] {
        return std::array<const Object*, 3>{receiver->Class.get(), receiver->Status.get(), receiver->Method.get()};
    };
    const auto kept = children();
    auto broken = bit(99, u"Broken");
    newClass(*broken), newStatus(*broken);
    broken->Status->Output = nullptr;  // its status class cannot copy itself
    for (const auto& bad : {broken, Ref<CBitEnumerator>()})
        expectRefused(receiver, [&] { receiver->SetFromObject(bad); }, NotSet);
    // An object field takes only its own class.
    expectRefused(receiver, [&] { setObject(receiver, u"Class", make<CStatusClass>()); }, TypeMismatch);
    EXPECT_EQ(children(), kept);

    auto bare = bit(16, u"Bare", u"none");
    receiver->SetFromObject(bare);
    EXPECT_TRUE(receiver->Description == u"Bare" && receiver->Value == 16 && receiver->Help == u"none");
    EXPECT_EQ(children(), kept);
    EXPECT_FALSE(receiver->Compare(bare));
    newStatus(*bare);  // a present child replaces the receiver's with a copy
    receiver->SetFromObject(bare);
    EXPECT_TRUE(receiver->Status.get() != kept[1] && receiver->Status != bare->Status);
    EXPECT_FALSE(receiver->Status->Other(ddsoTHardware));
}

// Only where the two sets deviate from the generic set: keyed by value, an
// absent value gives Nothing in one and fails in the other, a copy merges.
TEST(EnumeratorSets, KeyedByValueAndACopyMerges) {
    auto lowest = enumerator(-1, u"Low");
    auto set = setOf<CEnumeratorSet>(lowest, enumerator(1, u"High"));
    EXPECT_EQ(raised([&] { set->Add(enumerator(-1, u"same value")); }), Duplicate);
    EXPECT_TRUE(set->FindItem(-1)->Compare(lowest) && !set->FindItem(0));
    EXPECT_EQ(raised([&] { set->SetFromObject(setOf<CEnumeratorSet>(enumerator(1, u"again"))); }), Duplicate);

    auto stored = fullBit();
    auto bits = setOf<CBitEnumeratorSet>(stored);
    EXPECT_EQ(raised([&] { call(bits, u"FindItem", std::int32_t{5}); }), InvalidCall);
    EXPECT_TRUE(bits->FindItem(4)->Compare(stored));
    EXPECT_EQ(raised([&] { bits->SetFromObject(setOf<CBitEnumeratorSet>(bit(4, u"again"))); }), Duplicate);
}

}  // namespace
}  // namespace tylhart::test
