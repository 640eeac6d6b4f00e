#include "TestSupport.hpp"
#include "tylhart/automation/Registry.hpp"
#include "tylhart/constructs/Collections.hpp"

namespace tylhart::test {
namespace {

const ErrorRecord NotSet = platformError(errors::Runtime::ObjectNotSet);

Ref<CMember> member(const char16_t* ident, Ref<CDefinition> definition = make<CDefinition>()) {
    auto m = make<CMember>();
    m->Ident = ident;
    m->Description = u"d";
    m->Help = u"h";
    m->Definition = std::move(definition);
    return m;
}

Ref<CElement> element(std::int16_t value, Ref<CDefinition> definition = make<CDefinition>()) {
    auto e = make<CElement>();
    e->Value = value;
    e->Description = u"a";
    e->Help = u"b";
    e->Definition = std::move(definition);
    return e;
}

// ---- Renderings ----

struct Rendering {
    const char* name;
    std::function<Ref<Object>()> build;
    std::int16_t level;
    const char* expected;  // nullptr: an empty Variant
    friend void PrintTo(const Rendering& r, std::ostream* os) { *os << r.name; }
};

class CollectionRenders : public ::testing::TestWithParam<Rendering> {};

TEST_P(CollectionRenders, ExactText) {
    const Rendering& r = GetParam();
    Variant v = call(r.build(), u"ToString", r.level);
    if (!r.expected) EXPECT_TRUE(v.isEmpty()) << text(v);
    else EXPECT_EQ(text(v), r.expected);
}

Ref<Object> labelledCollection() {
    auto c = make<CCollection>();
    c->Label = u"L";
    c->Help = u"H";
    c->Members->Add(member(u"x"));
    return c;
}

Ref<Object> labelledArray() {
    auto a = make<CArray>();
    a->Label = u"L";
    a->Elements->Add(element(3));
    return a;
}

INSTANTIATE_TEST_SUITE_P(
    Collections, CollectionRenders,
    ::testing::Values(
        Rendering{"ElementLevel2", [] { return Ref<Object>(element(3)); }, 2,
                  "Element{Definition{Name:unknown, Kind:-1}, Value:3, Description:a, Help:b}"},
        Rendering{"ElementLevel1", [] { return Ref<Object>(element(-7)); }, 1, "Element{Definition{Name:unknown}}"},
        Rendering{"ElementLevel0", [] { return Ref<Object>(element(3)); }, 0, nullptr},
        Rendering{"MemberLevel2",
                  [] { return Ref<Object>(member(u"x", makeDefinition(u"pv", ddoKVariableDef))); }, 2,
                  "Member{Definition{Name:pv, Kind:0}, Ident:x, Description:d, Help:h}"},
        Rendering{"MemberWithoutDefinition", [] { return Ref<Object>(member(u"x", nullptr)); }, 2,
                  "Member{, Ident:x, Description:d, Help:h}"},
        Rendering{"CollectionLevel1", labelledCollection, 1, "COLLECTION{Definition{Name:unknown}}"},
        Rendering{"CollectionLevel2", labelledCollection, 2,
                  "COLLECTION{Definition{Name:unknown, Kind:9}, Label:L, Help:H, Members:MemberSet{Count:1}}"},
        Rendering{"CollectionLevel3", labelledCollection, 3,
                  "COLLECTION{Definition{Name:unknown, Kind:9}, Label:L, Help:H, Members:MemberSet{Count:1, "
                  "Items: { Member{Definition{Name:unknown}}}}}"},
        Rendering{"CollectionWithoutMembers",
                  [] {
                      auto c = make<CCollection>();
                      c->Members = nullptr;
                      return Ref<Object>(c);
                  },
                  2, "COLLECTION{Definition{Name:unknown, Kind:9}, Label:, Help:}"},
        Rendering{"ArrayLevel1", labelledArray, 1, "ARRAY{Definition{Name:unknown}}"},
        Rendering{"EmptyArrayLevel2", [] { return Ref<Object>(make<CArray>()); }, 2,
                  "ARRAY{Definition{Name:unknown, Kind:8}, Label:, Help:, Elements:CElementList{Count:0}}"},
        Rendering{"ArrayLevel3", labelledArray, 3,
                  "ARRAY{Definition{Name:unknown, Kind:8}, Label:L, Help:, Elements:CElementList{Count:1, "
                  "Items: { Element{Definition{Name:unknown}}}}}"},
        Rendering{"ArrayWithoutElements",
                  [] {
                      auto a = make<CArray>();
                      a->Elements = nullptr;
                      return Ref<Object>(a);
                  },
                  2, "ARRAY{Definition{Name:unknown, Kind:8}, Label:, Help:}"},
        Rendering{"ArrayLevelMinus1", labelledArray, -1, nullptr}),
    [](const auto& info) { return std::string(info.param.name); });

// ---- The construct pattern ----

template <class C>
class ConstructKind : public ::testing::Test {};
using ConstructClasses = ::testing::Types<CCollection, CArray>;
TYPED_TEST_SUITE(ConstructKind, ConstructClasses);

TYPED_TEST(ConstructKind, DefinitionLetChecksTheKindAndStoresTheObjectItself) {
    auto construct = make<TypeParam>();
    const auto own = construct->Definition();
    EXPECT_EQ(own->Name(), u"unknown");
    EXPECT_EQ(own->Kind(), TypeParam::ObjectKind);

    const std::string source = toUtf8(TypeParam::DefinitionSource);
    const enumDDObjectKind other = TypeParam::ObjectKind == ddoKArrayDef ? ddoKCollectionDef : ddoKArrayDef;
    for (auto wrong : {makeDefinition(u"w", other), makeDefinition(u"v", ddoKVariableDef), make<CDefinition>()}) {
        EXPECT_EQ(raised([&] { let(construct, u"Definition", wrong); }),
                  libraryError(source.c_str(), errors::WrongKind));
        EXPECT_EQ(construct->Definition().get(), own.get());
    }
    auto right = makeDefinition(u"mine", TypeParam::ObjectKind);
    let(construct, u"Definition", right);
    EXPECT_EQ(get(construct, u"Definition").toObject().get(), right.get());
}

TYPED_TEST(ConstructKind, CopyHasAnIndependentDefinitionAndComparesEqual) {
    auto source = make<TypeParam>();
    source->Definition()->SetName(u"original");
    source->Label = u"L";
    auto copy = source->GetCopy();
    EXPECT_TRUE(copy->Compare(source));
    EXPECT_NE(copy->Definition().get(), source->Definition().get());
    copy->Definition()->SetName(u"changed");
    EXPECT_EQ(source->Definition()->Name(), u"original");
    EXPECT_FALSE(copy->Compare(source));
}

TYPED_TEST(ConstructKind, CompareCoversLabelHelpAndDefinitionCaseSensitively) {
    auto a = make<TypeParam>(), b = make<TypeParam>();
    EXPECT_TRUE(a->Compare(b));
    b->Label = u"x";
    EXPECT_FALSE(a->Compare(b));
    a->Label = u"X";
    EXPECT_FALSE(a->Compare(b));
    a->Label = u"x";
    b->Help = u"h";
    EXPECT_FALSE(a->Compare(b));
    a->Help = u"h";
    b->Definition()->SetName(u"Unknown");
    EXPECT_FALSE(a->Compare(b));
}

// A source whose shared definition has since lost its kind is refused by
// the kind check; a source without a container by the call on Nothing. The
// receiver keeps everything it had either way.
TYPED_TEST(ConstructKind, RefusedCopyLeavesTheReceiverUnchanged) {
    auto receiver = make<TypeParam>();
    receiver->Label = u"kept";
    const auto definition = receiver->Definition();

    auto lostKind = make<TypeParam>();
    lostKind->Label = u"new";
    lostKind->Definition()->SetFromObject(make<CDefinition>());
    EXPECT_EQ(raised([&] { receiver->SetFromObject(lostKind); }),
              libraryError(toUtf8(TypeParam::DefinitionSource).c_str(), errors::WrongKind));

    auto noContainer = make<TypeParam>();
    noContainer->Label = u"new";
    if constexpr (std::is_same_v<TypeParam, CCollection>) noContainer->Members = nullptr;
    else noContainer->Elements = nullptr;
    EXPECT_EQ(raised([&] { receiver->SetFromObject(noContainer); }), NotSet);

    EXPECT_EQ(receiver->Label, u"kept");
    EXPECT_EQ(receiver->Definition().get(), definition.get());
}

TYPED_TEST(ConstructKind, MakeObjectYieldsAHandleOnTheConstructItself) {
    auto construct = make<TypeParam>();
    auto handle = construct->MakeObject();
    EXPECT_EQ(handle->UntypedObject().get(), construct.get());
    EXPECT_EQ(handle->ObjectDefinition().get(), construct->Definition().get());
    if constexpr (std::is_same_v<TypeParam, CArray>) {
        EXPECT_EQ(handle->MakeArray().get(), construct.get());
        EXPECT_EQ(raised([&] { handle->MakeCollection(); }), platformError(errors::Runtime::TypeMismatch));
    } else {
        EXPECT_EQ(handle->MakeCollection().get(), construct.get());
        EXPECT_EQ(raised([&] { handle->MakeArray(); }), platformError(errors::Runtime::TypeMismatch));
    }
}

// ---- Copy depth of the children ----

TEST(Collection, CopyHasItsOwnMemberSetThatSharesTheMembers) {
    auto source = make<CCollection>();
    auto m = member(u"pressure");
    source->Members->Add(m);
    auto copy = source->GetCopy();
    EXPECT_NE(copy->Members.get(), source->Members.get());
    EXPECT_TRUE(copy->Members->Compare(source->Members));
    Variant stored;
    ASSERT_TRUE(copy->Members->NewEnum()->next(stored));
    EXPECT_EQ(stored.toObject().get(), m.get());  // member sets copy shallowly
    copy->Members->Add(member(u"flow"));
    EXPECT_EQ(source->Members->Count(), 1);
    EXPECT_FALSE(copy->Compare(source));
}

TEST(Array, CopyHasItsOwnElementsAndDefinitions) {
    auto source = make<CArray>();
    auto e = element(1, makeDefinition(u"pv", ddoKVariableDef));
    source->Elements->Add(e);
    auto copy = source->GetCopy();
    EXPECT_NE(copy->Elements.get(), source->Elements.get());
    auto copied = copy->Elements->Item(1);
    EXPECT_NE(copied.get(), e.get());
    EXPECT_NE(copied->Definition.get(), e->Definition.get());
    EXPECT_TRUE(copy->Compare(source));
    copied->Definition->SetName(u"sv");
    EXPECT_EQ(e->Definition->Name(), u"pv");
    EXPECT_FALSE(copy->Compare(source));
}

// ---- Members and elements ----

// Each mutation of one field of an otherwise equal record must make the
// records compare unequal.
template <class R>
struct Mutation {
    const char* name;
    void (*apply)(R&);
};

TEST(Records, EveryComparedFieldMattersAndTextsAreCaseSensitive) {
    const Mutation<CMember> memberMutations[] = {
        {"Ident case", [](CMember& m) { m.Ident = u"X"; }},
        {"Description", [](CMember& m) { m.Description = u"D"; }},
        {"Help", [](CMember& m) { m.Help = u"h "; }},
        {"Definition name", [](CMember& m) { m.Definition = makeDefinition(u"unknown", ddoKVariableDef); }},
    };
    for (const auto& mutation : memberMutations) {
        SCOPED_TRACE(mutation.name);
        auto a = member(u"x"), b = member(u"x");
        EXPECT_TRUE(a->Compare(b));
        mutation.apply(*b);
        EXPECT_FALSE(a->Compare(b));
        EXPECT_FALSE(b->Compare(a));
    }
    const Mutation<CElement> elementMutations[] = {
        {"Value", [](CElement& e) { e.Value = 4; }},
        {"Description", [](CElement& e) { e.Description = u"A"; }},
        {"Help", [](CElement& e) { e.Help = u""; }},
        {"Definition", [](CElement& e) { e.Definition = makeDefinition(u"p", ddoKArrayDef); }},
    };
    for (const auto& mutation : elementMutations) {
        SCOPED_TRACE(mutation.name);
        auto a = element(3), b = element(3);
        EXPECT_TRUE(a->Compare(b));
        mutation.apply(*b);
        EXPECT_FALSE(a->Compare(b));
    }
}

TEST(Records, DefinitionIsAPlainFieldOfAnyKindAndCopiesDeep) {
    auto m = make<CMember>();
    EXPECT_EQ(m->Definition->Kind(), ddoKUndefined);
    for (auto kind : {ddoKVariableDef, ddoKCollectionDef, ddoKMenuDef}) {
        auto d = makeDefinition(u"target", kind);
        invoke(m, u"Definition", Access::Set, std::span<const Variant>(std::vector<Variant>{Variant(d)}));
        EXPECT_EQ(m->Definition.get(), d.get());
    }
    m->Ident = u"i";
    auto copy = m->GetCopy();
    EXPECT_TRUE(copy->Compare(m));
    EXPECT_NE(copy->Definition.get(), m->Definition.get());
}

TEST(Records, ASourceWithoutDefinitionIsRefusedBeforeAnythingChanges) {
    auto receiver = member(u"kept");
    auto source = member(u"new", nullptr);
    EXPECT_EQ(raised([&] { receiver->SetFromObject(source); }), NotSet);
    EXPECT_EQ(receiver->Ident, u"kept");
    EXPECT_TRUE(receiver->Definition);

    auto elementReceiver = element(1);
    EXPECT_EQ(raised([&] { elementReceiver->SetFromObject(element(2, nullptr)); }), NotSet);
    EXPECT_EQ(elementReceiver->Value, 1);
}

// ---- The member set and the element list ----

TEST(MemberSet, ItemTakesAPositionOrAnElementKeyAndHandsOutCopies) {
    auto set = make<CMemberSet>();
    auto pressure = member(u"pressure");
    set->Add(pressure);
    set->Add(member(u"flow"));
    for (const Variant& index : {Variant(std::int32_t{1}), Variant(u"Ipressure"), Variant(u"IPRESSURE")}) {
        auto item = Marshal<Ref<CMember>>::from(call(set, u"Item", index));
        EXPECT_NE(item.get(), pressure.get());
        EXPECT_TRUE(item->Compare(pressure));
    }
    EXPECT_EQ(set->FindItem(u"FLOW")->Ident, u"flow");
    set->Item(Variant(u"Iflow"))->Ident = u"changed";
    EXPECT_EQ(set->Item(Variant(std::int32_t{2}))->Ident, u"flow");

    EXPECT_EQ(raised([&] { set->Item(Variant(u"pressure")); }), platformError(errors::Runtime::InvalidCall));
    EXPECT_EQ(raised([&] { set->Item(Variant(std::int32_t{3})); }),
              platformError(errors::Runtime::SubscriptOutOfRange));
    EXPECT_EQ(raised([&] { set->FindItem(u"level"); }), platformError(errors::Runtime::InvalidCall));
    EXPECT_EQ(raised([&] { set->Add(member(u"Flow")); }), platformError(errors::Runtime::DuplicateKey));
    EXPECT_EQ(set->Count(), 2);
}

TEST(MemberSet, CopyReplacesTheContentSoSharedKeysAreFine) {
    auto receiver = make<CMemberSet>();
    receiver->Add(member(u"a"));
    receiver->Add(member(u"b"));
    auto source = make<CMemberSet>();
    source->Add(member(u"B"));
    call(receiver, u"SetFromObject", Variant(source));
    EXPECT_EQ(receiver->Count(), 1);
    EXPECT_EQ(receiver->Item(Variant(std::int32_t{1}))->Ident, u"B");
}

TEST(ElementList, FindFirstUsesTheFullElementComparison) {
    auto list = make<CElementList>();
    auto e = element(2);
    list->Add(element(2, makeDefinition(u"pv", ddoKVariableDef)));
    list->Add(e);
    list->Add(e);
    EXPECT_EQ(list->FindFirst(element(2)), 2);
    EXPECT_EQ(list->FindFirst(element(2), 3), 3);
    EXPECT_EQ(list->FindFirst(element(5)), -1);
    EXPECT_EQ(list->Item(Variant(std::int32_t{2})).get(), e.get());  // lists hand out the stored element
}

// ---- Dispatch surface and creation ----

TEST(Collections, MembersAnswerTheirSlotIdentifiers) {
    struct Expected {
        const char16_t* progId;
        std::vector<std::pair<const char16_t*, DispId>> members;
    };
    const Expected classes[] = {
        {u"TylHartTypes.CCollection",
         {{u"Members", 0x40030000}, {u"Label", 0x40030001}, {u"Help", 0x40030002}, {u"Definition", 0x68030000},
          {u"GetCopy", 0x60030001}, {u"SetFromObject", 0x60030002}, {u"Compare", 0x60030003},
          {u"MakeObject", 0x60030004}, {u"ToString", 0x60030005}}},
        {u"TylHartTypes.CArray",
         {{u"Label", 0x40030000}, {u"Help", 0x40030001}, {u"Elements", 0x40030002}, {u"Definition", 0x68030000},
          {u"MakeObject", 0x60030004}, {u"ToString", 0x60030005}}},
        {u"TylHartTypes.CMemberSet", {{u"Item", 0x60030003}, {u"FindItem", 0x60030004}, {u"NewEnum", -4}}},
    };
    for (const auto& expected : classes) {
        SCOPED_TRACE(toUtf8(expected.progId));
        Ref<Object> o = automation::CreateObject(expected.progId);
        ASSERT_TRUE(o);
        for (const auto& [name, id] : expected.members) EXPECT_EQ(dispIdOfName(*o, name), id) << toUtf8(name);
    }
    const auto& definition = *CCollection::staticClassInfo().find(TextView(u"Definition"));
    EXPECT_TRUE(definition.has(Access::Let));
}

}  // namespace
}  // namespace tylhart::test
