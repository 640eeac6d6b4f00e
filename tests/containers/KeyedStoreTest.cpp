#include <algorithm>
#include <map>
#include <random>

#include "TestSupport.hpp"
#include "tylhart/containers/KeyedStore.hpp"

namespace tylhart::test {
namespace {

// Random inserts and removals anywhere, with and without keys, checked
// after every step against a plain model. Small blocks make the store
// split, merge and drop blocks many times; each run grows well past one
// block and shrinks back to empty twice, so it also passes from keys kept
// beside the entries to the hash index and back, and copies are checked
// at both sizes.
template <std::size_t Capacity>
void followsThePlainModel(std::size_t peak) {
    KeyedStore<int, Capacity> store;
    std::vector<std::pair<int, Text>> order;  // value, key ("" = none)
    std::map<Text, int> keyed;                // key -> value
    std::mt19937 rng(42);
    auto pick = [&](std::size_t n) { return static_cast<std::size_t>(rng() % n); };
    auto anyKey = [&] {
        auto it = keyed.begin();
        std::advance(it, static_cast<std::ptrdiff_t>(pick(keyed.size())));
        return it->first;
    };
    auto verify = [&](const KeyedStore<int, Capacity>& s, int step) {
        ASSERT_EQ(s.size(), order.size()) << "step " << step;
        for (std::size_t i = 0; i < order.size(); ++i) {
            ASSERT_EQ(s[i], order[i].first) << "step " << step << " index " << i;
            if (order[i].second.empty()) continue;
            ASSERT_EQ(s.find(order[i].second), i) << "step " << step;
            ASSERT_EQ(*s.lookup(order[i].second), order[i].first) << "step " << step;
        }
    };
    const int phase = static_cast<int>(3 * peak);
    for (int step = 0; step < 4 * phase; ++step) {
        const std::size_t n = order.size();
        const bool growing = (step / phase) % 2 == 0;
        if (n > 0 && (growing ? pick(3) == 0 : pick(3) != 0)) {
            if (!keyed.empty() && pick(2) == 0) {
                Text key = anyKey();
                ASSERT_TRUE(store.eraseKey(foldCase(key)));  // keys ignore case
                ASSERT_FALSE(store.contains(key));
                order.erase(std::find(order.begin(), order.end(), std::pair{keyed[key], key}));
                keyed.erase(key);
            } else {
                std::size_t at = pick(n);
                store.erase(at);
                keyed.erase(order[at].second);
                order.erase(order.begin() + static_cast<std::ptrdiff_t>(at));
            }
        } else if (!keyed.empty() && pick(8) == 0) {
            EXPECT_EQ(raised([&] { store.insert(pick(n + 1), step, foldCase(anyKey())); }), Duplicate);
            ASSERT_FALSE(store.eraseKey(Text(u"absent")));
        } else {
            std::size_t at = pick(n + 1);
            Text key = pick(4) == 0 ? Text() : fromUtf8("K" + std::to_string(step));
            store.insert(at, step, key.empty() ? std::nullopt : std::optional<Text>(key));
            order.insert(order.begin() + static_cast<std::ptrdiff_t>(at), {step, key});
            if (!key.empty()) keyed[key] = step;
        }
        verify(store, step);
        // Copies of small stores (keys beside the entries) and of big ones.
        if (step % phase == phase - 1 || (order.size() < 24 && step % 5 == 0)) {
            const KeyedStore<int, Capacity> copy = store;
            verify(copy, step);
        }
    }
}

TEST(KeyedStore, FollowsThePlainModelAcrossBlocks) {
    followsThePlainModel<8>(200);
    followsThePlainModel<64>(700);
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
        SCOPED_TRACE(toUtf8(upper) + " / " + toUtf8(lower));
        KeyedStore<int> store;
        store.append(1, Text(upper));
        store.append(2, u"I" + Text(upper));
        EXPECT_EQ(store.find(lower).has_value(), same);
        // A set's prefixed probe must hash and compare like the whole text.
        EXPECT_EQ(store.find(PrefixedKey{u'i', lower}), same ? std::optional<std::size_t>(1) : std::nullopt);
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
