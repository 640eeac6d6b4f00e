"""A small device description built late-bound, as a script would build it:
variables with their types, an enumerated unit, commands whose replies hold
the variables and a menu over their handles, all kept in one object set,
copied deep and compared. The whole device, with relations, a method and an
edit display, is built through the C++ interface by examples/device.cpp."""

import unittest

import tylharttypes as t
from test_binding import definition, filled

# name, kind, size, label
VARIABLES = [("pressure", t.ddvTFloat, None, "Pressure"), ("tag", t.ddvTPackedASCII, 8, "Tag"),
             ("pressure_unit", t.ddvTEnumerator, 1, "Unit")]
UNITS = [(7, "bar"), (12, "kPa"), (6, "psi")]
# name, number, reply
COMMANDS = [("read_pv", 1, ["pressure_unit", "pressure"]), ("read_tag", 20, ["tag"])]
MENU = ["pressure", "tag", "read_pv"]


def build():
    """The constructs by name, and an object set holding a handle on each."""
    constructs, objects = {}, t.CObjectSet()

    def keep(cls, name, kind, **fields):
        c = constructs[name] = getattr(t, cls)()
        c.Definition = definition(name, kind)
        for field, value in fields.items():
            setattr(c, field, value)
        objects.Add(c.MakeObject())
        return c

    for name, kind, size, label in VARIABLES:
        v = keep("CVariable", name, t.ddoKVariableDef, Label=label)
        v.TypeInfo.Kind = kind
        if size:
            v.TypeInfo.Size = size
    for value, description in UNITS:
        e = t.CEnumerator()
        e.Value, e.Description = value, description
        constructs["pressure_unit"].TypeInfo.EnumeratorSet.Add(e)
    for name, number, reply in COMMANDS:
        transaction = t.CTransaction()
        for n in reply:
            item = t.CDataItem()
            item.Initialize(t.dddiTDefinition)
            item.Definition, item.Variable = constructs[n].Definition, constructs[n]
            transaction.Reply.Add(item)
        keep("CCommand", name, t.ddoKCommandDef, Number=number, Operation=t.ddcoTRead).Transactions.Add(transaction)
    menu = keep("CMenu", "root_menu", t.ddoKMenuDef, Label="Online")
    for n in MENU:
        item = t.CMenuItem()
        item.obj = constructs[n].MakeObject()
        menu.Items.Add(item)
    menu.Items.Item(1).SetQualification(t.ddmiqTReview, True)
    return constructs, objects


class WholeDevice(unittest.TestCase):
    def setUp(self):
        self.constructs, self.objects = build()

    def test_every_construct_is_kept_through_its_handle(self):
        self.assertEqual(len(self.objects), len(VARIABLES) + len(COMMANDS) + 1)
        self.assertEqual({h.ObjectDefinition.Kind for h in self.objects},
                         {t.ddoKVariableDef, t.ddoKCommandDef, t.ddoKMenuDef})
        unit = self.objects.FindItem(definition("Pressure_Unit")).MakeVariable()
        self.assertEqual([(e.Value, e.Description) for e in unit.TypeInfo.EnumeratorSet], UNITS)
        menu = self.objects.FindItem(definition("ROOT_MENU", t.ddoKMenuDef)).MakeMenu()
        self.assertEqual([i.obj.ObjectDefinition.Name for i in menu.Items], MENU)
        self.assertTrue(menu.Items.Item(1).Qualification(t.ddmiqTReadOnly))  # one flag, two names
        for name, number, reply in COMMANDS:
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
        found = copy.FindItem(definition("pressure"))  # a copy of the handle
        stored["pressure"].MakeVariable().Label = "Changed"
        self.assertEqual(self.constructs["pressure"].Label, "Pressure")
        self.assertFalse(stored["pressure"].Compare(found))
        stored["root_menu"].MakeMenu().Items.Item(1).SetQualification(t.ddmiqTReview, False)
        self.assertTrue(self.constructs["root_menu"].Items.Item(1).Qualification(t.ddmiqTReview))


if __name__ == "__main__":
    unittest.main()
