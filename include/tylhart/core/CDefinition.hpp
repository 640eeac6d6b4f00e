// CDefinition: the name and object kind that identify every top-level DD object.
#pragma once

#include "tylhart/core/Dispatch.hpp"

namespace tylhart {

class CDefinition final : public Object {
    TYLHART_CLASS(CDefinition)
public:
    Text Name() const { return Text(checkedName()); }
    void SetName(Text newName);
    enumDDObjectKind Kind() const noexcept { return kind_; }
    void Initialize(Text newName, enumDDObjectKind newKind);

    Ref<CDefinition> GetCopy() const;
    void SetFromObject(const Ref<CDefinition>& toCopy);
    bool Compare(const Ref<CDefinition>& toCompare) const;
    Variant ToString(std::int16_t infoLevel = 1) const;

    bool initialized() const noexcept { return kind_ >= 0; }
    // The name without the initialisation check, for renderings and keys
    // that must not fail.
    TextView rawName() const noexcept { return name_; }
    // The name as Name reads it, not-initialised error included, without a
    // copy: set keys are computed from it at every probe.
    TextView checkedName() const;

private:
    // Initialize's checks, then the name and kind.
    void initialize(SharedText newName, enumDDObjectKind newKind);

    // Shared with copies: nothing but SetName and Initialize changes it.
    SharedText name_ = SharedText::ofStatic(u"unknown"sv);
    enumDDObjectKind kind_ = ddoKUndefined;
};

// A definition already initialised with the given name and kind.
Ref<CDefinition> makeDefinition(Text name, enumDDObjectKind kind);

}  // namespace tylhart
