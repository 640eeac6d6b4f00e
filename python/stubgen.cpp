// Writes tylharttypes.pyi, the type stub of the Python module, from the same
// member descriptions the module dispatches through, so an editor completes
// every class, member and parameter the module really has.
// Usage: tylhart_stubgen <output file>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>

#include "Signatures.hpp"
#include "tylhart/automation/Registry.hpp"

namespace {

using namespace tylhart;
using namespace tylhart::python;

// The classes and functions the module defines itself, around the library's.
constexpr const char* Prologue = R"(# The type stub of the module tylharttypes, generated from the library's
# member descriptions at build time. Do not edit.
from typing import Any

class Error(Exception):
    """A library error: number (the HRESULT as a signed 32-bit int), source, description."""
    number: int
    source: str
    description: str

class EmptyType: ...
class NullType: ...
class MissingType: ...
Empty: EmptyType
Null: NullType
Missing: MissingType

class Currency:
    def __init__(self, value: Any) -> None: ...
    @property
    def scaled(self) -> int: ...
    def __float__(self) -> float: ...

class Date:
    def __init__(self, days: float) -> None: ...
    @property
    def days(self) -> float: ...
    def __float__(self) -> float: ...

class Iterator:
    def __iter__(self) -> Iterator: ...
    def __next__(self) -> Any: ...

class Member:
    def __call__(self, *args: Any, **kwargs: Any) -> Any: ...

class Object:
    """The base of every class of the library."""
    def __len__(self) -> int: ...
    def __iter__(self) -> Iterator: ...
    def __getitem__(self, key: Any) -> Any:
        """obj[i] with an int is Item(i), 1-based; any other key is FindItem(key)."""
    def __contains__(self, x: object) -> bool: ...

def CreateObject(progId: str) -> Object: ...
def CreateObjectFromClsid(clsid: str) -> Object: ...
def DllCanUnloadNow() -> int: ...
def typeLibraryListing() -> str: ...
enums: dict[str, dict[str, int]]
)";

void writeClass(std::ostream& out, const ClassInfo& info) {
    out << "\nclass " << toUtf8(info.name()) << "(Object):\n    def __init__(self) -> None: ...\n";
    std::set<Text> names;
    for (const MemberInfo& m : info.members()) names.insert(m.name);
    for (const MemberInfo& m : info.members()) {
        const std::string name = toUtf8(m.name);
        const std::string doc = "\n        \"\"\"" + kindText(m) + "\"\"\"\n";
        if (shapeOf(m) == Shape::Attribute) {
            out << "    @property\n    def " << name << "(self) -> " << pythonType(m.type) << ":" << doc;
            if (writable(m))
                out << "    @" << name << ".setter\n    def " << name << "(self, value: " << pythonType(m.type)
                    << ") -> None: ...\n";
            continue;
        }
        out << "    def " << name << "(" << parameterList(m.params).insert(0, m.params.empty() ? "self" : "self, ")
            << ") -> " << resultType(m) << ":" << doc;
        if (m.get && writable(m) && !names.contains(u"Set" + m.name))
            out << "    def Set" << name << "(self, "
                << parameterList(m.params, "Value: " + pythonType(m.type)) << ") -> " << resultType(m, true)
                << ": ...\n";
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: " << argv[0] << " <output .pyi>\n";
        return 2;
    }
    std::ostringstream out;
    out << Prologue;
    for (const automation::ClassEntry& entry : automation::classes())
        if (entry.built()) writeClass(out, entry.classInfo());
    out << '\n';
    for (const EnumInfo& e : enumerations())
        for (const EnumMember& member : e.members) out << toUtf8(member.name) << ": int\n";
    std::ofstream file(argv[1], std::ios::binary);
    file << out.str();
    if (!file.flush()) {
        std::cerr << "cannot write " << argv[1] << '\n';
        return 1;
    }
    return 0;
}
