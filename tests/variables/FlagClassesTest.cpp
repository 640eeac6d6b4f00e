#include <climits>

#include "TestSupport.hpp"
#include "tylhart/containers/CValueSet.hpp"
#include "tylhart/variables/FlagClasses.hpp"

namespace tylhart::test {
namespace {

const ErrorRecord NotSet = platformError(errors::Runtime::ObjectNotSet);
const ErrorRecord Subscript = platformError(errors::Runtime::SubscriptOutOfRange);

// What differs between the four classes; the typed tests below are shared.
struct Shape {
    std::int32_t count;
    const char16_t *getter, *flag;
    std::string label, level2Tail;
};
template <class C>
const Shape shape{};
template <>
const Shape shape<CVariableClass>{13, u"GetClassInfoObj", u"ClassInfo", "VariableClass{Type:", "}"};
template <>
const Shape shape<CMethodClass>{11, u"GetClassInfoObj", u"ClassInfo", "MethodClass{Type:", "}"};
template <>
const Shape shape<CStatusClass>{16, u"GetOtherObj", u"Other", "StatusClass{Other:",
                                ", Output:OutputStatusClassSet{Count:0}}"};
template <>
const Shape shape<COutputStatusClass>{2, u"GetModeObj", u"Mode", "OutputStatusClass{BESCHEIBUNG:", ", Kind:0, Range:0}"};

template <class C>
class FlagClasses : public ::testing::Test {
protected:
    const Shape& s = shape<C>;
    Ref<C> object = make<C>();

    Ref<Object> flagArray() const { return call(object, s.getter).toObject(); }
    void setFlag(std::int32_t index, bool value) const {
        Variant args[] = {Variant(index), Variant(value)};
        invoke(object, s.flag, Access::Let, args);
    }
    std::string flags() const { return text(invoke(*flagArray(), 102, Access::Get)); }
    std::string flagsWith(std::initializer_list<std::int32_t> set) const {
        std::string out(static_cast<std::size_t>(s.count), '0');
        for (auto i : set) out[static_cast<std::size_t>(i)] = '1';
        return out;
    }
};
using FlagClassTypes = ::testing::Types<CVariableClass, CMethodClass, CStatusClass, COutputStatusClass>;
TYPED_TEST_SUITE(FlagClasses, FlagClassTypes);

TYPED_TEST(FlagClasses, RenderTheirLabelAndFlagTextPerLevel) {
    EXPECT_TRUE(call(this->object, u"ToString", std::int16_t{0}).isEmpty());
    EXPECT_TRUE(this->object->ToString(-1).isEmpty());
    this->setFlag(0, true);
    this->setFlag(this->s.count - 1, true);
    const std::string flags = this->flagsWith({0, this->s.count - 1});
    EXPECT_EQ(text(call(this->object, u"ToString")), this->s.label + flags + "}");
    EXPECT_EQ(text(this->object->ToString(2)), this->s.label + flags + this->s.level2Tail);
}

TYPED_TEST(FlagClasses, HandOutTheirOwnArrayWhichRefusesIndexesOutsideItsCount) {
    Ref<Object> array = this->flagArray();
    EXPECT_EQ(array.get(), this->flagArray().get());
    EXPECT_EQ(invoke(*array, 103, Access::Get), Variant(this->s.count));
    Variant args[] = {Variant(std::int32_t{1}), Variant(std::int32_t{-1})};
    invoke(*array, DispIdValue, Access::Let, args);
    EXPECT_EQ(invoke(this->object, this->s.flag, Access::Get, std::span(args, 1)), Variant(true));
    for (std::int32_t index : {-1, this->s.count}) {
        EXPECT_EQ(raised([&] { this->setFlag(index, true); }), Subscript);
        Variant at[] = {Variant(index)};
        EXPECT_EQ(raised([&] { invoke(this->object, this->s.flag, Access::Get, at); }), Subscript);
    }
    EXPECT_EQ(this->flags(), this->flagsWith({1}));
}

TYPED_TEST(FlagClasses, CopiesAreEqualAndIndependent) {
    auto other = make<TypeParam>();
    EXPECT_TRUE(this->object->Compare(other));
    this->setFlag(1, true);
    EXPECT_FALSE(this->object->Compare(other));
    EXPECT_FALSE(other->Compare(this->object));
    other->SetFromObject(this->object);
    EXPECT_TRUE(other->Compare(this->object));

    Ref<Object> copy = call(this->object, u"GetCopy").toObject();
    EXPECT_TRUE(call(copy, u"Compare", this->object).toBoolean());
    EXPECT_NE(call(copy, this->s.getter).toObject().get(), this->flagArray().get());
    this->setFlag(0, true);
    EXPECT_FALSE(call(copy, u"Compare", this->object).toBoolean());
    EXPECT_EQ(raised([&] { this->object->SetFromObject(nullptr); }), NotSet);
    EXPECT_EQ(raised([&] { this->object->Compare(nullptr); }), NotSet);
    EXPECT_EQ(this->flags(), this->flagsWith({0, 1}));
}

TEST(FlagClasses, MembersCarryTheirSlotIdentifiers) {
    expectSlots(CVariableClass::staticClassInfo(), {{u"GetClassInfoObj", 0x60030000}, {u"ToString", 0x60030005}});
    expectSlots(CMethodClass::staticClassInfo(), {{u"ClassInfo", 0x68030001}});
    expectSlots(CStatusClass::staticClassInfo(), {{u"Output", 0x40030000}, {u"Other", 0x68030001}});
    expectSlots(COutputStatusClass::staticClassInfo(), {{u"Range", 0x40030000}, {u"Kind", 0x68030002},
                                                        {u"ToString", 0x60030006}});
    expectSlots(COutputStatusClassSet::staticClassInfo(), {{u"FindItem", 0x60030003}, {u"ToString", 0x6003000B}});
    EXPECT_EQ(COutputStatusClassSet::staticClassInfo().find(u"Union"), nullptr);
}

TEST(FlagClasses, OutputKindOutsideDVToALLIsRefusedAndTheKindStays) {
    const ErrorRecord refused = libraryError("COutputStatusClass.Kind", errors::IndexOutOfRange);
    auto entry = make<COutputStatusClass>();
    let(entry, u"Kind", Variant(std::int32_t{ddosCALL}));
    for (std::int32_t kind : {-1, 4, INT_MIN, INT_MAX}) {
        EXPECT_EQ(raised([&] { entry->SetKind(static_cast<enumDDOutputStatusClass>(kind)); }), refused) << kind;
        EXPECT_EQ(raised([&] { let(entry, u"Kind", Variant(kind)); }), refused) << kind;
    }
    EXPECT_EQ(entry->Kind(), ddosCALL);
}

Ref<COutputStatusClass> entry(enumDDOutputStatusClass kind, std::int32_t range, bool mode1 = false) {
    auto e = make<COutputStatusClass>();
    e->SetKind(kind);
    e->Range = range;
    e->SetMode(ddosMode1, mode1);
    return e;
}

TEST(FlagClasses, OutputStatusClassCopiesAndComparesKindAndRange) {
    auto a = entry(ddosCAO, -7, true);
    EXPECT_EQ(text(a->ToString(2)), "OutputStatusClass{BESCHEIBUNG:01, Kind:2, Range:-7}");
    auto b = a->GetCopy();
    EXPECT_TRUE(b->Compare(a));
    b->Range = 0;
    EXPECT_FALSE(b->Compare(a));
    EXPECT_FALSE(entry(ddosCTV, -7, true)->Compare(a));
}

TEST(FlagClasses, StatusClassCopiesItsOutputSetWhichSharesTheEntries) {
    auto source = make<CStatusClass>();
    source->Output->Add(entry(ddosCTV, 5, true));
    source->SetOther(ddsoTMore, true);
    EXPECT_EQ(text(source->ToString(3)), "StatusClass{Other:0000000000000100, Output:OutputStatusClassSet{Count:1, "
                                         "Items: { OutputStatusClass{BESCHEIBUNG:01}}}}");
    auto copy = source->GetCopy();
    EXPECT_TRUE(copy->Compare(source));
    ASSERT_EQ(copy->Output->Count(), 1);
    EXPECT_NE(copy->Output.get(), source->Output.get());
    EXPECT_EQ(copy->Output->elements()[0].get(), source->Output->elements()[0].get());
    copy->Output->Add(entry(ddosCTV, 6));
    EXPECT_EQ(source->Output->Count(), 1);
    EXPECT_FALSE(copy->Compare(source));

    // Without an Output set an object cannot be copied from or compared;
    // the receiver stays as it was.
    auto bare = make<CStatusClass>();
    Variant nothing[] = {Variant(nullptr)};
    invoke(bare, u"Output", Access::Set, nothing);
    EXPECT_EQ(text(bare->ToString(2)), "StatusClass{Other:0000000000000000}");
    Ref<COutputStatusClassSet> before = copy->Output;
    EXPECT_EQ(raised([&] { copy->SetFromObject(bare); }), NotSet);
    EXPECT_EQ(raised([&] { bare->Compare(copy); }), NotSet);
    EXPECT_EQ(copy->Output.get(), before.get());
    EXPECT_TRUE(copy->Other(ddsoTMore));
    Variant wrongClass[] = {Variant(make<CValueSet>())};
    EXPECT_EQ(raised([&] { invoke(bare, u"Output", Access::Set, wrongClass); }),
              platformError(errors::Runtime::TypeMismatch));
}

TEST(OutputStatusClassSet, KeysOnKindAndRangeAndMergesOnCopy) {
    auto set = make<COutputStatusClassSet>();
    set->Add(entry(ddosCAO, 5, true));
    set->Add(entry(ddosCAO, 50));
    EXPECT_EQ(raised([&] { set->Add(entry(ddosCAO, 5)); }), platformError(errors::Runtime::DuplicateKey));
    EXPECT_TRUE(set->FindItem(ddosCAO, 5)->Mode(ddosMode1));
    EXPECT_NE(set->FindItem(ddosCAO, 5).get(), set->elements()[0].get());
    EXPECT_EQ(call(set, u"FindItem", std::int32_t{2}, Text(u"50")).toObject()->className(), u"COutputStatusClass");
    EXPECT_EQ(raised([&] { set->FindItem(ddosCTV, 5); }), platformError(errors::Runtime::InvalidCall));
    EXPECT_EQ(set->elements().keyIndex(u"I2:50"), 1u);
    EXPECT_EQ(text(set->ToString(2)), "OutputStatusClassSet{Count:2, Items: { OutputStatusClass{BESCHEIBUNG:01} "
                                      "OutputStatusClass{BESCHEIBUNG:00}}}");
    EXPECT_TRUE(set->ToString(0).isEmpty());

    auto receiver = make<COutputStatusClassSet>();
    receiver->Add(entry(ddosCDV, 0));
    receiver->Add(entry(ddosCAO, 50));
    EXPECT_EQ(raised([&] { receiver->SetFromObject(set); }), platformError(errors::Runtime::DuplicateKey));
    EXPECT_EQ(receiver->Count(), 3);  // merged up to the shared key
}

}  // namespace
}  // namespace tylhart::test
