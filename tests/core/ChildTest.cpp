// Container children made on first use: no caller may tell them from
// children made in the constructor.
#include "TestSupport.hpp"
#include "tylhart/commands/CCommand.hpp"
#include "tylhart/variables/CVariable.hpp"

namespace tylhart::test {
namespace {

TEST(Child, UntouchedChildrenCostNothingAndReadAsOneObject) {
    const std::size_t before = Object::liveObjects();
    auto v = make<CVariable>();
    // The variable and its handling flags; its definition, class, type and
    // eleven container children wait for their first use.
    EXPECT_LE(Object::liveObjects() - before, 2u);

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
    EXPECT_EQ(text(untouched->ToString(3)), text(touched->ToString(3)));
    expectCompare(untouched, touched, true);

    // The copy's list is its own, whether or not the source's was made.
    for (const auto& source : {untouched, touched}) {
        auto copy = source->GetCopy();
        copy->PostWriteActions->Add(makeDefinition(u"m", ddoKMethodDef));
        EXPECT_EQ(source->PostWriteActions->Count(), 0);
        EXPECT_NE(copy->PostWriteActions.get(), source->PostWriteActions.get());
        expectCompare(copy, source, false);
    }

    // Nothing assigned reads Nothing and fails a copy as before.
    auto command = make<CCommand>();
    setObject(command, u"Transactions", Ref<Object>());
    EXPECT_FALSE(get(command, u"Transactions").toObject());
    EXPECT_EQ(raised([&] { command->GetCopy(); }), NotSet);
}

}  // namespace
}  // namespace tylhart::test
