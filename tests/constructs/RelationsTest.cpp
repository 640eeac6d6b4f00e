#include "TestSupport.hpp"
#include "tylhart/commands/CCommand.hpp"
#include "tylhart/constructs/CMethod.hpp"
#include "tylhart/constructs/Collections.hpp"
#include "tylhart/constructs/EditDisplays.hpp"
#include "tylhart/constructs/Menus.hpp"
#include "tylhart/constructs/Relations.hpp"

namespace tylhart::test {
namespace {

Ref<CDefinition> var(const char16_t* name) { return makeDefinition(name, ddoKVariableDef); }
Ref<CVariable> variable(const char16_t* name) {
    return made<CVariable>([&](CVariable& v) { v.Definition()->SetName(name); });
}
Ref<CVariableItem> item() { return made<CVariableItem>([](CVariableItem& i) { i.SetVariable(variable(u"pv")); }); }
Ref<CUnit> unit() {
    return made<CUnit>([](CUnit& u) { u.SetUnit(var(u"pv")), u.Definition()->SetName(u"u"), u.Reread->Add(var(u"s")); });
}
Ref<CRefresh> refresh() {
    return made<CRefresh>([](CRefresh& r) { r.Definition()->SetName(u"r"), r.Reread->Add(var(u"s")); });
}
Ref<CWriteAsOne> writeAsOne() {
    return made<CWriteAsOne>([](CWriteAsOne& w) { w.Definition()->SetName(u"w"), w.Modified->Add(item()); });
}
Ref<CMethod> method() {
    return made<CMethod>([](CMethod& m) {
        m.Definition()->SetName(u"m"), m.Label = u"L", m.Help = u"H", m.Uid = 7;
        m.Class->SetClassInfo(ddmCInput, true);
    });
}

TEST(Constructs, RenderExactly) {
    expectRenderings({
        // UNIT prints the unit variable's definition after the tag, never its own.
        {"unit", unit, {0, 1, 3}},
        {"unit without reread", [] { return made<CUnit>([](CUnit& u) { u.InRecursion = true, u.Reread = nullptr; }); }, 2},
        {"refresh", refresh, 2},
        // WRITE_AS_ONE and its items have a short form below level 1.
        {"write as one", writeAsOne, {-1, 3}},
        {"write as one without items",
         [] { return made<CWriteAsOne>([](CWriteAsOne& w) { w.InProgress = true, w.Modified = nullptr; }); }, 2},
        {"variable item", item, 2},
        {"new variable item", make<CVariableItem>, 0},
        // The definition keeps the method's own level; the class goes one down.
        {"method", method, {0, 1, 2}},
        {"method without class", [] { return made<CMethod>([](CMethod& m) { m.Validity = false, m.Uid = -3, m.Class = nullptr; }); }, 3},
    });
    // The short form is built before the level is looked at.
    EXPECT_EQ(raised([] { made<CVariableItem>([](CVariableItem& i) { i.Definition = nullptr; })->ToString(2); }), NotSet);
}

ErrorRecord wrongKind(const char* source) { return libraryError(source, errors::WrongKind); }

TEST(Constructs, RefusedLetsKeepTheHeldObject) {
    struct Row { Ref<Object> target; const char16_t* member; Ref<Object> value; ErrorRecord error; };
    const Row rows[] = {
        {unit(), u"Unit", makeDefinition(u"u", ddoKUnitDef), wrongKind("CUnit.Unit")},
        {unit(), u"Unit", nullptr, NotSet},
        {unit(), u"Definition", var(u"v"), wrongKind("CUnit.Definition")},
        {refresh(), u"Definition", make<CDefinition>(), wrongKind("CRefresh.Definition")},
        {writeAsOne(), u"Definition", makeDefinition(u"r", ddoKRefreshDef), wrongKind("CWriteAsOne.Definition")},
        {make<CMethod>(), u"Definition", makeDefinition(u"m", ddoKMenuDef), wrongKind("Method.Definition")},
        {make<CMethod>(), u"Definition", nullptr, NotSet},
        {item(), u"Variable", variable(u"PV"), libraryError("CVariableItem.Variable", errors::NoCompatibleDefinition)},
        {item(), u"Variable", nullptr, NotSet},
        // Each construct reports its own class in the Source of a refused kind.
        {make<CCollection>(), u"Definition", makeDefinition(u"a", ddoKArrayDef), wrongKind("CCollection.Definition")},
        {make<CCollection>(), u"Definition", make<CDefinition>(), wrongKind("CCollection.Definition")},
        {make<CArray>(), u"Definition", makeDefinition(u"c", ddoKCollectionDef), wrongKind("CArray.Definition")},
        {make<CArray>(), u"Definition", var(u"v"), wrongKind("CArray.Definition")},
    };
    for (const Row& r : rows) {
        const Ref<Object> held = get(r.target, r.member).toObject();
        expectRefused(r.target, [&] { let(r.target, r.member, r.value); }, r.error);
        EXPECT_EQ(get(r.target, r.member).toObject(), held);  // the very object, not an equal one
    }
    auto i = item();
    auto v = variable(u"pv");  // an equal definition need not be the same object
    i->SetVariable(v);
    EXPECT_TRUE(i->Variable() == v && i->Definition == v->Definition());
}

// Every copy and check comes before the first assignment.
TEST(Constructs, RefusedCopiesLeaveTheReceiverUnchanged) {
    const auto lost = [](const Ref<CDefinition>& d) { d->SetFromObject(make<CDefinition>()); };
    const auto twoItems = [](CWriteAsOne& w) {  // the first item copies, the second cannot
        w.Modified->Add(item()), w.Modified->Add(make<CVariableItem>()), w.Modified->Item(2)->Definition = nullptr;
    };
    const std::tuple<Ref<Object>, Ref<Object>, ErrorRecord> rows[] = {
        {unit(), made<CUnit>([&](CUnit& u) { lost(u.Definition()), lost(u.Unit()); }), wrongKind("CUnit.Definition")},
        {unit(), made<CUnit>([&](CUnit& u) { lost(u.Unit()); }), wrongKind("CUnit.Unit")},
        {unit(), made<CUnit>([](CUnit& u) { u.Reread = nullptr; }), NotSet},
        {refresh(), made<CRefresh>([&](CRefresh& r) { lost(r.Definition()); }), wrongKind("CRefresh.Definition")},
        {refresh(), made<CRefresh>([](CRefresh& r) { r.Reread = nullptr; }), NotSet},
        {writeAsOne(), made<CWriteAsOne>([&](CWriteAsOne& w) { lost(w.Definition()); }),
         wrongKind("CWriteAsOne.Definition")},
        {writeAsOne(), made<CWriteAsOne>(twoItems), NotSet},
        {item(), made<CVariableItem>([](CVariableItem& x) { x.Definition = nullptr; }), NotSet},
        {make<CMethod>(), made<CMethod>([&](CMethod& m) { m.Class = nullptr, lost(m.Definition()); }),
         wrongKind("Method.Definition")},
        {make<CMethod>(), made<CMethod>([](CMethod& m) { m.Class = nullptr, m.Label = u"new"; }), NotSet},
        // A definition that lost its kind is refused by the kind check, ahead of a missing container.
        {make<CCollection>(), made<CCollection>([&](CCollection& c) { c.Label = u"new", c.Members = nullptr, lost(c.Definition()); }),
         wrongKind("CCollection.Definition")},
        {make<CCollection>(), made<CCollection>([](CCollection& c) { c.Label = u"new", c.Members = nullptr; }), NotSet},
        {make<CArray>(), made<CArray>([&](CArray& a) { a.Label = u"new", a.Elements = nullptr, lost(a.Definition()); }),
         wrongKind("CArray.Definition")},
        {make<CArray>(), made<CArray>([](CArray& a) { a.Label = u"new", a.Elements = nullptr; }), NotSet},
    };
    for (const auto& [receiver, source, error] : rows)
        expectRefused(receiver, [&] { call(receiver, u"SetFromObject", source); }, error);
}

TEST(Relations, CopiesAreDeepAndIndependent) {
    expectOwnCopies<CUnit>(unit(), {[](CUnit& u) { u.Unit()->SetName(u"x"); },
                                    [](CUnit& u) { u.Reread->Add(var(u"t")); }});
    auto u = unit();
    EXPECT_EQ(u->GetCopy()->Reread->elements()[0], u->Reread->elements()[0]);  // set copies share their elements
    expectOwnCopies<CRefresh>(refresh(), {[](CRefresh& r) { r.Reread->Add(var(u"t")); },
                                          [](CRefresh& r) { r.Changed->Add(var(u"t")); }});
    using W = CWriteAsOne&;
    expectOwnCopies<CWriteAsOne>(writeAsOne(), {[](W w) { w.Modified->Item(1)->Variable()->Label = u"x"; },
                                                [](W w) { w.Modified->Item(1)->Definition->SetName(u"q"); }});
}

TEST(Relations, CompareOrderAndBlindSpots) {
    expectEachChangeDiffers<CUnit>(unit, {[](CUnit& u) { u.Definition()->SetName(u"U"); },
        [](CUnit& u) { u.Unit()->SetName(u"x"); }, [](CUnit& u) { u.InRecursion = true; }});
    expectEachChangeDiffers<CRefresh>(refresh, {[](CRefresh& r) { r.Definition()->SetName(u"R"); },
        [](CRefresh& r) { r.Reread->Remove(var(u"s")); }, [](CRefresh& r) { r.InRecursion = true; }});
    expectEachChangeDiffers<CVariableItem>(item, {[](CVariableItem& i) { i.Definition = var(u"q"); }});
    // InProgress and IsComplete are transient client state.
    EXPECT_TRUE(made<CWriteAsOne>([](CWriteAsOne& w) { w.InProgress = w.IsComplete = true; })
                    ->Compare(make<CWriteAsOne>()));
    // The first difference ends the comparison: a missing child on this side
    // raises only when everything compared before it was equal.
    const auto noReread = [](auto& c) { c.Reread = nullptr; };
    const auto otherUnit = [](CUnit& u) { u.SetUnit(var(u"x")); };
    const auto otherChanged = [](CRefresh& r) { r.Changed->Add(var(u"x")); };
    const std::pair<std::function<bool()>, ErrorRecord> rows[] = {
        {[&] { return made<CUnit>(noReread)->Compare(made<CUnit>(otherUnit)); }, NoError},
        {[&] { return made<CUnit>(noReread)->Compare(make<CUnit>()); }, NotSet},
        {[&] { return made<CRefresh>(noReread)->Compare(made<CRefresh>(otherChanged)); }, NoError},
        {[&] { return made<CRefresh>([](CRefresh& r) { r.Changed = nullptr; })->Compare(make<CRefresh>()); }, NotSet},
        {[] { return made<CWriteAsOne>([](CWriteAsOne& w) { w.Modified = nullptr; })->Compare(writeAsOne()); }, NotSet},
    };
    for (const auto& [compare, expected] : rows) EXPECT_EQ(raised([&] { EXPECT_FALSE(compare()); }), expected);
}

TEST(Method, CopyIsDeepAndCompareCoversEveryFieldInOrder) {
    expectOwnCopies<CMethod>(method(), {[](CMethod& m) { m.Class->SetClassInfo(ddmCHart, true); },
                                        [](CMethod& m) { m.Definition()->SetName(u"x"); }});
    expectEachChangeDiffers<CMethod>(method, {[](CMethod& m) { m.Label = u"l"; }, [](CMethod& m) { m.Help = u"h"; },
        [](CMethod& m) { m.Validity = false; }, [](CMethod& m) { m.Uid = 8; },
        [](CMethod& m) { m.Class->SetClassInfo(ddmCInput, false); }, [](CMethod& m) { m.Definition()->SetName(u""); }});
    // Label is compared before Class, Class before the definition.
    auto noClass = made<CMethod>([](CMethod& m) { m.Class = nullptr; });
    EXPECT_FALSE(noClass->Compare(method()));
    auto renamed = made<CMethod>([](CMethod& m) { m.Definition()->SetName(u"x"); });
    EXPECT_EQ(raised([&] { noClass->Compare(renamed); }), NotSet);
}

// A handle gives each construct back, the same object, through its own class's accessor only.
TEST(Constructs, AHandleHoldsEachConstructAndHandsItOutThroughItsOwnAccessorOnly) {
    for (const Ref<Object>& construct : std::initializer_list<Ref<Object>>{make<CVariable>(), make<CCommand>(),
             make<CUnit>(), make<CRefresh>(), make<CWriteAsOne>(), make<CMethod>(), make<CMenu>(), make<CEditDisplay>(),
             make<CCollection>(), make<CArray>()}) {
        const Ref<Object> handle = call(construct, u"MakeObject").toObject();
        for (const char16_t* className : TopLevelClassNames) {
            const Text accessor = u"Make" + Text(className + 1);
            if (construct->className() == className) EXPECT_EQ(call(handle, accessor.c_str()).toObject(), construct);
            else EXPECT_EQ(raised([&] { call(handle, accessor.c_str()); }), TypeMismatch);
        }
    }
}

}  // namespace
}  // namespace tylhart::test
