// Every list and set class through the late-bound surface its callers use:
// the generic containers' refusals, copies, comparisons and renderings hold
// for each element class, not only for the ones their own suites prove
// them on.
#include "TestSupport.hpp"
#include "tylhart/commands/CCommand.hpp"
#include "tylhart/constructs/EditDisplays.hpp"
#include "tylhart/constructs/Menus.hpp"
#include "tylhart/constructs/Relations.hpp"
#include "tylhart/containers/CObjectSet.hpp"
#include "tylhart/containers/CValueList.hpp"
#include "tylhart/containers/CValueSet.hpp"
#include "tylhart/external/CFlagArray.hpp"
#include "tylhart/variables/CVariable.hpp"

namespace tylhart::test {
namespace {

// The i-th sample element of a container, with a key of its own, as a
// call's argument.
Ref<CDefinition> definition(int i) { return makeDefinition(u"d" + decimal(i), ddoKVariableDef); }
Ref<CVariable> variable(int i) {
    return made<CVariable>([&](CVariable& v) { v.SetDefinition(definition(i)); });
}
void fill(CVariableItem& e, int i) { e.SetVariable(variable(i)); }
void fill(CMember& e, int i) { e.Ident = u"m" + decimal(i); }
void fill(CElement& e, int i) { e.Value = static_cast<std::int16_t>(i); }
void fill(CEnumerator& e, int i) { e.Value = i; }
void fill(CBitEnumerator& e, int i) { e.Value = i; }
void fill(COutputStatusClass& e, int i) { e.Range = i; }
void fill(CDataItem& e, int i) { e.Initialize(dddiTValue), e.SetValue(Variant(std::int32_t{i})); }
void fill(CResponseCode& e, int i) { e.Value = static_cast<std::int16_t>(i), e.SetKind(ddrcTSUCCESS); }
void fill(CTransaction& e, int i) { e.TNo = static_cast<std::int16_t>(i); }
template <class T>
    requires std::is_base_of_v<HandleItem<T>, T>
void fill(T& item, int i) { item.SetObj(variable(i)->MakeObject()); }
template <class C>
Variant sample(int i) {
    using E = typename C::ElementType;
    if constexpr (std::is_same_v<E, Variant>) return Variant(std::int32_t{i});
    else if constexpr (std::is_same_v<E, Ref<CDefinition>>) return ElementOps<E>::toVariant(definition(i));
    else if constexpr (std::is_same_v<E, Ref<CObject>>) return ElementOps<E>::toVariant(variable(i)->MakeObject());
    else return ElementOps<E>::toVariant(made<std::remove_reference_t<decltype(*E())>>([i](auto& e) { fill(e, i); }));
}
template <class C>
constexpr bool isSet = requires(C& c, const typename C::ElementType& e) { c.IsInSet(e); };
template <class C>
constexpr bool holdsObjects = !std::is_same_v<typename C::ElementType, Variant>;
template <class C>
constexpr bool replacesOnCopy = std::is_same_v<C, CObjectSet> || std::is_same_v<C, CMemberSet> ||
                                std::is_same_v<C, CTransactionSet>;

// Every call goes through dispatch, as callers make them.
template <class C>
Ref<Object> filled() {
    Ref<Object> c = make<C>();
    for (int i : {1, 2}) call(c, u"Add", sample<C>(i));
    return c;
}
std::string rendering(const Ref<Object>& o, std::int16_t level = 2) { return text(call(o, u"ToString", level)); }
// An element as a level-2 rendering shows it (a value as its text).
std::string shown(const Variant& e) { return e.isObject() ? rendering(e.toObject()) : text(e); }
bool compares(const Ref<Object>& a, const Ref<Object>& b) { return call(a, u"Compare", b).toBoolean(); }

#define TYLHART_SETS                                                                                          \
    CValueSet, CDefinitionSet, CVariableDefinitionSet, CObjectSet, CMemberSet, CEnumeratorSet, CBitEnumeratorSet, \
        COutputStatusClassSet, CResponseCodeSet, CTransactionSet
template <class C>
class Instances : public ::testing::Test {};
using Containers = ::testing::Types<CValueList, CDefinitionList, CElementList, CMenuItemList, CEditDisplayItemList,
                                    CVariableItemList, CDataItemList, TYLHART_SETS>;
TYPED_TEST_SUITE(Instances, Containers);
template <class C>
class SetInstances : public ::testing::Test {};
using Sets = ::testing::Types<TYLHART_SETS>;
TYPED_TEST_SUITE(SetInstances, Sets);
#undef TYLHART_SETS

TYPED_TEST(Instances, RefusedCallsLeaveTheContainerAsItWas) {
    using C = TypeParam;
    const Ref<Object> c = filled<C>();
    const Ref<Object> alien = make<CFlagArray>();
    std::vector<std::pair<std::function<void()>, ErrorRecord>> rows = {
        {[&] { call(c, u"SetFromObject", Ref<Object>()); }, NotSet},
        {[&] { call(c, u"SetFromObject", alien); }, TypeMismatch},
        {[&] { call(c, u"Compare", Ref<Object>()); }, NotSet},
        {[&] { call(c, u"Item", std::int32_t{0}); }, Subscript},
        {[&] { call(c, u"Item", std::int32_t{3}); }, Subscript},
        {[&] { call(c, u"Add"); }, NotOptional},
        {[&] { call(c, u"Add", sample<C>(3), 1, 2, 3); }, WrongArgumentCount},
        {[&] { get(c, u"Count", 1); }, WrongArgumentCount},
    };
    if constexpr (holdsObjects<C>) rows.push_back({[&] { call(c, u"Add", alien); }, TypeMismatch});
    if constexpr (isSet<C>) {
        rows.push_back({[&] { call(c, u"Add", sample<C>(1)); }, Duplicate});
    } else {
        rows.push_back({[&] { call(c, u"Remove", std::int32_t{3}); }, Subscript});
        rows.push_back({[&] { call(c, u"Remove", u"d1"); }, InvalidCall});  // lists have no keys
    }
    for (std::size_t row = 0; row < rows.size(); ++row) {
        SCOPED_TRACE("row " + std::to_string(row));
        expectRefused(c, rows[row].first, rows[row].second);
    }
}

TYPED_TEST(Instances, CopiesCompareEnumerateAndRender) {
    using C = TypeParam;
    const Ref<Object> c = filled<C>();
    const Ref<Object> copy = call(c, u"GetCopy").toObject();
    EXPECT_TRUE(compares(c, copy) && compares(copy, c));
    call(copy, u"Add", sample<C>(3));
    EXPECT_FALSE(compares(c, copy) || compares(copy, c));

    const Variant first = call(get(c, u"NewEnum").toObject(), u"Next");
    EXPECT_EQ(shown(first), shown(sample<C>(1)));
    if constexpr (holdsObjects<C>) {
        EXPECT_EQ(first.toObject().get(), static_cast<C&>(*c).elements()[0].get());
    }

    const std::string label = toUtf8(C::Label);
    const std::string items = rendering(c);
    EXPECT_EQ(rendering(c, 1), label + "2}");
    EXPECT_EQ(items.substr(0, label.size() + 11), label + "2, Items: {");
    // Only the sets with a short form declare a label for it.
    if constexpr (requires { C::ShortLabel; }) {
        EXPECT_EQ(rendering(c, 0), toUtf8(C::ShortLabel) + "2}");
    } else {
        EXPECT_TRUE(call(c, u"ToString", std::int16_t{0}).isEmpty());
    }
    if constexpr (!isSet<C> && holdsObjects<C>) {
        // An element that cannot render is left out; the others still print.
        call(c, u"Add", Ref<Object>());
        EXPECT_EQ(rendering(c), label + "3" + items.substr(label.size() + 1));
    }
}

// Keys: Insert replaces and moves to the end, Remove and IsInSet ignore
// absent and unreadable keys, Union leaves both operands, a copy into
// itself keeps the content (a merging set meets its first key again).
TYPED_TEST(SetInstances, KeyTheirElements) {
    using C = TypeParam;
    const Ref<Object> set = filled<C>();
    call(set, u"Insert", sample<C>(1));
    EXPECT_EQ(shown(call(set, u"Item", std::int32_t{1})), shown(sample<C>(2)));
    EXPECT_TRUE(call(set, u"IsInSet", sample<C>(1)).toBoolean());
    EXPECT_FALSE(call(set, u"IsInSet", sample<C>(5)).toBoolean());
    call(set, u"Remove", sample<C>(5));
    if constexpr (holdsObjects<C>) {
        EXPECT_FALSE(call(set, u"IsInSet", Ref<Object>()).toBoolean());
        call(set, u"Remove", Ref<Object>());
    }
    const Ref<Object> other = make<C>();
    call(other, u"Add", sample<C>(3));
    // Declared over the definition set, into which this set does not
    // convert; the output class set has no Union.
    if constexpr (std::is_same_v<C, CVariableDefinitionSet>) {
        EXPECT_EQ(raised([&] { call(set, u"Union", other); }), TypeMismatch);
    } else if constexpr (std::is_same_v<C, COutputStatusClassSet>) {
        EXPECT_EQ(raised([&] { call(set, u"Union", other); }), NoSuchMember);
    } else {
        EXPECT_EQ(text(get(call(set, u"Union", other).toObject(), u"Count")), "3");
    }
    EXPECT_EQ(text(get(set, u"Count")) + text(get(other, u"Count")), "21");
    const std::string before = rendering(set);
    EXPECT_EQ(raised([&] { call(set, u"SetFromObject", set); }), replacesOnCopy<C> ? NoError : Duplicate);
    EXPECT_EQ(rendering(set), before);
    call(set, u"Remove", sample<C>(1));
    EXPECT_EQ(text(get(set, u"Count")), "1");
}

}  // namespace
}  // namespace tylhart::test
