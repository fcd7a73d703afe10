#include "zonecim/path_syntax.h"

#include <cctype>

namespace zonecim {

namespace {

bool is_name_start(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) || c == '_';
}
bool is_name_char(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}
bool is_namespace_char(char c) {
    return is_name_char(c) || c == '/';
}

bool starts_with_ignoring_case(std::string_view text, std::string_view prefix) {
    if (text.size() < prefix.size()) return false;
    for (std::size_t i = 0; i < prefix.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(text[i])) != prefix[i]) return false;
    }
    return true;
}

// Length of a name starting at text[0], 0 when there is none.
std::size_t name_length(std::string_view text) {
    if (text.empty() || !is_name_start(text[0])) return 0;
    std::size_t n = 1;
    while (n < text.size() && is_name_char(text[n])) ++n;
    return n;
}

// True when text is "[namespace:]Class.Key": the head of an unquoted path.
bool looks_like_path_head(std::string_view text) {
    const auto colon = text.find(':');
    if (colon != std::string_view::npos) {
        const auto ns = text.substr(0, colon);
        if (ns.empty()) return false;
        for (char c : ns) {
            if (!is_namespace_char(c)) return false;
        }
        text.remove_prefix(colon + 1);
    }
    const std::size_t class_length = name_length(text);
    if (class_length == 0 || class_length >= text.size() || text[class_length] != '.') return false;
    const auto key = text.substr(class_length + 1);
    return !key.empty() && name_length(key) == key.size();
}

class Parser {
  public:
    Parser(std::string_view text, const NameScope &scope) : text_(text), scope_(scope) {}

    TextPath top_path() {
        skip_scheme_and_host();
        TextPath path = path_body(/*nested=*/false);
        expect_end();
        return path;
    }

    TextMethodCall method_call(const std::function<NameOwner(std::string_view)> &method_owner) {
        TextMethodCall call;
        call.method = name("a method name");
        if (at_end()) return call;
        expect('.');
        owners_.push_back(method_owner(call.method));
        call.arguments = bindings(/*nested=*/false, {});
        owners_.pop_back();
        expect_end();
        return call;
    }

  private:
    [[noreturn]] void fail(const std::string &what) const {
        throw UsageError(what + " at position " + std::to_string(pos_ + 1) + " of '" +
                         std::string(text_) + "'");
    }

    bool at_end() const { return pos_ >= text_.size(); }
    char peek() const { return at_end() ? '\0' : text_[pos_]; }
    std::string_view rest() const { return text_.substr(pos_); }

    void expect(char c) {
        if (peek() != c) fail(std::string("expected '") + c + "'");
        ++pos_;
    }

    void expect_end() const {
        if (!at_end()) fail(std::string("unexpected '") + peek() + "'");
    }

    std::string name(const char *what) {
        const std::size_t n = name_length(rest());
        if (n == 0) fail(std::string("expected ") + what);
        std::string found(text_.substr(pos_, n));
        pos_ += n;
        return found;
    }

    // "http://user:pw@host:port/" is accepted and dropped: there is no server.
    void skip_scheme_and_host() {
        for (std::string_view scheme : {"http://", "https://"}) {
            if (!starts_with_ignoring_case(text_, scheme)) continue;
            const auto slash = text_.find('/', scheme.size());
            if (slash == std::string_view::npos) {
                pos_ = text_.size();
                fail("expected a namespace after the host");
            }
            pos_ = slash + 1;
            return;
        }
    }

    // The namespace ends at the first colon that comes before any key text.
    std::string namespace_prefix() {
        const auto stop = rest().find_first_of(".=\",");
        const auto colon = rest().find(':');
        if (colon == std::string_view::npos || (stop != std::string_view::npos && stop < colon))
            return {};
        std::string ns(rest().substr(0, colon));
        if (ns.empty()) fail("expected a namespace before ':'");
        for (char c : ns) {
            if (!is_namespace_char(c))
                fail("unexpected '" + std::string(1, c) + "' in the namespace");
        }
        pos_ += colon + 1;
        return ns;
    }

    TextPath path_body(bool nested) {
        TextPath path;
        path.name_space = namespace_prefix();
        path.class_name = name("a class name");
        if (!nested && at_end()) return path;
        expect('.');
        owners_.push_back(scope_.owner_of_path(path.class_name));
        path.keys = bindings(nested, path.class_name);
        owners_.pop_back();
        return path;
    }

    // Name=value pairs up to the end of the text or, in a nested path, up to
    // the first name that an enclosing level owns.
    std::vector<TextBinding> bindings(bool nested, const std::string &class_name) {
        std::vector<TextBinding> list;
        for (;;) {
            TextBinding binding;
            binding.name = name("a name");
            expect('=');
            binding.value = value();
            list.push_back(std::move(binding));
            if (at_end()) return list;
            if (peek() != ',') fail(std::string("unexpected '") + peek() + "'");
            if (nested && !next_name_stays(class_name)) return list;
            ++pos_;
        }
    }

    bool next_name_stays(const std::string &class_name) const {
        const std::string_view after_comma = text_.substr(pos_ + 1);
        const std::string_view next = after_comma.substr(0, name_length(after_comma));
        // The level of this nested path is the innermost owner; the ones
        // before it enclose it.
        const std::size_t enclosing = owners_.size() - 1;
        for (std::size_t i = enclosing; i-- > 0;) {
            if (owners_[i].known && owners_[i].owns(next)) return false;
        }
        if (enclosing > 0 && owners_[enclosing - 1].known) return true;
        return scope_.key_of && scope_.key_of(class_name, next);
    }

    TextValue value() {
        TextValue v;
        if (peek() == '"') {
            v.kind = TextValue::Kind::Quoted;
            v.text = quoted();
            return v;
        }
        const auto head_end = rest().find_first_of(",=\"");
        if (head_end != std::string_view::npos && rest()[head_end] == '=' &&
            looks_like_path_head(rest().substr(0, head_end))) {
            v.kind = TextValue::Kind::Path;
            v.path = std::make_shared<const TextPath>(path_body(/*nested=*/true));
            return v;
        }
        v.kind = TextValue::Kind::Bare;
        const auto end = rest().find(',');
        v.text = std::string(rest().substr(0, end));
        pos_ = end == std::string_view::npos ? text_.size() : pos_ + end;
        return v;
    }

    std::string quoted() {
        ++pos_;  // the opening quote
        std::string out;
        while (!at_end()) {
            const char c = text_[pos_++];
            if (c == '"') return out;
            if (c == '\\' && (peek() == '"' || peek() == '\\')) {
                out.push_back(text_[pos_++]);
                continue;
            }
            out.push_back(c);
        }
        fail("unterminated quoted string");
    }

    std::string_view text_;
    const NameScope &scope_;
    std::size_t pos_ = 0;
    std::vector<NameOwner> owners_;
};

}  // namespace

NameScope blind_scope() {
    NameScope scope;
    scope.owner_of_path = [](std::string_view) { return NameOwner{}; };
    scope.key_of = [](std::string_view, std::string_view) { return false; };
    return scope;
}

TextPath parse_path(std::string_view text, const NameScope &scope) {
    return Parser(text, scope).top_path();
}

TextMethodCall parse_method_call(std::string_view text, const NameScope &scope,
                                 const std::function<NameOwner(std::string_view)> &method_owner) {
    return Parser(text, scope).method_call(method_owner);
}

std::vector<std::string> parse_property_list(std::string_view text) {
    std::vector<std::string> names;
    if (text.find_first_not_of(" \t") == std::string_view::npos) return names;
    std::size_t start = 0;
    for (;;) {
        const auto comma = text.find(',', start);
        std::string_view item = text.substr(
            start, comma == std::string_view::npos ? std::string_view::npos : comma - start);
        const auto first = item.find_first_not_of(" \t");
        const auto last = item.find_last_not_of(" \t");
        item = first == std::string_view::npos ? std::string_view{}
                                               : item.substr(first, last - first + 1);
        if (item.empty() || name_length(item) != item.size())
            throw UsageError("bad property list '" + std::string(text) +
                             "': expected property names separated by commas");
        names.emplace_back(item);
        if (comma == std::string_view::npos) return names;
        start = comma + 1;
    }
}

}  // namespace zonecim
