"""The Python module: creation, late-bound members, error records, values."""

import decimal
import gc
import unittest

import tylharttypes as t

# Error numbers as Python sees them: the HRESULT as a signed 32-bit int.
INVALID_ARGUMENT = -2147024809      # 0x80070057
CANNOT_CREATE = -2146827859         # 0x800A01AD, 429
NO_SUCH_MEMBER = -2146827850        # 0x800A01B6, 438
TYPE_MISMATCH = -2146828275         # 0x800A000D, 13
ARGUMENT_NOT_OPTIONAL = -2146827839  # 0x800A01C1, 449


class ErrorRecordMixin:
    def assertRaisesRecord(self, record, call, *args, **kwargs):
        with self.assertRaises(t.Error) as caught:
            call(*args, **kwargs)
        err = caught.exception
        self.assertEqual((err.number, err.source, err.description), record)

    @staticmethod
    def runtime(number, description):
        return (number, "TylHartTypes", description)


def definition(name="pressure", kind=t.ddoKVariableDef):
    d = t.CDefinition()
    d.Initialize(name, kind)
    return d


class Creation(ErrorRecordMixin, unittest.TestCase):
    def test_names_and_class_identifiers_make_new_objects_or_raise_429(self):
        self.assertNotEqual(t.CreateObject("tylharttypes.CDEFINITION"), t.CreateObject("TylHartTypes.CDefinition"))
        self.assertEqual(t.CreateObjectFromClsid("65488eec-01be-11d5-8151-00e0291221f9").ToString(),
                         "Definition{Name:unknown}")
        record = self.runtime(CANNOT_CREATE, "ActiveX component can't create object")
        self.assertRaisesRecord(record, t.CreateObject, "CDefinition")
        self.assertRaisesRecord(record, t.CreateObjectFromClsid, "{016E9347-5C94-11D4-80BA-00E0291221F9}")

    def test_every_listed_class_is_a_python_class(self):
        listed = [line.split()[1] for line in t.typeLibraryListing().splitlines() if line.startswith("coclass ")]
        self.assertIn("CDefinition", listed)
        for name in listed:
            with self.subTest(name=name):
                cls = getattr(t, name)
                self.assertTrue(issubclass(cls, t.Object))
                self.assertIs(type(cls()), cls)
                self.assertIs(type(t.CreateObject("TylHartTypes." + name)), cls)
        # A class of the type library without an implementation yet has no Python class.
        for name in ("CVariable", "CCommand", "CMenu"):
            self.assertEqual(hasattr(t, name), name in listed)
        with self.assertRaises(TypeError):
            t.Object()

class DefinitionThroughDispatch(ErrorRecordMixin, unittest.TestCase):
    NOT_INITIALIZED = (INVALID_ARGUMENT, "CDefinition.DefName", "Object not yet initialized!")
    KIND_FIXED = (INVALID_ARGUMENT, "CDefinition.Initialize",
                  "Once a Kind is initialized, it must not be changed anymore!")

    def test_property_reads_and_writes_raise_the_library_record(self):
        d = t.CDefinition()
        self.assertRaisesRecord(self.NOT_INITIALIZED, getattr, d, "Name")
        self.assertRaisesRecord(self.NOT_INITIALIZED, setattr, d, "Name", "x")

    def test_initialize_read_rename_and_render(self):
        d = t.CDefinition()
        self.assertIsNone(d.Initialize("pressure", t.ddoKVariableDef))
        self.assertEqual(d.ToString(InfoLevel=2), "Definition{Name:pressure, Kind:0}")
        self.assertIs(d.ToString(0), t.Empty)
        d.name = "temperature"  # names ignore case
        self.assertEqual(d.NAME, "temperature")
        self.assertIsNone(d.SetName("flow"))  # the writer of a property, as pywin32 spells it
        self.assertEqual(d.tostring(), "Definition{Name:flow}")

    def test_refused_calls_leave_the_definition_unchanged(self):
        d = definition()
        cases = [
            (self.KIND_FIXED, lambda: d.Initialize("other", t.ddoKMenuDef)),
            (self.runtime(NO_SUCH_MEMBER, "Object doesn't support this property or method"),
             lambda: setattr(d, "Kind", 1)),
            (self.runtime(ARGUMENT_NOT_OPTIONAL, "Argument not optional"), lambda: d.Initialize("other")),
        ]
        for record, call in cases:
            with self.subTest(record=record):
                self.assertRaisesRecord(record, call)
                self.assertEqual(d.ToString(2), "Definition{Name:pressure, Kind:0}")

    def test_unknown_members_are_attribute_errors(self):
        d = definition()
        self.assertFalse(hasattr(d, "Colour"))
        with self.assertRaises(AttributeError):
            d.Colour = 1
        with self.assertRaises(AttributeError):
            d.SetKind  # Kind has no writer
        with self.assertRaises(TypeError):
            d.ToString(Level=2)

    def test_identity_copies_and_python_protocols(self):
        d = definition()
        copy = d.GetCopy()
        self.assertNotEqual(copy, d)
        self.assertTrue(copy.Compare(d))
        listed = t.CDefinitionList()
        listed.Add(d)
        # The list hands out the stored object: the same one, under a new wrapper.
        self.assertEqual(listed.Item(1), d)
        self.assertEqual(hash(listed.Item(1)), hash(d))
        self.assertTrue(t.CDefinitionList())  # a reference is true, whatever its Count
        with self.assertRaises(TypeError):
            len(d)
        with self.assertRaises(TypeError):
            iter(d)


class Values(ErrorRecordMixin, unittest.TestCase):
    """Every kind travels into a value list and back out unchanged."""

    def round_trip(self, value):
        values = t.CValueList()
        values.Add(value)
        return values.Item(1)

    def test_round_trips(self):
        d = definition()
        cases = [
            (7, 7, int), (-2**31, -2**31, int), (2**31, 2147483648.0, float), (2**70, float(2**70), float),
            (1.25, 1.25, float), ("héllo", "héllo", str), ("\ud800x", "\ud800x", str), ("", "", str),
            (True, True, bool), (b"\x00\xff", b"\x00\xff", bytes), (bytearray(b"ab"), b"ab", bytes),
            (t.Currency("1.5"), t.Currency(15000), t.Currency), (t.Date(0.5), t.Date(0.5), t.Date),
        ]
        for value, expected, kind in cases:
            with self.subTest(value=value):
                back = self.round_trip(value)
                self.assertIs(type(back), kind)
                self.assertEqual(back, expected)
        for marker in (t.Null, t.Empty, None):
            self.assertIs(self.round_trip(marker), marker)
        self.assertEqual(self.round_trip(d), d)

    def test_iteration_length_and_the_missing_marker(self):
        values = t.CValueList()
        values.Add("a")
        values.Add(None)
        values.Add(2, t.Missing, 1)  # Before left out, After 1
        self.assertEqual(list(values), ["a", 2, None])
        self.assertEqual(list(values.NewEnum), ["a", 2, None])
        self.assertRaisesRecord(self.runtime(ARGUMENT_NOT_OPTIONAL, "Argument not optional"), values.Add, t.Missing)
        self.assertEqual(len(values), 3)

    def test_value_classes(self):
        self.assertEqual(t.Currency(decimal.Decimal("2.5")).scaled, 25000)
        self.assertEqual(str(t.Currency(-5)), "-0.0005")
        self.assertEqual(float(t.Currency(15000)), 1.5)
        self.assertEqual(t.Date(36526.5).days, 36526.5)
        self.assertEqual(str(t.Date(0.5)), "12:00:00 PM")
        self.assertEqual((repr(t.Empty), repr(t.Null), repr(t.Missing)), ("Empty", "Null", "Missing"))
        self.assertRaisesRecord(self.runtime(TYPE_MISMATCH, "Type mismatch"), t.Currency, "abc")
        with self.assertRaises(TypeError):
            t.Currency(1.5)
        with self.assertRaises(TypeError):
            t.CValueList().Add(object())


class Module(unittest.TestCase):
    def test_enumerations(self):
        self.assertEqual((t.ddoKUndefined, t.ddvTMax15, len(t.enums)), (-1, 15, 14))
        self.assertEqual(t.enums["enumDDMenuItemQualificationType"]["ddmiqTReview"], 1)

    def test_unload_answer_follows_the_live_objects(self):
        gc.collect()
        self.assertEqual(t.DllCanUnloadNow(), 0)
        d = definition()
        copies = t.CDefinitionList()
        copies.Add(d.GetCopy())
        del d
        self.assertEqual(t.DllCanUnloadNow(), 1)
        del copies
        gc.collect()
        self.assertEqual(t.DllCanUnloadNow(), 0)


if __name__ == "__main__":
    unittest.main()
