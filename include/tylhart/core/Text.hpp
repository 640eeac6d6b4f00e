// Text: counted UTF-16 strings, as the Automation string type holds them.
#pragma once

#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

namespace tylhart {

// Labels appended as u"..."sv carry their length, so renderings, which
// append dozens per object, do not count their characters each time.
using namespace std::string_view_literals;

// Lengths and positions count UTF-16 code units, as Automation clients do.
using Text = std::u16string;
using TextView = std::u16string_view;

// An immutable text whose copies share one heap block of a count and the
// characters, for private fields copied far more often than changed: a
// definition's name goes with every copy of its object. A static text (a
// literal default) is used in place. The count needs no atomics: objects,
// and so their fields, are used by one thread at a time.
class SharedText {
public:
    SharedText() noexcept = default;
    explicit SharedText(TextView text);
    // Characters of static storage duration, used in place.
    static SharedText ofStatic(TextView text) noexcept {
        SharedText shared;
        shared.data_ = text.data();
        shared.size_ = text.size();
        return shared;
    }
    SharedText(const SharedText& other) noexcept : block_(other.block_), data_(other.data_), size_(other.size_) {
        if (block_) ++*block_;
    }
    SharedText(SharedText&& other) noexcept
        : block_(std::exchange(other.block_, nullptr)),
          data_(std::exchange(other.data_, u"")),
          size_(std::exchange(other.size_, 0)) {}
    SharedText& operator=(SharedText&& other) noexcept {
        SharedText moved(std::move(other));
        swap(moved);
        return *this;
    }
    SharedText& operator=(const SharedText& other) noexcept {
        SharedText copy(other);
        swap(copy);
        return *this;
    }
    ~SharedText() {
        if (block_ && --*block_ == 0) release(block_);
    }

    TextView view() const noexcept { return {data_, size_}; }
    operator TextView() const noexcept { return view(); }  // NOLINT: reads as its text

private:
    void swap(SharedText& other) noexcept {
        std::swap(block_, other.block_);
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
    }
    static void release(std::size_t* block) noexcept;

    std::size_t* block_ = nullptr;  // the count; the characters follow it
    const char16_t* data_ = u"";
    std::size_t size_ = 0;
};

// UTF-8 <-> UTF-16 at the edges, so C++ callers can use ordinary literals.
// Malformed UTF-8 becomes U+FFFD; lone surrogates become U+FFFD in UTF-8.
Text fromUtf8(std::string_view utf8);
std::string toUtf8(TextView text);

// A number in plain decimal, as renderings write it; written on the stack,
// since renderings and set keys make one for nearly every number they meet.
inline Text decimal(long long value) {
    char16_t digits[20];
    char16_t* first = std::end(digits);
    unsigned long long magnitude = value < 0 ? 0ull - static_cast<unsigned long long>(value)
                                             : static_cast<unsigned long long>(value);
    do {
        *--first = static_cast<char16_t>(u'0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    if (value < 0) *--first = u'-';
    return Text(first, std::end(digits));
}

// Case folding used wherever keys are compared without regard to case.
// ASCII, which nearly every DD name is, folds inline: key hashing calls this
// for every character of every probe.
char16_t foldCaseBeyondAscii(char16_t c) noexcept;
inline char16_t foldCase(char16_t c) noexcept {
    if (c < 0x80) return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 32) : c;
    return foldCaseBeyondAscii(c);
}
Text foldCase(TextView text);
inline bool equalsIgnoringCase(TextView a, TextView b) noexcept {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i] && foldCase(a[i]) != foldCase(b[i])) return false;
    return true;
}

}  // namespace tylhart
