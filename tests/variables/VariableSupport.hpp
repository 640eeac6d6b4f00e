// Helpers shared by the variable test suites: a clock moved by hand, and
// types, variables and enumerators built in one line.
#pragma once

#include "TestSupport.hpp"
#include "tylhart/core/Clock.hpp"
#include "tylhart/variables/CVariable.hpp"

namespace tylhart::test {

// 1 January 2000, noon; one second as a day fraction.
inline constexpr double Noon2000 = 36526.5;
inline constexpr double Second = 1.0 / 86400.0;

struct ManualClock {
    double days = Noon2000;
    ScopedClock scope{[this] { return Date{days}; }};
    void advanceSeconds(double s) { days += s * Second; }
};

using TypeSetup = std::function<void(CType&)>;

// `type` (a new one unless given) of this kind, then `setup` run on it.
inline Ref<CType> typeOf(enumDDVariableType kind, const TypeSetup& setup = {}, Ref<CType> type = make<CType>()) {
    if (kind != ddvTUndefined) type->SetKind(kind);
    if (setup) setup(*type);
    return type;
}
inline Ref<CVariable> variableOf(enumDDVariableType kind, const TypeSetup& setup = {}) {
    auto v = make<CVariable>();
    return typeOf(kind, setup, v->TypeInfo), v;
}
template <class E = CEnumerator>
Ref<E> enumerator(std::int32_t value, const char16_t* description = u"", const char16_t* help = u"") {
    auto e = make<E>();
    return e->Value = value, e->Description = description, e->Help = help, e;
}

// Ranges at indexes 0 .. n - 1 (MaxRangeNo n - 1); Null leaves a side open.
inline TypeSetup ranges(std::vector<std::pair<Variant, Variant>> bounds) {
    return [bounds](CType& t) {
        t.SetMaxRangeNo(static_cast<std::int16_t>(bounds.size() - 1));
        for (std::size_t i = 0; i < bounds.size(); ++i) {
            t.SetMinValues(static_cast<std::int32_t>(i), bounds[i].first);
            t.SetMaxValues(static_cast<std::int32_t>(i), bounds[i].second);
        }
    };
}
inline TypeSetup sized(std::int16_t size) { return [size](CType& t) { t.SetSize(size); }; }
// Enumerators with these values, in this order; MaxEnumIndex as given.
inline TypeSetup enumerators(std::vector<std::int32_t> values, std::int32_t maxEnumIndex) {
    return [values, maxEnumIndex](CType& t) {
        t.SetMaxEnumIndex(maxEnumIndex);
        for (std::int32_t value : values) t.EnumeratorSet->Add(enumerator(value));
    };
}
inline TypeSetup domain(std::vector<Variant> values) {
    return [values](CType& t) { for (const Variant& value : values) t.Domain()->Add(value); };
}

// One kind and type, the values tried against it and what each should give.
template <class Answer>
struct KindRow {
    enumDDVariableType kind;
    TypeSetup setup;
    std::vector<std::pair<Variant, Answer>> tries;
};

// A range side left open.
inline const Variant Open = Null{};

inline std::int32_t packedDate(int day, int month, int yearByte) { return day * 65536 + month * 256 + yearByte; }

}  // namespace tylhart::test
