"""The Python layer over the dispatch surface: creation, conversions, error
records, keywords, by-reference results, Python's protocols, help and the
type stub. What the objects answer is pinned by the C++ suites."""

import ast
import decimal
import gc
import os
import pydoc
import unittest

import tylharttypes as t


def runtime(code, description):
    """The runtime's record for error `code` (0x800A0000 + code), number as a signed 32-bit int."""
    return (0x800A0000 + code - 2**32, "TylHartTypes", description)


SUBSCRIPT = runtime(9, "Subscript out of range")
MISSING_KEY = runtime(5, "Invalid procedure call or argument")
TYPE_MISMATCH = runtime(13, "Type mismatch")
CANNOT_CREATE = runtime(429, "ActiveX component can't create object")
NO_SUCH_MEMBER = runtime(438, "Object doesn't support this property or method")
NOT_OPTIONAL = runtime(449, "Argument not optional")
NOT_INITIALIZED = (0x80070057 - 2**32, "CDefinition.DefName", "Object not yet initialized!")


def definition(name="pressure", kind=t.ddoKVariableDef):
    d = t.CDefinition()
    d.Initialize(name, kind)
    return d


def filled(cls, *elements):
    container = getattr(t, cls)()
    for e in elements:
        container.Add(e)
    return container


def variable(kind, size=None):
    v = t.CVariable()
    v.TypeInfo.Kind = kind
    if size is not None:
        v.TypeInfo.Size = size
    return v


class Binding(unittest.TestCase):
    def assertRaisesRecord(self, record, call, *args):
        with self.assertRaises(t.Error) as caught:
            call(*args)
        err = caught.exception
        self.assertEqual((err.number, err.source, err.description), record)

    def test_creation_by_name_and_class_identifier(self):
        self.assertNotEqual(t.CreateObject("tylharttypes.CDEFINITION"), t.CreateObject("TylHartTypes.CDefinition"))
        self.assertIs(type(t.CreateObjectFromClsid("65488eec-01be-11d5-8151-00e0291221f9")), t.CDefinition)
        self.assertRaisesRecord(CANNOT_CREATE, t.CreateObject, "CDefinition")
        self.assertRaisesRecord(CANNOT_CREATE, t.CreateObjectFromClsid, "{016E9347-5C94-11D4-80BA-00E0291221F9}")
        self.assertRaises(TypeError, t.Object)

    def test_every_listed_class_is_a_python_class_and_in_the_stub(self):
        listed = [line.split()[1] for line in t.typeLibraryListing().splitlines() if line.startswith("coclass ")]
        with open(os.path.join(os.path.dirname(t.__file__), "tylharttypes.pyi"), encoding="utf-8") as f:
            tree = ast.parse(f.read())
        stub = {c.name: {f.name for f in c.body if isinstance(f, ast.FunctionDef)}
                for c in tree.body if isinstance(c, ast.ClassDef)}
        self.assertEqual(len(listed), 48)
        for name in listed:
            with self.subTest(name=name):
                cls = getattr(t, name)
                self.assertTrue(issubclass(cls, t.Object))
                self.assertIs(type(t.CreateObject("TylHartTypes." + name)), cls)
                self.assertLessEqual(set(dir(cls())), stub[name])
        self.assertIn("SetMinValues", stub["CType"])  # the writer of a property with parameters
        self.assertIn("ddoKVariableDef", {a.target.id for a in tree.body if isinstance(a, ast.AnnAssign)})

    def test_members_by_name_in_any_case_and_errors_as_records(self):
        d = t.CDefinition()
        self.assertRaisesRecord(NOT_INITIALIZED, getattr, d, "Name")
        self.assertRaisesRecord(NOT_INITIALIZED, setattr, d, "Name", "x")
        self.assertIsNone(d.Initialize("pressure", t.ddoKVariableDef))
        self.assertIs(d.ToString(0), t.Empty)
        d.name = "temperature"
        self.assertEqual(d.NAME, "temperature")
        self.assertIsNone(d.SetName("flow"))  # the writer of a property, as pywin32 spells it
        self.assertEqual(d.tostring(), "Definition{Name:flow}")
        self.assertRaisesRecord(NO_SUCH_MEMBER, setattr, d, "Kind", 1)  # a read-only property
        self.assertRaisesRecord(NOT_OPTIONAL, d.Initialize, "other")
        self.assertFalse(hasattr(d, "Colour") or hasattr(d, "SetKind"))
        self.assertRaises(AttributeError, setattr, d, "Colour", 1)

    def test_keywords_by_parameter_name_with_the_defaults(self):
        d = definition()
        self.assertEqual(d.ToString(infolevel=2), d.ToString(2))
        values = filled("CValueList", "a")
        values.Add("b", Before=1)
        values.Add(2, t.Missing, 1)  # Before left out, After 1
        self.assertEqual(list(values), ["b", 2, "a"])
        self.assertRaisesRecord(NOT_OPTIONAL, values.Add, t.Missing)
        for call, message in [
            (lambda: d.ToString(Level=2), "ToString() got an unexpected keyword argument 'Level'"),
            (lambda: d.ToString(1, 2), "ToString() takes at most 1 argument (2 given)"),
            (lambda: d.ToString(1, InfoLevel=2), "ToString() got multiple values for argument 'InfoLevel'"),
            (lambda: d.SetName("x", "y"), "SetName() takes at most 1 argument (2 given)"),
        ]:
            with self.subTest(message):
                with self.assertRaises(TypeError) as caught:
                    call()
                self.assertEqual(str(caught.exception), message)

    def test_values_travel_in_and_out_unchanged(self):
        d = definition()
        for value, expected, kind in [
            (7, 7, int), (-2**31, -2**31, int), (2**31, 2147483648.0, float), (2**70, float(2**70), float),
            (1.25, 1.25, float), ("héllo", "héllo", str), ("\ud800x", "\ud800x", str), ("", "", str),
            (True, True, bool), (b"\x00\xff", b"\x00\xff", bytes), (bytearray(b"ab"), b"ab", bytes),
            (t.Currency("1.5"), t.Currency(15000), t.Currency), (t.Date(0.5), t.Date(0.5), t.Date),
            (t.Null, t.Null, type(t.Null)), (t.Empty, t.Empty, type(t.Empty)), (None, None, type(None)), (d, d, t.CDefinition),
        ]:
            with self.subTest(value=value):
                back = filled("CValueList", value)[1]
                self.assertIs(type(back), kind)
                self.assertEqual(back, expected)
        self.assertRaises(TypeError, t.CValueList().Add, object())

    def test_value_classes(self):
        self.assertEqual(t.Currency(decimal.Decimal("2.5")).scaled, 25000)
        self.assertEqual((str(t.Currency(-5)), repr(t.Currency(-5)), float(t.Currency(15000))),
                         ("-0.0005", "Currency('-0.0005')", 1.5))
        self.assertEqual((t.Date(36526.5).days, str(t.Date(0.5)), repr(t.Date(0.5))),
                         (36526.5, "12:00:00 PM", "Date(0.5)"))
        self.assertEqual((repr(t.Empty), repr(t.Null), repr(t.Missing)), ("Empty", "Null", "Missing"))
        self.assertRaisesRecord(TYPE_MISMATCH, t.Currency, "abc")
        self.assertRaises(TypeError, t.Currency, 1.5)

    def test_identity_truth_repr_and_str(self):
        d = definition()
        listed = filled("CDefinitionList", d)
        self.assertEqual((listed.Item(1), hash(listed.Item(1))), (d, hash(d)))  # the stored object, a new wrapper
        self.assertNotEqual(d.GetCopy(), d)
        self.assertTrue(t.CDefinitionList())  # a reference is true, whatever its Count
        self.assertEqual((repr(d), str(d)), ("<CDefinition Definition{Name:pressure}>", "Definition{Name:pressure}"))
        self.assertEqual(repr(listed.NewEnum), "<IEnumVARIANT>")
        for protocol in (len, iter, lambda o: o[1]):
            self.assertRaises(TypeError, protocol, d)

    def test_length_iteration_indexing_and_membership(self):
        d = definition()
        lst, dset = filled("CDefinitionList", d, definition("flow")), filled("CDefinitionSet", d, definition("flow"))
        values = filled("CValueList", "a", 5, None)
        self.assertEqual((len(values), list(values), list(values.NewEnum)), (3, ["a", 5, None], ["a", 5, None]))
        self.assertEqual((lst[1], lst[2].Name, dset["PRESSURE"].Name, dset[2].Name, values[2]), (d, "flow", "pressure", "flow", 5))
        for container, key, record in [(lst, 0, SUBSCRIPT), (lst, 3, SUBSCRIPT), (dset, 3, SUBSCRIPT),
                                       (dset, "level", MISSING_KEY)]:
            with self.subTest(key=key):
                self.assertRaisesRecord(record, container.__getitem__, key)
        e = t.CEnumerator()
        e.Value = 7
        v = t.CVariable()
        v.Definition = definition()
        handles = filled("CObjectSet", v.MakeObject())
        for container, x, expected in [
            (handles, v.MakeObject(), True), (handles, definition("PRESSURE"), True), (handles, definition("x"), False),
            (dset, "Pressure", True), (dset, definition("FLOW"), True), (dset, "level", False),
            (filled("CEnumeratorSet", e), 7, True), (filled("CEnumeratorSet", e), 8, False),
            (lst, d.GetCopy(), True), (lst, definition("level"), False), (values, 5, True), (filled("CValueList", "a", 5), "b", False),
        ]:
            with self.subTest(container=repr(container), x=x):
                self.assertIs(x in container, expected)

    def test_by_reference_values_follow_the_result(self):
        for v, member, args, expected in [
            (variable(t.ddvTASCII, 8), "IsString", ("abcdefgh",), (True, "abcdefgh", 8)),
            (variable(t.ddvTASCII, 8), "IsString", ("abc", 2), (False, "abc", 2)),
            (variable(t.ddvTFloat), "IsLegalValue", (), (True, 0.0, t.ddvTFloat)),
            (variable(t.ddvTDouble), "IsFloat", (), (True, 0.0)),
        ]:
            with self.subTest(member=member, args=args):
                self.assertEqual(getattr(v, member)(*args), expected)

    def test_help_lists_members_with_parameters_defaults_and_kinds(self):
        text = pydoc.render_doc(t.CDefinition, renderer=pydoc.plaintext)
        for line in ["ToString(InfoLevel: int = 1) -> Any  [method]", "Name: str  [property, read/write]",
                     "Initialize(NewName: str, NewKind: int) -> None  [method]"]:
            self.assertIn(line, text)
        self.assertIn("IsString(TestValue: Any = Missing, TestSize: int = -1) -> tuple[bool, Any, int]  "
                      "[method; by reference: TestValue, TestSize]", t.CVariable.__doc__)
        self.assertIn("obj[i] with an int is Item(i), 1-based", t.CDefinitionSet.__doc__)

    def test_enumerations_and_the_unload_answer(self):
        self.assertEqual((t.ddoKUndefined, t.ddvTMax15, len(t.enums)), (-1, 15, 14))
        self.assertEqual(t.enums["enumDDMenuItemQualificationType"]["ddmiqTReview"], 1)
        gc.collect()
        self.assertEqual(t.DllCanUnloadNow(), 0)
        copies = filled("CDefinitionList", definition().GetCopy())
        self.assertEqual(t.DllCanUnloadNow(), 1)
        del copies
        gc.collect()
        self.assertEqual(t.DllCanUnloadNow(), 0)


if __name__ == "__main__":
    unittest.main()
