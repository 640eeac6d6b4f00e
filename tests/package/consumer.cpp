#include <iostream>

#include "tylhart/core/CDefinition.hpp"

int main() {
    auto d = tylhart::makeDefinition(u"pressure", tylhart::ddoKVariableDef);
    std::string text = tylhart::toUtf8(d->ToString(2).toText());
    std::cout << text << '\n';
    return text == "Definition{Name:pressure, Kind:0}" ? 0 : 1;
}
