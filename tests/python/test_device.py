"""A whole device description built late-bound, as a script would build it:
variables of several kinds, relations, commands, a method, a menu tree and
an edit display, all kept in one object set, copied deep and compared."""

import unittest

import tylharttypes as t
from test_binding import definition, filled

# name, kind, size, label, range (or None)
VARIABLES = [
    ("pressure", t.ddvTFloat, None, "Pressure", (0.0, 400.0)),
    ("temperature", t.ddvTFloat, None, "Sensor temperature", (-40.0, 85.0)),
    ("upper_range_value", t.ddvTFloat, None, "URV", None), ("lower_range_value", t.ddvTFloat, None, "LRV", None),
    ("damping", t.ddvTDouble, None, "Damping", None), ("poll_address", t.ddvTUnsigned, 1, "Poll address", (0, 63)),
    ("sensor_offset", t.ddvTInt, 2, "Sensor offset", None), ("tag", t.ddvTPackedASCII, 8, "Tag", None),
    ("descriptor", t.ddvTASCII, 16, "Descriptor", None), ("install_date", t.ddvTDate, None, "Install date", None),
]
# name, label, bit enumerators?, (value, description)...
ENUMERATED = [
    ("pressure_unit", "Unit", False, [(7, "bar"), (12, "kPa"), (6, "psi")]),
    ("device_status", "Status", True, [(1, "Primary variable out of limits"), (128, "Device malfunction")]),
]
RANGE = ["pressure_unit", "upper_range_value", "lower_range_value"]
# name, number, operation, request, reply, (value, kind, description)...
COMMANDS = [
    ("read_pv", 1, t.ddcoTRead, [], ["pressure_unit", "pressure"],
     [(0, t.ddrcTSUCCESS, "Success"), (8, t.ddrcTMISC_WARNING, "Update failure")]),
    ("write_tag", 18, t.ddcoTWrite, ["tag", "descriptor", "install_date"], ["tag", "descriptor", "install_date"],
     [(0, t.ddrcTSUCCESS, "Success"), (7, t.ddrcTMODE_ERROR, "In write protect mode")]),
    ("write_range", 35, t.ddcoTWrite, RANGE, RANGE,
     [(0, t.ddrcTSUCCESS, "Success"), (9, t.ddrcTDATA_ENTRY_ERROR, "Lower range value too high")]),
]
MENUS = [
    ("process_variables", "Process variables", ["pressure", "temperature", "device_status"]),
    ("device_setup", "Device setup", ["tag", "descriptor", "damping", "zero_trim", "range_display"]),
    ("root_menu", "Online", ["process_variables", "device_setup"]),
]


class Device:
    """The constructs by name, and an object set holding a handle on each."""

    def __init__(self):
        self.constructs, self.objects = {}, t.CObjectSet()

    def item(self, cls, name=None, **fields):
        """A new `cls` with these fields; with a name, on a handle of that construct."""
        i = getattr(t, cls)()
        if name:
            fields["obj"] = self.constructs[name].MakeObject()
        for field, value in fields.items():
            setattr(i, field, value)
        return i

    def keep(self, cls, name, kind, **fields):
        c = self.constructs[name] = self.item(cls, Definition=definition(name, kind), **fields)
        self.objects.Add(c.MakeObject())
        return c

    def variable(self, name, kind, size, label, limits=None):
        v = self.keep("CVariable", name, t.ddoKVariableDef, Label=label)
        v.TypeInfo.Kind = kind
        if size is not None:
            v.TypeInfo.Size = size
        if limits:
            v.TypeInfo.MaxRangeNo = 1
            v.TypeInfo.SetMinValues(1, limits[0])
            v.TypeInfo.SetMaxValues(1, limits[1])
        return v

    def definitions(self, *names):
        return filled("CVariableDefinitionSet", *(self.constructs[n].Definition for n in names))

    def data_items(self, names):
        items = t.CDataItemList()
        for n in names:
            i = t.CDataItem()
            i.Initialize(t.dddiTDefinition)
            i.Definition, i.Variable = self.constructs[n].Definition, self.constructs[n]
            items.Add(i)
        return items

    def build(self):
        for row in VARIABLES:
            self.variable(*row)
        for name, label, bits, values in ENUMERATED:
            v = self.variable(name, t.ddvTBitEnumerator if bits else t.ddvTEnumerator, 1, label)
            target = v.TypeInfo.BitEnumeratorSet if bits else v.TypeInfo.EnumeratorSet
            for value, description in values:
                target.Add(self.item("CBitEnumerator" if bits else "CEnumerator", Value=value,
                                     Description=description))
        self.keep("CUnit", "pressure_units", t.ddoKUnitDef, Unit=self.constructs["pressure_unit"].Definition,
                  Reread=self.definitions("pressure", "upper_range_value", "lower_range_value"))
        self.keep("CRefresh", "refresh_pressure", t.ddoKRefreshDef, Changed=self.definitions("pressure_unit"),
                  Reread=self.definitions("pressure"))
        w = self.keep("CWriteAsOne", "range_values", t.ddoKWriteAsOneDef)
        for n in RANGE[1:]:
            w.Modified.Add(self.item("CVariableItem", Variable=self.constructs[n]))
        for name, number, operation, request, reply, codes in COMMANDS:
            transaction = self.item("CTransaction", Request=self.data_items(request), Reply=self.data_items(reply))
            c = self.keep("CCommand", name, t.ddoKCommandDef, Number=number, Operation=operation)
            c.Transactions.Add(transaction)
            for value, kind, text in codes:
                c.ResponseCodes.Add(self.item("CResponseCode", Value=value, Kind=kind, Description=text))
        zero = self.keep("CMethod", "zero_trim", t.ddoKMethodDef, Label="Zero trim", Help="Sets the present pressure as zero")
        zero.Class.SetClassInfo(t.ddmCCorrection, True)
        display = self.keep("CEditDisplay", "range_display", t.ddoKEditDisplayDef, Label="Range")
        display.DisplayItems.Add(self.item("CEditDisplayItem", RANGE[0]))
        for n in RANGE[1:]:
            display.EditItems.Add(self.item("CEditDisplayItem", n))
        display.PostEditActions.Add(zero.Definition)
        for name, label, items in MENUS:
            m = self.keep("CMenu", name, t.ddoKMenuDef, Label=label)
            for n in items:
                m.Items.Add(self.item("CMenuItem", n))
        m.Items.Item(1).SetQualification(t.ddmiqTReview, True)
        return self


class WholeDevice(unittest.TestCase):
    def setUp(self):
        self.device = Device().build()
        self.objects = self.device.objects

    def test_every_construct_is_kept_through_its_handle(self):
        self.assertEqual(len(self.objects), len(VARIABLES) + len(ENUMERATED) + 3 + len(COMMANDS) + 2 + len(MENUS))
        self.assertEqual({h.ObjectDefinition.Kind for h in self.objects}, set(range(0, 8)))
        menu = self.objects.FindItem(self.device.constructs["root_menu"].Definition).MakeMenu()
        self.assertEqual(menu.ToString(1), "MENU{Definition{Name:root_menu}}")
        self.assertTrue(menu.Items.Item(1).Qualification(t.ddmiqTReadOnly))  # one flag, two names
        for name, number, _, _, reply, _ in COMMANDS:
            command = self.objects.FindItem(definition(name.upper(), t.ddoKCommandDef)).MakeCommand()
            self.assertEqual(command.Number, number)
            self.assertEqual([i.Definition.Name for i in command.Transactions.Item(1).Reply], reply)

    def test_deep_copy_compares_equal_and_is_independent(self):
        copy = filled("CObjectSet", *(handle.GetCopy() for handle in self.objects))
        self.assertTrue(copy.Compare(self.objects))
        for original, copied in zip(self.objects, copy):
            self.assertTrue(copied.Compare(original), original.ToString(1))
            self.assertNotEqual(copied.UntypedObject, original.UntypedObject)
        stored = {h.ObjectDefinition.Name: h for h in copy}
        found = copy.FindItem(definition("pressure", t.ddoKVariableDef))  # a copy of the handle
        stored["pressure"].MakeVariable().Label = "Changed"
        self.assertEqual(self.device.constructs["pressure"].Label, "Pressure")
        self.assertFalse(stored["pressure"].Compare(found))
        stored["root_menu"].MakeMenu().Items.Item(1).SetQualification(t.ddmiqTReview, False)
        self.assertTrue(self.device.constructs["root_menu"].Items.Item(1).Qualification(t.ddmiqTReview))


if __name__ == "__main__":
    unittest.main()
