#include "TestSupport.hpp"
#include "tylhart/external/CCharBuffer.hpp"

namespace tylhart::test {
namespace {

using namespace std::string_literals;

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
    const auto subscript = platformError(errors::Runtime::SubscriptOutOfRange);
    const auto invalid = platformError(errors::Runtime::InvalidCall);
    const auto overflow = platformError(errors::Runtime::Overflow);
    const std::pair<std::function<void(CCharBuffer&)>, ErrorRecord> cases[] = {
        {[](CCharBuffer& b) { b.SetContents(-1, -1, u"x"); }, subscript}, {[](CCharBuffer& b) { b.SetChar(-1, 1, 65); }, subscript},
        {[](CCharBuffer& b) { b.SetContents(0, 0, u"x"); }, invalid}, {[](CCharBuffer& b) { b.Contents(0, -2); }, invalid},
        {[](CCharBuffer& b) { b.Char(0, 2); }, invalid}, {[](CCharBuffer& b) { b.SetChar(0, 1, 256); }, overflow},
        {[](CCharBuffer& b) { b.SetContents(0, -1, u"x\u20AC"); }, overflow},
        {[](CCharBuffer& b) { b.SetChar(0x7FFFFFFF, 1, 65); }, overflow}};
    for (const auto& [refused, expected] : cases) {
        auto b = make<CCharBuffer>();
        b->SetContents(0, -1, u"abc");
        EXPECT_EQ(raised([&] { refused(*b); }), expected);
        EXPECT_EQ(b->Contents(0, -1), u"abc");
    }
}

}  // namespace
}  // namespace tylhart::test
