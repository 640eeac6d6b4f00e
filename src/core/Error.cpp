#include "tylhart/core/Error.hpp"

namespace tylhart {

Error::Error(std::int32_t number, Text source, Text description)
    : number_(number), source_(std::move(source)), description_(std::move(description)) {
    what_ = toUtf8(source_) + ": " + toUtf8(description_);
}

namespace errors {

void raise(TextView source, TextView description) {
    throw Error(InvalidArgument, Text(source), Text(description));
}

std::int32_t numberOf(Runtime code) noexcept {
    return static_cast<std::int32_t>(0x800A0000u + static_cast<std::uint32_t>(code));
}

Text descriptionOf(Runtime code) {
    switch (code) {
        case Runtime::InvalidCall: return u"Invalid procedure call or argument";
        case Runtime::Overflow: return u"Overflow";
        case Runtime::OutOfMemory: return u"Out of memory";
        case Runtime::SubscriptOutOfRange: return u"Subscript out of range";
        case Runtime::TypeMismatch: return u"Type mismatch";
        case Runtime::OutOfStackSpace: return u"Out of stack space";
        case Runtime::ObjectNotSet: return u"Object variable or With block variable not set";
        case Runtime::InvalidUseOfNull: return u"Invalid use of Null";
        case Runtime::CannotCreateObject: return u"ActiveX component can't create object";
        case Runtime::NoSuchMember: return u"Object doesn't support this property or method";
        case Runtime::WrongArgumentCount:
            return u"Wrong number of arguments or invalid property assignment";
        case Runtime::DuplicateKey:
            return u"This key is already associated with an element of this collection";
    }
    return u"Application-defined or object-defined error";
}

Error runtimeError(Runtime code) { return Error(numberOf(code), RuntimeSource, descriptionOf(code)); }

void raise(Runtime code) { throw runtimeError(code); }

}  // namespace errors
}  // namespace tylhart
