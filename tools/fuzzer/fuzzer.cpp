// A deterministic robustness driver over the whole late-bound surface: every
// class of the registry, every member, every access kind, wrong argument
// counts and arguments of every Variant kind, extremes included.
//
//   tylhart-fuzzer [--seed N] [--calls N] [--budget-ms N]
//
// For each call it checks that the outcome is a result or a tylhart::Error,
// that a refused call leaves its target as it was (its deep rendering and its
// plain properties), and that the call stays within the time budget (of
// processor time). The first phase never lets an object reach itself, so at
// its end every object must be gone again. The second phase passes each target to itself, breaks
// the cycles that makes, and checks again that nothing is left alive.
// Exit status 0 when every check held, 1 otherwise.
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <limits>
#include <string>
#include <vector>

#include "tylhart/automation/Registry.hpp"
#include "tylhart/core/Limits.hpp"

using namespace tylhart;
namespace {

// The calling thread's processor time: the budget holds on a loaded machine
// as on an idle one, and a call that loops still exceeds it.
std::chrono::microseconds cpuNow() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return std::chrono::microseconds(static_cast<std::int64_t>(t.tv_sec) * 1000000 + t.tv_nsec / 1000);
}

// SplitMix64: the same sequence on every platform and standard library.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}
    std::uint64_t next() {
        std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    std::size_t below(std::size_t n) { return n == 0 ? 0 : static_cast<std::size_t>(next() % n); }
    bool chance(unsigned percent) { return below(100) < percent; }
    template <class T, std::size_t N>
    const T& pick(const T (&items)[N]) {
        return items[below(N)];
    }

private:
    std::uint64_t state_;
};

// Members whose refusal may keep part of the copy, as their classes promise:
// a variable, a data item, a response code, a transaction and a command copy
// step by step and keep the steps done; lists and merging sets keep the
// elements added before the refusal (the three replacing sets do not); a
// byte array sets Size before its bytes.
bool partialChangeAllowed(const Text& cls, const Text& member) {
    if (member == u"SetFromObject")
        return cls == u"CVariable" || cls == u"CDataItem" || cls == u"CResponseCode" || cls == u"CTransaction" ||
               cls == u"CCommand" || cls == u"CTransactionDef" || cls.ends_with(u"List") ||
               (cls.ends_with(u"Set") && cls != u"CMemberSet" && cls != u"CObjectSet" && cls != u"CTransactionSet");
    return member == u"SetFromByteArray" || member == u"Union";
}

const std::int32_t longs[] = {0,  1,  -1, 2,     3,     7,          100,   255,   256,   32767, -32768, 65535,
                              INT32_MAX, INT32_MIN, static_cast<std::int32_t>(MaxElements) + 1, 1703127690};
const double doubles[] = {0.0, -0.0, 0.5, -1.5, 1e308, -1e308, 4.9e-324, 3.4e38, 1e15, 2958465.99999,
                          -657434.0, std::numeric_limits<double>::infinity(),
                          std::numeric_limits<double>::quiet_NaN()};
const char16_t* const texts[] = {u"", u"A", u"AB", u"0", u"1", u"-1", u"1e400", u" 12 ", u"True", u"&HFFFF",
                                 u"12/31/1999", u"1,5", u"01", u"10", u"\xFFFF", u"\xD800", u"\xD83D\xDE00",
                                 u"x\u00E9", u"\u20AC", u"Ia", u"VARIABLE"};

class Fuzzer {
public:
    Fuzzer(std::uint64_t seed, std::chrono::milliseconds budget) : rnd_(seed), budget_(budget) {
        for (const auto& entry : automation::classes())
            if (entry.built()) classes_.push_back(&entry);
    }

    bool run(std::size_t calls) {
        const std::size_t baseline = Object::liveObjects();
        runPhase(calls - calls / 10, false);
        checkLive(baseline, "acyclic phase");
        runPhase(calls / 10, true);
        checkLive(baseline, "cycle phase");
        std::printf("calls %zu, refused %zu, failures %zu, slowest %.1f ms of processor time (%s)\n", calls_, refused_, failures_,
                    slowest_.count() / 1000.0, slowestCall_.c_str());
        return failures_ == 0;
    }

private:
    Ref<Object> fresh() { return classes_[rnd_.below(classes_.size())]->create(); }

    // A fresh object, sometimes with some content of its own, that reaches
    // nothing the caller holds.
    Ref<Object> freshArgument(int depth) {
        Ref<Object> o = fresh();
        if (depth < 2)
            for (std::size_t i = rnd_.below(3); i > 0; --i) call(o, depth + 1, false, false);
        return o;
    }

    Variant argument(const Ref<Object>& target, int depth, bool cycles) {
        switch (rnd_.below(cycles ? 15 : 14)) {
            case 0: return Variant();
            case 1: return Variant(Null{});
            case 2: return Variant(static_cast<std::int16_t>(rnd_.pick(longs)));
            case 3: return Variant(rnd_.pick(longs));
            case 4: return Variant(static_cast<std::int32_t>(rnd_.below(20)));
            case 5: return Variant(rnd_.pick(doubles));
            case 6: return Variant(static_cast<float>(rnd_.pick(doubles)));
            case 7: return Variant(Currency{static_cast<std::int64_t>(rnd_.next())});
            case 8: return Variant(Date{rnd_.pick(doubles)});
            case 9: return Variant(Text(rnd_.pick(texts)));
            case 10: return Variant(rnd_.chance(50));
            case 11: return Variant(static_cast<std::uint8_t>(rnd_.below(256)));
            case 12: return rnd_.chance(50) ? Variant(ByteArray{65, 0, 255}) : Variant(ByteArray{});
            case 13: return rnd_.chance(20) ? Variant(nullptr) : Variant(freshArgument(depth));
            default: return Variant(target);
        }
    }

    // Deep rendering and plain fields: what a refused call must keep. A
    // class without a rendering shows its parameterless properties instead
    // (other getters may stamp times or availability as they read).
    std::string snapshot(const Ref<Object>& o) {
        std::string out;
        const bool renders = o->classInfo().find(u"ToString") != nullptr;
        for (const MemberInfo& m : o->classInfo().members()) {
            const bool rendering = m.name == u"ToString";
            const bool plain = m.has(Access::Get) && m.params.empty() && (m.field || !renders);
            if (!plain && !rendering) continue;
            try {
                Variant args[] = {Variant(std::int16_t{50})};
                Variant v = invoke(*o, m.id, rendering ? Access::Method : Access::Get,
                                   rendering ? std::span<Variant>(args) : std::span<Variant>());
                out += toUtf8(m.name) + "=";
                if (v.isObject()) {
                    char id[32];
                    std::snprintf(id, sizeof id, "@%p", static_cast<void*>(v.toObject().get()));
                    out += id;
                } else if (v.isEmpty() || v.isNull()) {
                    out += v.isNull() ? "Null" : "Empty";
                } else if (v.type() != VarType::ByteArray) {
                    out += toUtf8(v.toText());
                }
            } catch (const Error& e) {
                out += toUtf8(m.name) + "!" + std::to_string(e.number());
            }
            out += '\n';
        }
        return out;
    }

    // One call of a random member of the target; an object it returns may
    // become a target itself. Returns the result, or Empty when refused.
    Variant call(const Ref<Object>& target, int depth, bool check, bool cycles) {
        const auto members = target->classInfo().members();
        if (members.empty()) return Variant();
        const MemberInfo& m = members[rnd_.below(members.size())];
        static const Access accesses[] = {Access::Method, Access::Get, Access::Let, Access::Set};
        Access access = rnd_.pick(accesses);
        if (rnd_.chance(85)) {
            for (Access a : accesses)
                if (m.has(access)) break;
                else access = a;
        }
        std::size_t count = m.params.size() + ((access == Access::Let || access == Access::Set) ? 1 : 0);
        if (rnd_.chance(10)) count = rnd_.below(count + 3);
        std::vector<Variant> args;
        for (std::size_t i = 0; i < count; ++i)
            args.push_back(rnd_.chance(3) ? Variant(Missing{}) : argument(target, depth, cycles));
        const bool byName = rnd_.chance(20);
        const DispId id = rnd_.chance(2) ? static_cast<DispId>(rnd_.next()) : m.id;

        std::string before;
        if (check) before = snapshot(target);
        const auto start = cpuNow();
        bool refused = false;
        Variant result;
        std::string what;
        try {
            result = byName ? invoke(*target, m.name, access, args) : invoke(*target, id, access, args);
        } catch (const Error&) {
            refused = true;
        } catch (const std::exception& e) {
            what = std::string("std::exception: ") + e.what();
        } catch (...) {
            what = "an exception that is not tylhart::Error";
        }
        const auto took = cpuNow() - start;
        const std::string name = toUtf8(target->className() + u"." + m.name) + " (access " +
                                 std::to_string(static_cast<int>(access)) + ", " + std::to_string(args.size()) +
                                 " arguments)";
        if (!what.empty()) fail(name, what);
        lastCall_ = name;
        if (check) {
            ++calls_;
            if (took > slowest_) {
                slowest_ = took;
                slowestCall_ = name;
            }
            if (took > budget_) fail(name, "took " + std::to_string(took.count() / 1000) + " ms");
            if (refused) {
                ++refused_;
                if (!partialChangeAllowed(target->className(), m.name) && masked(snapshot(target)) != masked(before))
                    fail(name, "refused, but changed its target: " + difference(before, snapshot(target)));
            }
        }
        return refused ? Variant() : result;
    }

    void runPhase(std::size_t calls, bool cycles) {
        std::vector<Ref<Object>> pool;
        for (std::size_t i = 0; i < calls; ++i) {
            if (cycles) {
                // A new target per call: passed to itself, then broken up.
                const std::size_t live = Object::liveObjects();
                {
                    Ref<Object> target = freshArgument(0);
                    call(target, 0, true, true);
                    breakUp(target);
                }
                if (Object::liveObjects() != live) {
                    fail(lastCall_, "left a cycle that breaking up did not open");
                    return;
                }
                continue;
            }
            if (pool.size() < 48) pool.push_back(fresh());
            else if (rnd_.chance(2)) pool[rnd_.below(pool.size())] = fresh();  // bounds their growth
            Ref<Object>& target = pool[rnd_.below(pool.size())];
            Variant result = call(target, 0, true, false);
            if (result.isObject() && result.toObject() && rnd_.chance(30)) pool.push_back(result.toObject());
            if (pool.size() > 64) pool.erase(pool.begin() + static_cast<std::ptrdiff_t>(rnd_.below(pool.size())));
        }
    }

    // Lets go of everything an object holds: its object-valued properties
    // become Nothing, containers are emptied, and a copy of a new object of
    // its class replaces what is left.
    void breakUp(const Ref<Object>& o) {
        auto attempt = [&](TextView name, Access access, std::span<Variant> args) {
            try {
                return invoke(*o, name, access, args);
            } catch (const Error&) {
                return Variant();
            }
        };
        for (const MemberInfo& m : o->classInfo().members()) {
            if (m.params.empty()) {
                Variant nothing[] = {Variant(nullptr)};
                if (m.has(Access::Set)) attempt(m.name, Access::Set, nothing);
                if (m.has(Access::Let)) attempt(m.name, Access::Let, nothing);
            } else if (m.params.size() == 1 && m.has(Access::Let)) {
                // An indexed value (a type's range bound) may hold the object
                // itself: every index from 0 is written until one is refused
                // (range counts are 16-bit).
                auto clear = [&](std::int32_t i) {
                    try {
                        Variant at[] = {Variant(i), Variant(nullptr)};
                        invoke(*o, m.name, Access::Let, at);
                        return true;
                    } catch (const Error&) {
                        return false;
                    }
                };
                for (std::int32_t i = 0; i <= INT16_MAX && clear(i); ++i) {
                }
            }
        }
        if (o->classInfo().find(u"Remove") && o->classInfo().find(u"Count")) {
            for (int guard = 0; guard < 1000 && attempt(u"Count", Access::Get, {}).toLong() > 0; ++guard) {
                Variant first[] = {Variant(std::int32_t{1})};
                Variant item = attempt(u"Item", Access::Method, first);
                Variant which[] = {item.isObject() ? item : Variant(std::int32_t{1})};
                attempt(u"Remove", Access::Method, which);
                if (!item.isObject()) continue;
                // Sets key their elements: remove by the stored element's key.
                Variant key[] = {Variant(std::int32_t{1})};
                attempt(u"Remove", Access::Method, key);
            }
        }
        Variant blank[] = {Variant(o->classInfo().create())};
        attempt(u"SetFromObject", Access::Method, blank);
    }

    // Reading a variable's value stamps LastSetTime (a read, not a change
    // the refusal left behind), so the stamp is not compared.
    static std::string masked(std::string s) {
        for (const char* label : {"LastSetTime=", "LastSetTime:"})
            for (std::size_t at = s.find(label); at != std::string::npos; at = s.find(label, at + 1)) {
                const std::size_t from = at + std::strlen(label);
                s.erase(from, s.find_first_of(",\n}", from) - from);
            }
        return s;
    }

    // The first line that differs, before and after.
    static std::string difference(const std::string& before, const std::string& after) {
        std::size_t at = 0;
        while (at < before.size() && at < after.size() && before[at] == after[at]) ++at;
        const std::size_t line = before.rfind('\n', at) == std::string::npos ? 0 : before.rfind('\n', at) + 1;
        auto lineOf = [&](const std::string& s) { return s.substr(line, s.find('\n', line) - line); };
        return "\n  before: " + lineOf(before) + "\n  after:  " + lineOf(after);
    }

    void checkLive(std::size_t baseline, const char* phase) {
        const std::size_t live = Object::liveObjects();
        if (live != baseline)
            fail(phase, std::to_string(live - baseline) + " objects still alive at its end");
    }

    void fail(const std::string& call, const std::string& what) {
        if (++failures_ <= 20) std::printf("FAILED %s: %s\n", call.c_str(), what.c_str());
    }

    Random rnd_;
    std::chrono::microseconds budget_;
    std::vector<const automation::ClassEntry*> classes_;
    std::size_t calls_ = 0, refused_ = 0, failures_ = 0;
    std::chrono::microseconds slowest_{0};
    std::string slowestCall_, lastCall_;
};

}  // namespace

int main(int argc, char** argv) {
    std::uint64_t seed = 1;
    std::size_t calls = 100000;
    long budgetMs = 2000;
    for (int i = 1; i + 1 < argc; i += 2) {
        if (!std::strcmp(argv[i], "--seed")) seed = std::strtoull(argv[i + 1], nullptr, 10);
        else if (!std::strcmp(argv[i], "--calls")) calls = std::strtoull(argv[i + 1], nullptr, 10);
        else if (!std::strcmp(argv[i], "--budget-ms")) budgetMs = std::strtol(argv[i + 1], nullptr, 10);
        else {
            std::fprintf(stderr, "usage: %s [--seed N] [--calls N] [--budget-ms N]\n", argv[0]);
            return 2;
        }
    }
    // Line by line: a sanitizer that aborts at exit must not swallow the
    // failures already reported.
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
    Fuzzer fuzzer(seed, std::chrono::milliseconds(budgetMs));
    return fuzzer.run(calls) ? 0 : 1;
}
