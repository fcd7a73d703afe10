#include "server/xml_writer.h"

#include <algorithm>
#include <utility>

namespace zoneserver {

namespace {

// Blocks stay below the C library's threshold for mapping memory of its
// own, so that they are recycled from the heap without a system call each.
constexpr std::size_t kBlock = 64 * 1024;

template <typename Put>
void escape_into(std::string_view text, Put put) {
    std::size_t plain = 0;  // start of the run not yet written
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        std::string_view replacement;
        switch (c) {
            case '&':
                replacement = "&amp;";
                break;
            case '<':
                replacement = "&lt;";
                break;
            case '>':
                replacement = "&gt;";
                break;
            case '"':
                replacement = "&quot;";
                break;
            case '\'':
                replacement = "&apos;";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r')
                    replacement = "?";
                else
                    continue;
        }
        put(text.substr(plain, i - plain));
        put(replacement);
        plain = i + 1;
    }
    put(text.substr(plain));
}

}  // namespace

void append_escaped(std::string &out, std::string_view text) {
    escape_into(text, [&out](std::string_view piece) { out += piece; });
}

// ---- XmlText ------------------------------------------------------------------

std::string XmlText::str() const {
    std::string out;
    out.reserve(size_);
    for (const std::string &block : blocks_) out += block;
    return out;
}

void XmlText::release_block(std::size_t i) {
    if (i < blocks_.size()) std::string().swap(blocks_[i]);
}

// ---- XmlWriter ----------------------------------------------------------------

std::string &XmlWriter::room(std::size_t n) {
    // The first block grows as a string does; a full one is followed by a
    // new block reserved at once, so that no block is copied once it is big.
    if (text_.blocks_.empty() || text_.blocks_.back().size() + n > kBlock) {
        if (text_.blocks_.empty() || !text_.blocks_.back().empty()) {
            std::string block;
            if (!text_.blocks_.empty()) block.reserve(std::max(kBlock, n));
            text_.blocks_.push_back(std::move(block));
        }
    }
    return text_.blocks_.back();
}

void XmlWriter::put(std::string_view bytes) {
    if (bytes.empty()) return;
    room(bytes.size()) += bytes;
    text_.size_ += bytes.size();
}

void XmlWriter::put(char c) {
    room(1) += c;
    ++text_.size_;
}

void XmlWriter::finish_start_tag() {
    if (start_tag_pending_) {
        put('>');
        start_tag_pending_ = false;
    }
}

XmlWriter &XmlWriter::open(std::string_view name) {
    finish_start_tag();
    put('<');
    put(name);
    open_.push_back(name);
    start_tag_pending_ = true;
    return *this;
}

XmlWriter &XmlWriter::attribute(std::string_view name, std::string_view value) {
    // Attributes only make sense right after open(); anywhere else they would
    // land in content, so they are dropped.
    if (!start_tag_pending_) return *this;
    put(' ');
    put(name);
    put("=\"");
    escape_into(value, [this](std::string_view piece) { put(piece); });
    put('"');
    return *this;
}

XmlWriter &XmlWriter::text(std::string_view text) {
    finish_start_tag();
    escape_into(text, [this](std::string_view piece) { put(piece); });
    return *this;
}

XmlWriter &XmlWriter::close() {
    if (open_.empty()) return *this;
    finish_start_tag();
    put("</");
    put(open_.back());
    put('>');
    open_.pop_back();
    return *this;
}

XmlWriter &XmlWriter::element(std::string_view name, std::string_view content) {
    return open(name).text(content).close();
}

XmlWriter &XmlWriter::raw(std::string_view xml) {
    finish_start_tag();
    put(xml);
    return *this;
}

XmlWriter &XmlWriter::append(XmlWriter &&fragment) {
    finish_start_tag();
    XmlText moved = fragment.take_text();
    for (std::string &block : moved.blocks_) {
        if (block.empty()) continue;
        // A small block is copied into the last one rather than kept as one
        // of its own, so that many small fragments don't make many blocks.
        if (block.size() < kBlock / 4) {
            put(block);
            continue;
        }
        text_.size_ += block.size();
        text_.blocks_.push_back(std::move(block));
    }
    return *this;
}

std::string XmlWriter::take() {
    XmlText text = take_text();
    if (text.blocks_.size() == 1) return std::move(text.blocks_.front());
    return text.str();
}

XmlText XmlWriter::take_text() {
    while (!open_.empty()) close();
    XmlText text = std::move(text_);
    text_ = XmlText();
    start_tag_pending_ = false;
    return text;
}

}  // namespace zoneserver
