// Text with shared storage: copying a value shares its buffer, changing a shared one first makes a private
// copy. Null and a length of 0 are the same empty text.
//
// LightweightString<wchar_t> holds UTF-16: each element is one 16-bit code unit, also where wchar_t is wider,
// so a character beyond the basic plane is a surrogate pair on every system. LightweightString<char> holds
// narrow text, UTF-8 where it comes from toUTF8. Comparison and order are by code unit.
//
// A change that the host has no memory for leaves the text as it was.
//
// Thread: any; one value belongs to one thread at a time, buffers may be shared between threads.
#pragma once

#include <algorithm>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "host/object/Api.h"
#include "host/object/RefCounts.h"

namespace Zq {

// The shared storage of a text: the count of its owners, followed by the characters and a terminator.
struct TextBuffer {
    RefCount count;

    // Null when the host has no memory. `bytes` is the room behind the header.
    [[nodiscard]] ZQ_API static TextBuffer* allocate(std::size_t bytes) noexcept;
    ZQ_API static void free(TextBuffer* buffer) noexcept;
};

} // namespace Zq

template <class Char>
class LightweightString {
public:
    using View = std::basic_string_view<Char>;

    // Longest text that a value holds, in elements; what goes beyond it is cut off.
    static constexpr std::uint32_t maximumLength = 0x3fffffff;

    LightweightString() noexcept = default;
    LightweightString(Char const* text) : LightweightString(viewOf(text)) {}
    LightweightString(Char const* text, std::uint32_t length) : LightweightString(View(text, length)) {}
    explicit LightweightString(View text) { append(text); }
    LightweightString(std::uint32_t count, Char character) {
        count = std::min(count, maximumLength);
        if (count != 0 && makeRoom(count)) {
            View::traits_type::assign(characters(), count, character);
            setLength(count);
        }
    }
    LightweightString(LightweightString const& other) noexcept
        : buffer_(other.buffer_), length_(other.length_), capacity_(other.capacity_) {
        if (buffer_ != nullptr) {
            Zq::addReference(buffer_->count);
        }
    }
    LightweightString(LightweightString&& other) noexcept
        : buffer_(std::exchange(other.buffer_, nullptr)), length_(std::exchange(other.length_, 0)),
          capacity_(std::exchange(other.capacity_, 0)) {}
    ~LightweightString() { release(); }
    LightweightString& operator=(LightweightString other) noexcept {
        swap(other);
        return *this;
    }
    void swap(LightweightString& other) noexcept {
        std::swap(buffer_, other.buffer_);
        std::swap(length_, other.length_);
        std::swap(capacity_, other.capacity_);
    }

    [[nodiscard]] bool isEmpty() const noexcept { return length_ == 0; }
    // In elements, that is in code units for wide text and in bytes for narrow text.
    [[nodiscard]] std::uint32_t length() const noexcept { return length_; }
    // Elements that fit before the next change needs a new buffer, the terminator counted.
    [[nodiscard]] std::uint32_t capacity() const noexcept { return capacity_; }
    // Ends with a terminator and is never null. Valid until the value changes.
    [[nodiscard]] Char const* c_str() const noexcept { return buffer_ != nullptr ? characters() : &nothing; }
    [[nodiscard]] View view() const noexcept { return View(c_str(), length_); }
    [[nodiscard]] Char const* begin() const noexcept { return c_str(); }
    [[nodiscard]] Char const* end() const noexcept { return c_str() + length_; }
    [[nodiscard]] Char operator[](std::uint32_t index) const noexcept { return c_str()[index]; }

    // Makes room for `length` elements in all, so that appending up to there allocates no more.
    void reserve(std::uint32_t length) { (void)makeRoom(std::min(length, maximumLength)); }

    LightweightString& append(Char const* text, std::uint32_t length) { return append(View(text, length)); }
    LightweightString& append(View text);
    LightweightString& append(Char character) { return append(View(&character, 1)); }
    LightweightString& operator+=(LightweightString const& text) { return append(text.view()); }
    LightweightString& operator+=(Char const* text) { return append(viewOf(text)); }
    LightweightString& operator+=(Char character) { return append(character); }

    // Replaces each occurrence of `find` from the left and goes on behind the replacement. An empty `find`
    // changes nothing. The two may lie in this text.
    void replaceAll(View find, View replacement);
    [[nodiscard]] LightweightString substr(std::uint32_t from, std::uint32_t count = maximumLength) const {
        return from < length_ ? LightweightString(view().substr(from, count)) : LightweightString();
    }
    [[nodiscard]] bool startsWith(View text) const noexcept { return view().starts_with(text); }
    [[nodiscard]] bool endsWith(View text) const noexcept { return view().ends_with(text); }
    [[nodiscard]] bool contains(View text) const noexcept { return view().find(text) != View::npos; }
    void clear() noexcept { LightweightString().swap(*this); }

    // True when the two values share one buffer.
    [[nodiscard]] bool sharesBufferWith(LightweightString const& other) const noexcept {
        return buffer_ != nullptr && buffer_ == other.buffer_;
    }

    [[nodiscard]] friend bool operator==(LightweightString const& a, LightweightString const& b) noexcept {
        return a.view() == b.view();
    }
    [[nodiscard]] friend bool operator==(LightweightString const& a, Char const* b) noexcept {
        return a.view() == viewOf(b);
    }
    [[nodiscard]] friend std::strong_ordering operator<=>(LightweightString const& a,
                                                          LightweightString const& b) noexcept {
        return a.view() <=> b.view();
    }
    [[nodiscard]] friend LightweightString operator+(LightweightString a, LightweightString const& b) {
        a.append(b.view());
        return a;
    }
    [[nodiscard]] friend LightweightString operator+(LightweightString a, Char const* b) {
        a.append(viewOf(b));
        return a;
    }
    [[nodiscard]] friend LightweightString operator+(LightweightString a, Char b) {
        a.append(b);
        return a;
    }
    [[nodiscard]] friend LightweightString operator+(Char const* a, LightweightString const& b) {
        LightweightString joined;
        View const first = viewOf(a);
        joined.reserve(static_cast<std::uint32_t>(first.size()) + b.length());
        joined.append(first);
        joined.append(b.view());
        return joined;
    }

private:
    static constexpr Char nothing{};

    [[nodiscard]] static View viewOf(Char const* text) noexcept {
        return text != nullptr ? View(text) : View();
    }
    [[nodiscard]] Char* characters() const noexcept { return reinterpret_cast<Char*>(buffer_ + 1); }
    void setLength(std::uint32_t length) noexcept {
        length_ = length;
        characters()[length] = Char{};
    }
    [[nodiscard]] bool isShared() const noexcept {
        return buffer_->count.owners.load(std::memory_order_acquire) != 1;
    }
    // Gives this value a private buffer for `length` elements; false when there is no memory for it.
    [[nodiscard]] bool makeRoom(std::uint32_t length);
    void release() noexcept {
        if (buffer_ != nullptr && Zq::releaseReference(buffer_->count) == 0) {
            Zq::TextBuffer::free(buffer_);
        }
    }

    Zq::TextBuffer* buffer_ = nullptr;
    std::uint32_t length_ = 0;
    std::uint32_t capacity_ = 0;
};

template <class Char>
bool LightweightString<Char>::makeRoom(std::uint32_t length) {
    if (length < capacity_ && !isShared()) {
        return true;
    }
    // Only a text that outgrows its buffer gets more than it asks for: a copy made because others share the
    // buffer would otherwise grow with every copy.
    std::uint32_t const grown = length < capacity_ ? 0 : capacity_ + capacity_ / 2;
    std::uint32_t const capacity = std::max(std::max(length, length_) + 1, grown);
    Zq::TextBuffer* const fresh = Zq::TextBuffer::allocate(std::size_t{capacity} * sizeof(Char));
    if (fresh == nullptr) {
        return false;
    }
    std::uint32_t const kept = length_;
    auto* const target = reinterpret_cast<Char*>(fresh + 1);
    View::traits_type::copy(target, c_str(), kept);
    target[kept] = Char{};
    release();
    buffer_ = fresh;
    length_ = kept;
    capacity_ = capacity;
    return true;
}

template <class Char>
LightweightString<Char>& LightweightString<Char>::append(View text) {
    if (text.size() > maximumLength - length_) {
        text = text.substr(0, maximumLength - length_);
    }
    if (text.empty()) {
        return *this;
    }
    // The text may lie in this value's own buffer: keep that alive until it is copied.
    LightweightString const keep =
        buffer_ != nullptr && text.data() >= begin() && text.data() <= end() ? *this : LightweightString();
    if (makeRoom(length_ + static_cast<std::uint32_t>(text.size()))) {
        View::traits_type::copy(characters() + length_, text.data(), text.size());
        setLength(length_ + static_cast<std::uint32_t>(text.size()));
    }
    return *this;
}

template <class Char>
void LightweightString<Char>::replaceAll(View find, View replacement) {
    View const all = view();
    std::size_t count = 0;
    for (std::size_t at = find.empty() ? View::npos : all.find(find); at != View::npos;
         at = all.find(find, at + find.size())) {
        ++count;
    }
    if (count == 0) {
        return;
    }
    // All the room at once: without the memory for it the text stays as it is.
    std::size_t const length = all.size() + count * replacement.size() - count * find.size();
    LightweightString result;
    if (length != 0 &&
        !result.makeRoom(static_cast<std::uint32_t>(std::min<std::size_t>(length, maximumLength)))) {
        return;
    }
    std::size_t from = 0;
    for (std::size_t at = all.find(find); at != View::npos; at = all.find(find, from)) {
        result.append(all.substr(from, at - from));
        result.append(replacement);
        from = at + find.size();
    }
    result.append(all.substr(from));
    swap(result);
}

using WideString = LightweightString<wchar_t>;
using NarrowString = LightweightString<char>;
