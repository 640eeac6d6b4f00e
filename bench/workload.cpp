// A device library's daily work, measured side by side with plain structs:
// 10,000 variables (integer, float and enumerated), 1,000 commands and 200
// menus kept in one CObjectSet, looked up by name, copied deep, compared,
// printed and dropped. The baseline keeps the same fields in std::u16string,
// std::vector and an unordered_map of case-folded names and does the same
// work (a look-up hands out a copy, as FindItem does). Each run times both,
// one after the other, each in a process of its own (see runInChild), and
// the table prints medians and their ratio; a second table counts the
// memory of one variable.
//
//   build/default/bench/workload [runs] [--one-process]      (default 5 runs)
//
// --one-process times both sides in this process, one after the other, on
// the heap they share.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <malloc.h>
#include <new>
#include <string>
#include <unordered_map>
#include <variant>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include "tylhart/commands/CCommand.hpp"
#include "tylhart/constructs/Menus.hpp"
#include "tylhart/containers/CObjectSet.hpp"
#include "tylhart/variables/CVariable.hpp"

// Every allocation of the process is counted while it lives, so the memory
// table sees what an object really holds, its children, hash nodes and the
// allocator's rounding included, and not what a growing vector let go.
// Counting is on only while the memory table is measured, so it costs the
// timed phases nothing.
namespace {
bool counting = false;
std::ptrdiff_t liveBytes = 0;
std::ptrdiff_t liveAllocations = 0;
}  // namespace

void* operator new(std::size_t size) {
    void* p = std::malloc(size ? size : 1);
    if (!p) throw std::bad_alloc();
    if (counting) {
        liveBytes += static_cast<std::ptrdiff_t>(malloc_usable_size(p));
        ++liveAllocations;
    }
    return p;
}
void operator delete(void* p) noexcept {
    if (!p) return;
    if (counting) {
        liveBytes -= static_cast<std::ptrdiff_t>(malloc_usable_size(p));
        --liveAllocations;
    }
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept { operator delete(p); }

using namespace tylhart;

namespace {

constexpr int Variables = 10000;
constexpr int Commands = 1000;
constexpr int Menus = 200;
constexpr int Lookups = 100000;

Text nameOf(const char* prefix, int i) { return fromUtf8(prefix + std::to_string(i)); }

// The same name in another case, as callers type it.
Text mixedCase(Text name, int salt) {
    for (std::size_t i = static_cast<std::size_t>(salt) % 3; i < name.size(); i += 3)
        if (name[i] >= u'a' && name[i] <= u'z') name[i] = static_cast<char16_t>(name[i] - u'a' + u'A');
    return name;
}

enumDDVariableType kindOf(int i) {
    static constexpr enumDDVariableType kinds[] = {ddvTInt, ddvTFloat, ddvTEnumerator};
    return kinds[i % 3];
}

// ---- The library ----

struct Library {
    Ref<CObjectSet> objects;
    std::vector<Ref<CDefinition>> probes;
    std::vector<Ref<CObject>> copies;
    Ref<CObjectSet> copiedSet;

    static Ref<CDataItemList> items(int first) {
        auto list = make<CDataItemList>();
        for (int k = 0; k < 2; ++k) {
            auto item = make<CDataItem>();
            item->Initialize(dddiTDefinition);
            item->SetDefinition(makeDefinition(nameOf("var_", (first + k) % Variables), ddoKVariableDef));
            list->Add(item);
        }
        return list;
    }

    void build() {
        objects = make<CObjectSet>();
        addVariables();
        addCommands();
        addMenus();
    }
    void addVariables() {
        for (int i = 0; i < Variables; ++i) {
            auto v = make<CVariable>();
            v->SetDefinition(makeDefinition(nameOf("var_", i), ddoKVariableDef));
            v->Label = nameOf("Variable ", i);
            v->TypeInfo->SetKind(kindOf(i));
            if (kindOf(i) == ddvTEnumerator) {
                v->TypeInfo->SetSize(1);
                for (int e = 0; e < 3; ++e) {
                    auto en = make<CEnumerator>();
                    en->Value = e;
                    en->Description = nameOf("State ", e);
                    v->TypeInfo->EnumeratorSet->Add(en);
                }
            } else {
                if (kindOf(i) == ddvTInt) v->TypeInfo->SetSize(4);
                v->TypeInfo->SetMaxRangeNo(1);
                v->TypeInfo->SetMinValues(1, Variant(0.0));
                v->TypeInfo->SetMaxValues(1, Variant(100.0));
            }
            v->SetValue(Variant(static_cast<std::int32_t>(i % 3)));
            objects->Add(v->MakeObject());
        }
    }
    void addCommands() {
        for (int i = 0; i < Commands; ++i) {
            auto c = make<CCommand>();
            c->SetDefinition(makeDefinition(nameOf("cmd_", i), ddoKCommandDef));
            c->Number = static_cast<std::int16_t>(i);
            c->SetOperation(i % 2 ? ddcoTWrite : ddcoTRead);
            auto t = make<CTransaction>();
            t->Request = items(i);
            t->Reply = items(i + 2);
            c->Transactions->Add(t);
            for (std::int16_t code = 0; code < 2; ++code) {
                auto rc = make<CResponseCode>();
                rc->Value = code;
                rc->SetKind(code ? ddrcTMISC_WARNING : ddrcTSUCCESS);
                rc->Description = code ? u"Warning" : u"Success";
                c->ResponseCodes->Add(rc);
            }
            objects->Add(c->MakeObject());
        }
    }
    void addMenus() {
        for (int i = 0; i < Menus; ++i) {
            auto m = make<CMenu>();
            m->SetDefinition(makeDefinition(nameOf("menu_", i), ddoKMenuDef));
            m->Label = nameOf("Menu ", i);
            for (int k = 0; k < 5; ++k) {
                auto item = make<CMenuItem>();
                item->SetObj(objects->FindItem(makeDefinition(nameOf("var_", (i * 5 + k) % Variables),
                                                              ddoKVariableDef)));
                m->Items->Add(item);
            }
            objects->Add(m->MakeObject());
        }
    }
    void makeProbes() {
        probes.clear();
        for (int i = 0; i < 1000; ++i)
            probes.push_back(makeDefinition(mixedCase(nameOf("var_", i * 7 % Variables), i), ddoKVariableDef));
    }
    std::size_t find() const {
        std::size_t found = 0;
        for (int i = 0; i < Lookups; ++i)
            found += objects->FindItem(probes[static_cast<std::size_t>(i) % 1000]) ? 1 : 0;
        return found;
    }
    std::size_t copy() {
        copies.clear();
        copies.reserve(objects->elements().size());
        objects->elements().forEach([&](const Ref<CObject>& h) { copies.push_back(h->GetCopy()); });
        copiedSet = make<CObjectSet>();
        for (const auto& c : copies) copiedSet->Add(c);
        return copies.size();
    }
    std::size_t compareSet() const { return objects->Compare(copiedSet) ? 1 : 0; }
    std::size_t compareEach() const {
        std::size_t equal = 0;
        std::size_t i = 0;
        objects->elements().forEach([&](const Ref<CObject>& h) { equal += h->Compare(copies[i++]) ? 1 : 0; });
        return equal;
    }
    std::size_t render() const {
        std::size_t chars = 0;
        objects->elements().forEach([&](const Ref<CObject>& h) { chars += h->ToString(3).toText().size(); });
        return chars;
    }
    std::size_t destroy() {
        copiedSet = nullptr;
        copies.clear();
        objects = nullptr;
        return 0;
    }
};

// ---- The baseline: the same fields in plain structs ----

struct PlainEnumerator {
    std::int32_t value = 0;
    Text description, help;
    bool operator==(const PlainEnumerator&) const = default;
};
struct PlainType {
    enumDDVariableType kind = ddvTUndefined;
    std::int16_t size = 0, rangeCount = -1;
    std::vector<double> minValues, maxValues;
    double scaling = 1.0;
    Text displayFormat, editFormat, timeFormat;
    std::vector<PlainEnumerator> enumerators;
    bool operator==(const PlainType&) const = default;
};
struct PlainVariable {
    Text name;
    Text label, help, constantUnit, variableUnit, errorText;
    std::int32_t value = 0, defaultValue = 0, errorCode = 0;
    std::int16_t readTimeout = -1, writeTimeout = -1;
    bool validity = true, toBeWritten = false, isChecked = true, available = false, handling[2] = {true, true};
    PlainType type;
    std::vector<Text> actions[6];
    bool operator==(const PlainVariable&) const = default;
};
struct PlainDataItem {
    Text definition;
    bool operator==(const PlainDataItem&) const = default;
};
struct PlainResponseCode {
    std::int16_t value = 0;
    int kind = 0;
    Text description, help;
    bool operator==(const PlainResponseCode&) const = default;
};
struct PlainTransaction {
    std::int16_t number = 0;
    std::vector<PlainDataItem> request, reply;
    std::vector<PlainResponseCode> codes;
    bool operator==(const PlainTransaction&) const = default;
};
struct PlainCommand {
    Text name;
    std::int16_t number = 0;
    int operation = 0;
    std::vector<PlainTransaction> transactions;
    std::vector<PlainResponseCode> codes;
    bool operator==(const PlainCommand&) const = default;
};
struct PlainMenu {
    Text name, label;
    std::vector<Text> items;
    bool operator==(const PlainMenu&) const = default;
};
using PlainObject = std::variant<PlainVariable, PlainCommand, PlainMenu>;
const Text& nameOf(const PlainObject& o) {
    return std::visit([](const auto& x) -> const Text& { return x.name; }, o);
}

Text folded(TextView name) {
    Text key(name);
    for (char16_t& c : key) c = foldCase(c);
    return key;
}

struct Plain {
    std::vector<PlainObject> objects;
    std::unordered_map<Text, std::size_t> index;
    std::vector<Text> probes;
    std::vector<PlainObject> copies;
    std::unordered_map<Text, std::size_t> copiedIndex;

    void add(PlainObject o) {
        index.emplace(folded(nameOf(o)), objects.size());
        objects.push_back(std::move(o));
    }
    void build() {
        addVariables();
        addCommands();
        addMenus();
    }
    void addVariables() {
        for (int i = 0; i < Variables; ++i) {
            PlainVariable v;
            v.name = nameOf("var_", i);
            v.label = nameOf("Variable ", i);
            v.type.kind = kindOf(i);
            if (kindOf(i) == ddvTEnumerator) {
                v.type.size = 1;
                for (int e = 0; e < 3; ++e) v.type.enumerators.push_back({e, nameOf("State ", e), {}});
            } else {
                if (kindOf(i) == ddvTInt) v.type.size = 4;
                v.type.rangeCount = 1;
                v.type.minValues = {0.0, 0.0};
                v.type.maxValues = {0.0, 100.0};
            }
            v.value = i % 3;
            add(std::move(v));
        }
    }
    void addCommands() {
        for (int i = 0; i < Commands; ++i) {
            PlainCommand c;
            c.name = nameOf("cmd_", i);
            c.number = static_cast<std::int16_t>(i);
            c.operation = i % 2;
            PlainTransaction t;
            for (int k = 0; k < 2; ++k) {
                t.request.push_back({nameOf("var_", (i + k) % Variables)});
                t.reply.push_back({nameOf("var_", (i + 2 + k) % Variables)});
            }
            c.transactions.push_back(std::move(t));
            c.codes = {{0, 0, u"Success", {}}, {1, 1, u"Warning", {}}};
            add(std::move(c));
        }
    }
    void addMenus() {
        for (int i = 0; i < Menus; ++i) {
            PlainMenu m;
            m.name = nameOf("menu_", i);
            m.label = nameOf("Menu ", i);
            for (int k = 0; k < 5; ++k) m.items.push_back(nameOf("var_", (i * 5 + k) % Variables));
            add(std::move(m));
        }
    }
    void makeProbes() {
        probes.clear();
        for (int i = 0; i < 1000; ++i) probes.push_back(mixedCase(nameOf("var_", i * 7 % Variables), i));
    }
    std::size_t find() const {
        std::size_t found = 0;
        for (int i = 0; i < Lookups; ++i) {
            auto it = index.find(folded(probes[static_cast<std::size_t>(i) % 1000]));
            if (it == index.end()) continue;
            PlainObject copy = objects[it->second];
            found += copy.index() == 0 ? 1 : 0;
        }
        return found;
    }
    std::size_t copy() {
        copies = objects;
        copiedIndex.clear();
        for (std::size_t i = 0; i < copies.size(); ++i) copiedIndex.emplace(folded(nameOf(copies[i])), i);
        return copies.size();
    }
    std::size_t compareSet() const {
        if (index.size() != copiedIndex.size()) return 0;
        for (const auto& [key, at] : copiedIndex)
            if (!index.contains(key)) return 0;
        return 1;
    }
    std::size_t compareEach() const {
        std::size_t equal = 0;
        for (std::size_t i = 0; i < objects.size(); ++i) equal += objects[i] == copies[i] ? 1 : 0;
        return equal;
    }
    static void field(Text& out, const char16_t* label, TextView value) {
        out += label;
        out += value;
    }
    std::size_t render() const {
        std::size_t chars = 0;
        for (const PlainObject& o : objects) {
            Text out = u"Object{";
            if (const auto* variable = std::get_if<PlainVariable>(&o)) {
                const PlainVariable& v = *variable;
                field(out, u"Variable{Definition{Name:", v.name);
                field(out, u"}, Label:", v.label);
                field(out, u", Help:", v.help);
                field(out, u", Value:", decimal(v.value));
                field(out, u", Type{Kind:", decimal(v.type.kind));
                field(out, u", Size:", decimal(v.type.size));
                for (double m : v.type.maxValues) field(out, u", Max:", Variant(m).toText());
                for (const auto& e : v.type.enumerators) {
                    field(out, u", Enumerator{Description:", e.description);
                    field(out, u", Value:", decimal(e.value));
                    out += u"}";
                }
                for (const auto& list : v.actions)
                    field(out, u", Actions{Count:", decimal(static_cast<std::int32_t>(list.size())));
            } else if (const auto* command = std::get_if<PlainCommand>(&o)) {
                const PlainCommand& c = *command;
                field(out, u"Command{Definition{Name:", c.name);
                field(out, u"}, Number:", decimal(c.number));
                for (const auto& t : c.transactions) {
                    field(out, u", Transaction{TNo:", decimal(t.number));
                    for (const auto& d : t.request) field(out, u", Request:", d.definition);
                    for (const auto& d : t.reply) field(out, u", Reply:", d.definition);
                }
                for (const auto& rc : c.codes) field(out, u", ResponseCode:", rc.description);
            } else {
                const PlainMenu& m = std::get<PlainMenu>(o);
                field(out, u"Menu{Definition{Name:", m.name);
                field(out, u"}, Label:", m.label);
                for (const auto& item : m.items) field(out, u", Item:", item);
            }
            chars += (out += u"}").size();
        }
        return chars;
    }
    std::size_t destroy() {
        copies.clear();
        copies.shrink_to_fit();
        copiedIndex.clear();
        objects.clear();
        objects.shrink_to_fit();
        index.clear();
        return 0;
    }
};

// ---- Timing ----

using Clock = std::chrono::steady_clock;

struct Phase {
    const char* name;
    std::vector<double> library, baseline;
};

template <class F>
double millis(F&& work, std::size_t& sink) {
    auto start = Clock::now();
    sink += work();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v.empty() ? 0 : v[v.size() / 2];
}

constexpr std::size_t PhaseCount = 8;  // seven phases and the whole
using Times = std::array<double, PhaseCount>;

template <class Model>
Times runOnce(Model& m, std::size_t& sink) {
    Times times{};
    auto step = [&](std::size_t k, auto&& work) {
        times[k] = millis(work, sink);
        times[PhaseCount - 1] += times[k];
    };
    step(0, [&] { m.build(); return std::size_t{0}; });
    m.makeProbes();
    step(1, [&] { return m.find(); });
    step(2, [&] { return m.copy(); });
    step(3, [&] { return m.compareSet(); });
    step(4, [&] { return m.compareEach(); });
    step(5, [&] { return m.render(); });
    step(6, [&] { return m.destroy(); });
    return times;
}

// One timed run of a model in a child process of its own, after an untimed
// one, so that each side is timed on a heap in its own steady state, as in
// a tool that has run for a while. In one shared heap the baseline's times
// moved by up to a factor of two with what the library's run had left
// behind (where its blocks land decides how close together its objects
// are), and the other way round.
template <class Model>
Times runInChild() {
    int channel[2];
    if (pipe(channel) != 0) std::abort();
    const pid_t child = fork();
    if (child < 0) std::abort();
    if (child == 0) {
        close(channel[0]);
        std::size_t sink = 0;
        {
            Model warmUp;
            runOnce(warmUp, sink);
        }
        Model model;
        const Times times = runOnce(model, sink);
        const bool sent = write(channel[1], times.data(), sizeof times) == static_cast<ssize_t>(sizeof times);
        _exit(sent && sink != 0 ? 0 : 1);
    }
    close(channel[1]);
    Times times{};
    const bool received = read(channel[0], times.data(), sizeof times) == static_cast<ssize_t>(sizeof times);
    close(channel[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!received || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "a timed run failed\n");
        std::exit(1);
    }
    return times;
}

struct Footprint {
    std::ptrdiff_t bytes = 0, allocations = 0;
};
// What Make leaves alive, per object; everything it builds stays alive
// until the footprint is taken.
template <class F>
Footprint footprint(F&& make, std::ptrdiff_t count) {
    liveBytes = liveAllocations = 0;
    counting = true;
    make();
    counting = false;
    return {liveBytes / count, liveAllocations / count};
}

}  // namespace

int main(int argc, char** argv) {
    int runs = 5;
    bool oneProcess = false;
    for (int i = 1; i < argc; ++i) {
        if (std::string(argv[i]) == "--one-process") oneProcess = true;
        else runs = std::max(1, std::atoi(argv[i]));
    }
    std::vector<Phase> phases = {{"build the objects and the set", {}, {}},
                                 {"100,000 FindItem by name, mixed case", {}, {}},
                                 {"deep copy of every object", {}, {}},
                                 {"set Compare (keys only)", {}, {}},
                                 {"Compare of each object with its copy", {}, {}},
                                 {"ToString(3) of every object", {}, {}},
                                 {"destroy everything", {}, {}},
                                 {"whole workload", {}, {}}};
    std::size_t sink = 0;
    for (int r = 0; r < runs; ++r) {
        Times library, plain;
        if (oneProcess) {
            Library l;
            Plain p;
            library = runOnce(l, sink);
            plain = runOnce(p, sink);
        } else {
            library = runInChild<Library>();
            plain = runInChild<Plain>();
        }
        for (std::size_t k = 0; k < PhaseCount; ++k) {
            phases[k].library.push_back(library[k]);
            phases[k].baseline.push_back(plain[k]);
        }
    }
    std::printf("%d variables, %d commands, %d menus in one set; medians of %d runs, %s\n\n", Variables,
                Commands, Menus, runs, oneProcess ? "both in this process" : "each in a process of its own");
    std::printf("| %-38s | %10s | %10s | %6s |\n|---|---|---|---|\n", "work", "library ms", "baseline ms", "ratio");
    for (const Phase& p : phases) {
        const double lib = median(p.library), base = median(p.baseline);
        std::printf("| %-38s | %10.2f | %10.2f | %6.1f |\n", p.name, lib, base, base > 0 ? lib / base : 0.0);
    }

    // Memory of one variable: a default one, and one set up as in the
    // workload and kept in a keyed set through its handle.
    std::vector<Ref<CVariable>> keepVariables;
    std::vector<PlainVariable*> keepPlain;
    keepVariables.reserve(1);
    keepPlain.reserve(1);
    Footprint libDefault = footprint([&] { keepVariables.push_back(make<CVariable>()); }, 1);
    Footprint plainDefault = footprint([&] { keepPlain.push_back(new PlainVariable()); }, 1);
    for (PlainVariable* p : keepPlain) delete p;
    keepVariables.clear();
    Library library;
    Plain plain;
    Footprint libSet = footprint([&] { library.objects = make<CObjectSet>(); library.addVariables(); }, Variables);
    Footprint plainSet = footprint([&] { plain.addVariables(); }, Variables);
    std::printf("\n| %-38s | %16s | %16s | %11s |\n|---|---|---|---|\n", "memory", "library", "baseline",
                "bytes ratio");
    auto row = [](const char* what, Footprint lib, Footprint base) {
        std::printf("| %-38s | %6td B in %3td | %6td B in %3td | %11.2f |\n", what, lib.bytes, lib.allocations,
                    base.bytes, base.allocations, static_cast<double>(lib.bytes) / static_cast<double>(base.bytes));
    };
    row("a default variable", libDefault, plainDefault);
    row("a variable in the workload's set", libSet, plainSet);
    return oneProcess && sink == 0 ? 1 : 0;
}
