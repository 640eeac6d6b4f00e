// Calls whose cost or depth an argument or an object graph would otherwise
// decide, and refused calls that must leave their object as it was.
#include <chrono>

#include "TestSupport.hpp"
#include "tylhart/automation/Registry.hpp"
#include "tylhart/constructs/Collections.hpp"
#include "tylhart/constructs/Menus.hpp"
#include "tylhart/containers/CDefinitionList.hpp"
#include "tylhart/containers/CDefinitionSet.hpp"
#include "tylhart/containers/CObjectSet.hpp"
#include "tylhart/containers/CValueList.hpp"
#include "tylhart/external/CCharBuffer.hpp"
#include "tylhart/external/CFlagArray.hpp"
#include "tylhart/variables/CVariable.hpp"
#include "tylhart/variables/FlagClasses.hpp"

namespace tylhart::test {
namespace {

const ErrorRecord OutOfMemory = runtimeRecord(7, "Out of memory");
const ErrorRecord OutOfStack = runtimeRecord(28, "Out of stack space");
constexpr std::int32_t Huge = 634204656;
constexpr std::int32_t PastLimit = static_cast<std::int32_t>(MaxElements) + 1;

Ref<Object> create(const char16_t* name) { return automation::CreateObject(Text(u"TylHartTypes.") + name); }
Ref<Object> charArray(std::int32_t size, const char16_t* content) {
    auto a = create(u"CCharArray");
    let(a, DispIdValue, content);
    let(a, u"Size", size);
    return a;
}
std::string rendering(const Ref<Object>& o) { return text(call(o, u"ToString", std::int16_t{2})); }

// A size, index or count beyond the element limit is refused before anything
// is allocated, and the object reads as before.
TEST(Robustness, SizesBeyondTheElementLimitAreOutOfMemoryAndChangeNothing) {
    using O = const Ref<Object>&;
    const auto flags = [](O a) { return text(get(a, 103)) + ":" + text(get(a, 102)); };
    const auto buffer = [](O b) { return text(get(b, 101)); };
    const auto huge = [] { return charArray(Huge, u"AB"); };
    const std::tuple<const char*, std::function<Ref<Object>()>, std::function<void(O)>, std::string (*)(O)> rows[] = {
        {"FlagCount = 2147483647", make<CFlagArray>, [](O a) { let(a, 103, INT32_MAX); }, flags},
        {"FlagCount one past the limit", make<CFlagArray>, [](O a) { let(a, 103, PastLimit); }, flags},
        {"Char(1703127690) with Size -1", [] { return charArray(-1, u"AB"); },
         [](O a) { let(a, u"Char", std::int32_t{1703127690}, std::uint8_t{65}); }, rendering},
        {"text read of a huge Size", huge, [](O a) { get(a, DispIdValue); }, rendering},
        {"text write with a huge Size", huge, [](O a) { let(a, DispIdValue, u"CD"); }, rendering},
        {"buffer read past the limit", make<CCharBuffer>, [](O b) { get(b, 205, 0, PastLimit); }, buffer},
        {"buffer fill past the limit", make<CCharBuffer>, [](O b) { let(b, 201, 0, INT32_MAX, 65); }, buffer},
        {"buffer text far out", make<CCharBuffer>, [](O b) { let(b, 205, PastLimit, -1, u"A"); }, buffer},
    };
    for (const auto& [what, build, refused, state] : rows) {
        SCOPED_TRACE(what);
        auto o = build();
        const std::string before = state(o);
        EXPECT_EQ(raised([&] { refused(o); }), OutOfMemory);
        EXPECT_EQ(state(o), before);
    }
}

// Renderings print what is stored, whatever Size declares, and take as long.
TEST(Robustness, CharArrayRenderingsFollowTheContentNotTheDeclaredSize) {
    const struct { std::int32_t size; const char16_t* content; const char *level1, *level2; } rows[] = {
        {Huge, u"", "CharArray{Text:}", "CharArray{Text:, Size:634204656}"},
        {INT32_MAX, u"AB", "CharArray{Text:AB}", "CharArray{Text:AB, Size:2147483647}"},
        {1, u"AB", "CharArray{Text:A}", "CharArray{Text:A, Size:1}"},
    };
    const auto start = std::chrono::steady_clock::now();
    for (const auto& r : rows) {
        auto a = charArray(r.size, r.content);
        EXPECT_EQ(text(call(a, u"ToString")), r.level1);
        EXPECT_EQ(rendering(a), r.level2);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST(Robustness, BufferTextToNulStopsAtTheContent) {
    Ref<Object> b = make<CCharBuffer>();
    let(b, 205, std::int32_t{0}, std::int32_t{-1}, Text(u"AB\0C", 4));
    const struct { std::int32_t start, length; const char* expected; } rows[] = {
        {0, INT32_MAX, "AB"}, {1, 1, "B"}, {3, -1, "C"}, {9, INT32_MAX, ""}, {0, 0, ""}};
    for (const auto& r : rows) EXPECT_EQ(text(get(b, 208, r.start, r.length)), r.expected) << r.start;
}

// Odd texts at the UTF-8 edges: every malformed sequence becomes one U+FFFD
// and the rest is read on; lone surrogates write as U+FFFD.
TEST(Robustness, MalformedUtf8ReadsAsReplacementCharacters) {
    const struct { const char* in; Text out; } reads[] = {
        {"A\x80" "B", u"A\xFFFD" "B"},          // lone continuation byte
        {"\xC3", u"\xFFFD"},                   // cut two-byte sequence
        {"\xC0\x80", u"\xFFFD"},               // overlong NUL
        {"\xE0\x80\x80", u"\xFFFD"},           // overlong three-byte
        {"\xED\xA0\x80", u"\xFFFD"},           // encoded surrogate
        {"\xF0\x80\x80\x80", u"\xFFFD"},       // overlong four-byte
        {"\xF4\x90\x80\x80", u"\xFFFD"},       // beyond U+10FFFF
        {"\xF0\x9F\x98\x80", u"\xD83D\xDE00"},  // a pair
        {"\xE2\x82\xAC\xC3\xA9", u"\x20AC\xE9"},
    };
    for (const auto& r : reads) EXPECT_EQ(fromUtf8(r.in), r.out) << r.in;
    const struct { Text in; const char* out; } writes[] = {
        {u"\xD800", "\xEF\xBF\xBD"}, {u"\xDC00" "A", "\xEF\xBF\xBD" "A"}, {u"\xD83D\xDE00", "\xF0\x9F\x98\x80"}};
    for (const auto& w : writes) EXPECT_EQ(toUtf8(w.in), w.out);
}

TEST(Robustness, ReleasingAHundredThousandNestedListsDoesNotRecurse) {
    const std::size_t before = Object::liveObjects();
    {
        auto outer = make<CValueList>();
        for (int i = 0; i < 100000; ++i) {
            auto next = make<CValueList>();
            next->Add(Variant(outer));
            outer = next;
        }
        EXPECT_EQ(Object::liveObjects(), before + 100001);
    }
    EXPECT_EQ(Object::liveObjects(), before);
}

// A type may hold itself as a range bound, a cycle its caller opens again:
// rendering and comparing refuse the bound instead of following it, and a
// new range count frees the type.
TEST(Robustness, TypeHoldingItselfAsABoundIsFreedWhenTheBoundsAreRebuilt) {
    const std::size_t before = Object::liveObjects();
    {
        auto type = create(u"CType");
        let(type, u"Kind", std::int32_t{ddvTFloat});
        let(type, u"MaxRangeNo", std::int32_t{0});
        let(type, u"MinValues", std::int32_t{0}, type);
        EXPECT_EQ(raised([&] { rendering(type); }), TypeMismatch);
        EXPECT_EQ(raised([&] { call(type, u"Compare", type); }), TypeMismatch);
        let(type, u"MaxRangeNo", std::int32_t{-1});
    }
    EXPECT_EQ(Object::liveObjects(), before);
}

// Menus whose items hold other menus. A menu holding itself meets the depth
// limit; a chain of menus each holding the previous one twice would walk
// 2^40 paths and meets the visit limit, or the text limit when rendered.
// Every deep operation fails, quickly, and changes nothing.
Ref<CMenu> menuHolding(const std::vector<Ref<CMenu>>& held) {
    auto menu = make<CMenu>();
    menu->SetDefinition(makeDefinition(u"m", ddoKMenuDef));
    for (const auto& h : held) {
        auto handle = make<CObject>();
        handle->SetUntypedObject(h ? h : menu);  // Nothing: the menu itself
        auto item = make<CMenuItem>();
        item->SetObj(handle);
        menu->Items->Add(item);
    }
    return menu;
}

TEST(Robustness, GraphsTooDeepOrTooWideToWalkAreRefused) {
    Ref<CMenu> chain = menuHolding({});
    for (int link = 0; link < 40; ++link) chain = menuHolding({chain, chain});
    const struct { const char* what; Ref<CMenu> menu; ErrorRecord renderError; } graphs[] = {
        {"itself", menuHolding({nullptr}), OutOfStack}, {"a chain of doubled links", chain, OutOfMemory}};
    for (const auto& g : graphs) {
        SCOPED_TRACE(g.what);
        auto target = make<CMenu>();
        const std::string targetBefore = rendering(target);
        EXPECT_EQ(raised([&] { g.menu->Compare(g.menu); }), OutOfStack);
        EXPECT_EQ(raised([&] { target->SetFromObject(g.menu); }), OutOfStack);
        EXPECT_EQ(raised([&] { g.menu->ToString(INT16_MAX); }), g.renderError);
        EXPECT_EQ(rendering(target), targetBefore);
        EXPECT_EQ(text(g.menu->ToString(3)).substr(0, 5), "MENU{");  // shallow renderings still work
    }
    EXPECT_EQ(raised([&] { graphs[0].menu->GetCopy(); }), OutOfStack);
    graphs[0].menu->Items->Remove(Variant(std::int32_t{1}));  // breaks the cycle
}

TEST(Robustness, RefusedInsertKeepsTheStoredElement) {
    auto set = made<CDefinitionSet>([](auto& s) { s.UseExactKind = true, s.Add(makeDefinition(u"a", ddoKVariableDef)); });
    // The level-3 rendering shows each element's name and kind.
    expectRefused(set, [&] { set->Insert(makeDefinition(u"a", ddoKMenuDef)); },
                  libraryError("CDefinitionSet.Add", errors::WrongKind));
}

// Copies that cannot be made leave the target as it was: a source whose flag
// array was resized, a list holding Nothing, and replacing sets whose shared
// elements lost their keys after they were added.
TEST(Robustness, RefusedCopiesChangeNothing) {
    auto output = made<COutputStatusClass>([](COutputStatusClass& o) { o.Range = 5, o.SetKind(ddosCMax); });
    let(output->GetModeObj(), 103, std::int32_t{3});  // resized: cannot be copied
    auto status = made<CStatusClass>([](CStatusClass& s) { s.Output->Add(make<COutputStatusClass>()); });
    let(status->GetOtherObj(), 103, std::int32_t{3});
    auto statusTarget = make<CStatusClass>();
    const auto keptOutput = statusTarget->Output;

    auto list = made<CDefinitionList>(
        [](CDefinitionList& l) { l.Add(makeDefinition(u"b", ddoKVariableDef)), l.Add(Ref<CDefinition>()); });
    auto listTarget = made<CDefinitionList>([](CDefinitionList& l) { l.Add(makeDefinition(u"a", ddoKVariableDef)); });

    auto member = [](const char16_t* ident) { return made<CMember>([&](CMember& m) { m.Ident = ident; }); };
    auto renamed = member(u"b");
    auto members = made<CMemberSet>([&](CMemberSet& s) { s.Add(member(u"a")), s.Add(renamed); });
    renamed->Ident = u"A";  // now shares the first member's key
    auto memberTarget = made<CMemberSet>([&](CMemberSet& s) { s.Add(member(u"x")); });

    auto variable = made<CVariable>([](CVariable& v) { v.SetDefinition(makeDefinition(u"v", ddoKVariableDef)); });
    auto emptied = variable->MakeObject();
    auto objects = made<CObjectSet>([&](CObjectSet& s) { s.Add(emptied); });
    emptied->SetUntypedObject(nullptr);  // its key can no longer be read
    auto objectTarget = made<CObjectSet>([&](CObjectSet& s) { s.Add(variable->MakeObject()); });

    const std::tuple<Ref<Object>, Ref<Object>, ErrorRecord> rows[] = {
        {make<COutputStatusClass>(), output, InvalidCall}, {statusTarget, status, InvalidCall},
        {listTarget, list, NotSet}, {memberTarget, members, Duplicate}, {objectTarget, objects, NotSet}};
    for (const auto& [target, source, expected] : rows)
        expectRefused(target, [&] { call(target, u"SetFromObject", source); }, expected);
    EXPECT_EQ(statusTarget->Output.get(), keptOutput.get());
}

}  // namespace
}  // namespace tylhart::test
