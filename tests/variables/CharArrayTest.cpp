#include "TestSupport.hpp"
#include "tylhart/variables/CCharArray.hpp"

namespace tylhart::test {
namespace {

using namespace std::string_literals;

const ErrorRecord BadIndex = libraryError("CCharArray.Char", errors::IndexOutOfRange);

Ref<CCharArray> arrayOf(std::int32_t size, const Text& content) {
    return made<CCharArray>([&](CCharArray& a) { a.Size = size, a.SetText(content); });
}

TEST(CharArray, TextReadsBackAsWrittenAndAFixedSizeCutsOrPads) {
    auto a = make<CCharArray>();
    EXPECT_EQ(a->Size, -1);
    EXPECT_EQ(text(a->ToString(2)), "CharArray{Text:, Size:-1}");
    a->SetText(u"ABCDEF");
    a->SetText(u"AB");  // a shorter text leaves no tail of the longer one
    EXPECT_EQ(a->text(), u"AB");
    EXPECT_EQ(a->Char(0), 65);
    EXPECT_EQ(a->Char(5), 0);
    a->Size = 4;  // the stored bytes stay; reads now give Size characters
    EXPECT_EQ(a->text(), u"AB\0\0"s);
    EXPECT_EQ(text(a->ToString(2)), "CharArray{Text:AB, Size:4}");
    a->SetText(u"ABCDEF");
    EXPECT_EQ(a->text(), u"ABCD");
    a->Size = 2;  // the rendering shows what text shows
    EXPECT_EQ(text(a->ToString()), "CharArray{Text:AB}");
    EXPECT_TRUE(a->ToString(0).isEmpty());
    auto unsized = arrayOf(0, u"xyz");  // size 0 stores text as given but refuses every Char write
    EXPECT_EQ(unsized->text(), u"xyz");
    EXPECT_EQ(raised([&] { unsized->SetChar(0, 65); }), BadIndex);
}

TEST(CharArray, BytesGoInOneByOneAndRenderUpToTheFirstNul) {
    auto a = make<CCharArray>();
    a->SetChar(4, 65);  // no fixed size: any index, the gap reads NUL
    EXPECT_EQ(a->text(), u"\0\0\0\0A"s);
    a->SetFromByteArray({});  // no elements: Size stays and nothing is read
    EXPECT_EQ(a->Size, -1);
    call(a, u"SetFromByteArray", ByteArray{0x41, 0x00, 0x42});
    EXPECT_EQ(a->text(), u"A\0B"s);
    EXPECT_EQ(text(a->ToString(2)), "CharArray{Text:A, Size:3}");
}

TEST(CharArray, RefusedCallsReportTheirErrorAndChangeNothing) {
    using A = CCharArray&;
    expectRefusals<CCharArray>([] { return arrayOf(4, u"abcd"); },
        [](A a) { return std::pair{a.Size, a.text()}; },
        {{[](A a) { a.Char(-1); }, BadIndex}, {[](A a) { a.SetChar(-1, 65); }, BadIndex},
         {[](A a) { a.SetChar(4, 65); }, BadIndex}, {[](A a) { a.SetText(u"\u20AC"); }, Overflow},
         {[](A a) { a.SetFromByteArray({}); }, Subscript},
         {[](A a) { call(Ref<Object>(&a), u"SetFromByteArray", Text(u"ABCD")); }, TypeMismatch},
         {[](A a) { let(Ref<Object>(&a), u"Char", std::int32_t{0}, std::int32_t{256}); }, Overflow}});
}

TEST(CharArray, IsReachableByNameAndIdentifier) {
    Ref<Object> a = make<CCharArray>();
    let(a, DispIdValue, Text(u"Hi"));
    EXPECT_EQ(get(a, u"TEXT"), Variant(Text(u"Hi")));
    EXPECT_EQ(get(a, u"Char", std::int32_t{1}), Variant(std::uint8_t{'i'}));
}

}  // namespace
}  // namespace tylhart::test
