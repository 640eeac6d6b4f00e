#include "TestSupport.hpp"
#include "tylhart/constructs/Collections.hpp"

namespace tylhart::test {
namespace {

Ref<CMember> member(const char16_t* ident, Ref<CDefinition> definition = make<CDefinition>()) {
    auto m = make<CMember>();
    return m->Ident = ident, m->Description = u"d", m->Help = u"h", m->Definition = std::move(definition), m;
}
Ref<CElement> element(std::int16_t value, Ref<CDefinition> definition = make<CDefinition>()) {
    auto e = make<CElement>();
    return e->Value = value, e->Description = u"a", e->Help = u"b", e->Definition = std::move(definition), e;
}

TEST(Collections, RenderExactly) {
    expectRenderings({
        {"element", [] { return element(3); }, {2, 0}},
        {"member", [] { return member(u"x", makeDefinition(u"pv", ddoKVariableDef)); }, 2},
        {"member without definition", [] { return member(u"x", nullptr); }, 2},
        {"collection", [] { return made<CCollection>([](CCollection& c) {
             c.Label = u"L", c.Help = u"H", c.Members->Add(member(u"x")); }); }, {1, 3}},
        {"collection without members", [] { return made<CCollection>([](CCollection& c) { c.Members = nullptr; }); }, 2},
        {"array", [] { return made<CArray>([](CArray& a) { a.Label = u"L", a.Elements->Add(element(3)); }); }, {1, 3, -1}},
        {"array without elements", [] { return made<CArray>([](CArray& a) { a.Elements = nullptr; }); }, 2},
    });
}

// The Definition let and the refused copies of both constructs are rows of
// the constructs' refusal tables (RelationsTest).

// A collection's copy has its own member set, which shares the members; an
// array's copy has its own elements and their own definitions. Label, Help
// and the definition's name compare exactly.
TEST(Collections, CopyDepthAndExactCompare) {
    using C = CCollection&;
    using A = CArray&;
    auto m = member(u"pressure");
    auto source = made<CCollection>([&](C c) { c.Definition()->SetName(u"original"), c.Members->Add(m); });
    expectOwnCopies<CCollection>(source, {[](C c) { c.Members->Add(member(u"flow")); },
                                          [](C c) { c.Definition()->SetName(u"Original"); }});
    Variant stored;
    ASSERT_TRUE(source->GetCopy()->Members->NewEnum()->next(stored));
    EXPECT_EQ(stored.toObject().get(), m.get());
    auto array = made<CArray>([](A a) {
        a.Definition()->SetName(u"original"), a.Elements->Add(element(1, makeDefinition(u"pv", ddoKVariableDef)));
    });
    expectOwnCopies<CArray>(array, {[](A a) { a.Elements->Item(1)->Value = 2; },
                                    [](A a) { a.Elements->Item(1)->Definition->SetName(u"sv"); },
                                    [](A a) { a.Definition()->SetName(u"Original"); }});
    expectEachChangeDiffers<CCollection>([] { return made<CCollection>([](C c) { c.Label = u"x"; }); },
                                         {[](C c) { c.Label = u"X"; }, [](C c) { c.Help = u"h"; }});
    expectEachChangeDiffers<CArray>([] { return made<CArray>([](A a) { a.Label = u"x"; }); },
                                    {[](A a) { a.Label = u"X"; }, [](A a) { a.Help = u"h"; }});
}

TEST(Records, EveryComparedFieldMattersAndTextsAreCaseSensitive) {
    expectEachChangeDiffers<CMember>([] { return member(u"x"); }, {[](CMember& m) { m.Ident = u"X"; },
        [](CMember& m) { m.Description = u"D"; }, [](CMember& m) { m.Help = u"h "; },
        [](CMember& m) { m.Definition = makeDefinition(u"unknown", ddoKVariableDef); }});
    expectEachChangeDiffers<CElement>([] { return element(3); }, {[](CElement& e) { e.Value = 4; },
        [](CElement& e) { e.Description = u"A"; }, [](CElement& e) { e.Help = u""; },
        [](CElement& e) { e.Definition = makeDefinition(u"p", ddoKArrayDef); }});
}

TEST(Records, DefinitionIsAPlainFieldOfAnyKindCopiesDeepAndIsRequiredToCopy) {
    auto m = make<CMember>();
    auto d = makeDefinition(u"target", ddoKMenuDef);  // no kind check
    setObject(m, u"Definition", d);
    EXPECT_EQ(m->Definition.get(), d.get());
    m->Ident = u"i";
    auto copy = m->GetCopy();
    EXPECT_TRUE(copy->Compare(m) && copy->Definition != m->Definition);
    // A source without a definition is refused before anything changes.
    expectRefused(m, [&] { m->SetFromObject(member(u"new", nullptr)); }, NotSet);
    auto e = element(1);
    expectRefused(e, [&] { e->SetFromObject(element(2, nullptr)); }, NotSet);
}

// Only where the member set deviates from its base.

TEST(MemberSet, ItemTakesAPositionOrAnElementKeyAndCopyReplaces) {
    auto set = make<CMemberSet>();
    auto pressure = member(u"pressure");
    set->Add(pressure);
    set->Add(member(u"flow"));
    for (const Variant& index : {Variant(std::int32_t{1}), Variant(u"Ipressure"), Variant(u"IPRESSURE")}) {
        auto item = Marshal<Ref<CMember>>::from(call(set, u"Item", index));
        EXPECT_NE(item.get(), pressure.get());
        EXPECT_TRUE(item->Compare(pressure));
    }
    EXPECT_EQ(set->FindItem(u"FLOW")->Ident, u"flow");
    EXPECT_EQ(raised([&] { set->Item(Variant(u"pressure")); }), InvalidCall);

    auto source = make<CMemberSet>();
    source->Add(member(u"PRESSURE"));
    call(set, u"SetFromObject", Variant(source));  // replaces, so shared keys are fine
    EXPECT_EQ(set->Count(), 1);
    EXPECT_EQ(set->Item(Variant(std::int32_t{1}))->Ident, u"PRESSURE");
}

}  // namespace
}  // namespace tylhart::test
