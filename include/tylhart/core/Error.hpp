// The one failure type of the library and every error record it can raise.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "tylhart/core/Text.hpp"

namespace tylhart {

// A raised error as an Automation client sees it: HRESULT number, Source and
// Description. Callers match on all three, so they are kept exactly.
class Error : public std::exception {
public:
    Error(std::int32_t number, Text source, Text description);

    std::int32_t number() const noexcept { return number_; }
    const Text& source() const noexcept { return source_; }
    const Text& description() const noexcept { return description_; }
    const char* what() const noexcept override { return what_.c_str(); }

private:
    std::int32_t number_;
    Text source_;
    Text description_;
    std::string what_;
};

namespace errors {

// Every check of the library's own raises this number (invalid argument).
inline constexpr std::int32_t InvalidArgument = static_cast<std::int32_t>(0x80070057u);

// The nine descriptions of the library's own checks; callers compare them.
inline constexpr char16_t NotInitialized[] = u"Object not yet initialized!";
inline constexpr char16_t MustBeDefinition[] = u"Parameter must be of type CDefinition!";
inline constexpr char16_t KindFixed[] = u"Once a Kind is initialized, it must not be changed anymore!";
inline constexpr char16_t IndexOutOfRange[] = u"Index is out of range!";
inline constexpr char16_t KindOutOfRange[] = u"The Kind is out of range!";
inline constexpr char16_t OutOfRangeSuffix[] = u" is out of range!";
inline constexpr char16_t WrongKind[] = u"The Object has the wrong kind for that action!";
inline constexpr char16_t TopLevelOnly[] = u"Only DD toplevel objects may be used with this action!";
inline constexpr char16_t NoCompatibleDefinition[] = u"No compatible Definition!";

// Raises one of the descriptions above with the invalid-argument number.
[[noreturn]] void raise(TextView source, TextView description);

// Errors of the platform (conversions, keyed store, calls on Nothing, the
// dispatch layer), numbered as the Visual Basic runtime reports them to an
// Automation client: 0x800A0000 + code.
enum class Runtime : std::uint16_t {
    InvalidCall = 5,          // "Invalid procedure call or argument" (missing key)
    Overflow = 6,
    OutOfMemory = 7,          // a size or count beyond the library's limit
    SubscriptOutOfRange = 9,  // bad position, bad array index
    TypeMismatch = 13,
    OutOfStackSpace = 28,     // nesting deeper than the library's limit
    ObjectNotSet = 91,        // call on Nothing
    InvalidUseOfNull = 94,
    CannotCreateObject = 429, // unknown or unbuilt class
    NoSuchMember = 438,       // dispatch: unknown name or identifier
    WrongArgumentCount = 450, // dispatch: wrong number of arguments
    DuplicateKey = 457,
};

std::int32_t numberOf(Runtime code) noexcept;
Text descriptionOf(Runtime code);
Error runtimeError(Runtime code);
[[noreturn]] void raise(Runtime code);

// The Source of every platform error.
inline constexpr char16_t RuntimeSource[] = u"TylHartTypes";

}  // namespace errors
}  // namespace tylhart
