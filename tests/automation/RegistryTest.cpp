#include "TestSupport.hpp"

#include <algorithm>

#include "tylhart/automation/Entry.hpp"

namespace tylhart::test {
namespace {

using namespace automation;

// Every row is found again under each of its identities (so no two rows share
// one, and no class identifier is an interface's) and creates its own class
// under both names. The identities themselves are pinned by the listing.
TEST(Registry, EveryRowIsFoundUnderEachIdentityAndCreatesItsClass) {
    ASSERT_EQ(classes().size(), 48u);
    for (const ClassEntry& c : classes()) {
        SCOPED_TRACE(toUtf8(c.name));
        const auto clsid = parseGuid(c.clsid), iid = parseGuid(c.iid);
        ASSERT_TRUE(clsid && iid);
        EXPECT_TRUE(formatGuid(*clsid) == c.clsid && formatGuid(*iid) == c.iid);
        EXPECT_TRUE(findClass(foldCase(c.name)) == &c && findClassByProgId(foldCase(c.progId)) == &c);
        EXPECT_TRUE(findClassByClsid(*clsid) == &c && findClassByIid(*iid) == &c);
        EXPECT_TRUE(findClassByClsid(c.iid) == nullptr && findClassByIid(*clsid) == nullptr);
        ASSERT_TRUE(c.built());
        EXPECT_EQ(c.classInfo().name(), Text(c.name));
        EXPECT_EQ(CreateObject(c.progId)->className(), Text(c.name));
        EXPECT_EQ(CreateObjectFromClsid(c.clsid)->className(), Text(c.name));
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
    }
}

TEST(Registry, UnknownNamesAndIdentifiersRaise429AndCreateNothing) {
    const std::size_t before = Object::liveObjects();
    for (const char16_t* name : {u"TylHartTypes.CNothing", u"CDefinition", u"TylHartTypes.CDefinition ",
                                 u"TylHartTypes._CDefinition", u"TylHartTypes", u""})
        EXPECT_EQ(raised([&] { CreateObject(name); }), CannotCreate) << toUtf8(name);
    // The type library's and an interface's identifier, a near miss, junk.
    for (const char16_t* id : {u"{016E9347-5C94-11D4-80BA-00E0291221F9}", u"{729158C8-9D51-4DB2-96AA-0E9801C2A6FB}",
                               u"{65488EEC-01BE-11D5-8151-00E0291221F8}", u"TylHartTypes.CDefinition", u""})
        EXPECT_EQ(raised([&] { CreateObjectFromClsid(id); }), CannotCreate) << toUtf8(id);
    EXPECT_EQ(Object::liveObjects(), before);
}

// Their empty member tables are pinned by the listing (TypeLibraryTest).
TEST(Registry, MarkerClassesAnswerNoMember) {
    for (const char16_t* name : {u"TylHartTypes.DDEnums", u"TylHartTypes.DDTypes"})
        EXPECT_EQ(raised([&] { get(CreateObject(name), u"ToString"); }), NoSuchMember) << toUtf8(name);
}

// ---- Entry points ----

const Guid DefinitionClsid = *parseGuid(u"{65488EEC-01BE-11D5-8151-00E0291221F9}");
const Guid DefinitionIid = *parseGuid(u"{729158C8-9D51-4DB2-96AA-0E9801C2A6FB}");
const Guid DDEnumsClsid = *parseGuid(u"{016E9349-5C94-11D4-80BA-00E0291221F9}");
const Guid IidDispatch = *parseGuid(u"{00020400-0000-0000-C000-000000000046}");

// Takes over the reference that DllGetClassObject added.
Ref<Object> adopt(void* p) {
    Ref<Object> r(static_cast<Object*>(p));
    static_cast<Object*>(p)->release();
    return r;
}

// Each accepted interface yields a factory, itself a live object reached by
// dispatch, that makes a new object of the class asked for on every call.
TEST(Entry, FactoryCreatesNewObjectsOfTheClassItWasAskedFor) {
    for (const Guid& iid : {IidUnknown, IidClassFactory, DefinitionIid}) {
        const std::size_t before = Object::liveObjects();
        void* ppv = nullptr;
        ASSERT_EQ(DllGetClassObject(DefinitionClsid, iid, &ppv), status::Ok) << toUtf8(formatGuid(iid));
        EXPECT_EQ(Object::liveObjects(), before + 1);
        Ref<Object> factory = adopt(ppv);
        EXPECT_EQ(factory->className(), u"ClassFactory");
        const Variant a = invoke(factory, u"CreateInstance", Access::Method);
        const Variant b = invoke(factory, u"createinstance", Access::Method);
        ASSERT_TRUE(a.isObject() && b.isObject());
        EXPECT_NE(a.toObject().get(), b.toObject().get());
        EXPECT_EQ(a.toObject()->className(), u"CDefinition");
    }
    void* ppv = nullptr;
    ASSERT_EQ(DllGetClassObject(DDEnumsClsid, IidClassFactory, &ppv), status::Ok);
    EXPECT_EQ(refCast<ClassFactory>(adopt(ppv))->CreateInstance()->className(), u"DDEnums");
}

TEST(Entry, RefusedRequestAnswersTheStatusClearsTheResultAndCreatesNothing) {
    std::vector<std::tuple<Guid, Guid, HResult>> cases = {
        {*parseGuid(u"{016E9347-5C94-11D4-80BA-00E0291221F9}"), IidClassFactory, status::ClassNotAvailable},
        {DefinitionIid, IidClassFactory, status::ClassNotAvailable},  // an interface id is no class
        {DefinitionClsid, IidDispatch, status::NoInterface},
        {DefinitionClsid, *parseGuid(u"{BE1382EE-8EA2-41FA-880F-0FEE95BE27CC}"), status::NoInterface},
        {Guid{}, IidDispatch, status::ClassNotAvailable}};  // an unknown class wins over a bad interface
    const std::size_t before = Object::liveObjects();
    for (const auto& [clsid, iid, expected] : cases) {
        int sentinel = 0;
        void* ppv = &sentinel;
        EXPECT_EQ(DllGetClassObject(clsid, iid, &ppv), expected) << toUtf8(formatGuid(clsid) + u" " + formatGuid(iid));
        EXPECT_EQ(ppv, nullptr);
    }
    EXPECT_EQ(Object::liveObjects(), before);
    EXPECT_EQ(DllGetClassObject(DefinitionClsid, IidClassFactory, nullptr), status::Pointer);
}

// The unload answer doubles as a leak check: every test of this binary
// gives back what it took.
TEST(Entry, CanUnloadOnlyWhenNothingIsAlive) {
    ASSERT_EQ(DllCanUnloadNow(), status::Ok) << Object::liveObjects() << " objects alive";
    void* ppv = nullptr;
    ASSERT_EQ(DllGetClassObject(DefinitionClsid, IidClassFactory, &ppv), status::Ok);
    EXPECT_EQ(DllCanUnloadNow(), status::False);
    Ref<Object> made = refCast<ClassFactory>(adopt(ppv))->CreateInstance();
    // The factory is gone; the object it made still holds the library.
    EXPECT_EQ(DllCanUnloadNow(), status::False);
    // A refused call on it leaks nothing either.
    EXPECT_EQ(raised([&] { let(made, u"Name", Variant(u"x")); }),
              libraryError("CDefinition.DefName", errors::NotInitialized));
    made = nullptr;
    EXPECT_EQ(DllCanUnloadNow(), status::Ok);
    // Registration is static: installers that call it see success.
    EXPECT_TRUE(DllRegisterServer() == status::Ok && DllUnregisterServer() == status::Ok);
}

}  // namespace
}  // namespace tylhart::test
