#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

/// A text of a host reply. Many are a few bytes longer than std::string
/// keeps without a heap block (15): date-times, references, the issuer's chip
/// data, the message for the display. A reply is read on every sale, and a
/// heap block for each such text, with a library call for every copy, cost
/// more than reading all the codes. Up to kInline bytes stay in the object; a
/// longer text is kept whole on the heap, never cut.
class KVRText {
public:
    /// A date-time with fractions and offset, or a reference written as a
    /// UUID with its dashes, fits.
    static constexpr size_t kInline = 40;

    KVRText() noexcept = default;
    // Implicit, as std::string's are: a text is assigned from any text.
    KVRText(std::string_view text) { assign(text); }                      // NOLINT(google-explicit-constructor)
    KVRText(const std::string& text) : KVRText(std::string_view(text)) {}  // NOLINT(google-explicit-constructor)
    KVRText(const char* text) : KVRText(std::string_view(text)) {}         // NOLINT(google-explicit-constructor)
    KVRText(const KVRText& other) : KVRText(other.view()) {}
    KVRText(KVRText&& other) noexcept { take(other); }
    KVRText& operator=(const KVRText& other) {
        if (this != &other) {
            release();
            assign(other.view());
        }
        return *this;
    }
    KVRText& operator=(KVRText&& other) noexcept {
        if (this != &other) {
            release();
            take(other);
        }
        return *this;
    }
    ~KVRText() { release(); }

    std::string_view view() const noexcept { return {data_, size_}; }
    operator std::string_view() const noexcept { return view(); }  // NOLINT(google-explicit-constructor)
    size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }

    friend bool operator==(const KVRText& text, std::string_view other) noexcept { return text.view() == other; }

private:
    bool onHeap() const noexcept { return data_ != inline_; }

    /// On an empty object, which stays empty when the heap has no room.
    void assign(std::string_view text) {
        const size_t size = text.size();
        if (size <= kInline) {
            copyShort(inline_, text.data(), size);
        } else {
            char* data = new char[size];
            std::memcpy(data, text.data(), size);
            data_ = data;
        }
        size_ = size;
    }

    /// Leaves `other` empty.
    void take(KVRText& other) noexcept {
        if (other.onHeap()) {
            data_ = std::exchange(other.data_, other.inline_);
        } else {
            std::memcpy(inline_, other.inline_, other.size_);
        }
        size_ = std::exchange(other.size_, 0);
    }

    void release() noexcept {
        if (onHeap()) delete[] data_;
        data_ = inline_;
        size_ = 0;
    }

    /// A few moves of fixed width, overlapping, instead of a call; only the
    /// `size` bytes are read and written.
    static void copyShort(char* to, const char* from, size_t size) noexcept {
        if (size >= 16) {
            moveBytes<16>(to, from);
            if (size > 32) moveBytes<16>(to + 16, from + 16);
            moveBytes<16>(to + size - 16, from + size - 16);
        } else if (size >= 8) {
            moveBytes<8>(to, from);
            moveBytes<8>(to + size - 8, from + size - 8);
        } else if (size >= 4) {
            moveBytes<4>(to, from);
            moveBytes<4>(to + size - 4, from + size - 4);
        } else {
            for (size_t i = 0; i < size; ++i) to[i] = from[i];
        }
    }

    template <size_t N>
    static void moveBytes(char* to, const char* from) noexcept {
        char bytes[N];
        std::memcpy(bytes, from, N);
        std::memcpy(to, bytes, N);
    }

    char* data_ = inline_;
    size_t size_ = 0;
    char inline_[kInline];
};
