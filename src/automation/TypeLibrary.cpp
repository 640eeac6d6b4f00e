#include "tylhart/automation/TypeLibrary.hpp"

#include <cstdio>

#include "tylhart/automation/Registry.hpp"

namespace tylhart::automation {
namespace {

Text hex(std::uint32_t v, int digits) {
    char buf[16];
    std::snprintf(buf, sizeof buf, "%0*X", digits, v);
    return fromUtf8(buf);
}

// A default value as a Basic literal, so the listing reads like a declaration.
Text literal(const Variant& v) {
    switch (v.type()) {
        case VarType::Empty: return u"Empty";
        case VarType::Null: return u"Null";
        case VarType::Object: return u"Nothing";
        case VarType::String: {
            Text out = u"\"";
            for (char16_t c : *v.get<Text>()) {
                if (c == u'"') out += u'"';
                out += c;
            }
            return out + u"\"";
        }
        case VarType::Date: return u"#" + v.toText() + u"#";
        case VarType::ByteArray: return u"Byte()";
        default: return v.toText();
    }
}

Text accessors(const MemberInfo& m) {
    Text out;
    auto add = [&](bool present, const char16_t* word) {
        if (!present) return;
        if (!out.empty()) out += u' ';
        out += word;
    };
    add(static_cast<bool>(m.method) && !m.get, u"method");
    add(static_cast<bool>(m.get), u"get");
    add(static_cast<bool>(m.let), u"let");
    add(static_cast<bool>(m.set), u"set");
    return out;
}

Text parameter(const ParamInfo& p) {
    Text out;
    if (p.optional) out += u"Optional ";
    if (p.byRef) out += u"ByRef ";
    out += p.name + u" As " + p.type;
    if (!p.defaultValue.isMissing()) out += u" = " + literal(p.defaultValue);
    return out;
}

}  // namespace

Text memberListing(const MemberInfo& m) {
    Text out = u"  0x" + hex(static_cast<std::uint32_t>(m.id), 8) + u' ' + accessors(m) + u' ' + m.name;
    if (!m.field) {
        out += u'(';
        for (std::size_t i = 0; i < m.params.size(); ++i) {
            if (i) out += u", ";
            out += parameter(m.params[i]);
        }
        out += u')';
    }
    if (!m.type.empty()) out += u" As " + m.type;
    if (m.hidden) out += u" hidden";
    return out + u'\n';
}

Text typeLibraryListing() {
    const TypeLibraryInfo& lib = typeLibrary();
    Text out = u"library " + Text(lib.name) + u' ' + lib.guid + u" locale 0x" + hex(lib.locale, 4) + u'\n';
    for (const ClassEntry& c : classes()) {
        if (!c.built()) continue;
        out += u"\ncoclass " + Text(c.name) + u' ' + c.clsid + u' ' + c.progId + u'\n';
        out += u"interface " + c.interfaceName() + u' ' + c.iid + u'\n';
        for (const MemberInfo& m : c.classInfo().members()) out += memberListing(m);
        out += u"end interface\n";
    }
    for (const EnumInfo& e : enumerations()) {
        out += u"\nenum " + Text(e.name) + u' ' + e.guid + u'\n';
        for (const EnumMember& m : e.members) out += u"  " + Text(m.name) + u" = " + decimal(m.value) + u'\n';
        out += u"end enum\n";
    }
    return out;
}

}  // namespace tylhart::automation
