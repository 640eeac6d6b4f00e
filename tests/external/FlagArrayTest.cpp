#include "TestSupport.hpp"
#include "tylhart/external/CFlagArray.hpp"

namespace tylhart::test {
namespace {

// Every refused call leaves count and flags as they were.
TEST(FlagArray, RefusedCallsReportTheRuntimesErrorAndChangeNothing) {
    const auto invalid = platformError(errors::Runtime::InvalidCall);
    const auto subscript = platformError(errors::Runtime::SubscriptOutOfRange);
    const std::pair<std::function<void(CFlagArray&)>, ErrorRecord> cases[] = {
        {[](CFlagArray& a) { a.SetFlag(-1, true); }, subscript}, {[](CFlagArray& a) { a.Flag(3); }, subscript},
        {[](CFlagArray& a) { a.SetFlagCount(-1); }, invalid}, {[](CFlagArray& a) { a.SetFlagText(u"10"); }, invalid},
        {[](CFlagArray& a) { a.SetFlagText(u"1010"); }, invalid},
        {[](CFlagArray& a) { a.SetFlagText(u"1x1"); }, platformError(errors::Runtime::TypeMismatch)}};
    for (const auto& [refused, expected] : cases) {
        auto a = make<CFlagArray>();
        a->SetFlagCount(3), a->SetFlagText(u"101");
        EXPECT_EQ(raised([&] { refused(*a); }), expected);
        EXPECT_EQ(a->FlagText(), u"101");
    }
}

TEST(FlagArray, AnswersItsIdentifiersStoresNotZeroAndResizesWithClearFlags) {
    Ref<Object> a = make<CFlagArray>();
    Variant count[] = {Variant(std::int32_t{4})};
    invoke(*a, 103, Access::Let, count);
    Variant values[] = {Variant(std::int32_t{-1}), Variant(std::int16_t{2}), Variant(0.0), Variant(Text(u"True"))};
    for (std::int32_t i = 0; i < 4; ++i) {
        Variant args[] = {Variant(i), values[i]};
        invoke(*a, DispIdValue, Access::Let, args);
    }
    EXPECT_EQ(invoke(*a, 102, Access::Get), Variant(Text(u"1101")));
    Variant index[] = {Variant(std::int32_t{1})};
    EXPECT_EQ(invoke(*a, DispIdValue, Access::Get, index), Variant(true));
    Variant six[] = {Variant(std::int32_t{6})};
    invoke(*a, u"flagcount", Access::Let, six);
    EXPECT_EQ(get(a, u"FlagText"), Variant(Text(u"110100")));
    EXPECT_TRUE(CFlagArray::staticClassInfo().find(DispIdValue)->params.at(0).byRef);
}

}  // namespace
}  // namespace tylhart::test
