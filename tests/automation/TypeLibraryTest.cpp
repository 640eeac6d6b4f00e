#include "TestSupport.hpp"

#include <sstream>
#include <vector>

#include "tylhart/automation/Registry.hpp"
#include "tylhart/automation/TypeLibrary.hpp"

namespace tylhart::test {
namespace {

using namespace automation;

std::vector<std::string> lines() {
    std::vector<std::string> out;
    std::istringstream in(toUtf8(typeLibraryListing()));
    for (std::string line; std::getline(in, line);) out.push_back(line);
    return out;
}

// The lines from `first` up to and including the next `last`.
std::vector<std::string> block(const std::vector<std::string>& all, const std::string& first,
                               const std::string& last) {
    auto from = std::find(all.begin(), all.end(), first);
    if (from == all.end()) return {"(missing) " + first};
    auto to = std::find(from, all.end(), last);
    return {from, to == all.end() ? to : to + 1};
}

TEST(TypeLibraryListing, DefinitionInterface) {
    const std::vector<std::string> expected = {
        "coclass CDefinition {65488EEC-01BE-11D5-8151-00E0291221F9} TylHartTypes.CDefinition",
        "interface _CDefinition {729158C8-9D51-4DB2-96AA-0E9801C2A6FB}",
        "  0x68030000 get let Name() As String",
        "  0x68030001 get Kind() As enumDDObjectKind",
        "  0x60030002 method Initialize(NewName As String, NewKind As enumDDObjectKind)",
        "  0x60030003 method GetCopy() As CDefinition",
        "  0x60030004 method SetFromObject(ToCopy As CDefinition)",
        "  0x60030005 method Compare(ToCompare As CDefinition) As Boolean",
        "  0x60030006 method ToString(Optional InfoLevel As Integer = 1) As Variant",
        "end interface",
    };
    auto all = lines();
    ASSERT_FALSE(all.empty());
    EXPECT_EQ(all.front(), "library TylHartTypes {016E9347-5C94-11D4-80BA-00E0291221F9} locale 0x0409");
    EXPECT_EQ(block(all, expected.front(), "end interface"), expected);
}

TEST(TypeLibraryListing, EnumerationKeepsDuplicateValuesInDeclarationOrder) {
    EXPECT_EQ(block(lines(), "enum enumDDMenuItemQualificationType {285215E6-027B-11D5-8152-00E0291221F9}",
                    "end enum"),
              (std::vector<std::string>{
                  "enum enumDDMenuItemQualificationType {285215E6-027B-11D5-8152-00E0291221F9}",
                  "  ddmiqTDisplayValue = 0", "  ddmiqTReadOnly = 1", "  ddmiqTReview = 1", "  ddmiqTMax = 1",
                  "end enum"}));
}

TEST(TypeLibraryListing, ListsEveryBuiltClassAndEveryEnumerationOnce) {
    auto all = lines();
    auto count = [&](const std::string& prefix) {
        return std::count_if(all.begin(), all.end(), [&](const std::string& l) { return l.rfind(prefix, 0) == 0; });
    };
    std::ptrdiff_t built = 0;
    for (const ClassEntry& c : classes()) {
        const std::string coclass = "coclass " + toUtf8(c.name) + " " + toUtf8(c.clsid) + " " + toUtf8(c.progId);
        EXPECT_EQ(count(coclass), c.built() ? 1 : 0) << coclass;
        if (c.built()) {
            ++built;
            auto members = block(all, "interface _" + toUtf8(c.name) + " " + toUtf8(c.iid), "end interface");
            EXPECT_EQ(members.size(), c.classInfo().members().size() + 2) << toUtf8(c.name);
        }
    }
    EXPECT_EQ(count("coclass "), built);
    EXPECT_EQ(count("enum "), 14);
    for (const EnumInfo& e : enumerations()) {
        auto members = block(all, "enum " + toUtf8(e.name) + " " + toUtf8(e.guid), "end enum");
        EXPECT_EQ(members.size(), e.members.size() + 2) << toUtf8(e.name);
    }
}

// A class of this test only, to cover the member shapes the built classes
// may not all have yet.
class Sample final : public Object {
    TYLHART_CLASS(Sample)
public:
    std::int32_t Size = 0;
    Ref<Object> Owner;
    Variant Tag;
    Variant Limit(std::int16_t) const { return Variant(); }
    void SetLimit(std::int16_t, const Variant&) {}
    void Find(Text, bool, Date, Text) {}
    Ref<Enumerator> NewEnum() const { return make<Enumerator>(std::vector<Variant>{}); }
};

const ClassInfo& Sample::staticClassInfo() {
    static const ClassInfo info =
        ClassBuilder<Sample>(TypeName)
            .field(u"Size", &Sample::Size)
            .field(u"Owner", &Sample::Owner)
            .field(u"Tag", &Sample::Tag)
            .property(u"Limit", &Sample::Limit, &Sample::SetLimit, {required(u"Index")})
            .method(u"Find", &Sample::Find,
                    {Param{u"Text", Missing{}, false, true}, optional(u"Exact", true),
                     optional(u"Since", Date{0.5}), optional(u"Quote", Text(u"say \"hi\""))})
            .newEnum(&Sample::NewEnum)
            .build(nullptr);
    return info;
}

TEST(TypeLibraryListing, MemberLinesShowAccessorsParametersAndFlags) {
    const std::vector<std::string> expected = {
        "  0x40030000 get let Size As Long\n",
        "  0x40030001 get set Owner As Object\n",
        "  0x40030002 get let set Tag As Variant\n",
        "  0x68030000 get let set Limit(Index As Integer) As Variant\n",
        "  0x60030001 method Find(ByRef Text As String, Optional Exact As Boolean = True, "
        "Optional Since As Date = #12:00:00 PM#, Optional Quote As String = \"say \"\"hi\"\"\")\n",
        "  0xFFFFFFFC get NewEnum() As IUnknown hidden\n",
    };
    std::vector<std::string> actual;
    for (const MemberInfo& m : Sample::staticClassInfo().members()) actual.push_back(toUtf8(memberListing(m)));
    EXPECT_EQ(actual, expected);
}

}  // namespace
}  // namespace tylhart::test
