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
    a->ChangeLevel = 1;
    b->ChangeLevel = 2;
    EXPECT_TRUE(a->Compare(b));
    a->SetUntypedObject(menuNamed(u"main"));
    EXPECT_FALSE(a->Compare(b));
    EXPECT_FALSE(b->Compare(a));
    b->SetUntypedObject(menuNamed(u"main"));
    EXPECT_TRUE(a->Compare(b));
    b->SetUntypedObject(menuNamed(u"Main"));
    EXPECT_FALSE(a->Compare(b));
}

TEST(ObjectHandle, CopyHoldsADeepCopyAndAnEmptySourceKeepsTheBookkeeping) {
    auto source = make<CObject>();
    auto menu = menuNamed(u"main");
    source->SetUntypedObject(menu);
    source->ChangeLevel = 7;
    source->LastChangeLevel = 6;
    source->AttributesAvailable = true;
    auto copy = source->GetCopy();
    EXPECT_NE(copy->UntypedObject().get(), menu.get());
    EXPECT_TRUE(copy->Compare(source));
    EXPECT_EQ(copy->ChangeLevel, 7);
    EXPECT_EQ(copy->LastChangeLevel, 6);
    EXPECT_TRUE(copy->AttributesAvailable);
    copy->makeAs<FakeMenu>()->Definition()->SetName(u"changed");
    EXPECT_EQ(menu->Definition()->Name(), u"main");

    auto empty = make<CObject>();
    empty->ChangeLevel = 5;
    copy->ChangeLevel = 1;
    copy->SetFromObject(empty);
    EXPECT_FALSE(copy->UntypedObject());
    EXPECT_EQ(copy->ChangeLevel, 1);
    EXPECT_TRUE(copy->AttributesAvailable);
}

TEST(ObjectHandle, RendersTheHeldObjectAtTheSameLevel) {
    auto handle = make<CObject>();
    EXPECT_EQ(text(handle->ToString()), "OBJECT{}");
    EXPECT_TRUE(handle->ToString(0).isEmpty());
    EXPECT_EQ(text(handle->ToString(2)), "OBJECT{, AttributesAvailable:False, ChangeLevel:0, LastChangeLevel:0}");
    auto menu = menuNamed(u"main");
    menu->Label = u"Main menu";
    handle->SetUntypedObject(menu);
    handle->AttributesAvailable = true;
    handle->ChangeLevel = -3;
    EXPECT_EQ(text(handle->ToString(1)), "OBJECT{MENU{Definition{Name:main}}}");
    EXPECT_EQ(text(handle->ToString(2)),
              "OBJECT{MENU{Definition{Name:main, Kind:2}, Label:Main menu}, AttributesAvailable:True, "
              "ChangeLevel:-3, LastChangeLevel:0}");
}

TEST(ObjectHandle, MembersCarryTheirSlotIdentifiers) {
    const ClassInfo& info = CObject::staticClassInfo();
    const std::pair<const char16_t*, DispId> expected[] = {
        {u"ChangeLevel", 0x40030000},   {u"AttributesAvailable", 0x40030002}, {u"GetCopy", 0x60030000},
        {u"Compare", 0x60030002},       {u"UntypedObject", 0x68030003},      {u"ObjectDefinition", 0x68030004},
        {u"MakeVariable", 0x60030005},  {u"MakeCollection", 0x6003000E},     {u"ToString", 0x6003000F}};
    for (const auto& [name, id] : expected) {
        ASSERT_NE(info.find(name), nullptr) << toUtf8(name);
        EXPECT_EQ(info.find(name)->id, id) << toUtf8(name);
    }
    EXPECT_TRUE(info.find(u"UntypedObject")->let);  // assigned with a plain let
    Ref<Object> handle = make<CObject>();
    let(handle, u"changelevel", Text(u"12"));
    EXPECT_EQ(get(handle, u"ChangeLevel"), Variant(std::int32_t{12}));
    let(handle, u"UntypedObject", Variant(Ref<Object>(make<FakeMenu>())));
    EXPECT_EQ(text(call(handle, u"ToString")), "OBJECT{MENU{Definition{Name:unknown}}}");
}

TEST(Construct, FreshConstructHasItsOwnKindAndIsAcceptedByAHandle) {
    auto menu = make<FakeMenu>();
    EXPECT_EQ(text(menu->Definition()->ToString(2)), "Definition{Name:unknown, Kind:2}");
    auto handle = menu->MakeObject();
    EXPECT_EQ(handle->UntypedObject().get(), menu.get());
}

TEST(Construct, DefinitionLetChecksTheKindAndSharesTheObject) {
    auto menu = make<FakeMenu>();
    auto original = menu->Definition();
    EXPECT_EQ(raised([&] { menu->SetDefinition(makeDefinition(u"x", ddoKVariableDef)); }),
              libraryError("Menu.Definition", errors::WrongKind));
    EXPECT_EQ(menu->Definition().get(), original.get());
    auto mine = makeDefinition(u"main", ddoKMenuDef);
    menu->SetDefinition(mine);
    EXPECT_EQ(menu->Definition().get(), mine.get());
}

TEST(Construct, CopyIsDeep) {
    auto menu = menuNamed(u"main");
    auto copy = menu->GetCopy();
    EXPECT_NE(copy->Definition().get(), menu->Definition().get());
    EXPECT_TRUE(copy->Compare(menu));
    copy->Definition()->SetName(u"other");
    EXPECT_EQ(menu->Definition()->Name(), u"main");
    EXPECT_FALSE(copy->Compare(menu));
}

}  // namespace
}  // namespace tylhart::test
