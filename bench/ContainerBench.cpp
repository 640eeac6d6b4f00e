// Container costs measured side by side with plain standard containers, so
// the results read as ratios. Positional access must not depend on the
// list's length: Item(i) on a million elements costs what it costs on a
// thousand.
#include <benchmark/benchmark.h>

#include <string>
#include <unordered_map>
#include <vector>

#include "tylhart/containers/CDefinitionSet.hpp"
#include "tylhart/containers/CValueList.hpp"

using namespace tylhart;

namespace {

Ref<CValueList> valueList(std::int64_t n) {
    auto list = make<CValueList>();
    for (std::int64_t i = 0; i < n; ++i) list->Add(Variant(static_cast<std::int32_t>(i)));
    return list;
}

// Positions spread over the whole list, so no cache of the last position helps.
std::vector<std::int32_t> positions(std::int64_t n) {
    std::vector<std::int32_t> out(4096);
    std::uint64_t x = 88172645463325252ull;
    for (auto& p : out) {
        x ^= x << 13, x ^= x >> 7, x ^= x << 17;
        p = static_cast<std::int32_t>(x % static_cast<std::uint64_t>(n)) + 1;
    }
    return out;
}

void ValueListItem(benchmark::State& state) {
    auto list = valueList(state.range(0));
    auto where = positions(state.range(0));
    std::size_t k = 0;
    for (auto _ : state) {
        Variant v = list->Item(Variant(where[k++ & 4095]));
        benchmark::DoNotOptimize(v);
    }
}
BENCHMARK(ValueListItem)->Arg(1000)->Arg(1000000);

void BaselineVectorAt(benchmark::State& state) {
    std::vector<Variant> values;
    for (std::int64_t i = 0; i < state.range(0); ++i) values.emplace_back(static_cast<std::int32_t>(i));
    auto where = positions(state.range(0));
    std::size_t k = 0;
    for (auto _ : state) {
        Variant v = values.at(static_cast<std::size_t>(where[k++ & 4095] - 1));
        benchmark::DoNotOptimize(v);
    }
}
BENCHMARK(BaselineVectorAt)->Arg(1000)->Arg(1000000);

Ref<CDefinitionSet> definitionSet(std::int64_t n) {
    auto set = make<CDefinitionSet>();
    for (std::int64_t i = 0; i < n; ++i) set->Add(makeDefinition(fromUtf8("var_" + std::to_string(i)), ddoKVariableDef));
    return set;
}

void DefinitionSetIsInSet(benchmark::State& state) {
    auto set = definitionSet(state.range(0));
    std::vector<Ref<CDefinition>> probes;
    for (auto p : positions(state.range(0)))
        probes.push_back(makeDefinition(fromUtf8("VAR_" + std::to_string(p - 1)), ddoKVariableDef));
    std::size_t k = 0;
    for (auto _ : state) benchmark::DoNotOptimize(set->IsInSet(probes[k++ & 4095]));
}
BENCHMARK(DefinitionSetIsInSet)->Arg(1000)->Arg(100000);

void BaselineUnorderedMapFind(benchmark::State& state) {
    std::unordered_map<std::u16string, Ref<CDefinition>> map;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        auto name = fromUtf8("var_" + std::to_string(i));
        map.emplace(name, makeDefinition(name, ddoKVariableDef));
    }
    std::vector<std::u16string> probes;
    for (auto p : positions(state.range(0))) probes.push_back(fromUtf8("var_" + std::to_string(p - 1)));
    std::size_t k = 0;
    for (auto _ : state) benchmark::DoNotOptimize(map.find(probes[k++ & 4095]));
}
BENCHMARK(BaselineUnorderedMapFind)->Arg(1000)->Arg(100000);

void DefinitionSetBuild(benchmark::State& state) {
    for (auto _ : state) benchmark::DoNotOptimize(definitionSet(state.range(0)));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(DefinitionSetBuild)->Arg(10000);

}  // namespace
