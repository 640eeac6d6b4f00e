// CMethod: the METHOD construct, a named procedure of the device with its
// label, help, validity, identifier and method class flags.
#pragma once

#include "tylhart/core/Construct.hpp"
#include "tylhart/variables/FlagClasses.hpp"

namespace tylhart {

class CMethod final : public Construct<CMethod> {
    TYLHART_CLASS(CMethod)
public:
    static constexpr enumDDObjectKind ObjectKind = ddoKMethodDef;
    // Reported without the class's leading C; callers match on it.
    static constexpr const char16_t* DefinitionSource = u"Method.Definition";

    // ---- Public fields, in declaration order; none is checked ----
    Child<CMethodClass> Class;
    Text Label;
    Text Help;
    bool Validity = true;
    std::int16_t Uid = 0;

    // The definition (kind checked first, so a source whose definition has
    // another kind is refused before anything is copied), then Class deep,
    // then the plain fields. Both copies are made before anything is
    // assigned.
    void SetFromObject(const Ref<CMethod>& toCopy);
    // Label, Help (exact, case-sensitive), Validity, Uid, Class, then the
    // definition.
    bool Compare(const Ref<CMethod>& toCompare) const;
    // "METHOD{" and the definition at the same level, not one less; above
    // level 1 the fields and the class one level down.
    Variant ToString(std::int16_t infoLevel = 1) const;
};

}  // namespace tylhart
