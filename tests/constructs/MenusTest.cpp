#include "TestSupport.hpp"
#include "tylhart/constructs/Collections.hpp"
#include "tylhart/constructs/EditDisplays.hpp"
#include "tylhart/constructs/Menus.hpp"
#include "tylhart/external/CFlagArray.hpp"
#include "tylhart/variables/CVariable.hpp"

namespace tylhart::test {
namespace {

template <class C>
Ref<C> named(const char16_t* name) {
    auto c = make<C>();
    return c->Definition()->SetName(name), c;
}
template <class Item>
Ref<Item> itemOn(const Ref<Object>& construct) {
    auto item = make<Item>();
    return item->SetObj(Marshal<Ref<CObject>>::from(call(construct, u"MakeObject"))), item;
}
// A collection that can neither copy nor compare itself: its member set is gone.
Ref<CCollection> broken() { return made<CCollection>([](CCollection& c) { c.Members = nullptr; }); }
std::string flags(const Ref<CMenuItem>& i) { return text(get(i->GetQualificationObj(), CFlagArray::FlagTextId)); }

TEST(Menus, RenderExactly) {
    const auto labelled = [] {
        return made<CMenu>([](CMenu& m) { m.Label = u"L", m.SetReview(true), m.Items->Add(make<CMenuItem>()); });
    };
    const auto onCollection = [] {
        auto i = itemOn<CMenuItem>(named<CCollection>(u"c"));
        return i->SetQualification(ddmiqTReview, true), i;
    };
    expectRenderings({
        {"new menu", make<CMenu>, 2},
        {"menu", labelled, 3},
        {"new menu item", make<CMenuItem>, {0, 2}},
        {"menu item on a collection", onCollection, 3},
        {"new edit display", make<CEditDisplay>, {0, 2}},
        {"new edit display item", make<CEditDisplayItem>, 0},
        {"edit display item on a variable", [] { return itemOn<CEditDisplayItem>(named<CVariable>(u"pv")); }, 2},
    });
    // The menu item's short form is built first, so it needs a definition at every level.
    auto bare = made<CMenuItem>([](CMenuItem& i) { i.Definition = nullptr; });
    for (std::int16_t level : {0, 2}) EXPECT_EQ(raised([&] { bare->ToString(level); }), NotSet);
}

TEST(MenuItem, ReadOnlyAndReviewAreOneFlagCopiedByValueAndComparedBeforeTheHandle) {
    auto item = itemOn<CMenuItem>(make<CArray>());
    let(item, u"Qualification", std::int32_t{ddmiqTReview}, true);
    EXPECT_TRUE(get(item, u"Qualification", std::int32_t{ddmiqTReadOnly}).toBoolean() && flags(item) == "01");
    auto copy = item->GetCopy();
    let(copy->GetQualificationObj(), CFlagArray::FlagTextId, Text(u"10"));  // the copy's own array
    EXPECT_TRUE(copy->Qualification(ddmiqTDisplayValue) && flags(item) == "01" && !copy->Compare(item));
    auto a = itemOn<CMenuItem>(broken()), b = itemOn<CMenuItem>(broken());
    b->SetQualification(ddmiqTReview, true);
    EXPECT_FALSE(a->Compare(b));  // the handles, which would raise, are never reached
    // Flags are copied before the handle: an array resized through the accessor no longer fits
    // (its own error, ahead of a handle that cannot copy); a handle that cannot copy puts the
    // flags back. Nothing is copied either way.
    const auto resized = itemOn<CMenuItem>(broken());
    b->SetQualification(ddmiqTReview, false);
    let(resized->GetQualificationObj(), CFlagArray::FlagCountId, std::int32_t{3});
    const auto handle = item->obj();
    const auto definition = item->Definition;
    for (const auto& [bad, error] : {std::pair{resized, InvalidCall}, std::pair{b, NotSet}}) {
        EXPECT_EQ(raised([&] { item->SetFromObject(bad); }), error);
        EXPECT_TRUE(item->obj() == handle && item->Definition == definition && flags(item) == "01");
    }
}

template <class Item>
class HandleItems : public ::testing::Test {};
using ItemClasses = ::testing::Types<CMenuItem, CEditDisplayItem>;
TYPED_TEST_SUITE(HandleItems, ItemClasses);

TYPED_TEST(HandleItems, ObjKeepsTheDefinitionConsistentAndARefusalKeepsBothReferences) {
    const char* source = std::is_same_v<TypeParam, CMenuItem> ? "CMenuItem.Obj" : "CEditDisplayItem.Obj";
    const ErrorRecord incompatible = libraryError(source, errors::NoCompatibleDefinition);
    auto pv = named<CVariable>(u"pv");
    auto item = itemOn<TypeParam>(pv);
    const auto handle = item->obj();
    EXPECT_EQ(item->Definition, pv->Definition());  // the construct's own definition
    for (const auto& [candidate, error] : {std::pair{named<CVariable>(u"PV")->MakeObject(), incompatible},
                                           std::pair{named<CMenu>(u"pv")->MakeObject(), incompatible},
                                           std::pair{Ref<CObject>(), NotSet}, std::pair{make<CObject>(), NotSet}}) {
        EXPECT_EQ(raised([&] { let(item, u"obj", Variant(Ref<Object>(candidate))); }), error);
        EXPECT_TRUE(item->obj() == handle && item->Definition == pv->Definition());
    }
    auto twin = named<CVariable>(u"pv");  // an equal definition is accepted
    item->SetObj(twin->MakeObject());
    EXPECT_EQ(item->Definition, twin->Definition());
    for (const Ref<Object>& any : {Ref<Object>(make<CMenu>()), Ref<Object>(make<CEditDisplay>())})
        EXPECT_NO_THROW(itemOn<TypeParam>(any));  // a fresh item takes any kind
}

TYPED_TEST(HandleItems, CopyIsDeepComparesTheHandleLastAndARefusedCopyChangesNothing) {
    auto source = itemOn<TypeParam>(named<CCollection>(u"c"));
    expectOwnCopies<TypeParam>(source, {[](TypeParam& i) { i.obj()->MakeCollection()->Label = u"x"; },
                                        [](TypeParam& i) { i.Definition->SetName(u"d"); }});
    auto copy = source->GetCopy();
    copy->obj()->ChangeLevel = 1;  // the handle's bookkeeping is never compared
    EXPECT_TRUE(copy->Compare(source));
    auto a = itemOn<TypeParam>(broken()), b = itemOn<TypeParam>(broken());
    EXPECT_EQ(raised([&] { a->Compare(b); }), NotSet);
    b->Definition = makeDefinition(u"x", ddoKMenuDef);
    EXPECT_FALSE(a->Compare(b));  // the definitions come first
    const auto handle = source->obj();
    for (const auto& bad : {a, made<TypeParam>([](TypeParam& i) { i.Definition = nullptr; })}) {
        EXPECT_EQ(raised([&] { source->SetFromObject(bad); }), NotSet);
        EXPECT_EQ(source->obj(), handle);
    }
}

TEST(MenusAndEditDisplays, CopiesAreDeepEveryComparedFieldMattersAndRefusedCopiesChangeNothing) {
    auto menu = made<CMenu>([](CMenu& m) { m.Label = u"L", m.SetReview(true), m.Items->Add(make<CMenuItem>()); });
    expectOwnCopies<CMenu>(menu, {[](CMenu& m) { m.Definition()->SetName(u"x"); },
                                  [](CMenu& m) { m.Items->Add(make<CMenuItem>()); }});
    expectEachChangeDiffers<CEditDisplay>(make<CEditDisplay>, {
        [](CEditDisplay& d) { d.DisplayItems->Add(make<CEditDisplayItem>()); },
        [](CEditDisplay& d) { d.EditItems->Add(make<CEditDisplayItem>()); },
        [](CEditDisplay& d) { d.PreEditActions->Add(make<CDefinition>()); },
        [](CEditDisplay& d) { d.PostEditActions->Add(make<CDefinition>()); }});
    auto noItems = made<CMenu>([](CMenu& m) { m.Items = nullptr; });
    EXPECT_FALSE(noItems->Compare(made<CMenu>([](CMenu& m) { m.SetReview(true); })));  // Review before Items
    // Refused: a definition that lost its kind (the let's own check and Source, ahead of a list
    // that is gone), items that cannot copy, the last list that cannot copy.
    const auto lostKind = [](auto c) { return c->Definition()->SetFromObject(make<CDefinition>()), Ref<Object>(c); };
    auto display = made<CEditDisplay>([](CEditDisplay& d) { d.Label = u"L"; });
    display->EditItems->Add(make<CEditDisplayItem>());
    auto method = makeDefinition(u"m", ddoKMethodDef);
    auto lostMethod = made<CEditDisplay>([&](CEditDisplay& d) { d.PostEditActions->UseExactKind = true; });
    lostMethod->PostEditActions->Add(method), method->SetFromObject(make<CDefinition>());
    const std::tuple<Ref<Object>, Ref<Object>, ErrorRecord> refused[] = {
        {menu, lostKind(made<CMenu>([](CMenu& m) { m.Items = nullptr; })), libraryError("Menu.Definition", errors::WrongKind)},
        {menu, made<CMenu>([](CMenu& m) { m.Items->Add(itemOn<CMenuItem>(broken())); }), NotSet},
        {display, lostKind(made<CEditDisplay>([](CEditDisplay& d) { d.EditItems = nullptr; })), libraryError("EditDisplay.Definition", errors::WrongKind)},
        {display, lostMethod, libraryError("CDefinitionSet.Add", errors::WrongKind)}};
    for (const auto& [receiver, bad, error] : refused)
        expectRefused(receiver, [&] { call(receiver, u"SetFromObject", bad); }, error);
}

}  // namespace
}  // namespace tylhart::test
