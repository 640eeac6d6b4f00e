#include "tylhart/variables/CCharArray.hpp"

#include <limits>
#include <string>

#include "tylhart/core/Limits.hpp"
#include "tylhart/external/CCharBuffer.hpp"

namespace tylhart {

namespace {

constexpr DispId CountId = CCharBuffer::CountId;
constexpr DispId CharId = CCharBuffer::CharId;
constexpr DispId TextId = CCharBuffer::ContentsId;
constexpr DispId PrintTextId = CCharBuffer::TextToNulId;

constexpr char16_t CharSource[] = u"CCharArray.Char";

}  // namespace

Object& CCharArray::buffer() const {
    if (!buffer_) buffer_ = make<CCharBuffer>();
    return *buffer_;
}

Text CCharArray::text() const {
    Variant args[] = {Variant(std::int32_t{0}), Variant(readLength())};
    return invoke(buffer(), TextId, Access::Get, args).toText();
}

void CCharArray::SetText(const Text& newText) {
    // A fixed size beyond the element limit is refused before the padding
    // is built; the buffer refuses the same for a text without one.
    if (Size >= 1) checkElements(Size);
    Text stored = newText;
    if (Size >= 1) stored.resize(static_cast<std::size_t>(Size), u'\0');
    // One place more than the characters, for the closing NUL.
    if (stored.size() >= static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        errors::raise(errors::Runtime::Overflow);
    const std::int32_t places = static_cast<std::int32_t>(stored.size()) + 1;
    Variant args[] = {Variant(std::int32_t{0}), Variant(places), Variant(std::move(stored))};
    invoke(buffer(), TextId, Access::Let, args);
}

std::uint8_t CCharArray::Char(std::int32_t index) const {
    if (index < 0) errors::raise(CharSource, errors::IndexOutOfRange);
    if (index >= invoke(buffer(), CountId, Access::Get).toLong()) return 0;
    Variant args[] = {Variant(index), Variant(std::int32_t{1})};
    return invoke(buffer(), CharId, Access::Get, args).toByte();
}

void CCharArray::SetChar(std::int32_t index, std::uint8_t value) {
    if (index < 0) errors::raise(CharSource, errors::IndexOutOfRange);
    if (Size >= 0 && index >= Size) errors::raise(CharSource, errors::IndexOutOfRange);
    Variant args[] = {Variant(index), Variant(std::int32_t{1}), Variant(std::int32_t{value})};
    invoke(buffer(), CharId, Access::Let, args);
}

void CCharArray::SetFromByteArray(const ByteArray& barray) {
    if (!barray.empty() && barray.size() <= static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        Size = static_cast<std::int32_t>(barray.size());
    for (std::int32_t i = 0; i < Size; ++i) {
        const std::size_t at = static_cast<std::size_t>(i);
        if (at >= barray.size()) errors::raise(errors::Runtime::SubscriptOutOfRange);
        SetChar(i, barray[at]);
    }
}

Variant CCharArray::ToString(std::int16_t infoLevel) const {
    if (infoLevel < 1) return Variant();
    Variant args[] = {Variant(std::int32_t{0}), Variant(readLength())};
    Text out = u"CharArray{Text:" + invoke(buffer(), PrintTextId, Access::Get, args).toText();
    if (infoLevel > 1) out.append(u", Size:"sv).append(decimal(Size));
    return std::move(out) + u"}";
}

const ClassInfo& CCharArray::staticClassInfo() {
    static const ClassInfo info =
        ClassBuilder<CCharArray>(TypeName)
            .field(u"Size", &CCharArray::Size)
            .property(u"text", &CCharArray::text, &CCharArray::SetText)
            .withId(DispIdValue)
            .property(u"Char", &CCharArray::Char, &CCharArray::SetChar, {required(u"Index")})
            .rawMethod(u"SetFromByteArray", Text(), {ParamInfo{u"barray", u"Byte()"}},
                       [](CCharArray& self, Args args) -> Variant {
                           if (args.size() > 1) errors::raise(errors::Runtime::WrongArgumentCount);
                           if (args.empty() || args[0].isMissing()) detail::raiseMissingArgument();
                           const ByteArray* bytes = args[0].get<ByteArray>();
                           if (!bytes) errors::raise(errors::Runtime::TypeMismatch);
                           self.SetFromByteArray(*bytes);
                           return Variant();
                       })
            .method(u"ToString", &CCharArray::ToString, {optional(u"InfoLevel", std::int16_t{1})})
            .build();
    return info;
}

}  // namespace tylhart
