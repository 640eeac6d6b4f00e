// Late-bound calls beside the direct calls they stand for: a call by
// dispatch identifier against a virtual call that returns the same Variant,
// and the same call by name against the call by identifier.
//
//   build/default/bench/benchmarks --benchmark_filter='^Dispatch/'
#include <memory>

#include "SideBySide.hpp"
#include "tylhart/core/CDefinition.hpp"
#include "tylhart/core/Dispatch.hpp"

using namespace tylhart;

namespace {

// What a compiled client calls instead: a virtual member with a Variant
// result, as a vtable slot of the Automation interface would be.
struct VirtualCalls {
    virtual ~VirtualCalls() = default;
    virtual Variant name(CDefinition& d) const = 0;
    virtual Variant compare(CDefinition& d, const Variant& other) const = 0;
};
struct DefinitionCalls final : VirtualCalls {
    Variant name(CDefinition& d) const override { return Variant(d.Name()); }
    Variant compare(CDefinition& d, const Variant& other) const override {
        return Variant(d.Compare(refCast<CDefinition>(other.toObject())));
    }
};

struct Fixture {
    Ref<CDefinition> d = makeDefinition(u"pressure", ddoKVariableDef);
    Variant other[1] = {Variant(Ref<Object>(makeDefinition(u"PRESSURE", ddoKVariableDef)))};
    std::unique_ptr<VirtualCalls> direct = std::make_unique<DefinitionCalls>();
    Fixture() { benchmark::DoNotOptimize(direct); }  // no devirtualising
};

void GetById(benchmark::State& state) {
    Fixture f;
    const DispId id = dispIdOfName(*f.d, u"Name");
    sideBySide(state, [&](std::size_t) { benchmark::DoNotOptimize(invoke(*f.d, id, Access::Get)); },
               [&](std::size_t) { benchmark::DoNotOptimize(f.direct->name(*f.d)); });
}
void MethodById(benchmark::State& state) {
    Fixture f;
    const DispId id = dispIdOfName(*f.d, u"Compare");
    sideBySide(state, [&](std::size_t) { benchmark::DoNotOptimize(invoke(*f.d, id, Access::Method, f.other)); },
               [&](std::size_t) { benchmark::DoNotOptimize(f.direct->compare(*f.d, f.other[0])); });
}
void GetByNameAgainstId(benchmark::State& state) {
    Fixture f;
    const DispId id = dispIdOfName(*f.d, u"Name");
    sideBySide(state, [&](std::size_t) { benchmark::DoNotOptimize(invoke(*f.d, u"name", Access::Get)); },
               [&](std::size_t) { benchmark::DoNotOptimize(invoke(*f.d, id, Access::Get)); });
}
void MethodByNameAgainstId(benchmark::State& state) {
    Fixture f;
    const DispId id = dispIdOfName(*f.d, u"Compare");
    sideBySide(state, [&](std::size_t) { benchmark::DoNotOptimize(invoke(*f.d, u"compare", Access::Method, f.other)); },
               [&](std::size_t) { benchmark::DoNotOptimize(invoke(*f.d, id, Access::Method, f.other)); });
}

}  // namespace

BENCHMARK(GetById)->Name("Dispatch/GetByIdAgainstVirtual");
BENCHMARK(MethodById)->Name("Dispatch/MethodByIdAgainstVirtual");
BENCHMARK(GetByNameAgainstId)->Name("Dispatch/GetByNameAgainstId");
BENCHMARK(MethodByNameAgainstId)->Name("Dispatch/MethodByNameAgainstId");
