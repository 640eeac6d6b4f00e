#include "TestSupport.hpp"
#include "tylhart/variables/EnumeratorSets.hpp"

namespace tylhart::test {
namespace {

const ErrorRecord NotSet = platformError(errors::Runtime::ObjectNotSet);
const ErrorRecord Duplicate = platformError(errors::Runtime::DuplicateKey);

template <class E = CEnumerator>
Ref<E> item(std::int32_t value, const char16_t* description, const char16_t* help = u"") {
    auto e = make<E>();
    e->Value = value;
    e->Description = description;
    e->Help = help;
    return e;
}
Ref<CBitEnumerator> bit(std::int32_t value, const char16_t* description, const char16_t* help = u"") {
    return item<CBitEnumerator>(value, description, help);
}

// Children that render and compare distinguishably.
Ref<CVariableClass> variableClass(enumDDVariableClassType flag) {
    auto c = make<CVariableClass>();
    c->SetClassInfo(flag, true);
    return c;
}
Ref<CStatusClass> statusClass(enumDDStatusOtherType flag) {
    auto s = make<CStatusClass>();
    s->SetOther(flag, true);
    return s;
}
Ref<CBitEnumerator> fullBit() {
    auto b = bit(4, u"Sensor failure", u"Replace it");
    b->Class = variableClass(ddvCDiagnostic);
    b->Status = statusClass(ddsoTHardware);
    b->Method = makeDefinition(u"reset", ddoKMethodDef);
    return b;
}
Ref<CBitEnumerator> methodOnlyBit() {
    auto b = bit(8, u"Calibrate");
    b->Method = makeDefinition(u"cal", ddoKMethodDef);
    return b;
}
template <class S, class... E>
Ref<S> setOf(E... elements) {
    auto s = make<S>();
    return (s->Add(elements), ..., s);
}

// ---- Renderings ------------------------------------------------------------

struct Rendering {
    Ref<Object> (*make)();
    std::int16_t level;
    const char* expected;  // nullptr: Empty
};
void PrintTo(const Rendering& r, std::ostream* os) { *os << r.level << ": " << (r.expected ? r.expected : "<empty>"); }

class Renders : public ::testing::TestWithParam<Rendering> {};

TEST_P(Renders, ExactText) {
    const Variant level[] = {Variant(GetParam().level)};
    Variant out = invoke(GetParam().make(), u"ToString", Access::Method, level);
    if (GetParam().expected) EXPECT_EQ(text(out), GetParam().expected);
    else EXPECT_TRUE(out.isEmpty()) << text(out);
}

Ref<Object> newEnumerator() { return make<CEnumerator>(); }
Ref<Object> low() { return item(-3, u"Low", u"below range"); }
Ref<Object> bareBit() { return bit(1, u"Bit0", u"hh"); }
Ref<Object> full() { return fullBit(); }
Ref<Object> methodOnly() { return methodOnlyBit(); }
Ref<Object> noEnumerators() { return make<CEnumeratorSet>(); }
Ref<Object> twoEnumerators() { return setOf<CEnumeratorSet>(item(0, u"Off"), item(1, u"On", u"running")); }
Ref<Object> noBits() { return make<CBitEnumeratorSet>(); }
Ref<Object> oneBit() { return setOf<CBitEnumeratorSet>(methodOnlyBit()); }

INSTANTIATE_TEST_SUITE_P(
    Enumerators, Renders,
    ::testing::Values(
        Rendering{newEnumerator, 1, "Enumerator{Description:}"},
        Rendering{newEnumerator, 2, "Enumerator{Description:, Value:0, Help:}"},
        Rendering{low, -1, nullptr}, Rendering{low, 1, "Enumerator{Description:Low}"},
        Rendering{low, 3, "Enumerator{Description:Low, Value:-3, Help:below range}"},
        Rendering{bareBit, 0, nullptr}, Rendering{bareBit, 1, "BitEnumerator{Description:Bit0}"},
        Rendering{bareBit, 2, "BitEnumerator{Description:Bit0, Value:1, Help:hh}"},
        Rendering{full, 1, "BitEnumerator{Description:Sensor failure}"},
        Rendering{full, 2,
                  "BitEnumerator{Description:Sensor failure, Value:4, Help:Replace it, Class:VariableClass{Type:"
                  "0000000000100}, Status:StatusClass{Other:1000000000000000}, Method:Definition{Name:reset}}"},
        Rendering{full, 3,
                  "BitEnumerator{Description:Sensor failure, Value:4, Help:Replace it, Class:VariableClass{Type:"
                  "0000000000100}, Status:StatusClass{Other:1000000000000000, Output:OutputStatusClassSet{"
                  "Count:0}}, Method:Definition{Name:reset, Kind:4}}"},
        // An absent child leaves out its label too.
        Rendering{methodOnly, 2, "BitEnumerator{Description:Calibrate, Value:8, Help:, Method:Definition{Name:cal}}"},
        Rendering{noEnumerators, 0, "EnumeratorSet{Count:0}"}, Rendering{twoEnumerators, -2, "EnumeratorSet{Count:2}"},
        Rendering{noEnumerators, 1, "VariableEnumeratorSet{Count:0}"},
        Rendering{twoEnumerators, 2,
                  "VariableEnumeratorSet{Count:2, Items: { Enumerator{Description:Off} Enumerator{Description:On}}}"},
        Rendering{twoEnumerators, 3,
                  "VariableEnumeratorSet{Count:2, Items: { Enumerator{Description:Off, Value:0, Help:} "
                  "Enumerator{Description:On, Value:1, Help:running}}}"},
        Rendering{noBits, 0, "BitEnumeratorSet{Count:0}"}, Rendering{noBits, 1, "VariableBitEnumeratorSet{Count:0}"},
        Rendering{oneBit, 3,
                  "VariableBitEnumeratorSet{Count:1, Items: { BitEnumerator{Description:Calibrate, Value:8, Help:, "
                  "Method:Definition{Name:cal}}}}"}));

// ---- Compare ---------------------------------------------------------------

struct BitCase {
    const char* name;
    void (*left)(CBitEnumerator&);
    void (*right)(CBitEnumerator&);
    bool equal;
};

class BitCompare : public ::testing::TestWithParam<BitCase> {};

TEST_P(BitCompare, FieldsThenClassStatusMethodBothWays) {
    auto left = bit(1, u"b", u"h");
    auto right = bit(1, u"b", u"h");
    GetParam().left(*left);
    GetParam().right(*right);
    EXPECT_EQ(left->Compare(right), GetParam().equal);
    EXPECT_EQ(right->Compare(left), GetParam().equal);
}

void none(CBitEnumerator&) {}
void value2(CBitEnumerator& b) { b.Value = 2; }
void upperDescription(CBitEnumerator& b) { b.Description = u"B"; }
void otherHelp(CBitEnumerator& b) { b.Help = u"H"; }
void newClass(CBitEnumerator& b) { b.Class = make<CVariableClass>(); }
void localClass(CBitEnumerator& b) { b.Class = variableClass(ddvCLocal); }
void newStatus(CBitEnumerator& b) { b.Status = make<CStatusClass>(); }
void moreStatus(CBitEnumerator& b) { b.Status = statusClass(ddsoTMore); }
void methodM(CBitEnumerator& b) { b.Method = makeDefinition(u"m", ddoKMethodDef); }
void methodUpperM(CBitEnumerator& b) { b.Method = makeDefinition(u"M", ddoKMethodDef); }

INSTANTIATE_TEST_SUITE_P(
    BitEnumerator, BitCompare,
    ::testing::Values(BitCase{"NoChildren", none, none, true}, BitCase{"Value", value2, none, false},
                      BitCase{"DescriptionCase", upperDescription, none, false}, BitCase{"Help", otherHelp, none, false},
                      BitCase{"ClassOnOneSide", newClass, none, false}, BitCase{"EqualClasses", newClass, newClass, true},
                      BitCase{"ClassFlags", newClass, localClass, false}, BitCase{"StatusOnOneSide", none, newStatus, false},
                      BitCase{"EqualStatus", newStatus, newStatus, true}, BitCase{"StatusFlags", moreStatus, newStatus, false},
                      BitCase{"MethodOnOneSide", methodM, none, false}, BitCase{"EqualMethods", methodM, methodM, true},
                      BitCase{"MethodNameCase", methodM, methodUpperM, false}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Enumerator, CompareValueDescriptionAndHelpExactlyAndCopiesAreIndependent) {
    auto base = item(2, u"High", u"h");
    for (auto other : {item(3, u"High", u"h"), item(2, u"HIGH", u"h"), item(2, u"High", u"H")})
        EXPECT_FALSE(base->Compare(other)) << text(other->ToString(2));
    auto copy = base->GetCopy();
    EXPECT_TRUE(copy->Compare(base));
    copy->Help = u"changed";
    EXPECT_FALSE(copy->Compare(base));
    EXPECT_EQ(raised([&] { base->Compare(nullptr); }), NotSet);
}

// A status class without its output set cannot compare; an earlier
// difference must decide before it is reached.
TEST(BitEnumerator, CompareStopsAtTheFirstDifference) {
    auto left = bit(1, u"b");
    auto right = bit(1, u"b");
    newStatus(*left);
    newStatus(*right);
    left->Status->Output = nullptr;
    EXPECT_EQ(raised([&] { left->Compare(right); }), NotSet);
    newClass(*right);
    EXPECT_FALSE(left->Compare(right));
    right->Class = nullptr;
    right->Value = 2;
    EXPECT_FALSE(left->Compare(right));
}

// ---- Copies ----------------------------------------------------------------

TEST(BitEnumerator, GetCopyCopiesEveryChildDeep) {
    auto source = fullBit();
    auto copy = source->GetCopy();
    EXPECT_TRUE(copy->Compare(source));
    EXPECT_NE(copy->Class.get(), source->Class.get());
    EXPECT_NE(copy->Status.get(), source->Status.get());
    EXPECT_NE(copy->Status->Output.get(), source->Status->Output.get());
    EXPECT_NE(copy->Method.get(), source->Method.get());
    copy->Class->SetClassInfo(ddvCService, true);
    copy->Status->Output->Add(make<COutputStatusClass>());
    copy->Method->SetName(u"other");
    EXPECT_FALSE(source->Class->ClassInfo(ddvCService));
    EXPECT_EQ(source->Status->Output->Count(), 0);
    EXPECT_EQ(source->Method->Name(), u"reset");
}

TEST(BitEnumerator, ChildrenTheSourceLacksAreKeptNotCleared) {
    auto receiver = fullBit();
    const Object* kept[] = {receiver->Class.get(), receiver->Status.get(), receiver->Method.get()};
    auto bare = bit(16, u"Bare", u"none");
    receiver->SetFromObject(bare);
    EXPECT_EQ(text(receiver->ToString(1)), "BitEnumerator{Description:Bare}");
    EXPECT_EQ(receiver->Value, 16);
    EXPECT_EQ(receiver->Help, u"none");
    const Object* after[] = {receiver->Class.get(), receiver->Status.get(), receiver->Method.get()};
    EXPECT_TRUE(std::equal(std::begin(kept), std::end(kept), std::begin(after)));
    EXPECT_FALSE(receiver->Compare(bare));  // so a copy need not equal its source

    newStatus(*bare);  // a present child replaces the receiver's with a copy
    receiver->SetFromObject(bare);
    EXPECT_NE(receiver->Status.get(), kept[1]);
    EXPECT_NE(receiver->Status.get(), bare->Status.get());
    EXPECT_FALSE(receiver->Status->Other(ddsoTHardware));
}

TEST(BitEnumerator, ARefusedCopyLeavesTheReceiverUnchanged) {
    auto receiver = fullBit();
    const Object* keptClass = receiver->Class.get();
    auto source = bit(99, u"Broken");
    newClass(*source);
    newStatus(*source);
    source->Status->Output = nullptr;  // its status class cannot copy itself
    EXPECT_EQ(raised([&] { receiver->SetFromObject(source); }), NotSet);
    EXPECT_EQ(raised([&] { receiver->SetFromObject(nullptr); }), NotSet);
    EXPECT_EQ(text(receiver->ToString(1)), "BitEnumerator{Description:Sensor failure}");
    EXPECT_EQ(receiver->Value, 4);
    EXPECT_EQ(receiver->Class.get(), keptClass);
}

// ---- Dispatch --------------------------------------------------------------

TEST(BitEnumerator, FieldsThroughDispatchShareTheObjectsTheyAreGiven) {
    Ref<Object> b = make<CBitEnumerator>();
    let(b, u"Value", Text(u"12"));
    EXPECT_EQ(refCast<CBitEnumerator>(b)->Value, 12);
    auto cls = make<CVariableClass>();
    const Variant value[] = {Variant(cls)}, wrong[] = {Variant(make<CStatusClass>())};
    invoke(b, u"Class", Access::Set, value);
    EXPECT_EQ(get(b, u"Class").toObject().get(), cls.get());
    EXPECT_EQ(raised([&] { invoke(b, u"Class", Access::Set, wrong); }), platformError(errors::Runtime::TypeMismatch));
    EXPECT_EQ(get(b, u"Class").toObject().get(), cls.get());
    EXPECT_TRUE(get(b, u"Status").toObject() == nullptr);
    // Public fields in declaration order, then the members with code.
    EXPECT_EQ(dispIdOfName(*b, u"Method"), FirstFieldId + 5);
    EXPECT_EQ(dispIdOfName(*b, u"ToString"), FirstMethodId + 3);
    EXPECT_EQ(dispIdOfName(*make<CEnumerator>(), u"Help"), FirstFieldId + 2);
}

// ---- Sets ------------------------------------------------------------------

TEST(EnumeratorSet, KeyedByValueWithCopiesOutAndNothingForAnAbsentValue) {
    auto lowest = item(-1, u"Low");
    auto set = setOf<CEnumeratorSet>(lowest, item(1, u"High"));
    EXPECT_EQ(raised([&] { set->Add(item(-1, u"same value")); }), Duplicate);
    auto found = set->FindItem(-1);
    ASSERT_TRUE(found);
    EXPECT_NE(found.get(), lowest.get());
    EXPECT_TRUE(found->Compare(lowest));
    EXPECT_FALSE(set->FindItem(0));
    EXPECT_TRUE(call(set, u"FindItem", std::int32_t{5}).toObject() == nullptr);
    lowest->Value = 42;  // the key was read when the element was added
    EXPECT_TRUE(set->FindItem(-1));
    EXPECT_FALSE(set->IsInSet(lowest));
    set->Remove(item(-1, u""));  // an equal key suffices
    EXPECT_EQ(set->Count(), 1);
}

TEST(BitEnumeratorSet, AbsentValueFailsAndItemsAreDeepCopies) {
    auto stored = fullBit();
    auto set = setOf<CBitEnumeratorSet>(stored);
    EXPECT_EQ(raised([&] { call(set, u"FindItem", std::int32_t{5}); }), platformError(errors::Runtime::InvalidCall));
    auto copy = set->Item(1);
    EXPECT_NE(copy->Class.get(), stored->Class.get());
    EXPECT_TRUE(copy->Compare(stored));
    Variant first;
    ASSERT_TRUE(set->NewEnum()->next(first));
    EXPECT_EQ(first.toObject().get(), stored.get());

    auto receiver = setOf<CBitEnumeratorSet>(bit(4, u"other"));  // a copy merges: 4 collides
    EXPECT_EQ(raised([&] { receiver->SetFromObject(setOf<CBitEnumeratorSet>(bit(1, u"a"), bit(4, u"b"))); }),
              Duplicate);
    EXPECT_EQ(receiver->Count(), 2);
}

}  // namespace
}  // namespace tylhart::test
