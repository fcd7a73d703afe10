#include "server/xml_writer.h"

namespace zoneserver {

void append_escaped(std::string &out, std::string_view text) {
    for (const char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\'':
                out += "&apos;";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r')
                    out += '?';
                else
                    out += c;
        }
    }
}

void XmlWriter::finish_start_tag() {
    if (start_tag_pending_) {
        out_ += '>';
        start_tag_pending_ = false;
    }
}

XmlWriter &XmlWriter::open(std::string_view name) {
    finish_start_tag();
    out_ += '<';
    out_ += name;
    open_.push_back(name);
    start_tag_pending_ = true;
    return *this;
}

XmlWriter &XmlWriter::attribute(std::string_view name, std::string_view value) {
    // Attributes only make sense right after open(); anywhere else they would
    // land in content, so they are dropped.
    if (!start_tag_pending_) return *this;
    out_ += ' ';
    out_ += name;
    out_ += "=\"";
    append_escaped(out_, value);
    out_ += '"';
    return *this;
}

XmlWriter &XmlWriter::text(std::string_view text) {
    finish_start_tag();
    append_escaped(out_, text);
    return *this;
}

XmlWriter &XmlWriter::close() {
    if (open_.empty()) return *this;
    finish_start_tag();
    out_ += "</";
    out_ += open_.back();
    out_ += '>';
    open_.pop_back();
    return *this;
}

XmlWriter &XmlWriter::element(std::string_view name, std::string_view content) {
    return open(name).text(content).close();
}

XmlWriter &XmlWriter::raw(std::string_view xml) {
    finish_start_tag();
    out_ += xml;
    return *this;
}

std::string XmlWriter::take() {
    while (!open_.empty()) close();
    std::string out = std::move(out_);
    out_.clear();
    return out;
}

}  // namespace zoneserver
