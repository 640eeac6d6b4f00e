#include "TestSupport.hpp"

#include <algorithm>
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

// Each built class once, with its interface and every member; each enumeration once.
TEST(TypeLibraryListing, ListsEveryBuiltClassAndEveryEnumerationOnce) {
    const auto all = lines();
    std::ptrdiff_t built = 0;
    for (const ClassEntry& c : classes()) {
        if (!c.built()) continue;
        ++built;
        const std::string head = "coclass " + toUtf8(c.name) + " " + toUtf8(c.clsid) + " " + toUtf8(c.progId);
        EXPECT_EQ(block(all, head, "end interface").size(), c.classInfo().members().size() + 3) << head;
    }
    const auto starting = [&](const char* prefix) {
        return std::ranges::count_if(all, [&](const std::string& l) { return l.starts_with(prefix); });
    };
    EXPECT_EQ(starting("coclass "), built);
    EXPECT_EQ(starting("enum "), static_cast<std::ptrdiff_t>(enumerations().size()));
    for (const EnumInfo& e : enumerations())
        EXPECT_EQ(block(all, "enum " + toUtf8(e.name) + " " + toUtf8(e.guid), "end enum").size(), e.members.size() + 2);
}

TEST(TypeLibraryListing, MemberLinesShowAccessorsParametersAndFlags) {
    const auto all = lines();
    for (const std::string line : {
             "  0x40030004 get let set DefaultValue As Variant",  // a Variant field takes every assignment
             "  0x4003000F get set TypeInfo As CType", "  0x40030016 get let LastSetTime As Date",
             "  0x68030003 get let MinValues(ByRef Index As Long) As Variant",  // held as a value, never an object
             "  0x68030003 get let UntypedObject() As Object",
             "  0x60030013 method RecalcToUnit(ByRef NewUnit As String)",
             "  0x60030009 method IsInteger(Optional ByRef TestValue As Variant, "
             "Optional ByRef TestSize As Long = -1) As Boolean",
             "  0xFFFFFFFC get NewEnum() As IUnknown hidden"})
        EXPECT_NE(std::find(all.begin(), all.end(), line), all.end()) << line;
}

// Default values of kinds no built class declares yet.
class Sample final : public Object {
    TYLHART_CLASS(Sample)
public:
    void Find(Text, bool, Date) {}
};

const ClassInfo& Sample::staticClassInfo() {
    static const ClassInfo info = ClassBuilder<Sample>(TypeName)
                                      .method(u"Find", &Sample::Find,
                                              {optional(u"Quote", Text(u"say \"hi\"")), optional(u"Exact", true),
                                               optional(u"Since", Date{0.5})})
                                      .build(nullptr);
    return info;
}

TEST(TypeLibraryListing, DefaultValuesReadAsBasicLiterals) {
    EXPECT_EQ(toUtf8(memberListing(Sample::staticClassInfo().members()[0])),
              "  0x60030000 method Find(Optional Quote As String = \"say \"\"hi\"\"\", "
              "Optional Exact As Boolean = True, Optional Since As Date = #12:00:00 PM#)\n");
}

}  // namespace
}  // namespace tylhart::test
