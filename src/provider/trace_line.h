// Trace lines of the enumerations, put together in a buffer and written to
// standard output in larger pieces. An enumeration writes a line or two for
// every VSAN and often one for every object, and printf's reading of its
// format cost about as much as building the object the line is about. The
// bytes written are those the equivalent printf calls would write, in the
// same order: "%d" for numbers, "%.*s" with the field's size for record
// fields.
//
// A TraceLine is one line, written when it goes. A walk keeps one
// TraceBatch for all its lines and writes them when the buffer is full and
// when the walk ends, which spares it a locked stdio call per line. Nothing
// else may write to standard output while a batch holds unwritten lines.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace zone {

template <std::size_t Size>
class TraceBuffer {
  public:
    // The buffer is filled before it is read: clearing it first would cost
    // more than the lines.
    // cppcheck-suppress uninitMemberVar
    TraceBuffer() {}
    TraceBuffer(const TraceBuffer &) = delete;
    TraceBuffer &operator=(const TraceBuffer &) = delete;
    // Whatever was not written yet is written.
    ~TraceBuffer() { write(); }

    TraceBuffer &text(std::string_view text) {
        // Most pieces fit and are copied in one go.
        if (text.size() <= sizeof buffer_ - length_) {
            append(text.data(), text.size());
            return *this;
        }
        while (!text.empty()) {
            if (length_ == sizeof buffer_) write();
            const std::size_t room = sizeof buffer_ - length_;
            const std::size_t part = text.size() < room ? text.size() : room;
            append(text.data(), part);
            text.remove_prefix(part);
        }
        return *this;
    }

    // Digits go straight into the buffer when any number fits.
    TraceBuffer &number(long value) {
        constexpr std::size_t kLongest = 20;  // "-9223372036854775808"
        if (sizeof buffer_ - length_ >= kLongest) {
            char *const at = buffer_ + length_;
            length_ += static_cast<std::size_t>(std::to_chars(at, at + kLongest, value).ptr - at);
            return *this;
        }
        char digits[24];
        const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
        return text(std::string_view(digits, static_cast<std::size_t>(end - digits)));
    }

    // A fixed-size record field: up to its first NUL, never past its end.
    template <std::size_t N>
    TraceBuffer &field(const char (&chars)[N]) {
        return text(std::string_view(chars, strnlen(chars, N)));
    }

    void write() {
        if (length_ != 0) std::fwrite(buffer_, 1, length_, stdout);
        length_ = 0;
    }

  private:
    // A literal's copy is inlined. Any other piece goes to the C library's
    // memcpy: inlined, a copy whose length is only bounded (by the buffer)
    // became a `rep movsq`, slow to start for the few bytes of a number or
    // a name.
    void append(const char *data, std::size_t size) {
#if defined(__GNUC__)
        if (__builtin_constant_p(size))
            std::memcpy(buffer_ + length_, data, size);
        else
            copy_bytes(buffer_ + length_, data, size);
#else
        std::memcpy(buffer_ + length_, data, size);
#endif
        length_ += size;
    }
    [[gnu::noinline]] static void copy_bytes(char *to, const char *from, std::size_t size) {
        std::memcpy(to, from, size);
    }

    char buffer_[Size];
    std::size_t length_ = 0;
};

using TraceLine = TraceBuffer<512>;
using TraceBatch = TraceBuffer<8192>;

}  // namespace zone
