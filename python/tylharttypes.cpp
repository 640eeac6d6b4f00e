// The Python module `tylharttypes`: the library's dispatch surface for
// Python. Nothing about a class is written here; every attribute is looked
// up in the class's member table and every call goes through tylhart::invoke,
// so the module follows the classes as they are built.
#include <pybind11/pybind11.h>

#include <bit>
#include <cstring>
#include <string>
#include <unordered_map>

#include "tylhart/automation/Entry.hpp"
#include "tylhart/automation/Registry.hpp"
#include "tylhart/automation/TypeLibrary.hpp"
#include "Signatures.hpp"

namespace py = pybind11;

namespace {

using namespace tylhart;
using python::requiredCount;

// ---- Values without a Python twin ------------------------------------------

struct EmptyValue {};
struct NullValue {};
struct MissingValue {};

// Module-wide objects. Never destroyed: they are referenced until the
// interpreter itself goes away, after which destroying them would be unsafe.
struct Globals {
    py::object empty, null, missing;
    py::object errorType;
    py::object baseType;   // tylharttypes.Object
    py::object token;      // lets only this module run Object.__init__
    std::unordered_map<const ClassInfo*, py::object> types;  // one Python class per class
};
Globals& globals() {
    static Globals* g = new Globals;
    return *g;
}

// An object of the library as Python sees it. Its Python type is the
// class's own subclass of tylharttypes.Object.
struct Wrapper {
    Ref<Object> object;
};

py::object pythonClass(const ClassInfo& info);

// A member read as an attribute that needs arguments: a method, a
// parameterised property, or the "SetX" writer of property X.
struct BoundMember {
    Ref<Object> object;
    const MemberInfo* member;  // lives in the class's static member table
    Access kind;               // Method, Get, or Let for a writer
};

struct Iterator {
    Ref<Enumerator> enumerator;
};

// ---- Text --------------------------------------------------------------

// Automation strings may hold lone surrogates; surrogatepass carries them
// through both directions unchanged.
constexpr const char* Utf16Native = std::endian::native == std::endian::little ? "utf-16-le" : "utf-16-be";

Text toText(py::handle s) {
    PyObject* raw = PyUnicode_AsEncodedString(s.ptr(), Utf16Native, "surrogatepass");
    if (!raw) throw py::error_already_set();
    py::bytes bytes = py::reinterpret_steal<py::bytes>(raw);
    char* data = nullptr;
    Py_ssize_t size = 0;
    PyBytes_AsStringAndSize(bytes.ptr(), &data, &size);
    Text out(static_cast<std::size_t>(size) / 2, u'\0');
    std::memcpy(out.data(), data, out.size() * sizeof(char16_t));
    return out;
}

py::str toStr(TextView t) {
    int byteOrder = std::endian::native == std::endian::little ? -1 : 1;
    PyObject* s = PyUnicode_DecodeUTF16(reinterpret_cast<const char*>(t.data()),
                                        static_cast<Py_ssize_t>(t.size() * sizeof(char16_t)), "surrogatepass",
                                        &byteOrder);
    if (!s) throw py::error_already_set();
    return py::reinterpret_steal<py::str>(s);
}

// ---- Variant <-> Python ------------------------------------------------------

py::object wrap(Ref<Object> o) {
    if (!o) return py::none();
    const Globals& g = globals();
    py::object type = pythonClass(o->classInfo());
    py::object instance = type.attr("__new__")(type);
    g.baseType.attr("__init__")(instance, g.token);
    instance.cast<Wrapper&>().object = std::move(o);
    return instance;
}

py::object toPython(const Variant& v) {
    const Globals& g = globals();
    switch (v.type()) {
        case VarType::Empty: return g.empty;
        case VarType::Null: return g.null;
        case VarType::Error: return g.missing;
        case VarType::Integer: return py::int_(*v.get<std::int16_t>());
        case VarType::Long: return py::int_(*v.get<std::int32_t>());
        case VarType::Byte: return py::int_(*v.get<std::uint8_t>());
        case VarType::Single: return py::float_(static_cast<double>(*v.get<float>()));
        case VarType::Double: return py::float_(*v.get<double>());
        case VarType::Boolean: return py::bool_(*v.get<bool>());
        case VarType::Currency: return py::cast(*v.get<Currency>());
        case VarType::Date: return py::cast(*v.get<Date>());
        case VarType::String: return toStr(*v.get<Text>());
        case VarType::Object: return wrap(*v.get<Ref<Object>>());
        case VarType::ByteArray: {
            const ByteArray& b = *v.get<ByteArray>();
            return py::bytes(reinterpret_cast<const char*>(b.data()), b.size());
        }
    }
    throw py::type_error("a value of an unknown kind");
}

Variant fromPython(py::handle h) {
    PyObject* p = h.ptr();
    if (p == Py_None) return Variant(nullptr);  // Nothing
    if (py::isinstance<Wrapper>(h)) return Variant(h.cast<const Wrapper&>().object);
    if (PyBool_Check(p)) return Variant(p == Py_True);
    if (PyLong_Check(p)) {
        int overflow = 0;
        long long n = PyLong_AsLongLongAndOverflow(p, &overflow);
        if (overflow == 0 && n == -1 && PyErr_Occurred()) throw py::error_already_set();
        if (overflow == 0 && n >= INT32_MIN && n <= INT32_MAX) return Variant(static_cast<std::int32_t>(n));
        double d = PyLong_AsDouble(p);  // raises OverflowError beyond the double range
        if (d == -1.0 && PyErr_Occurred()) throw py::error_already_set();
        return Variant(d);
    }
    if (PyFloat_Check(p)) return Variant(PyFloat_AsDouble(p));
    if (PyUnicode_Check(p)) return Variant(toText(h));
    if (PyBytes_Check(p) || PyByteArray_Check(p)) {
        const bool isBytes = PyBytes_Check(p);
        const auto* data = reinterpret_cast<const std::uint8_t*>(isBytes ? PyBytes_AS_STRING(p) : PyByteArray_AS_STRING(p));
        const Py_ssize_t size = isBytes ? PyBytes_GET_SIZE(p) : PyByteArray_GET_SIZE(p);
        return Variant(ByteArray(data, data + size));
    }
    if (py::isinstance<Currency>(h)) return Variant(h.cast<Currency>());
    if (py::isinstance<Date>(h)) return Variant(h.cast<Date>());
    if (py::isinstance<EmptyValue>(h)) return Variant();
    if (py::isinstance<NullValue>(h)) return Variant(Null{});
    if (py::isinstance<MissingValue>(h)) return Variant(Missing{});
    throw py::type_error("cannot pass a value of type '" + std::string(py::str(h.get_type().attr("__name__"))) +
                         "' to a member of the library");
}

// ---- Errors --------------------------------------------------------------

void raiseAsPython(const Error& e) {
    const Globals& g = globals();
    char number[16];
    std::snprintf(number, sizeof number, "0x%08X", static_cast<unsigned>(e.number()));
    py::object instance = g.errorType(toStr(u"[" + fromUtf8(number) + u"] " + e.source() + u": " + e.description()));
    instance.attr("number") = e.number();
    instance.attr("source") = toStr(e.source());
    instance.attr("description") = toStr(e.description());
    PyErr_SetObject(g.errorType.ptr(), instance.ptr());
}

// ---- Calls ------------------------------------------------------------------

// Objects (and Nothing) are assigned with set, everything else with let.
Access putKind(const Variant& value) { return value.isObject() ? Access::Set : Access::Let; }

std::string className(const Object& o) { return toUtf8(o.className()); }

std::string memberName(const BoundMember& b) {
    return (b.kind == Access::Let ? "Set" : "") + toUtf8(b.member->name);
}

// Positional arguments first, then keywords by parameter name (ignoring
// case, as every name of the library does); gaps count as left out. A
// writer takes its value as the last positional argument.
py::object callMember(const BoundMember& b, py::args args, py::kwargs kwargs) {
    const MemberInfo& m = *b.member;
    const std::size_t accepted = m.params.size() + (b.kind == Access::Let ? 1 : 0);
    if (args.size() > accepted)
        throw py::type_error(memberName(b) + "() takes at most " + std::to_string(accepted) + " argument" +
                             (accepted == 1 ? "" : "s") + " (" + std::to_string(args.size()) + " given)");
    std::vector<Variant> values;
    values.reserve(accepted);
    for (py::handle a : args) values.push_back(fromPython(a));
    for (auto [key, value] : kwargs) {
        Text name = toText(key);
        std::size_t i = 0;
        while (i < m.params.size() && !equalsIgnoringCase(m.params[i].name, name)) ++i;
        if (i == m.params.size() || b.kind == Access::Let)
            throw py::type_error(memberName(b) + "() got an unexpected keyword argument '" + toUtf8(name) + "'");
        if (i < values.size() && !values[i].isMissing())
            throw py::type_error(memberName(b) + "() got multiple values for argument '" + toUtf8(name) + "'");
        if (values.size() <= i) values.resize(i + 1, Variant(Missing{}));
        values[i] = fromPython(value);
    }
    // Every by-reference parameter gets a place to write its value into,
    // even when the caller left it out.
    const bool byRef = python::hasByRef(m) && b.kind != Access::Let;
    if (byRef) {
        std::size_t last = m.params.size();
        while (!m.params[last - 1].byRef) --last;
        if (values.size() < last) values.resize(last, Variant(Missing{}));
    }
    Access kind = b.kind;
    if (kind == Access::Let && !values.empty()) kind = putKind(values.back());
    Variant result = invoke(*b.object, m.id, kind, values);
    // Writers and members without a result answer None, as a Python
    // function does.
    py::object out = b.kind == Access::Let || (b.kind == Access::Method && m.type.empty()) ? py::none()
                                                                                            : toPython(result);
    if (!byRef) return out;
    py::list all;
    all.append(out);
    for (std::size_t i = 0; i < m.params.size(); ++i)
        if (m.params[i].byRef) all.append(toPython(values[i]));
    return py::tuple(all);
}

py::object getAttribute(const Wrapper& self, const py::str& name) {
    const ClassInfo& info = self.object->classInfo();
    Text text = toText(name);
    if (const MemberInfo* m = info.find(text)) {
        if (m->get && requiredCount(*m) == 0) return toPython(invoke(*self.object, m->id, Access::Get));
        return py::cast(BoundMember{self.object, m, m->get ? Access::Get : Access::Method});
    }
    // obj.SetX(i, value) writes the parameterised property X, when the class
    // has no member of that name itself (found above).
    if (text.size() > 3 && equalsIgnoringCase(TextView(text).substr(0, 3), u"Set")) {
        const MemberInfo* m = info.find(TextView(text).substr(3));
        if (m && (m->let || m->set)) return py::cast(BoundMember{self.object, m, Access::Let});
    }
    throw py::attribute_error("'" + className(*self.object) + "' object has no attribute '" +
                              std::string(name) + "'");
}

void setAttribute(const Wrapper& self, const py::str& name, py::handle value) {
    const MemberInfo* m = self.object->classInfo().find(toText(name));
    if (!m)
        throw py::attribute_error("'" + className(*self.object) + "' object has no attribute '" +
                                  std::string(name) + "'");
    Variant args[] = {fromPython(value)};
    // A read-only member raises the dispatch layer's own error.
    invoke(*self.object, m->id, putKind(args[0]), args);
}

py::object iterate(const Wrapper& self) {
    Ref<Enumerator> e = refCast<Enumerator>(self.object);
    if (!e) {
        if (!self.object->classInfo().find(DispIdNewEnum))
            throw py::type_error("'" + className(*self.object) + "' object is not iterable");
        e = refCast<Enumerator>(invoke(*self.object, DispIdNewEnum, Access::Get).toObject());
        if (!e) throw py::type_error("'" + className(*self.object) + "' object did not give an enumerator");
    }
    return py::cast(Iterator{std::move(e)});
}

std::size_t length(const Wrapper& self) {
    const MemberInfo* count = self.object->classInfo().find(u"Count");
    if (!count) throw py::type_error("object of type '" + className(*self.object) + "' has no len()");
    std::int32_t n = invoke(*self.object, count->id, Access::Get).toLong();
    return n < 0 ? 0 : static_cast<std::size_t>(n);
}

// Calls a member by name with these arguments, as Python would.
py::object callByName(const Wrapper& self, const MemberInfo& m, std::vector<Variant> args) {
    return toPython(invoke(*self.object, m.id, m.get ? Access::Get : Access::Method, args));
}

const MemberInfo& requireMember(const Wrapper& self, const char16_t* name, const char* what) {
    const MemberInfo* m = self.object->classInfo().find(name);
    if (!m) throw py::type_error("'" + className(*self.object) + "' object " + what);
    return *m;
}

// The arguments a key stands for: a tuple gives several.
std::vector<Variant> keyArguments(py::handle key) {
    std::vector<Variant> out;
    if (py::isinstance<py::tuple>(key))
        for (py::handle k : py::reinterpret_borrow<py::tuple>(key)) out.push_back(fromPython(k));
    else out.push_back(fromPython(key));
    return out;
}

bool isPosition(py::handle key) { return PyLong_Check(key.ptr()) && !PyBool_Check(key.ptr()); }

// obj[i] with an int is Item(i), counted from 1 as the model counts; any
// other key goes to FindItem, so sets are indexed by their key.
py::object getItem(const Wrapper& self, py::handle key) {
    if (isPosition(key) || !self.object->classInfo().find(u"FindItem"))
        return callByName(self, requireMember(self, u"Item", "is not subscriptable"), keyArguments(key));
    return callByName(self, requireMember(self, u"FindItem", "is not subscriptable"), keyArguments(key));
}

bool isMissingKey(const Error& e) { return e.number() == errors::numberOf(errors::Runtime::InvalidCall); }

// `x in obj`: a set answers by key (IsInSet for an element, FindItem for a
// key; an absent key is False), a list by the element class's comparison (FindFirst); anything else
// iterable compares what it hands out.
bool contains(const Wrapper& self, py::handle x) {
    const ClassInfo& info = self.object->classInfo();
    const MemberInfo* isInSet = info.find(u"IsInSet");
    const MemberInfo* findItem = info.find(u"FindItem");
    if (isInSet && (py::isinstance<Wrapper>(x) || !findItem)) {
        try {
            return callByName(self, *isInSet, keyArguments(x)).cast<bool>();
        } catch (const Error& e) {
            // An object that is no element may still be a key (a definition
            // for a set of handles).
            if (!findItem || e.number() != errors::numberOf(errors::Runtime::TypeMismatch)) throw;
        }
    }
    if (findItem) {
        try {
            return !callByName(self, *findItem, keyArguments(x)).is_none();
        } catch (const Error& e) {
            if (isMissingKey(e)) return false;
            throw;
        }
    }
    if (const MemberInfo* findFirst = info.find(u"FindFirst"))
        return callByName(self, *findFirst, {fromPython(x)}).cast<std::int32_t>() != -1;
    for (py::handle item : iterate(self))
        if (item.equal(x)) return true;
    return false;
}

// repr(): the class name and the level-1 rendering, or the class name alone
// where there is no rendering (repr must not raise).
std::string representation(const Wrapper& self) {
    std::string out = "<" + className(*self.object);
    if (const MemberInfo* toString = self.object->classInfo().find(u"ToString")) {
        try {
            std::vector<Variant> level{Variant(std::int16_t{1})};
            Variant v = invoke(*self.object, toString->id, toString->get ? Access::Get : Access::Method, level);
            if (v.type() == VarType::String) out += " " + toUtf8(*v.get<Text>());
        } catch (const Error&) {
        }
    }
    return out + ">";
}

// str(): the rendering at the class's default level; repr() for a class
// without one, as Python's own default is.
py::object render(const Wrapper& self) {
    const MemberInfo* toString = self.object->classInfo().find(u"ToString");
    if (!toString) return py::str(representation(self));
    return callByName(self, *toString, {});
}

// The Python class of a library class: a subclass of tylharttypes.Object
// whose docstring and properties come from the member description, so
// help(), dir() and isinstance work. Made once per class, on first use.
py::object pythonClass(const ClassInfo& info) {
    Globals& g = globals();
    if (auto found = g.types.find(&info); found != g.types.end()) return found->second;
    py::dict namespace_;
    namespace_["__doc__"] = python::classDoc(info);
    namespace_["__module__"] = "tylharttypes";
    namespace_["__slots__"] = py::tuple();  // every attribute is a member of the library
    py::object property = py::module_::import("builtins").attr("property");
    for (const MemberInfo& m : info.members()) {
        const py::str name = toStr(m.name);
        py::cpp_function get([name](const Wrapper& self) { return getAttribute(self, name); });
        namespace_[name] = property(get, py::none(), py::none(), python::memberDoc(m));
    }
    py::object type = py::type::of<Wrapper>();
    py::object cls = py::module_::import("builtins").attr("type")(toStr(info.name()), py::make_tuple(type), namespace_);
    g.types.emplace(&info, cls);
    return cls;
}

// ---- Value classes -----------------------------------------------------------

Currency makeCurrency(py::handle v) {
    PyObject* p = v.ptr();
    if (PyLong_Check(p) && !PyBool_Check(p)) {
        int overflow = 0;
        long long scaled = PyLong_AsLongLongAndOverflow(p, &overflow);
        if (overflow != 0) throw py::value_error("Currency holds 64 bits: the value times 10,000 is too large");
        if (scaled == -1 && PyErr_Occurred()) throw py::error_already_set();
        return Currency{scaled};
    }
    if (py::isinstance<Currency>(v)) return v.cast<Currency>();
    if (PyUnicode_Check(p)) return Variant(toText(v)).toCurrency();
    // decimal.Decimal and the like: their text is a decimal number.
    if (py::hasattr(v, "as_tuple")) return Variant(toText(py::str(v))).toCurrency();
    throw py::type_error("Currency takes the value times 10,000 as an int, or a decimal text");
}

}  // namespace

PYBIND11_MODULE(tylharttypes, m) {
    m.doc() = "The TylHartTypes object model through its dispatch surface.";
    Globals& g = globals();

    PyObject* errorType = PyErr_NewException("tylharttypes.Error", PyExc_Exception, nullptr);
    if (!errorType) throw py::error_already_set();
    g.errorType = py::reinterpret_steal<py::object>(errorType);
    g.errorType.attr("__doc__") =
        "An error raised by the library: number (the HRESULT as a signed 32-bit int), source, description.";
    m.attr("Error") = g.errorType;
    py::register_exception_translator([](std::exception_ptr p) {
        try {
            if (p) std::rethrow_exception(p);
        } catch (const Error& e) {
            raiseAsPython(e);
        }
    });

    py::class_<EmptyValue>(m, "EmptyType").def("__repr__", [](const EmptyValue&) { return "Empty"; });
    py::class_<NullValue>(m, "NullType").def("__repr__", [](const NullValue&) { return "Null"; });
    py::class_<MissingValue>(m, "MissingType").def("__repr__", [](const MissingValue&) { return "Missing"; });
    g.empty = py::cast(EmptyValue{});
    g.null = py::cast(NullValue{});
    g.missing = py::cast(MissingValue{});
    m.attr("Empty") = g.empty;
    m.attr("Null") = g.null;
    m.attr("Missing") = g.missing;

    py::class_<Currency>(m, "Currency")
        .def(py::init(&makeCurrency), py::arg("value"))
        .def_property_readonly("scaled", [](const Currency& c) { return c.scaled; })
        .def("__str__", [](const Currency& c) { return toStr(formatCurrency(c)); })
        .def("__repr__", [](const Currency& c) { return "Currency('" + toUtf8(formatCurrency(c)) + "')"; })
        .def("__float__", [](const Currency& c) { return static_cast<double>(c.scaled) / Currency::scale; })
        .def("__eq__", [](const Currency& a, const Currency& b) { return a == b; })
        .def("__hash__", [](const Currency& c) { return std::hash<std::int64_t>{}(c.scaled); });

    py::class_<Date>(m, "Date")
        .def(py::init([](double days) { return Date{days}; }), py::arg("days"))
        .def_property_readonly("days", [](const Date& d) { return d.days; })
        .def("__str__", [](const Date& d) { return toStr(formatDate(d)); })
        .def("__repr__", [](const Date& d) { return "Date(" + std::string(py::repr(py::float_(d.days))) + ")"; })
        .def("__float__", [](const Date& d) { return d.days; })
        .def("__eq__", [](const Date& a, const Date& b) { return a == b; })
        .def("__hash__", [](const Date& d) { return std::hash<double>{}(d.days); });

    g.token = py::capsule(&g, "tylharttypes.token");
    py::class_<Wrapper> base(m, "Object",
                             "The base of every class of the library. Members are read, written and called by "
                             "name through the dispatch layer; see each class's help().");
    g.baseType = base;
    base.def(py::init([](py::handle token) {
                 if (!token.is(globals().token))
                     throw py::type_error("tylharttypes.Object cannot be created; create a class such as CDefinition");
                 return Wrapper{};
             }))
        .def("__getattr__", &getAttribute)
        .def("__setattr__", &setAttribute)
        .def("__len__", &length)
        .def("__iter__", &iterate)
        .def("__getitem__", &getItem)
        .def("__contains__", &contains)
        .def("__str__", &render)
        .def("__bool__", [](const Wrapper&) { return true; })  // not Count: a reference is never false
        .def("__eq__",
             [](const Wrapper& a, py::handle b) -> py::object {
                 if (!py::isinstance<Wrapper>(b)) return py::reinterpret_borrow<py::object>(Py_NotImplemented);
                 return py::bool_(a.object.get() == b.cast<const Wrapper&>().object.get());
             })
        .def("__hash__", [](const Wrapper& w) { return std::hash<const void*>{}(w.object.get()); })
        .def("__dir__",
             [](const Wrapper& w) {
                 py::list names;
                 for (const MemberInfo& mi : w.object->classInfo().members()) names.append(toStr(mi.name));
                 return names;
             })
        .def("__repr__", &representation);

    py::class_<BoundMember>(m, "Member")
        .def("__call__", &callMember)
        .def_property_readonly("__doc__", [](const BoundMember& b) { return python::memberDoc(*b.member); })
        .def("__repr__", [](const BoundMember& b) {
            const char* prefix = b.kind == Access::Let ? "Set" : "";
            return "<member " + className(*b.object) + "." + prefix + toUtf8(b.member->name) + ">";
        });

    py::class_<Iterator>(m, "Iterator")
        .def("__iter__", [](py::object self) { return self; })
        .def("__next__", [](Iterator& it) {
            Variant v;
            if (!it.enumerator->next(v)) throw py::stop_iteration();
            return toPython(v);
        });

    m.def(
        "CreateObject", [](const py::str& progId) { return wrap(automation::CreateObject(toText(progId))); },
        py::arg("progId"), "A new object of the class with this programmatic name, e.g. 'TylHartTypes.CDefinition'.");
    m.def(
        "CreateObjectFromClsid", [](const py::str& clsid) { return wrap(automation::CreateObjectFromClsid(toText(clsid))); },
        py::arg("clsid"), "A new object of the class with this class identifier.");

    // One Python class per class that is built; calling it makes a new object.
    for (const automation::ClassEntry& entry : automation::classes()) {
        if (!entry.built()) continue;
        const automation::ClassEntry* e = &entry;
        py::object cls = pythonClass(entry.classInfo());
        // A plain function bound as a method, not a pybind11 constructor:
        // the base's own __init__ makes the wrapper, this one fills it.
        py::cpp_function create(
            [e](py::handle self) {
                globals().baseType.attr("__init__")(self, globals().token);
                self.cast<Wrapper&>().object = e->create();
            },
            py::name("new_object"), ("A new " + toUtf8(entry.name) + ".").c_str());
        PyObject* method = PyInstanceMethod_New(create.ptr());
        if (!method) throw py::error_already_set();
        cls.attr("__init__") = py::reinterpret_steal<py::object>(method);
        m.attr(toStr(entry.name)) = cls;
    }

    m.def("DllCanUnloadNow", [] { return ::DllCanUnloadNow(); },
          "0 (S_OK) when no object of the library is alive, else 1 (S_FALSE).");
    m.def("typeLibraryListing", [] { return toStr(automation::typeLibraryListing()); });

    py::dict enums;
    for (const EnumInfo& e : enumerations()) {
        py::dict members;
        for (const EnumMember& member : e.members) {
            members[toStr(member.name)] = member.value;
            m.attr(toStr(member.name)) = member.value;
        }
        enums[toStr(e.name)] = members;
    }
    m.attr("enums") = enums;
}
