// Trace lines of the enumerations, put together in a buffer and written to
// standard output in one piece. An enumeration writes a line or two for
// every VSAN and often one for every object, and printf's reading of its
// format cost about as much as building the object the line is about. The
// bytes written are those the equivalent printf would write: "%d" for
// numbers, "%.*s" with the field's size for record fields.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace zone {

class TraceLine {
  public:
    // The buffer is filled before it is read: clearing it first would cost
    // more than the line.
    // cppcheck-suppress uninitMemberVar
    TraceLine() {}
    TraceLine(const TraceLine &) = delete;
    TraceLine &operator=(const TraceLine &) = delete;
    // Whatever was not written yet (a line left without write()) is written.
    ~TraceLine() { write(); }

    TraceLine &text(std::string_view text) {
        while (!text.empty()) {
            if (length_ == sizeof buffer_) write();
            const std::size_t room = sizeof buffer_ - length_;
            const std::size_t part = text.size() < room ? text.size() : room;
            std::memcpy(buffer_ + length_, text.data(), part);
            length_ += part;
            text.remove_prefix(part);
        }
        return *this;
    }

    TraceLine &number(long value) {
        char digits[24];
        const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
        return text(std::string_view(digits, static_cast<std::size_t>(end - digits)));
    }

    // A fixed-size record field: up to its first NUL, never past its end.
    template <std::size_t N>
    TraceLine &field(const char (&chars)[N]) {
        return text(std::string_view(chars, strnlen(chars, N)));
    }

    void write() {
        if (length_ != 0) std::fwrite(buffer_, 1, length_, stdout);
        length_ = 0;
    }

  private:
    char buffer_[512];
    std::size_t length_ = 0;
};

}  // namespace zone
