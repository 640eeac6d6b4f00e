// Container costs at a thousand and at a million elements, each row timing
// the library and a plain baseline side by side in the same run: a vector
// of the same values with an unordered_map from the case-folded key to the
// position, whose entries point at their index nodes so that a shift
// renumbers only the moved keys. Each row reports the library's time
// (lib_ns, also Google Benchmark's own time), the baseline's (base_ns) and
// lib_ns / base_ns (ratio). Every measured step leaves the container at
// its size (an insertion is paired with a removal), so one container per
// size serves every row and every repetition.
//
//   build/default/bench/benchmarks --benchmark_filter='^(List|Set)/'
//       --benchmark_min_time=0.05 --benchmark_repetitions=3
//       --benchmark_report_aggregates_only=true
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "SideBySide.hpp"
#include "tylhart/containers/CDefinitionSet.hpp"
#include "tylhart/containers/CValueList.hpp"

using namespace tylhart;

namespace {

// The plain design: a vector and a hash index of positions; each entry
// points at its index node, so a shift renumbers the moved keys only.
template <class T>
class PlainIndexedVector {
    using Index = std::unordered_map<Text, std::size_t>;
    using Node = Index::value_type;

public:
    void insert(std::size_t at, T value, std::optional<Text> key = std::nullopt) {
        Node* node = nullptr;
        if (key) node = &*index_.try_emplace(folded(u'I', *key), at).first;
        items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(at), {std::move(value), node});
        renumberFrom(at + 1);
    }
    void erase(std::size_t at) {
        if (Node* node = items_[at].second) index_.erase(node->first);
        items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(at));
        renumberFrom(at);
    }
    const T& operator[](std::size_t at) const { return items_[at].first; }
    std::size_t size() const { return items_.size(); }
    // Position of "I" + Key.
    const std::size_t* find(TextView key) const {
        auto it = index_.find(folded(u'I', key));
        return it == index_.end() ? nullptr : &it->second;
    }
    void reserve(std::size_t n) { items_.reserve(n); }

private:
    // A probe folds into one reused buffer, so a look-up allocates nothing.
    const Text& folded(char16_t prefix, TextView key) const {
        probe_.assign(1, foldCase(prefix));
        for (char16_t c : key) probe_ += foldCase(c);
        return probe_;
    }
    void renumberFrom(std::size_t first) {
        for (std::size_t i = first; i < items_.size(); ++i)
            if (items_[i].second) items_[i].second->second = i;
    }
    std::vector<std::pair<T, Node*>> items_;
    Index index_;
    mutable Text probe_;
};

// Positions spread over the whole container, so no cache of the last
// position helps.
std::vector<std::size_t> spread(std::size_t n) {
    std::vector<std::size_t> out(4096);
    std::uint64_t x = 88172645463325252ull;
    for (auto& p : out) {
        x ^= x << 13, x ^= x >> 7, x ^= x << 17;
        p = static_cast<std::size_t>(x % n);
    }
    return out;
}

Text nameOf(std::size_t i) { return fromUtf8("var_" + std::to_string(i)); }

struct ListFixture {
    Ref<CValueList> list = make<CValueList>();
    PlainIndexedVector<Variant> plain;
    std::vector<std::size_t> where;
};
ListFixture& listOf(std::size_t n) {
    static std::map<std::size_t, ListFixture> made;
    auto [it, fresh] = made.try_emplace(n);
    if (fresh) {
        it->second.plain.reserve(n);
        for (std::size_t i = 0; i < n; ++i) {
            it->second.list->Add(Variant(static_cast<std::int32_t>(i)));
            it->second.plain.insert(i, Variant(static_cast<std::int32_t>(i)));
        }
        it->second.where = spread(n);
    }
    return it->second;
}

struct SetFixture {
    Ref<CDefinitionSet> set = make<CDefinitionSet>();
    PlainIndexedVector<Ref<CDefinition>> plain;  // the same definition objects
    std::vector<std::size_t> where;
    std::vector<Text> names;  // upper case, so every probe folds
};
SetFixture& setOf(std::size_t n) {
    static std::map<std::size_t, SetFixture> made;
    auto [it, fresh] = made.try_emplace(n);
    if (fresh) {
        SetFixture& f = it->second;
        f.plain.reserve(n);
        for (std::size_t i = 0; i < n; ++i) {
            auto d = makeDefinition(nameOf(i), ddoKVariableDef);
            f.set->Add(d);
            f.plain.insert(i, d, nameOf(i));
        }
        f.where = spread(n);
        for (std::size_t p : f.where) f.names.push_back(fromUtf8("VAR_" + std::to_string(p)));
    }
    return it->second;
}

const Variant Probe(std::int32_t{-1});

std::size_t sizeArg(const benchmark::State& state) { return static_cast<std::size_t>(state.range(0)); }

void ListItem(benchmark::State& state) {
    auto& f = listOf(sizeArg(state));
    sideBySide(
        state, [&](std::size_t k) { benchmark::DoNotOptimize(f.list->Item(static_cast<std::int32_t>(f.where[k & 4095] + 1))); },
        [&](std::size_t k) { benchmark::DoNotOptimize(Variant(f.plain[f.where[k & 4095]])); });
}

// Add then Remove at one position (Add's Before, After or the end).
void listAddRemove(benchmark::State& state, std::int32_t before, std::int32_t after, std::int32_t removeAt) {
    auto& f = listOf(sizeArg(state));
    const auto n = static_cast<std::int32_t>(sizeArg(state));
    const std::int32_t at = removeAt > 0 ? removeAt : n + 1;
    sideBySide(
        state,
        [&](std::size_t) {
            f.list->Add(Probe, before, after);
            f.list->Remove(Variant(at));
        },
        [&](std::size_t) {
            f.plain.insert(static_cast<std::size_t>(at - 1), Probe);
            f.plain.erase(static_cast<std::size_t>(at - 1));
        });
}
void ListAddEndRemoveEnd(benchmark::State& state) { listAddRemove(state, 0, 0, 0); }
void ListAddBefore1Remove1(benchmark::State& state) { listAddRemove(state, 1, 0, 1); }
void ListAddAfter1Remove2(benchmark::State& state) { listAddRemove(state, 0, 1, 2); }
void ListAddBeforeMiddleRemoveMiddle(benchmark::State& state) {
    const auto middle = static_cast<std::int32_t>(sizeArg(state) / 2);
    listAddRemove(state, middle, 0, middle);
}

void SetItem(benchmark::State& state) {
    auto& f = setOf(sizeArg(state));
    sideBySide(
        state, [&](std::size_t k) { benchmark::DoNotOptimize(f.set->Item(static_cast<std::int32_t>(f.where[k & 4095] + 1))); },
        [&](std::size_t k) { benchmark::DoNotOptimize(f.plain[f.where[k & 4095]]->GetCopy()); });
}

void SetIsInSet(benchmark::State& state) {
    auto& f = setOf(sizeArg(state));
    std::vector<Ref<CDefinition>> probes;
    for (const Text& name : f.names) probes.push_back(makeDefinition(name, ddoKVariableDef));
    sideBySide(
        state, [&](std::size_t k) { benchmark::DoNotOptimize(f.set->IsInSet(probes[k & 4095])); },
        [&](std::size_t k) { benchmark::DoNotOptimize(f.plain.find(probes[k & 4095]->checkedName())); });
}

void SetFindItem(benchmark::State& state) {
    auto& f = setOf(sizeArg(state));
    sideBySide(
        state, [&](std::size_t k) { benchmark::DoNotOptimize(f.set->FindItem(f.names[k & 4095])); },
        [&](std::size_t k) {
            benchmark::DoNotOptimize(f.plain[*f.plain.find(f.names[k & 4095])]->GetCopy());
        });
}

// Add of a new name at the end, then Remove of it by key.
void SetAddRemoveLast(benchmark::State& state) {
    auto& f = setOf(sizeArg(state));
    auto extra = makeDefinition(u"extra", ddoKVariableDef);
    sideBySide(
        state,
        [&](std::size_t) {
            f.set->Add(extra);
            f.set->Remove(extra);
        },
        [&](std::size_t) {
            f.plain.insert(f.plain.size(), extra, Text(u"extra"));
            f.plain.erase(*f.plain.find(u"extra"));
        });
}

// Insert of a name already present, anywhere: it leaves its place and goes
// to the end (Remove by key and Add).
void SetInsertExisting(benchmark::State& state) {
    auto& f = setOf(sizeArg(state));
    std::vector<Ref<CDefinition>> stored;
    for (std::size_t p : f.where) stored.push_back(f.plain[p]);
    sideBySide(
        state, [&](std::size_t k) { f.set->Insert(stored[k & 4095]); },
        [&](std::size_t k) {
            const Ref<CDefinition>& d = stored[k & 4095];
            f.plain.erase(*f.plain.find(d->checkedName()));
            f.plain.insert(f.plain.size(), d, Text(d->checkedName()));
        });
}

#define TYLHART_SCALING(name) BENCHMARK(name)->Name("List/" #name)->Arg(1000)->Arg(1000000)
#define TYLHART_SET_SCALING(name) BENCHMARK(name)->Name("Set/" #name)->Arg(1000)->Arg(1000000)
TYLHART_SCALING(ListItem);
TYLHART_SCALING(ListAddEndRemoveEnd);
TYLHART_SCALING(ListAddBefore1Remove1);
TYLHART_SCALING(ListAddAfter1Remove2);
TYLHART_SCALING(ListAddBeforeMiddleRemoveMiddle);
TYLHART_SET_SCALING(SetItem);
TYLHART_SET_SCALING(SetIsInSet);
TYLHART_SET_SCALING(SetFindItem);
TYLHART_SET_SCALING(SetAddRemoveLast);
TYLHART_SET_SCALING(SetInsertExisting);

void DefinitionSetBuild(benchmark::State& state) {
    for (auto _ : state) {
        auto set = make<CDefinitionSet>();
        for (std::int64_t i = 0; i < state.range(0); ++i)
            set->Add(makeDefinition(nameOf(static_cast<std::size_t>(i)), ddoKVariableDef));
        benchmark::DoNotOptimize(set);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(DefinitionSetBuild)->Arg(10000);

}  // namespace
