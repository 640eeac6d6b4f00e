#include <random>

#include "TestSupport.hpp"
#include "tylhart/containers/KeyedStore.hpp"

namespace tylhart::test {
namespace {

// The index is renumbered incrementally on every insert and erase; compare
// it against a plain model after a long random sequence of operations.
TEST(KeyedStore, KeyIndexFollowsInsertionsAndRemovalsAnywhere) {
    KeyedStore<int> store;
    std::vector<std::pair<int, Text>> model;  // value, key ("" = none)
    std::mt19937 rng(42);
    for (int step = 0; step < 4000; ++step) {
        const std::size_t n = model.size();
        if (n > 0 && rng() % 3 == 0) {
            std::size_t at = rng() % n;
            store.erase(at);
            model.erase(model.begin() + static_cast<std::ptrdiff_t>(at));
        } else {
            std::size_t at = n == 0 ? 0 : rng() % (n + 1);
            Text key = rng() % 4 == 0 ? Text() : fromUtf8("K" + std::to_string(step));
            store.insert(at, step, key.empty() ? std::nullopt : std::optional<Text>(key));
            model.insert(model.begin() + static_cast<std::ptrdiff_t>(at), {step, key});
        }
    }
    ASSERT_EQ(store.size(), model.size());
    for (std::size_t i = 0; i < model.size(); ++i) {
        ASSERT_EQ(store[i], model[i].first);
        if (!model[i].second.empty()) {
            ASSERT_EQ(store.keyIndex(foldCase(model[i].second)), i);  // keys ignore case
        }
    }
}

TEST(KeyedStore, RefusedCallsRaiseTheRuntimeErrorsAndChangeNothing) {
    KeyedStore<int> store;
    store.append(1, Text(u"Flow"));
    store.append(2);
    EXPECT_EQ(raised([&] { store.append(3, Text(u"FLOW")); }), Duplicate);
    EXPECT_EQ(raised([&] { store.at(0); }), Subscript);
    EXPECT_EQ(raised([&] { store.at(3); }), Subscript);
    EXPECT_EQ(raised([&] { store.keyIndex(u"pressure"); }), InvalidCall);
    EXPECT_EQ(raised([&] { store.indexFor(Variant(Null{})); }), NullUse);
    EXPECT_EQ(raised([&] { store.indexFor(Variant(nullptr)); }), TypeMismatch);
    EXPECT_EQ(store.size(), 2u);
    EXPECT_EQ(store.indexFor(Variant(Text(u"flow"))), 0u);
    EXPECT_EQ(store.indexFor(Variant(2.0)), 1u);
    EXPECT_EQ(store.indexFor(Variant(1.5)), 1u);  // positions round half to even
}

TEST(KeyedStore, KeysFoldCaseInEveryScriptOfIdentifiers) {
    const std::tuple<const char16_t*, const char16_t*, bool> pairs[] = {
        {u"FLOW", u"flow", true},       {u"\u00C4", u"\u00E4", true}, {u"\u0178", u"\u00FF", true},
        {u"\u0100", u"\u0101", true}, {u"\u0139", u"\u013A", true}, {u"\u0179", u"\u017A", true},
        {u"\u03A3", u"\u03C3", true}, {u"\u042F", u"\u044F", true}, {u"\u0401", u"\u0451", true},
        {u"\u00D7", u"\u00F7", false}, {u"I", u"\u0131", false},   {u"\u0178", u"\u0179", false}};
    for (const auto& [upper, lower, same] : pairs) {
        KeyedStore<int> store;
        store.append(1, Text(upper));
        store.append(2, u"I" + Text(upper));
        EXPECT_EQ(store.find(lower).has_value(), same) << toUtf8(upper) << " / " << toUtf8(lower);
        // A set's prefixed probe must hash and compare like the whole text.
        EXPECT_EQ(store.find(PrefixedKey{u'i', lower}), same ? std::optional<std::size_t>(1) : std::nullopt)
            << toUtf8(upper) << " / " << toUtf8(lower);
    }
}

TEST(KeyedStore, PrefixedProbeNeverMatchesAShorterOrDifferentlyPrefixedKey) {
    KeyedStore<int> store;
    store.append(1, Text());
    store.append(2, Text(u"I"));
    store.append(3, Text(u"Xa"));
    EXPECT_EQ(store.find(PrefixedKey{u'I', u""}), std::optional<std::size_t>(1));
    EXPECT_FALSE(store.find(PrefixedKey{u'I', u"a"}).has_value());
    EXPECT_FALSE(store.find(PrefixedKey{u'\u0131', u""}).has_value());
}

}  // namespace
}  // namespace tylhart::test
