"""A whole device description built late-bound, as a script would build it:
variables of several kinds, relations, commands, a method, a menu tree and
an edit display, all kept in one object set, copied deep and compared."""

import unittest

import tylharttypes as t
from test_dispatch import definition


class Device:
    """Builds the description; `constructs` maps each name to its construct."""

    def __init__(self):
        self.constructs = {}
        self.handles = {}  # the handles the set holds, not copies of them
        self.objects = t.CObjectSet()

    def keep(self, construct):
        name = construct.Definition.Name
        self.constructs[name] = construct
        self.handles[name] = construct.MakeObject()
        self.objects.Add(self.handles[name])
        return construct

    def construct(self, cls, name, kind):
        c = getattr(t, cls)()
        c.Definition = definition(name, kind)
        return c

    def variable(self, name, kind, size, label, low=None, high=None):
        v = self.construct("CVariable", name, t.ddoKVariableDef)
        v.Label = label
        typ = v.TypeInfo
        typ.Kind = kind
        if size is not None:
            typ.Size = size
        if low is not None:
            typ.MaxRangeNo = 1
            typ.SetMinValues(1, low)
            typ.SetMaxValues(1, high)
        return self.keep(v)

    def enumerated(self, name, label, kind, values):
        v = self.variable(name, kind, 1, label)
        bits = kind == t.ddvTBitEnumerator
        for value, description in values:
            e = t.CBitEnumerator() if bits else t.CEnumerator()
            e.Value, e.Description = value, description
            (v.TypeInfo.BitEnumeratorSet if bits else v.TypeInfo.EnumeratorSet).Add(e)
        return v

    def handle_item(self, cls, name):
        item = getattr(t, cls)()
        item.obj = self.handles[name]
        return item

    def variables(self, *names):
        s = t.CVariableDefinitionSet()
        for n in names:
            s.Add(self.constructs[n].Definition)
        return s

    def data_items(self, *names):
        items = t.CDataItemList()
        for n in names:
            item = t.CDataItem()
            item.Initialize(t.dddiTDefinition)
            item.Definition = self.constructs[n].Definition
            item.Variable = self.constructs[n]
            items.Add(item)
        return items

    def command(self, name, number, operation, request, reply, codes):
        c = self.construct("CCommand", name, t.ddoKCommandDef)
        c.Number, c.Operation = number, operation
        tr = t.CTransaction()
        tr.Request, tr.Reply = self.data_items(*request), self.data_items(*reply)
        c.Transactions.Add(tr)
        for value, kind, text in codes:
            rc = t.CResponseCode()
            rc.Value, rc.Kind, rc.Description = value, kind, text
            c.ResponseCodes.Add(rc)
        return self.keep(c)

    def menu(self, name, label, *items):
        m = self.construct("CMenu", name, t.ddoKMenuDef)
        m.Label = label
        for n in items:
            m.Items.Add(self.handle_item("CMenuItem", n))
        return self.keep(m)

    def build(self):
        self.variable("pressure", t.ddvTFloat, None, "Pressure", 0.0, 400.0)
        self.variable("temperature", t.ddvTFloat, None, "Sensor temperature", -40.0, 85.0)
        self.variable("upper_range_value", t.ddvTFloat, None, "URV")
        self.variable("lower_range_value", t.ddvTFloat, None, "LRV")
        self.variable("damping", t.ddvTDouble, None, "Damping")
        self.variable("poll_address", t.ddvTUnsigned, 1, "Poll address", 0, 63)
        self.variable("sensor_offset", t.ddvTInt, 2, "Sensor offset")
        self.variable("tag", t.ddvTPackedASCII, 8, "Tag")
        self.variable("descriptor", t.ddvTASCII, 16, "Descriptor")
        self.variable("install_date", t.ddvTDate, None, "Install date")
        self.enumerated("pressure_unit", "Unit", t.ddvTEnumerator, [(7, "bar"), (12, "kPa"), (6, "psi")])
        self.enumerated("device_status", "Status", t.ddvTBitEnumerator,
                        [(1, "Primary variable out of limits"), (128, "Device malfunction")])

        unit = self.construct("CUnit", "pressure_units", t.ddoKUnitDef)
        unit.Unit = self.constructs["pressure_unit"].Definition
        unit.Reread = self.variables("pressure", "upper_range_value", "lower_range_value")
        self.keep(unit)
        refresh = self.construct("CRefresh", "refresh_pressure", t.ddoKRefreshDef)
        refresh.Changed = self.variables("pressure_unit")
        refresh.Reread = self.variables("pressure")
        self.keep(refresh)
        range_values = self.construct("CWriteAsOne", "range_values", t.ddoKWriteAsOneDef)
        for n in ("upper_range_value", "lower_range_value"):
            item = t.CVariableItem()
            item.Variable = self.constructs[n]
            range_values.Modified.Add(item)
        self.keep(range_values)

        self.command("read_pv", 1, t.ddcoTRead, [], ["pressure_unit", "pressure"],
                     [(0, t.ddrcTSUCCESS, "Success"), (8, t.ddrcTMISC_WARNING, "Update failure")])
        self.command("write_tag", 18, t.ddcoTWrite, ["tag", "descriptor", "install_date"],
                     ["tag", "descriptor", "install_date"],
                     [(0, t.ddrcTSUCCESS, "Success"), (7, t.ddrcTMODE_ERROR, "In write protect mode")])
        self.command("write_range", 35, t.ddcoTWrite, ["pressure_unit", "upper_range_value", "lower_range_value"],
                     ["pressure_unit", "upper_range_value", "lower_range_value"],
                     [(0, t.ddrcTSUCCESS, "Success"), (9, t.ddrcTDATA_ENTRY_ERROR, "Lower range value too high")])

        zero = self.construct("CMethod", "zero_trim", t.ddoKMethodDef)
        zero.Label, zero.Help = "Zero trim", "Sets the present pressure as zero"
        zero.Class.SetClassInfo(t.ddmCCorrection, True)
        self.keep(zero)

        ranges = self.construct("CEditDisplay", "range_display", t.ddoKEditDisplayDef)
        ranges.Label = "Range"
        for n, target in [("pressure_unit", ranges.DisplayItems), ("upper_range_value", ranges.EditItems),
                          ("lower_range_value", ranges.EditItems)]:
            target.Add(self.handle_item("CEditDisplayItem", n))
        ranges.PostEditActions.Add(zero.Definition)
        self.keep(ranges)

        self.menu("process_variables", "Process variables", "pressure", "temperature", "device_status")
        self.menu("device_setup", "Device setup", "tag", "descriptor", "damping", "zero_trim", "range_display")
        root = self.menu("root_menu", "Online", "process_variables", "device_setup")
        root.Items.Item(1).SetQualification(t.ddmiqTReview, True)
        return self


class WholeDevice(unittest.TestCase):
    def setUp(self):
        self.device = Device().build()
        self.objects = self.device.objects

    def test_every_construct_is_kept_through_its_handle(self):
        self.assertEqual(len(self.objects), 12 + 3 + 3 + 1 + 1 + 3)
        kinds = {h.ObjectDefinition.Kind for h in self.objects}
        self.assertEqual(kinds, set(range(0, 8)))
        menu = self.objects.FindItem(self.device.constructs["root_menu"].Definition).MakeMenu()
        self.assertEqual(menu.ToString(1), "MENU{Definition{Name:root_menu}}")
        self.assertTrue(menu.Items.Item(1).Qualification(t.ddmiqTReadOnly))  # one flag, two names
        command = self.objects.FindItem(definition("READ_PV", t.ddoKCommandDef)).MakeCommand()
        self.assertEqual(command.Number, 1)
        self.assertEqual(command.Transactions.Item(1).Reply.Item(2).Definition.Name, "pressure")

    def test_deep_copy_compares_equal_and_is_independent(self):
        copy = t.CObjectSet()
        for handle in self.objects:
            copy.Add(handle.GetCopy())
        self.assertTrue(copy.Compare(self.objects))
        for original, copied in zip(self.objects, copy):
            self.assertTrue(copied.Compare(original), original.ToString(1))
            self.assertNotEqual(copied.UntypedObject, original.UntypedObject)
        copied_pressure = copy.FindItem(definition("pressure", t.ddoKVariableDef))  # a copy of the handle
        stored = [h for h in copy if h.ObjectDefinition.Name == "pressure"][0]
        stored.MakeVariable().Label = "Changed"
        self.assertEqual(self.device.constructs["pressure"].Label, "Pressure")
        self.assertFalse(stored.Compare(copied_pressure))
        root = [h for h in copy if h.ObjectDefinition.Name == "root_menu"][0].MakeMenu()
        root.Items.Item(1).SetQualification(t.ddmiqTReview, False)
        self.assertTrue(self.device.constructs["root_menu"].Items.Item(1).Qualification(t.ddmiqTReview))


if __name__ == "__main__":
    unittest.main()
