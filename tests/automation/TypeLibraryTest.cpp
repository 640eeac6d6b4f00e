#include "TestSupport.hpp"

#include <fstream>
#include <sstream>

#include "tylhart/automation/Registry.hpp"
#include "tylhart/automation/TypeLibrary.hpp"

namespace tylhart::test {
namespace {

using namespace automation;

// Compiled clients keep the identifiers, names, parameter lists and
// assignment kinds they were built against, so the whole listing is pinned
// line by line. A deliberate change of the interface rewrites the file from
// the listing this test leaves in type_library.actual.txt.
TEST(TypeLibraryListing, MatchesThePublishedInterfaces) {
    std::ifstream file(TYLHART_TEST_DATA_DIR "/type_library.txt", std::ios::binary);
    std::stringstream published;
    published << file.rdbuf();
    const std::string listing = toUtf8(typeLibraryListing());
    if (listing == published.str()) return;
    std::ofstream("type_library.actual.txt", std::ios::binary) << listing;
    std::istringstream want(published.str()), got(listing);
    std::string w, g;
    for (int line = 1;; ++line) {
        const bool moreWanted = !!std::getline(want, w), moreGot = !!std::getline(got, g);
        if (moreWanted && moreGot && w == g) continue;
        FAIL() << "line " << line << "\n  want " << (moreWanted ? w : "(end)") << "\n  got  " << (moreGot ? g : "(end)");
    }
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
