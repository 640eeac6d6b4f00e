#include <climits>

#include "TestSupport.hpp"
#include "tylhart/variables/FlagClasses.hpp"

namespace tylhart::test {
namespace {

// What differs between the four classes; the checks below are shared.
struct Shape {
    const char* label;
    std::function<Ref<Object>()> create;
    std::int32_t count;
    const char16_t *getter, *flag;
};
const Shape shapes[] = {{"variable class", make<CVariableClass>, 13, u"GetClassInfoObj", u"ClassInfo"},
                        {"method class", make<CMethodClass>, 11, u"GetClassInfoObj", u"ClassInfo"},
                        {"status class", make<CStatusClass>, 16, u"GetOtherObj", u"Other"},
                        {"output status class", make<COutputStatusClass>, 2, u"GetModeObj", u"Mode"}};

void setFlag(const Shape& s, const Ref<Object>& o, std::int32_t index) { let(o, s.flag, index, true); }
std::string flags(const Shape& s, const Ref<Object>& o) { return text(get(call(o, s.getter).toObject(), 102)); }
std::string flagsWith(const Shape& s, std::initializer_list<std::int32_t> set) {
    std::string out(static_cast<std::size_t>(s.count), '0');
    for (auto i : set) out[static_cast<std::size_t>(i)] = '1';
    return out;
}
bool equal(const Ref<Object>& a, const Ref<Object>& b) { return call(a, u"Compare", b).toBoolean(); }

// Each with its first and last flag set.
TEST(FlagClasses, RenderTheirLabelAndFlagTextPerLevel) {
    const auto ends = [](const Shape& s) -> Rendering {
        const auto build = [&s] { auto o = s.create(); return setFlag(s, o, 0), setFlag(s, o, s.count - 1), o; };
        return {s.label, build, {0, 1, 2}};
    };
    expectRenderings({ends(shapes[0]), ends(shapes[1]), ends(shapes[2]), ends(shapes[3])});
}

TEST(FlagClasses, HandOutTheirOwnArrayWhichRefusesIndexesOutsideItsCount) {
    for (const Shape& s : shapes) {
        SCOPED_TRACE(s.label);
        auto o = s.create();
        const auto refusesOutside = [&] {
            for (std::int32_t index : {-1, s.count}) {
                EXPECT_EQ(raised([&] { setFlag(s, o, index); }), Subscript);
                EXPECT_EQ(raised([&] { get(o, s.flag, index); }), Subscript);
            }
        };
        refusesOutside();  // while the owner still keeps its flags itself
        Ref<Object> array = call(o, s.getter).toObject();
        EXPECT_EQ(array.get(), call(o, s.getter).toObject().get());
        EXPECT_EQ(get(array, 103), Variant(s.count));
        let(array, DispIdValue, std::int32_t{1}, std::int32_t{-1});
        EXPECT_EQ(get(o, s.flag, std::int32_t{1}), Variant(true));
        refusesOutside();
        EXPECT_EQ(flags(s, o), flagsWith(s, {1}));
    }
}

TEST(FlagClasses, CopiesAreEqualAndIndependent) {
    for (const Shape& s : shapes) {
        SCOPED_TRACE(s.label);
        auto object = s.create(), other = s.create();
        setFlag(s, object, 1);
        EXPECT_FALSE(equal(object, other) || equal(other, object));
        call(other, u"SetFromObject", object);
        EXPECT_TRUE(equal(other, object));
        Ref<Object> copy = call(object, u"GetCopy").toObject();
        EXPECT_TRUE(equal(copy, object));
        setFlag(s, object, 0);  // the copy has its own array
        EXPECT_FALSE(equal(copy, object));
        EXPECT_EQ(raised([&] { call(object, u"SetFromObject", Ref<Object>()); }), NotSet);
        EXPECT_EQ(raised([&] { call(object, u"Compare", Ref<Object>()); }), NotSet);
        EXPECT_EQ(flags(s, object), flagsWith(s, {0, 1}));  // object's array is made from here on

        // Between an owner with its array and one without, both ways.
        auto fresh = s.create();
        call(fresh, u"SetFromObject", object);
        EXPECT_TRUE(equal(fresh, object) && equal(object, fresh));
        let(fresh, s.flag, std::int32_t{0}, false);
        EXPECT_FALSE(equal(fresh, object) || equal(object, fresh));
        call(object, u"SetFromObject", fresh);
        EXPECT_EQ(flags(s, object), flagsWith(s, {1}));
        // A source whose array was resized cannot be copied, and the copy
        // changes nothing.
        let(call(object, s.getter).toObject(), CFlagArray::FlagCountId, s.count + 1);
        auto target = s.create();
        setFlag(s, target, 0);
        EXPECT_EQ(raised([&] { call(target, u"SetFromObject", object); }), InvalidCall);
        EXPECT_FALSE(equal(target, object));
        EXPECT_EQ(flags(s, target), flagsWith(s, {0}));
    }
}

Ref<COutputStatusClass> entry(enumDDOutputStatusClass kind, std::int32_t range, bool mode1 = false) {
    auto e = make<COutputStatusClass>();
    return e->SetKind(kind), e->Range = range, e->SetMode(ddosMode1, mode1), e;
}

// Kinds outside DV to ALL are refused and the kind stays.
TEST(FlagClasses, OutputStatusClassKeepsItsKindAndComparesKindAndRange) {
    const ErrorRecord refused = libraryError("COutputStatusClass.Kind", errors::IndexOutOfRange);
    auto kept = make<COutputStatusClass>();
    let(kept, u"Kind", Variant(std::int32_t{ddosCALL}));
    for (std::int32_t kind : {-1, 4, INT_MIN, INT_MAX})
        EXPECT_EQ(raised([&] { let(kept, u"Kind", Variant(kind)); }), refused) << kind;
    EXPECT_EQ(kept->Kind(), ddosCALL);

    EXPECT_EQ(text(entry(ddosCAO, -7, true)->ToString(2)), "OutputStatusClass{BESCHEIBUNG:01, Kind:2, Range:-7}");
    using E = COutputStatusClass&;
    expectEachChangeDiffers<COutputStatusClass>([] { return entry(ddosCAO, -7, true)->GetCopy(); },
        {[](E e) { e.Range = 0; }, [](E e) { e.SetKind(ddosCTV); }});
}

TEST(FlagClasses, StatusClassCopiesItsOutputSetWhichSharesTheEntries) {
    auto source = make<CStatusClass>();
    source->Output->Add(entry(ddosCTV, 5, true));
    source->SetOther(ddsoTMore, true);
    auto copy = source->GetCopy();
    EXPECT_TRUE(copy->Compare(source));
    ASSERT_EQ(copy->Output->Count(), 1);
    EXPECT_NE(copy->Output.get(), source->Output.get());
    EXPECT_EQ(copy->Output->elements()[0].get(), source->Output->elements()[0].get());
    copy->Output->Add(entry(ddosCTV, 6));
    EXPECT_FALSE(copy->Compare(source));

    // Without an Output set an object cannot be copied from or compared;
    // the receiver stays as it was.
    auto bare = make<CStatusClass>();
    setObject(bare, u"Output", nullptr);
    EXPECT_EQ(text(bare->ToString(2)), "StatusClass{Other:0000000000000000}");
    Ref<COutputStatusClassSet> before = copy->Output;
    EXPECT_EQ(raised([&] { copy->SetFromObject(bare); }), NotSet);
    EXPECT_EQ(raised([&] { bare->Compare(copy); }), NotSet);
    EXPECT_EQ(copy->Output.get(), before.get());
    EXPECT_TRUE(copy->Other(ddsoTMore));
}

TEST(OutputStatusClassSet, KeysOnKindAndRangeAndMergesOnCopy) {
    auto set = make<COutputStatusClassSet>();
    set->Add(entry(ddosCAO, 5, true));
    set->Add(entry(ddosCAO, 50));
    EXPECT_EQ(raised([&] { set->Add(entry(ddosCAO, 5)); }), Duplicate);
    EXPECT_TRUE(set->FindItem(ddosCAO, 5)->Mode(ddosMode1));
    EXPECT_EQ(call(set, u"FindItem", std::int32_t{2}, Text(u"50")).toObject()->className(), u"COutputStatusClass");
    EXPECT_EQ(raised([&] { set->FindItem(ddosCTV, 5); }), InvalidCall);
    EXPECT_EQ(text(set->ToString(2)), "OutputStatusClassSet{Count:2, Items: { OutputStatusClass{BESCHEIBUNG:01} "
                                      "OutputStatusClass{BESCHEIBUNG:00}}}");

    auto receiver = make<COutputStatusClassSet>();
    receiver->Add(entry(ddosCDV, 0));
    receiver->Add(entry(ddosCAO, 50));
    EXPECT_EQ(raised([&] { receiver->SetFromObject(set); }), Duplicate);
    EXPECT_EQ(receiver->Count(), 3);  // merged up to the shared key
}

}  // namespace
}  // namespace tylhart::test
