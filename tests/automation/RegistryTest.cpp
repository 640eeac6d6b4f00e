#include "TestSupport.hpp"

#include <algorithm>
#include <set>

#include "tylhart/automation/Registry.hpp"
#include "tylhart/core/CDefinition.hpp"

namespace tylhart::test {
namespace {

using namespace automation;

const ErrorRecord CannotCreate{static_cast<std::int32_t>(0x800A01ADu), "TylHartTypes",
                               "ActiveX component can't create object"};

TEST(Registry, TableHoldsFortyEightDistinctWellFormedClasses) {
    auto all = classes();
    ASSERT_EQ(all.size(), 48u);
    std::set<Text> names, clsids, iids;
    for (const ClassEntry& c : all) {
        SCOPED_TRACE(toUtf8(c.name));
        EXPECT_TRUE(names.insert(foldCase(c.name)).second);
        EXPECT_EQ(Text(c.progId), u"TylHartTypes." + Text(c.name));
        // Identifiers are kept in the registry's own spelling.
        auto clsid = parseGuid(c.clsid);
        auto iid = parseGuid(c.iid);
        ASSERT_TRUE(clsid && iid);
        EXPECT_EQ(formatGuid(*clsid), Text(c.clsid));
        EXPECT_EQ(formatGuid(*iid), Text(c.iid));
        EXPECT_TRUE(clsids.insert(c.clsid).second);
        EXPECT_TRUE(iids.insert(c.iid).second);
        if (c.built()) {
            EXPECT_EQ(c.classInfo().name(), Text(c.name));
        }
    }
    // No interface shares an identifier with a class.
    for (const Text& id : clsids) EXPECT_EQ(iids.count(id), 0u) << toUtf8(id);
}

// Every lookup of a known row finds that row; an interface identifier is
// not a class identifier, and the reverse.
TEST(Registry, EveryLookupOfAKnownRowFindsTheSameRow) {
    const std::tuple<const char16_t*, const char16_t*, const char16_t*, const char16_t*> rows[] = {  // lookup, name
        {u"CDefinition", u"CDefinition", u"{65488EEC-01BE-11D5-8151-00E0291221F9}", u"{729158C8-9D51-4DB2-96AA-0E9801C2A6FB}"},
        {u"ddenums", u"DDEnums", u"{016E9349-5C94-11D4-80BA-00E0291221F9}", u"{BE1382EE-8EA2-41FA-880F-0FEE95BE27CC}"},
        {u"CVARIABLEDEFINITIONSET", u"CVariableDefinitionSet", u"{783E1629-A8B3-47BD-8EB0-2741B691899A}",
         u"{B48AA6E3-EBF7-41C6-89B2-A438AA4A8948}"},
        {u"CObject", u"CObject", u"{DED357F0-1238-4748-A3B9-FB15EA22035F}", u"{C18E4D99-DC67-4A6D-95D3-93CC1E524FC0}"},
        {u"CVariable", u"CVariable", u"{9439C1CD-5332-4AA2-B705-0C7CE8D76C5C}", u"{53E47713-8A46-4618-8BA4-F6BF4F85791C}"},
        {u"CBitEnumeratorSet", u"CBitEnumeratorSet", u"{3C793D6C-0DCE-4CE3-A5CF-F34717B6E640}",
         u"{74849F67-F060-4EC8-B473-944AEEEB6BF4}"}};
    for (const auto& [lookup, name, clsid, iid] : rows) {
        SCOPED_TRACE(toUtf8(name));
        const ClassEntry* row = findClass(lookup);
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(Text(row->name), Text(name));
        EXPECT_TRUE(Text(row->clsid) == clsid && Text(row->iid) == iid);
        EXPECT_EQ(row->interfaceName(), u"_" + Text(name));
        EXPECT_EQ(findClassByProgId(u"TylHartTypes." + Text(lookup)), row);
        EXPECT_TRUE(findClassByClsid(TextView(clsid)) == row && findClassByClsid(*parseGuid(clsid)) == row);
        EXPECT_EQ(findClassByIid(*parseGuid(iid)), row);
        EXPECT_TRUE(findClassByClsid(TextView(iid)) == nullptr && findClassByIid(*parseGuid(clsid)) == nullptr);
    }
}

TEST(Registry, GuidsParseOnlyTheRegistryForms) {
    const std::pair<const char16_t*, bool> cases[] = {
        {u"{65488EEC-01BE-11D5-8151-00E0291221F9}", true},   {u"65488EEC-01BE-11D5-8151-00E0291221F9", true},
        {u"{65488eec-01be-11d5-8151-00e0291221f9}", true},   {u"65488eEc-01Be-11d5-8151-00E0291221f9", true},
        {u"{65488EEC-01BE-11D5-8151-00E0291221F9", false},   {u"65488EEC-01BE-11D5-8151-00E0291221F9}", false},
        {u"(65488EEC-01BE-11D5-8151-00E0291221F9)", false},  {u"{65488EEC01BE-11D5-8151-00E0291221F9-}", false},
        {u"{65488EEC-01BE-11D5-8151-00E0291221FG}", false},  {u"{65488EEC-01BE-11D5-815100E0291221F9}", false},
        {u" {65488EEC-01BE-11D5-8151-00E0291221F9}", false}, {u"{+5488EEC-01BE-11D5-8151-00E0291221F9}", false},
        {u"", false}};
    const std::uint8_t tail[8] = {0x81, 0x51, 0x00, 0xE0, 0x29, 0x12, 0x21, 0xF9};
    for (const auto& [spelling, accepted] : cases) {
        auto g = parseGuid(spelling);
        ASSERT_EQ(g.has_value(), accepted) << toUtf8(spelling);
        if (!g) continue;
        EXPECT_TRUE(g->data1 == 0x65488EECu && g->data2 == 0x01BEu && g->data3 == 0x11D5u);
        EXPECT_TRUE(std::equal(tail, tail + 8, g->data4));
        EXPECT_EQ(formatGuid(*g), u"{65488EEC-01BE-11D5-8151-00E0291221F9}");
        // Creation accepts the same spellings, and names ignore case; each call makes a fresh object.
        Ref<Object> a = CreateObjectFromClsid(spelling);
        ASSERT_TRUE(a);
        EXPECT_EQ(a->className(), u"CDefinition");
    }
    Ref<Object> a = CreateObject(u"TylHartTypes.CDefinition"), b = CreateObject(u"TYLHARTTYPES.cdefinition");
    ASSERT_TRUE(a && b);
    EXPECT_TRUE(a.get() != b.get() && refCast<CDefinition>(b)->Kind() == ddoKUndefined);  // a fresh definition
}

TEST(Registry, UnknownNamesAndIdentifiersRaise429AndCreateNothing) {
    const std::size_t before = Object::liveObjects();
    for (const char16_t* name : {u"TylHartTypes.CNothing", u"CDefinition", u"TylHartTypes.CDefinition ",
                                 u"TylHartTypes._CDefinition", u"TylHartTypes", u""}) {
        EXPECT_EQ(raised([&] { CreateObject(name); }), CannotCreate) << toUtf8(name);
    }
    // The type library's and an interface's identifier, a near miss, junk.
    for (const char16_t* id : {u"{016E9347-5C94-11D4-80BA-00E0291221F9}", u"{729158C8-9D51-4DB2-96AA-0E9801C2A6FB}",
                               u"{65488EEC-01BE-11D5-8151-00E0291221F8}", u"TylHartTypes.CDefinition", u""}) {
        EXPECT_EQ(raised([&] { CreateObjectFromClsid(id); }), CannotCreate) << toUtf8(id);
    }
    EXPECT_EQ(Object::liveObjects(), before);
}

// Built classes are created under both of their identities; classes whose
// implementation is missing fail exactly as an unknown name does.
TEST(Registry, EveryRowCreatesItsOwnClassOrRaises429) {
    for (const ClassEntry& c : classes()) {
        SCOPED_TRACE(toUtf8(c.name));
        if (c.built()) {
            EXPECT_EQ(CreateObject(c.progId)->className(), Text(c.name));
            EXPECT_EQ(CreateObjectFromClsid(c.clsid)->className(), Text(c.name));
        } else {
            EXPECT_EQ(raised([&] { CreateObject(c.progId); }), CannotCreate);
            EXPECT_EQ(raised([&] { CreateObjectFromClsid(c.clsid); }), CannotCreate);
        }
    }
}

TEST(Registry, MarkerClassesHaveNoMembers) {
    for (const char16_t* name : {u"TylHartTypes.DDEnums", u"TylHartTypes.DDTypes"}) {
        Ref<Object> o = CreateObject(name);
        EXPECT_TRUE(o->classInfo().members().empty());
        EXPECT_EQ(raised([&] { get(o, u"ToString"); }), platformError(errors::Runtime::NoSuchMember));
    }
}

}  // namespace
}  // namespace tylhart::test
