"""Python's own protocols over the member descriptions: repr/str, indexing,
membership, keywords, by-reference results, help() and the type stub."""

import ast
import os
import pydoc
import unittest

import tylharttypes as t
from test_dispatch import ErrorRecordMixin, definition

SUBSCRIPT = (-2146828279, "TylHartTypes", "Subscript out of range")                      # 9
MISSING_KEY = (-2146828283, "TylHartTypes", "Invalid procedure call or argument")         # 5


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


class Protocols(ErrorRecordMixin, unittest.TestCase):
    def setUp(self):
        self.d = definition()
        self.lst = filled("CDefinitionList", self.d, definition("flow"))
        self.set = filled("CDefinitionSet", self.d, definition("flow"))

    def test_repr_and_str(self):
        cases = [
            (self.d, "<CDefinition Definition{Name:pressure}>", "Definition{Name:pressure}"),
            (t.CDefinition(), "<CDefinition Definition{Name:unknown}>", "Definition{Name:unknown}"),
            (t.CValueList(), "<CValueList ValueList{Count:0}>", "ValueList{Count:0}"),
            (self.lst.NewEnum, "<IEnumVARIANT>", None),
        ]
        for obj, expected_repr, expected_str in cases:
            with self.subTest(expected_repr):
                self.assertEqual(repr(obj), expected_repr)
                if expected_str:
                    self.assertEqual(str(obj), expected_str)

    def test_indexing_is_item_from_one_and_findItem_by_key(self):
        self.assertEqual(self.lst[1], self.d)  # the stored object
        self.assertEqual(self.lst[2].Name, "flow")
        self.assertEqual(self.set["PRESSURE"].ToString(2), "Definition{Name:pressure, Kind:0}")
        self.assertEqual(self.set[2].Name, "flow")
        self.assertEqual(filled("CValueList", "a", 5)[2], 5)
        for container, key, record in [(self.lst, 0, SUBSCRIPT), (self.lst, 3, SUBSCRIPT), (self.set, 3, SUBSCRIPT),
                                       (self.set, "level", MISSING_KEY)]:
            with self.subTest(key=key):
                self.assertRaisesRecord(record, container.__getitem__, key)
        with self.assertRaises(TypeError):
            self.d[1]

    def test_membership_by_key_on_sets_and_by_comparison_on_lists(self):
        enumerators = t.CEnumeratorSet()
        e = t.CEnumerator()
        e.Value, e.Description = 7, "bar"
        enumerators.Add(e)
        v = t.CVariable()
        v.Definition = definition()
        handles = filled("CObjectSet", v.MakeObject())
        cases = [
            (handles, v.MakeObject(), True), (handles, definition("PRESSURE"), True), (handles, definition("x"), False),
            (self.set, "Pressure", True), (self.set, definition("FLOW"), True), (self.set, "level", False),
            (self.set, definition("level"), False), (enumerators, 7, True), (enumerators, 8, False),
            (self.lst, self.d.GetCopy(), True), (self.lst, definition("level"), False),
            (filled("CValueList", "a", 5), 5, True), (filled("CValueList", "a", 5), "b", False),
        ]
        for container, x, expected in cases:
            with self.subTest(container=repr(container), x=x):
                self.assertIs(x in container, expected)

    def test_keywords_by_parameter_name_with_the_model_defaults(self):
        self.assertEqual(self.d.ToString(infolevel=2), "Definition{Name:pressure, Kind:0}")
        values = t.CValueList()
        values.Add("a")
        values.Add("b", Before=1)
        self.assertEqual(list(values), ["b", "a"])
        cases = [
            (lambda: self.d.ToString(Level=2), "ToString() got an unexpected keyword argument 'Level'"),
            (lambda: self.d.ToString(1, 2), "ToString() takes at most 1 argument (2 given)"),
            (lambda: self.d.ToString(1, InfoLevel=2), "ToString() got multiple values for argument 'InfoLevel'"),
            (lambda: self.d.SetName("x", "y"), "SetName() takes at most 1 argument (2 given)"),
        ]
        for call, message in cases:
            with self.subTest(message):
                with self.assertRaises(TypeError) as caught:
                    call()
                self.assertEqual(str(caught.exception), message)
        self.assertEqual(self.d.Name, "pressure")

    def test_by_reference_values_follow_the_result(self):
        cases = [
            (variable(t.ddvTASCII, 8), "IsString", ("abcdefgh",), (True, "abcdefgh", 8)),
            (variable(t.ddvTASCII, 8), "IsString", ("abc", 2), (False, "abc", 2)),
            (variable(t.ddvTFloat), "IsLegalValue", (), (True, 0.0, t.ddvTFloat)),
            (variable(t.ddvTDouble), "IsFloat", (), (True, 0.0)),
        ]
        for v, member, args, expected in cases:
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

    def test_stub_parses_and_lists_every_class_and_member(self):
        stub = os.path.join(os.path.dirname(t.__file__), "tylharttypes.pyi")
        with open(stub, encoding="utf-8") as f:
            tree = ast.parse(f.read())
        classes = {c.name: {f.name for f in c.body if isinstance(f, ast.FunctionDef)}
                   for c in tree.body if isinstance(c, ast.ClassDef)}
        made = [c for c in vars(t).values() if isinstance(c, type) and issubclass(c, t.Object) and c is not t.Object]
        self.assertEqual(len(made), len([n for n in t.typeLibraryListing().split() if n == "coclass"]))
        for cls in made:
            with self.subTest(cls.__name__):
                self.assertLessEqual(set(dir(cls())), classes[cls.__name__])
        self.assertIn("SetMinValues", classes["CType"])
        self.assertIn("ddoKVariableDef", {a.target.id for a in tree.body if isinstance(a, ast.AnnAssign)})


if __name__ == "__main__":
    unittest.main()
