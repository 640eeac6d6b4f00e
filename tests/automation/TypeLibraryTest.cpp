#include "TestSupport.hpp"

#include "tylhart/automation/Registry.hpp"
#include "tylhart/automation/TypeLibrary.hpp"

namespace tylhart::test {
namespace {

using namespace automation;

// Compiled clients keep the identifiers, names, parameter lists and
// assignment kinds they were built against, so the whole listing is pinned
// line by line. A deliberate change of the interface rewrites the file from
// the listing this test leaves in type_library.txt.actual.
TEST(TypeLibraryListing, MatchesThePublishedInterfaces) {
    expectMatchesFile("type_library.txt", toUtf8(typeLibraryListing()));
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
