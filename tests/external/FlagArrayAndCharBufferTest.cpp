#include "TestSupport.hpp"
#include "tylhart/external/CCharBuffer.hpp"
#include "tylhart/external/CFlagArray.hpp"

namespace tylhart::test {
namespace {

using namespace std::string_literals;

// Every refused call leaves count and flags as they were.
TEST(FlagArray, RefusedCallsReportTheRuntimesErrorAndChangeNothing) {
    using A = CFlagArray&;
    const auto build = [] {
        return made<CFlagArray>([](A a) {
            a.SetFlagCount(3);
            a.SetFlagText(u"101");
        });
    };
    expectRefusals<CFlagArray>(build, [](A a) { return a.FlagText(); },
        {{[](A a) { a.SetFlag(-1, true); }, Subscript}, {[](A a) { a.Flag(3); }, Subscript},
         {[](A a) { a.SetFlagCount(-1); }, InvalidCall}, {[](A a) { a.SetFlagText(u"10"); }, InvalidCall},
         {[](A a) { a.SetFlagText(u"1010"); }, InvalidCall}, {[](A a) { a.SetFlagText(u"1x1"); }, TypeMismatch}});
}

TEST(FlagArray, AnswersItsIdentifiersStoresNotZeroAndResizesWithClearFlags) {
    Ref<Object> a = make<CFlagArray>();
    let(a, 103, std::int32_t{4});
    const Variant values[] = {Variant(std::int32_t{-1}), Variant(std::int16_t{2}), Variant(0.0), Variant(Text(u"True"))};
    for (std::int32_t i = 0; i < 4; ++i) let(a, DispIdValue, i, values[i]);
    EXPECT_EQ(get(a, 102), Variant(Text(u"1101")));
    EXPECT_EQ(get(a, DispIdValue, std::int32_t{1}), Variant(true));
    let(a, u"flagcount", std::int32_t{6});
    EXPECT_EQ(get(a, u"FlagText"), Variant(Text(u"110100")));
    EXPECT_TRUE(CFlagArray::staticClassInfo().find(DispIdValue)->params.at(0).byRef);
}

// ---- Character buffer ----

TEST(CharBuffer, TextWritesEndTheContentReadsPadAndCharsGrowIt) {
    auto b = make<CCharBuffer>();
    b->SetContents(0, 7, u"ABCDEF");
    b->SetContents(0, 3, u"ABC");  // room for two characters and the closing NUL
    EXPECT_EQ(b->Count(), 2);
    EXPECT_EQ(b->Contents(0, 4), u"AB\0\0"s);
    EXPECT_EQ(b->Contents(1, -1), u"B");
    EXPECT_EQ(b->Contents(5, -1), u"");
    EXPECT_EQ(b->Char(9, 1), 0);
    b->SetChar(3, 2, 0xFF);
    b->SetContents(6, -1, u"Q");
    EXPECT_EQ(b->Contents(0, -1), u"AB\0\u00FF\u00FF\0Q"s);
    EXPECT_EQ(b->TextToNul(0, -1), u"AB");
    EXPECT_EQ(b->TextToNul(3, 2), u"\u00FF\u00FF");
}

TEST(CharBuffer, RefusedCallsReportTheRuntimesErrorAndChangeNothing) {
    using B = CCharBuffer&;
    expectRefusals<CCharBuffer>([] { return made<CCharBuffer>([](B b) { b.SetContents(0, -1, u"abc"); }); },
        [](B b) { return b.Contents(0, -1); },
        {{[](B b) { b.SetContents(-1, -1, u"x"); }, Subscript}, {[](B b) { b.SetChar(-1, 1, 65); }, Subscript},
         {[](B b) { b.SetContents(0, 0, u"x"); }, InvalidCall}, {[](B b) { b.Contents(0, -2); }, InvalidCall},
         {[](B b) { b.Char(0, 2); }, InvalidCall}, {[](B b) { b.SetChar(0, 1, 256); }, Overflow},
         {[](B b) { b.SetContents(0, -1, u"x\u20AC"); }, Overflow},
         {[](B b) { b.SetChar(0x7FFFFFFF, 1, 65); }, Overflow}});
}

}  // namespace
}  // namespace tylhart::test
