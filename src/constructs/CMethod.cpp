#include "tylhart/constructs/CMethod.hpp"

#include <string>


namespace tylhart {

void CMethod::SetFromObject(const Ref<CMethod>& toCopy) {
    const CMethod& source = checked(toCopy);
    Ref<CDefinition> definition = checked(source.definition_).GetCopy();
    requireKind(definition, ObjectKind, DefinitionSource);
    Child<CMethodClass> methodClass = copyChild(source.Class);
    definition_ = std::move(definition);
    Class = std::move(methodClass);
    Label = source.Label;
    Help = source.Help;
    Validity = source.Validity;
    Uid = source.Uid;
}

bool CMethod::Compare(const Ref<CMethod>& toCompare) const {
    const CMethod& other = checked(toCompare);
    return Label == other.Label && Help == other.Help && Validity == other.Validity && Uid == other.Uid &&
           Class.equals(other.Class) && definitionEquals(other);
}

Variant CMethod::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Text out = renderHead(u"METHOD{", infoLevel);
    if (infoLevel > 1) {
        out.append(u", Label:"sv).append(Label + u", Help:" + Help);
        out.append(u", Validity:"sv).append(boolText(Validity));
        out.append(u", Uid:"sv).append(decimal(Uid));
        out += childText(u", Class:", Class, infoLevel);
    }
    return std::move(out) + u"}";
}

const ClassInfo& CMethod::staticClassInfo() {
    static const ClassInfo info = [] {
        ClassBuilder<CMethod> b(TypeName);
        b.field(u"Class", &CMethod::Class)
            .field(u"Label", &CMethod::Label)
            .field(u"Help", &CMethod::Help)
            .field(u"Validity", &CMethod::Validity)
            .field(u"Uid", &CMethod::Uid);
        return describeConstructMembers(b).build();
    }();
    return info;
}

}  // namespace tylhart
