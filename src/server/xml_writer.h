// A small XML writer for the server's answers: elements are opened and
// closed explicitly and every attribute value and text is escaped on the way
// in, so that nothing a provider or a client hands us can change the shape
// of an answer.
//
// Elements are never written in their self-closing form: wbemcli refuses
// <VALUE/>, <IRETURNVALUE/> and friends, and the long form is valid for every
// element.
//
// The markup is kept in blocks of bounded size rather than one string: an
// answer of tens of megabytes then never needs one contiguous allocation,
// is never copied as it grows, a fragment moves into another writer without
// a copy, and the HTTP side can send it (and free it) block by block.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zoneserver {

// Appends text with the five XML entities (&lt; &gt; &amp; &quot; &apos;)
// replaced. Control characters that XML 1.0 can't carry at all (everything
// below 0x20 but tab, newline and carriage return) become '?'.
void append_escaped(std::string &out, std::string_view text);

// Finished markup, in the order of its blocks.
class XmlText {
  public:
    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    const std::vector<std::string> &blocks() const { return blocks_; }
    // All of it in one string (a copy).
    std::string str() const;
    // Frees block i (its bytes are gone; size() is unchanged), for a sender
    // that is done with it.
    void release_block(std::size_t i);

  private:
    friend class XmlWriter;
    std::vector<std::string> blocks_;
    std::size_t size_ = 0;
};

class XmlWriter {
  public:
    // Starts an element; attributes may follow until content or close().
    // Element names are the writer's own literals and are not escaped.
    XmlWriter &open(std::string_view name);
    XmlWriter &attribute(std::string_view name, std::string_view value);
    XmlWriter &text(std::string_view text);
    // Closes the innermost open element.
    XmlWriter &close();
    // An element holding nothing but text: <name>text</name>.
    XmlWriter &element(std::string_view name, std::string_view text);
    // Markup that is already well-formed (the XML declaration, or a
    // fragment made by another writer).
    XmlWriter &raw(std::string_view xml);
    // The markup of another writer (its open elements closed first), moved
    // here without copying it; the other writer is left empty.
    XmlWriter &append(XmlWriter &&fragment);

    std::size_t depth() const { return open_.size(); }
    std::size_t size() const { return text_.size_; }
    // The markup so far, in one string (a copy).
    std::string str() const { return text_.str(); }
    // Closes every open element and hands the markup over, in one string or
    // in its blocks; the writer is left empty.
    std::string take();
    XmlText take_text();

  private:
    void finish_start_tag();
    // The block to append about n more bytes to.
    std::string &room(std::size_t n);
    void put(std::string_view bytes);
    void put(char c);

    XmlText text_;
    std::vector<std::string_view> open_;
    bool start_tag_pending_ = false;
};

}  // namespace zoneserver
