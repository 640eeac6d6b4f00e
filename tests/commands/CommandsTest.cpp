#include "TestSupport.hpp"
#include "tylhart/commands/CCommand.hpp"

namespace tylhart::test {
namespace {

Ref<CDataItem> valueItem(Variant value = std::int16_t{5}) {
    return made<CDataItem>([&](CDataItem& d) { d.Initialize(dddiTValue), d.SetValue(value), d.Mask = 255; });
}
Ref<CVariable> variableNamed(const char16_t* name) {
    return made<CVariable>([&](CVariable& v) { v.Definition()->SetName(name); });
}
// The empty definition that Initialize leaves would refuse the variable, so
// the item takes the variable's definition first, as callers do.
Ref<CDataItem> variableItem() {
    auto v = variableNamed(u"pv");
    auto item = made<CDataItem>([](CDataItem& d) { d.Initialize(dddiTDefinition); });
    return item->SetDefinition(v->Definition()), item->SetVariable(v), item;
}
Ref<CResponseCode> code(std::int16_t value) {
    auto rc = made<CResponseCode>([](CResponseCode& c) { c.Description = u"Busy", c.Help = u"x"; });
    return rc->Value = value, rc->SetKind(ddrcTSUCCESS), rc;
}
Ref<CTransaction> transaction(std::int16_t tNo) {
    return made<CTransaction>([&](CTransaction& t) {
        t.TNo = tNo, t.Request->Add(valueItem()), t.Reply->Add(valueItem()), t.Reply->Add(valueItem());
        t.ResponseCodes->Add(code(8));
    });
}
Ref<CCommand> command() {
    return made<CCommand>([](CCommand& c) {
        c.Definition()->SetName(u"read_pv"), c.Number = 48, c.SetOperation(ddcoTWrite), c.InRecursion = true;
        c.Transactions->Add(transaction(1)), c.ResponseCodes->Add(code(16));
    });
}
Ref<CDataItem> freshDefinitionItem() { return made<CDataItem>([](CDataItem& d) { d.Initialize(dddiTDefinition); }); }

TEST(Commands, RenderExactly) {
    expectRenderings({
        {"value item", [] { return valueItem(); }, {0, 1, 2}},
        {"new definition item", freshDefinitionItem, 1},
        {"variable item", variableItem, 2},  // the definition shows twice
        {"response code", [] { return code(0); }, {0, 1, 2}},
        // The response codes stand under Reply; the two reply items never show.
        {"transaction", [] { return transaction(3); }, {0, 1, 2}},
        {"command", command, {0, 1, 12}},
        {"command without response codes",
         [] { return made<CCommand>([](CCommand& c) { c.Number = 7, c.ResponseCodes = nullptr; }); }, 13},
        {"new transaction def", [] { return make<CTransactionDef>(); }, {0, 1, 2}},
    });
    // Without response codes there is nothing to print under Reply.
    EXPECT_EQ(raised([] { made<CTransaction>([](CTransaction& t) { t.ResponseCodes = nullptr; })->ToString(2); }),
              NotSet);
}

TEST(DataItem, RefusedCallsRaiseTheirRecordsAndChangeNothing) {
    const ErrorRecord fixed = libraryError("CDataItem.Initialize", errors::KindFixed),
                      wrong = libraryError("CDataItem.Value", errors::WrongKind),
                      range = libraryError("CDataItem.Initialize", errors::IndexOutOfRange),
                      unequal = libraryError("CDataItem.Value", errors::NoCompatibleDefinition),
                      unequalVariable = libraryError("CDataItem.Variable", errors::NoCompatibleDefinition);
    const std::tuple<Ref<CDataItem>, void (*)(CDataItem&), ErrorRecord> rows[] = {
        {make<CDataItem>(), [](CDataItem& d) { d.Initialize(static_cast<enumDDDataItemType>(2)); }, range},
        {valueItem(), [](CDataItem& d) { d.Initialize(dddiTDefinition); }, fixed},
        {valueItem(), [](CDataItem& d) { d.Initialize(static_cast<enumDDDataItemType>(7)); }, fixed},  // kind first
        {make<CDataItem>(), [](CDataItem& d) { d.SetValue(1); }, wrong},
        {variableItem(), [](CDataItem& d) { d.Value(); }, wrong},
        {valueItem(), [](CDataItem& d) { d.SetVariable(variableNamed(u"pv")); }, wrong},
        {variableItem(), [](CDataItem& d) { d.SetDefinition(makeDefinition(u"sv", ddoKVariableDef)); }, unequal},
        {variableItem(), [](CDataItem& d) { d.SetDefinition(nullptr); }, NotSet},
        {variableItem(), [](CDataItem& d) { d.SetVariable(variableNamed(u"sv")); }, unequalVariable},
        {freshDefinitionItem(), [](CDataItem& d) { d.SetVariable(variableNamed(u"pv")); }, unequalVariable},
    };
    for (const auto& [item, refused, expected] : rows) expectRefused(item, [&] { refused(*item); }, expected);
}

TEST(DataItem, LetsKeepOrReplaceTheHeldObjects) {
    auto item = variableItem();
    const auto held = item->Definition();
    item->SetDefinition(makeDefinition(u"pv", ddoKVariableDef));  // equal: the held object stays
    EXPECT_EQ(item->Definition().get(), held.get());
    call(item, u"Initialize", std::int32_t{1});  // the same kind again starts afresh
    EXPECT_TRUE(!item->Variable() && item->Definition() && item->Definition() != held);
    let(item, u"Definition", nullptr);  // without a variable stored as given
    item->SetVariable(variableNamed(u"sv"));  // without a definition nothing to disagree with
    EXPECT_EQ(item->Definition().get(), item->Variable()->Definition().get());
    auto value = valueItem(u"kept");
    EXPECT_EQ((value->Initialize(dddiTValue), value->Value()), Variant(u"kept"));  // the value survives
}

TEST(DataItem, CopyIsDeepAndStopsAtTheFailingStep) {
    auto source = variableItem();
    source->Mask = 7, source->Info = true;
    expectOwnCopies<CDataItem>(source, {[](CDataItem& d) { d.Variable()->Label = u"changed"; },
                                        [](CDataItem& d) { d.Definition()->SetName(u"sv"); }});
    source->SetFromObject(source);  // into itself: nothing lost
    ASSERT_TRUE(source->Variable() && source->Definition()->Name() == u"pv");
    EXPECT_EQ(raised([] { make<CDataItem>()->GetCopy(); }),
              libraryError("CDataItem.Initialize", errors::IndexOutOfRange));
    // A variable that cannot copy itself stops the copy after the flags and the definition.
    source->Variable()->Class = nullptr;
    auto receiver = make<CDataItem>();
    EXPECT_EQ(raised([&] { receiver->SetFromObject(source); }), NotSet);
    EXPECT_TRUE(receiver->Mask == 7 && receiver->Info && receiver->Definition()->Name() == u"pv");
    EXPECT_FALSE(receiver->Variable());
}

TEST(Commands, CompareEveryStepAndItsBlindSpots) {
    using D = CDataItem&;
    expectEachChangeDiffers<CDataItem>([] { return valueItem(); }, {[](D d) { d.Mask = 0; },
        [](D d) { d.Index = true; }, [](D d) { d.Info = true; }, [](D d) { d.SetValue(u"5"); }});
    expectEachChangeDiffers<CDataItem>(variableItem, {[](D d) { d.Variable()->Help = u"h"; },
        [](D d) { d.Initialize(dddiTDefinition), d.SetDefinition(makeDefinition(u"pv", ddoKVariableDef)); }});
    EXPECT_TRUE(valueItem(5.0)->Compare(valueItem()) && !valueItem(Null{})->Compare(variableItem()));
    EXPECT_EQ(raised([] { valueItem(Null{})->Compare(valueItem(Null{})); }), NullUse);
    using R = CResponseCode&;
    expectEachChangeDiffers<CResponseCode>([] { return code(1); }, {[](R r) { r.Value = 2; },
        [](R r) { r.SetKind(ddrcTMODE_ERROR); }, [](R r) { r.Description = u"busy"; }, [](R r) { r.Help = u"X"; }});
    using T = CTransaction&;
    expectEachChangeDiffers<CTransaction>([] { return transaction(1); }, {[](T t) { t.TNo = 2; },
        [](T t) { t.Request->Add(valueItem()); }, [](T t) { t.Reply->Remove(1); },
        [](T t) { t.ResponseCodes->Add(code(9)); }});
    // Operation and InRecursion never render, but they are compared.
    using C = CCommand&;
    expectEachChangeDiffers<CCommand>(command, {[](C c) { c.Number = 0; }, [](C c) { c.SetOperation(ddcoTCommand); },
        [](C c) { c.InRecursion = false; }, [](C c) { c.Definition()->SetName(u"READ_PV"); },
        [](C c) { c.ResponseCodes->Add(code(1)); }, [](C c) { c.Transactions->Add(transaction(2)); }});
    expectEachChangeDiffers<CTransactionDef>([] { return make<CTransactionDef>(); },
        {[](CTransactionDef& t) { t.Number = 1; }, [](CTransactionDef& t) { t.Command()->Number = 1; }});
}

TEST(ResponseCode, KindIsCheckedAndACopyStopsAfterValue) {
    auto c = code(3);
    const ErrorRecord outOfRange = libraryError("CResponseCode.Kind", errors::KindOutOfRange);
    for (std::int32_t bad : {7, -1}) EXPECT_EQ(raised([&] { let(c, u"Kind", bad); }), outOfRange);
    auto neverKinded = made<CResponseCode>([](CResponseCode& r) { r.Value = 9, r.Description = u"new"; });
    EXPECT_EQ(raised([&] { c->SetFromObject(neverKinded); }), outOfRange);
    EXPECT_TRUE(c->Value == 9 && c->Kind() == ddrcTSUCCESS && c->Description == u"Busy");
}

// Both sets are keyed by "I" + a 16-bit number; only the transaction set
// replaces its content on a copy.
TEST(Commands, SetKeysAndCopies) {
    auto codes = make<CResponseCodeSet>(), other = make<CResponseCodeSet>();
    codes->Add(code(8)), codes->Add(code(-3)), other->Add(code(1)), other->Add(code(8));
    EXPECT_EQ(Marshal<Ref<CResponseCode>>::from(call(codes, u"FindItem", std::int32_t{-3}))->Value, -3);
    EXPECT_EQ(raised([&] { codes->SetFromObject(other); }), Duplicate);  // merges: 1 added, then 8 clashes
    EXPECT_EQ(codes->Count(), 3);
    auto transactions = make<CTransactionSet>(), replacement = make<CTransactionSet>();
    transactions->Add(transaction(1)), transactions->Add(transaction(0)), replacement->Add(transaction(1));
    EXPECT_EQ(Marshal<Ref<CTransaction>>::from(call(transactions, u"FindItem", std::int16_t{0}))->TNo, 0);
    transactions->SetFromObject(replacement);
    EXPECT_EQ(transactions->Count(), 1);
}

TEST(Command, RefusedLetsKeepTheCommandAndACopyStopsAtItsFailingStep) {
    auto c = command();
    for (auto wrong : {makeDefinition(u"m", ddoKMenuDef), make<CDefinition>()})
        expectRefused(c, [&] { let(c, u"Definition", wrong); }, libraryError("Menu.Definition", errors::WrongKind));
    expectRefused(c, [&] { let(c, u"Operation", 3); },
                  libraryError("CCommand.Operation", u"Operation type is out of range!"));
    EXPECT_EQ(c->Operation(), ddcoTWrite);  // never rendered
    // A definition that lost its kind: Number, Operation and the sets are copied, InRecursion not.
    c->Definition()->SetFromObject(make<CDefinition>());
    auto receiver = make<CCommand>();
    const auto held = receiver->Definition();
    EXPECT_EQ(raised([&] { receiver->SetFromObject(c); }), libraryError("Menu.Definition", errors::WrongKind));
    EXPECT_TRUE(receiver->Number == 48 && receiver->Operation() == ddcoTWrite && receiver->Transactions->Count() == 1);
    EXPECT_TRUE(receiver->ResponseCodes->Count() == 1 && receiver->Definition() == held && !receiver->InRecursion);
}

TEST(Command, CopyDepth) {
    auto source = command();
    using C = CCommand&;
    expectOwnCopies<CCommand>(source, {[](C c) { c.Definition()->SetName(u"write_pv"); },
        [](C c) { c.Transactions->Add(transaction(2)); }, [](C c) { c.ResponseCodes->Add(code(1)); }});
    // Through dispatch too; the sets compare keys only, so the transaction is compared itself.
    auto copy = refCast<CCommand>(call(source, u"GetCopy").toObject());
    ASSERT_TRUE(copy && copy->Compare(source));
    EXPECT_TRUE(copy->Transactions->Item(1)->Compare(source->Transactions->Item(1)));
    // A transaction def copies its command (stored unchecked); without one the copy is refused before Number.
    auto pairing = made<CTransactionDef>([](CTransactionDef& t) { t.Number = 1; });
    let(pairing, u"Command", source);
    auto pairingCopy = pairing->GetCopy();
    EXPECT_TRUE(pairing->Command() == source && pairingCopy->Command() != source && pairingCopy->Compare(pairing));
    pairing->SetCommand(nullptr), pairing->Number = 2;
    EXPECT_TRUE(raised([&] { pairingCopy->SetFromObject(pairing); }) == NotSet && pairingCopy->Number == 1);
}

}  // namespace
}  // namespace tylhart::test
