// Children and flag arrays made on first use: no caller may tell them from
// ones made in the constructor.
#include "TestSupport.hpp"
#include "tylhart/commands/CCommand.hpp"
#include "tylhart/external/CFlagArray.hpp"
#include "tylhart/variables/CVariable.hpp"

namespace tylhart::test {
namespace {

TEST(Child, UntouchedChildrenCostNothingAndReadAsOneObject) {
    const std::size_t before = Object::liveObjects();
    auto v = make<CVariable>();
    // The variable alone; its handling flag array, definition, class, type
    // and eleven container children wait for their first use.
    EXPECT_EQ(Object::liveObjects() - before, 1u);

    // Every read, typed or late-bound, hands out the one same list.
    const auto first = v->PreReadActions.get();
    EXPECT_EQ(v->PreReadActions.get(), first);
    EXPECT_EQ(get(v, u"PreReadActions").toObject().get(), first);
    const auto kept = v->TypeInfo->EnumeratorSet;  // a copy of the field is the same set
    EXPECT_EQ(kept.get(), v->TypeInfo->EnumeratorSet.get());
}

TEST(Child, CopiesComparisonsAndRenderingsAsIfMade) {
    const auto variable = [] {
        return made<CVariable>([](CVariable& v) { v.SetDefinition(makeDefinition(u"pressure", ddoKVariableDef)); });
    };
    auto untouched = variable(), touched = variable();
    (void)touched->PostWriteActions->Count();
    (void)touched->Relations();
    (void)touched->Class->ClassInfo(ddvCDynamic);
    EXPECT_EQ(text(untouched->ToString(3)), text(touched->ToString(3)));
    expectCompare(untouched, touched, true);

    // The copy's list and class are its own, whether or not the source's
    // were made.
    for (const auto& source : {untouched, touched}) {
        auto copy = source->GetCopy();
        copy->PostWriteActions->Add(makeDefinition(u"m", ddoKMethodDef));
        EXPECT_EQ(source->PostWriteActions->Count(), 0);
        EXPECT_NE(copy->PostWriteActions.get(), source->PostWriteActions.get());
        expectCompare(copy, source, false);
        copy = source->GetCopy();
        copy->Class->SetClassInfo(ddvCDynamic, true);
        expectCompare(copy, source, false);
        EXPECT_FALSE(source->Class->ClassInfo(ddvCDynamic));
        EXPECT_NE(copy->Class.get(), source->Class.get());
    }

    // Nothing assigned reads Nothing and fails a copy as before.
    auto command = make<CCommand>();
    setObject(command, u"Transactions", Ref<Object>());
    EXPECT_FALSE(get(command, u"Transactions").toObject());
    EXPECT_EQ(raised([&] { command->GetCopy(); }), NotSet);
}

// A flag array asked for late holds the flags set before, is the same object
// on every read, and from then on shares every change with its owner both
// ways; a copy's array is its own whether or not the source's was made.
TEST(Child, FlagArrayMadeOnFirstUseCarriesTheFlags) {
    auto v = make<CVariable>();
    v->SetHandling(ddvhTRead, false);
    auto copyBefore = v->GetCopy();
    const Ref<Object> array = v->GetHandlingObj();
    EXPECT_EQ(v->GetHandlingObj().get(), array.get());
    EXPECT_EQ(text(get(array, CFlagArray::FlagTextId)), "10");
    let(array, CFlagArray::FlagId, std::int32_t{ddvhTRead}, true);
    EXPECT_TRUE(v->Handling(ddvhTRead));
    v->SetHandling(ddvhTWrite, false);
    EXPECT_EQ(text(get(array, CFlagArray::FlagTextId)), "01");
    let(array, CFlagArray::FlagCountId, std::int32_t{1});  // a resize is the owner's too
    EXPECT_EQ(raised([&] { v->Handling(ddvhTRead); }), Subscript);

    auto copyAfter = copyBefore->GetCopy();
    (void)copyAfter->GetHandlingObj();
    copyAfter->SetHandling(ddvhTWrite, false);
    EXPECT_TRUE(copyBefore->Handling(ddvhTWrite));
    EXPECT_FALSE(copyBefore->Handling(ddvhTRead));
    EXPECT_NE(copyBefore->GetHandlingObj().get(), copyAfter->GetHandlingObj().get());
}

}  // namespace
}  // namespace tylhart::test
