// A small but complete device description: a pressure transmitter with a
// dozen variables, unit, refresh and write-as-one relations, three commands,
// a method, a menu tree and an edit display. Every construct is kept in one
// CObjectSet through its handle; the set is copied deep, the copy compared
// and changed, and the whole description printed at level 2.
#include <iostream>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "tylhart/commands/CCommand.hpp"
#include "tylhart/constructs/CMethod.hpp"
#include "tylhart/constructs/EditDisplays.hpp"
#include "tylhart/constructs/Menus.hpp"
#include "tylhart/constructs/Relations.hpp"
#include "tylhart/containers/CObjectSet.hpp"
#include "tylhart/variables/CVariable.hpp"

using namespace tylhart;

namespace {

class Device {
public:
    Ref<CObjectSet> objects = make<CObjectSet>();

    // Keeps a construct in the set through a handle on it; the handle is
    // what menus and edit displays refer to.
    template <class C>
    Ref<C> keep(Ref<C> construct) {
        const Text name = construct->Definition()->Name();
        constructs_[name] = construct;
        handles_[name] = construct->MakeObject();
        objects->Add(handles_[name]);
        return construct;
    }

    template <class C>
    static Ref<C> named(const char16_t* name, enumDDObjectKind kind) {
        auto construct = make<C>();
        construct->SetDefinition(makeDefinition(name, kind));
        return construct;
    }

    template <class C = CVariable>
    Ref<C> construct(const Text& name) const {
        return refCast<C>(constructs_.at(name));
    }
    const Ref<CObject>& handle(const Text& name) const { return handles_.at(name); }

    Ref<CVariable> variable(const char16_t* name, enumDDVariableType kind, std::optional<std::int16_t> size,
                            const char16_t* label, std::optional<std::pair<double, double>> range = {}) {
        auto v = named<CVariable>(name, ddoKVariableDef);
        v->Label = label;
        v->TypeInfo->SetKind(kind);
        if (size) v->TypeInfo->SetSize(*size);
        if (range) {
            v->TypeInfo->SetMaxRangeNo(1);
            v->TypeInfo->SetMinValues(1, range->first);
            v->TypeInfo->SetMaxValues(1, range->second);
        }
        return keep(v);
    }

    Ref<CVariableDefinitionSet> variables(std::initializer_list<const char16_t*> names) const {
        auto set = make<CVariableDefinitionSet>();
        for (const char16_t* n : names) set->Add(construct(n)->Definition());
        return set;
    }

    Ref<CDataItemList> dataItems(std::initializer_list<const char16_t*> names) const {
        auto items = make<CDataItemList>();
        for (const char16_t* n : names) {
            auto item = make<CDataItem>();
            item->Initialize(dddiTDefinition);
            // The item names the variable first; the variable object it
            // resolves to must then have that definition.
            item->SetDefinition(construct(n)->Definition());
            item->SetVariable(construct(n));
            items->Add(item);
        }
        return items;
    }

    struct Code {
        std::int16_t value;
        enumDDResponseCodeType kind;
        const char16_t* description;
    };
    void command(const char16_t* name, std::int16_t number, enumDDCommandOperationType operation,
                 std::initializer_list<const char16_t*> request, std::initializer_list<const char16_t*> reply,
                 std::initializer_list<Code> codes) {
        auto c = named<CCommand>(name, ddoKCommandDef);
        c->Number = number;
        c->SetOperation(operation);
        auto transaction = make<CTransaction>();
        transaction->Request = dataItems(request);
        transaction->Reply = dataItems(reply);
        c->Transactions->Add(transaction);
        for (const Code& code : codes) {
            auto rc = make<CResponseCode>();
            rc->Value = code.value;
            rc->SetKind(code.kind);
            rc->Description = code.description;
            c->ResponseCodes->Add(rc);
        }
        keep(c);
    }

    Ref<CMenu> menu(const char16_t* name, const char16_t* label, std::initializer_list<const char16_t*> items) {
        auto m = named<CMenu>(name, ddoKMenuDef);
        m->Label = label;
        for (const char16_t* n : items) {
            auto item = make<CMenuItem>();
            item->SetObj(handle(n));
            m->Items->Add(item);
        }
        return keep(m);
    }

    void build() {
        variable(u"pressure", ddvTFloat, std::nullopt, u"Pressure", std::pair{0.0, 400.0});
        variable(u"temperature", ddvTFloat, std::nullopt, u"Sensor temperature", std::pair{-40.0, 85.0});
        variable(u"upper_range_value", ddvTFloat, std::nullopt, u"URV");
        variable(u"lower_range_value", ddvTFloat, std::nullopt, u"LRV");
        variable(u"damping", ddvTDouble, std::nullopt, u"Damping");
        variable(u"poll_address", ddvTUnsigned, 1, u"Poll address", std::pair{0.0, 63.0});
        variable(u"sensor_offset", ddvTInt, 2, u"Sensor offset");
        variable(u"tag", ddvTPackedASCII, 8, u"Tag");
        variable(u"descriptor", ddvTASCII, 16, u"Descriptor");
        variable(u"install_date", ddvTDate, std::nullopt, u"Install date");
        auto unit = variable(u"pressure_unit", ddvTEnumerator, 1, u"Unit");
        for (auto [value, description] : {std::pair{7, u"bar"}, {12, u"kPa"}, {6, u"psi"}}) {
            auto e = make<CEnumerator>();
            e->Value = value;
            e->Description = description;
            unit->TypeInfo->EnumeratorSet->Add(e);
        }
        auto status = variable(u"device_status", ddvTBitEnumerator, 1, u"Status");
        for (auto [value, description] : {std::pair{1, u"Primary variable out of limits"}, {128, u"Device malfunction"}}) {
            auto b = make<CBitEnumerator>();
            b->Value = value;
            b->Description = description;
            status->TypeInfo->BitEnumeratorSet->Add(b);
        }

        auto units = named<CUnit>(u"pressure_units", ddoKUnitDef);
        units->SetUnit(unit->Definition());
        units->Reread = variables({u"pressure", u"upper_range_value", u"lower_range_value"});
        keep(units);
        auto refresh = named<CRefresh>(u"refresh_pressure", ddoKRefreshDef);
        refresh->Changed = variables({u"pressure_unit"});
        refresh->Reread = variables({u"pressure"});
        keep(refresh);
        auto range = named<CWriteAsOne>(u"range_values", ddoKWriteAsOneDef);
        for (const char16_t* n : {u"upper_range_value", u"lower_range_value"}) {
            auto item = make<CVariableItem>();
            item->SetVariable(construct(n));
            range->Modified->Add(item);
        }
        keep(range);

        command(u"read_pv", 1, ddcoTRead, {}, {u"pressure_unit", u"pressure"},
                {{0, ddrcTSUCCESS, u"Success"}, {8, ddrcTMISC_WARNING, u"Update failure"}});
        command(u"write_tag", 18, ddcoTWrite, {u"tag", u"descriptor", u"install_date"},
                {u"tag", u"descriptor", u"install_date"},
                {{0, ddrcTSUCCESS, u"Success"}, {7, ddrcTMODE_ERROR, u"In write protect mode"}});
        command(u"write_range", 35, ddcoTWrite, {u"pressure_unit", u"upper_range_value", u"lower_range_value"},
                {u"pressure_unit", u"upper_range_value", u"lower_range_value"},
                {{0, ddrcTSUCCESS, u"Success"}, {9, ddrcTDATA_ENTRY_ERROR, u"Lower range value too high"}});

        auto zero = named<CMethod>(u"zero_trim", ddoKMethodDef);
        zero->Label = u"Zero trim";
        zero->Help = u"Sets the present pressure as zero";
        zero->Class->SetClassInfo(ddmCCorrection, true);
        keep(zero);

        auto display = named<CEditDisplay>(u"range_display", ddoKEditDisplayDef);
        display->Label = u"Range";
        for (auto [n, list] : {std::pair{u"pressure_unit", display->DisplayItems},
                               {u"upper_range_value", display->EditItems},
                               {u"lower_range_value", display->EditItems}}) {
            auto item = make<CEditDisplayItem>();
            item->SetObj(handle(n));
            list->Add(item);
        }
        display->PostEditActions->Add(zero->Definition());
        keep(display);

        menu(u"process_variables", u"Process variables", {u"pressure", u"temperature", u"device_status"});
        menu(u"device_setup", u"Device setup", {u"tag", u"descriptor", u"damping", u"zero_trim", u"range_display"});
        menu(u"root_menu", u"Online", {u"process_variables", u"device_setup"})
            ->Items->Item(Variant(std::int32_t{1}))
            ->SetQualification(ddmiqTReview, true);
    }

private:
    std::map<Text, Ref<Object>> constructs_;
    std::map<Text, Ref<CObject>> handles_;
};

// A set of copies: every handle copied, and with it its construct.
Ref<CObjectSet> deepCopy(const CObjectSet& objects) {
    auto copy = make<CObjectSet>();
    objects.elements().forEach([&](const Ref<CObject>& handle) { copy->Add(handle->GetCopy()); });
    return copy;
}

// The stored handle of the construct with this name (FindItem hands out copies).
Ref<CObject> stored(const CObjectSet& objects, const Text& name) {
    Ref<CObject> found;
    objects.elements().forEach([&](const Ref<CObject>& h) {
        if (h->ObjectDefinition()->Name() == name) found = h;
    });
    return found;
}

bool everyHandleEqual(const CObjectSet& a, const CObjectSet& b) {
    bool equal = a.Count() == b.Count();
    a.elements().forEach([&](const Ref<CObject>& h) { equal = equal && h->Compare(stored(b, h->ObjectDefinition()->Name())); });
    return equal;
}

}  // namespace

int main() {
    try {
        Device device;
        device.build();
        const CObjectSet& original = *device.objects;
        original.elements().forEach(
            [](const Ref<CObject>& handle) { std::cout << toUtf8(handle->ToString(2).toText()) << '\n'; });

        auto copy = deepCopy(original);
        const bool equalAfterCopy = copy->Compare(device.objects) && everyHandleEqual(original, *copy);
        stored(*copy, u"pressure")->MakeVariable()->Label = u"Changed in the copy";
        auto copiedRoot = stored(*copy, u"root_menu")->MakeMenu();
        copiedRoot->Items->Item(Variant(std::int32_t{1}))->SetQualification(ddmiqTReview, false);
        const bool originalKept = device.construct(u"pressure")->Label == u"Pressure" &&
                                  device.construct<CMenu>(u"root_menu")
                                      ->Items->Item(Variant(std::int32_t{1}))
                                      ->Qualification(ddmiqTReadOnly);
        const bool differsAfterChange = !everyHandleEqual(original, *copy);

        std::cout << "\n" << original.Count() << " constructs; deep copy compares equal: " << std::boolalpha
                  << equalAfterCopy << "; changing the copy leaves the original: " << originalKept
                  << "; and makes them differ: " << differsAfterChange << '\n';
        return equalAfterCopy && originalKept && differsAfterChange ? 0 : 1;
    } catch (const Error& e) {
        std::cerr << "error " << std::hex << e.number() << " " << toUtf8(e.source()) << ": "
                  << toUtf8(e.description()) << '\n';
        return 2;
    }
}
