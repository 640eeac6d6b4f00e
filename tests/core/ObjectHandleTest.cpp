#include "TestSupport.hpp"
#include "support/TestConstructs.hpp"

namespace tylhart::test {
namespace {

const ErrorRecord TopLevelOnly = libraryError("CObject.UntypedObject", errors::TopLevelOnly);

Ref<FakeMenu> menuNamed(const char16_t* name) {
    auto m = make<FakeMenu>();
    m->Definition()->SetName(name);
    return m;
}

TEST(ObjectHandle, RefusesObjectsThatAreNotTopLevelConstructsAndKeepsTheHeldOne) {
    auto handle = make<CObject>();
    auto menu = menuNamed(u"main");
    handle->SetUntypedObject(menu);
    const std::vector<Ref<Object>> refused = {makeDefinition(u"d", ddoKMenuDef), make<CObject>(),
                                              make<NotTopLevel>(), make<DefinitionlessVariable>()};
    for (const auto& candidate : refused) {
        SCOPED_TRACE(toUtf8(candidate->className()));
        EXPECT_EQ(raised([&] { handle->SetUntypedObject(candidate); }), TopLevelOnly);
        EXPECT_EQ(handle->UntypedObject().get(), menu.get());
    }
    handle->SetUntypedObject(nullptr);
    EXPECT_FALSE(handle->UntypedObject());
}

TEST(ObjectHandle, MakeAccessorsReturnTheHeldObjectOrRefuseAnotherClass) {
    auto handle = make<CObject>();
    EXPECT_FALSE(handle->makeAs<FakeMenu>());  // empty handle: Nothing, no error
    EXPECT_TRUE(call(handle, u"MakeVariable").toObject() == nullptr);
    EXPECT_EQ(raised([&] { handle->ObjectDefinition(); }), platformError(errors::Runtime::ObjectNotSet));

    auto menu = menuNamed(u"main");
    handle->SetUntypedObject(menu);
    EXPECT_EQ(handle->makeAs<FakeMenu>().get(), menu.get());
    EXPECT_EQ(call(handle, u"MakeMenu").toObject().get(), menu.get());
    EXPECT_EQ(raised([&] { call(handle, u"MakeVariable"); }), platformError(errors::Runtime::TypeMismatch));
    EXPECT_EQ(raised([&] { handle->makeAs<FakeUnit>(); }), platformError(errors::Runtime::TypeMismatch));
    EXPECT_EQ(handle->ObjectDefinition().get(), menu->Definition().get());
}

TEST(ObjectHandle, CompareLooksOnlyAtTheHeldConstructs) {
    auto a = make<CObject>(), b = make<CObject>();
    a->ChangeLevel = 1, b->ChangeLevel = 2;
    EXPECT_TRUE(a->Compare(b));
    a->SetUntypedObject(menuNamed(u"main"));
    EXPECT_FALSE(a->Compare(b) || b->Compare(a));
    b->SetUntypedObject(menuNamed(u"main"));
    EXPECT_TRUE(a->Compare(b));
    b->SetUntypedObject(menuNamed(u"Main"));
    EXPECT_FALSE(a->Compare(b));
}

TEST(ObjectHandle, CopyHoldsADeepCopyAndAnEmptySourceKeepsTheBookkeeping) {
    auto source = make<CObject>();
    auto menu = menuNamed(u"main");
    source->SetUntypedObject(menu);
    source->ChangeLevel = 7, source->LastChangeLevel = 6, source->AttributesAvailable = true;
    auto copy = source->GetCopy();
    EXPECT_NE(copy->UntypedObject().get(), menu.get());
    EXPECT_TRUE(copy->Compare(source));
    EXPECT_TRUE(copy->ChangeLevel == 7 && copy->LastChangeLevel == 6 && copy->AttributesAvailable);

    auto empty = make<CObject>();
    empty->ChangeLevel = 5;
    copy->SetFromObject(empty);
    EXPECT_TRUE(!copy->UntypedObject() && copy->ChangeLevel == 7 && copy->AttributesAvailable);
}

TEST(ObjectHandle, RendersTheHeldObjectAtTheSameLevel) {
    auto handle = make<CObject>();
    EXPECT_EQ(text(handle->ToString()), "OBJECT{}");
    EXPECT_TRUE(handle->ToString(0).isEmpty());
    EXPECT_EQ(text(handle->ToString(2)), "OBJECT{, AttributesAvailable:False, ChangeLevel:0, LastChangeLevel:0}");
    auto menu = menuNamed(u"main");
    menu->Label = u"Main menu";
    handle->SetUntypedObject(menu);
    handle->AttributesAvailable = true, handle->ChangeLevel = -3;
    EXPECT_EQ(text(handle->ToString(1)), "OBJECT{MENU{Definition{Name:main}}}");
    EXPECT_EQ(text(handle->ToString(2)),
              "OBJECT{MENU{Definition{Name:main, Kind:2}, Label:Main menu}, AttributesAvailable:True, "
              "ChangeLevel:-3, LastChangeLevel:0}");
}

TEST(ObjectHandle, MembersCarryTheirSlotIdentifiers) {
    const ClassInfo& info = CObject::staticClassInfo();
    expectSlots(info, {{u"AttributesAvailable", 0x40030002}, {u"MakeVariable", 0x60030005}, {u"ToString", 0x6003000F}});
    EXPECT_TRUE(info.find(u"UntypedObject")->let);  // assigned with a plain let
    Ref<Object> handle = make<CObject>();
    let(handle, u"changelevel", Text(u"12"));
    EXPECT_EQ(get(handle, u"ChangeLevel"), Variant(std::int32_t{12}));
    Ref<Object> menu = make<FakeMenu>();
    let(handle, u"UntypedObject", Variant(menu));
    EXPECT_EQ(get(handle, u"UntypedObject").toObject().get(), menu.get());
}

}  // namespace
}  // namespace tylhart::test
