#include "TestSupport.hpp"

#include "tylhart/automation/Entry.hpp"

namespace tylhart::test {
namespace {

using namespace automation;

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
        Variant a = invoke(factory, u"CreateInstance", Access::Method), b = invoke(factory, u"createinstance", Access::Method);
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
    for (const ClassEntry& c : classes())  // a class without implementation has no factory
        if (!c.built()) cases.emplace_back(*parseGuid(c.clsid), IidClassFactory, status::ClassNotAvailable);
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
