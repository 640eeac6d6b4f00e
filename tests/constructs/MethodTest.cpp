#include "TestSupport.hpp"
#include "tylhart/constructs/CMethod.hpp"

namespace tylhart::test {
namespace {

Ref<CMethod> method() {
    return made<CMethod>([](CMethod& m) {
        m.Definition()->SetName(u"m"), m.Label = u"L", m.Help = u"H", m.Uid = 7;
        m.Class->SetClassInfo(ddmCInput, true);
    });
}

TEST(Method, RenderExactly) {
    expectRenderings({
        {method, 0, nullptr},
        {method, 1, "METHOD{Definition{Name:m}}"},
        // The definition keeps the method's own level; the class goes one down.
        {method, 2, "METHOD{Definition{Name:m, Kind:4}, Label:L, Help:H, Validity:True, Uid:7, "
                    "Class:MethodClass{Type:00100000000}}"},
        {[] { return made<CMethod>([](CMethod& m) { m.Validity = false, m.Uid = -3, m.Class = nullptr; }); }, 3,
         "METHOD{Definition{Name:unknown, Kind:4}, Label:, Help:, Validity:False, Uid:-3}"},
    });
}

TEST(Method, CopyIsDeepAndCompareCoversEveryFieldInOrder) {
    auto source = method(), copy = source->GetCopy();
    EXPECT_TRUE(copy->Compare(source) && copy->Class != source->Class && copy->Definition() != source->Definition());
    copy->Class->SetClassInfo(ddmCHart, true);
    EXPECT_TRUE(!source->Class->ClassInfo(ddmCHart) && !copy->Compare(source));
    expectEachChangeDiffers<CMethod>(method, {[](CMethod& m) { m.Label = u"l"; }, [](CMethod& m) { m.Help = u"h"; },
        [](CMethod& m) { m.Validity = false; }, [](CMethod& m) { m.Uid = 8; },
        [](CMethod& m) { m.Class->SetClassInfo(ddmCInput, false); }, [](CMethod& m) { m.Definition()->SetName(u""); }});
    // Label is compared before Class, Class before the definition.
    auto noClass = made<CMethod>([](CMethod& m) { m.Class = nullptr; });
    EXPECT_FALSE(noClass->Compare(method()));
    auto renamed = made<CMethod>([](CMethod& m) { m.Definition()->SetName(u"x"); });
    EXPECT_EQ(raised([&] { noClass->Compare(renamed); }), NotSet);
}

}  // namespace
}  // namespace tylhart::test
