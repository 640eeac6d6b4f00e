// Python spellings of the member descriptions: the signatures, kinds and
// docstrings that the module shows in help() and that the stub generator
// writes into tylharttypes.pyi. One place, so help() and the editor's
// completion never disagree.
#pragma once

#include <string>
#include <vector>

#include "tylhart/automation/Registry.hpp"

namespace tylhart::python {

inline bool isRequired(const ParamInfo& p) { return !p.optional && p.defaultValue.isMissing(); }

inline std::size_t requiredCount(const MemberInfo& m) {
    std::size_t n = 0;
    for (const ParamInfo& p : m.params) n += isRequired(p) ? 1 : 0;
    return n;
}

inline bool hasByRef(const MemberInfo& m) {
    for (const ParamInfo& p : m.params)
        if (p.byRef) return true;
    return false;
}

// How Python reaches a member: a property read as an attribute needs no
// argument; a parameterised one is called, and written by "Set" + name.
enum class Shape { Attribute, Callable };
inline Shape shapeOf(const MemberInfo& m) {
    return m.get && requiredCount(m) == 0 ? Shape::Attribute : Shape::Callable;
}
inline bool writable(const MemberInfo& m) { return static_cast<bool>(m.let) || static_cast<bool>(m.set); }

// The Python type of a value of this description type.
inline std::string pythonType(const Text& type) {
    static const std::pair<const char16_t*, const char*> known[] = {
        {u"Integer", "int"},   {u"Long", "int"},          {u"Byte", "int"},     {u"Single", "float"},
        {u"Double", "float"},  {u"Boolean", "bool"},      {u"String", "str"},   {u"Currency", "Currency"},
        {u"Date", "Date"},     {u"Variant", "Any"},       {u"Object", "Object"}, {u"IUnknown", "Iterator"},
        {u"Byte()", "bytes"},
    };
    if (type.empty()) return "None";
    for (const auto& [name, py] : known)
        if (type == name) return py;
    if (type.starts_with(u"enum")) return "int";
    if (automation::findClass(type)) return toUtf8(type);
    return "Object";
}

// A Python literal of a default value; "Missing" for an optional parameter
// without one (the member then sees the Missing marker).
inline std::string pythonLiteral(const Variant& v) {
    switch (v.type()) {
        case VarType::Boolean: return *v.get<bool>() ? "True" : "False";
        case VarType::Integer:
        case VarType::Long:
        case VarType::Byte:
        case VarType::Single:
        case VarType::Double: return toUtf8(v.toText());
        case VarType::String: {
            std::string out = "'";
            for (char c : toUtf8(*v.get<Text>())) {
                if (c == '\'' || c == '\\') out += '\\';
                out += c;
            }
            return out + "'";
        }
        case VarType::Empty: return "Empty";
        case VarType::Null: return "Null";
        default: return "Missing";
    }
}

// The parameter list without the parentheses: "Name: str, InfoLevel: int = 1".
// `extra` is appended as one more parameter (a writer's value).
inline std::string parameterList(const std::vector<ParamInfo>& params, const std::string& extra = {}) {
    std::string out;
    for (const ParamInfo& p : params) {
        if (!out.empty()) out += ", ";
        out += toUtf8(p.name) + ": " + pythonType(p.type);
        if (!isRequired(p)) out += " = " + pythonLiteral(p.defaultValue);
    }
    if (!extra.empty()) out += (out.empty() ? "" : ", ") + extra;
    return out;
}

// A call's result as Python receives it: with by-reference parameters the
// result comes first, followed by the written-back values, as a tuple.
// Writers answer None.
inline std::string resultType(const MemberInfo& m, bool write = false) {
    if (write) return "None";
    std::string result = pythonType(m.type);
    if (!hasByRef(m)) return result;
    std::string out = "tuple[" + result;
    for (const ParamInfo& p : m.params)
        if (p.byRef) out += ", " + pythonType(p.type);
    return out + "]";
}

inline std::string kindText(const MemberInfo& m) {
    std::string kind = m.field ? "field" : m.get ? (m.params.empty() ? "property" : "parameterised property")
                                                 : "method";
    if (m.get) kind += writable(m) ? ", read/write" : ", read-only";
    if (m.hidden) kind += ", hidden";
    std::string byRef;
    for (const ParamInfo& p : m.params)
        if (p.byRef) byRef += (byRef.empty() ? "" : ", ") + toUtf8(p.name);
    if (!byRef.empty()) kind += "; by reference: " + byRef;
    return kind;
}

// One member as help() lists it, e.g.
// "ToString(InfoLevel: int = 1) -> Any  [method]" or "Name: str  [property, read/write]".
inline std::string memberDoc(const MemberInfo& m) {
    const std::string name = toUtf8(m.name);
    std::string out = shapeOf(m) == Shape::Attribute
                          ? name + ": " + pythonType(m.type)
                          : name + "(" + parameterList(m.params) + ") -> " + resultType(m);
    out += "  [" + kindText(m) + "]";
    if (shapeOf(m) == Shape::Callable && m.get && writable(m))
        out += "\n    Set" + name + "(" + parameterList(m.params, "Value: " + pythonType(m.type)) + ") -> " +
               resultType(m, true) + "  [writes " + name + "]";
    return out;
}

inline std::string classDoc(const ClassInfo& info) {
    std::string out = toUtf8(info.name()) +
                      ": an object of the library. Members (names ignore case; keywords name parameters):\n";
    for (const MemberInfo& m : info.members()) out += "\n  " + memberDoc(m);
    if (info.find(u"Item"))
        out += "\n\nobj[i] with an int is Item(i), 1-based; obj[key] with any other key is FindItem(key) "
               "(a tuple gives several arguments).";
    return out;
}

}  // namespace tylhart::python
