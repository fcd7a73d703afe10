// A small XML writer for the server's answers: elements are opened and
// closed explicitly and every attribute value and text is escaped on the way
// in, so that nothing a provider or a client hands us can change the shape
// of an answer.
//
// Elements are never written in their self-closing form: wbemcli refuses
// <VALUE/>, <IRETURNVALUE/> and friends, and the long form is valid for every
// element.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zoneserver {

// Appends text with the five XML entities (&lt; &gt; &amp; &quot; &apos;)
// replaced. Control characters that XML 1.0 can't carry at all (everything
// below 0x20 but tab, newline and carriage return) become '?'.
void append_escaped(std::string &out, std::string_view text);

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

    std::size_t depth() const { return open_.size(); }
    const std::string &str() const { return out_; }
    std::string take();

  private:
    void finish_start_tag();

    std::string out_;
    std::vector<std::string_view> open_;
    bool start_tag_pending_ = false;
};

}  // namespace zoneserver
