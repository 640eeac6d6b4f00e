// A few definitions in a list and a set, printed as the library renders them.
#include <iostream>

#include "tylhart/containers/CDefinitionList.hpp"
#include "tylhart/containers/CDefinitionSet.hpp"
#include "tylhart/containers/CValueList.hpp"

using namespace tylhart;

static void print(const char* what, const Variant& rendering) {
    std::cout << what << ": " << toUtf8(rendering.toText()) << '\n';
}

int main() {
    auto pressure = makeDefinition(u"pressure", ddoKVariableDef);
    auto temperature = makeDefinition(u"temperature", ddoKVariableDef);
    auto readPv = makeDefinition(u"read_pv", ddoKCommandDef);

    auto list = make<CDefinitionList>();
    list->Add(pressure);
    list->Add(readPv);
    list->Add(temperature, 2);  // before read_pv
    print("list", list->ToString(2));

    auto set = make<CDefinitionSet>();
    set->UseExactKind = true;
    set->Add(pressure);
    set->Add(temperature);
    print("set", set->ToString(2));
    try {
        set->Add(readPv);  // another kind: refused, the set is unchanged
    } catch (const Error& e) {
        std::cout << "refused: " << toUtf8(e.source()) << " - " << toUtf8(e.description()) << '\n';
    }
    try {
        set->Add(makeDefinition(u"PRESSURE", ddoKVariableDef));  // keys ignore case
    } catch (const Error& e) {
        std::cout << "refused: " << toUtf8(e.description()) << '\n';
    }

    auto values = make<CValueList>();
    values->Add(Variant(12.5));
    values->Add(Variant(Text(u"bar")));
    values->Add(Variant(true));
    print("values", values->ToString(2));
    return 0;
}
