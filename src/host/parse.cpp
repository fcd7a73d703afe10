// parsePath: the text form of pathToString (and wbemcli's) back to a path.
//
//   [http://host:port/ | //host/ | host:port/] [ns:] Class [.key=value{,key=value}]
//
// A value is a quoted string (a backslash escapes the next character), or an
// unquoted token: an integer (sint64, or uint64 beyond its range), true or
// false, a real, a path (it holds '='; wbemcli writes reference keys so), or
// else a string. A quoted value is a reference when its text starts like a
// path with keys ("[ns:]Class.key=") and parses as one; otherwise it is a
// string. The host part is skipped: the parsed path has no host.
#include <strings.h>
#include <charconv>

#include "host/cmpihost.h"
#include "host/objects.h"

namespace cmpihost {

namespace detail {
namespace {

bool isNameStart(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}
bool isNameChar(char c) {
    return isNameStart(c) || (c >= '0' && c <= '9');
}

bool isName(std::string_view text) {
    if (text.empty() || !isNameStart(text[0])) return false;
    for (char c : text) {
        if (!isNameChar(c)) return false;
    }
    return true;
}

bool startsWithNoCase(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() && sameName(text.substr(0, prefix.size()), prefix);
}

// "[ns:]Class.key=" at the start of a quoted value.
bool looksLikeReference(std::string_view text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) return false;
    const std::string_view head = text.substr(0, equals);
    const std::size_t dot = head.rfind('.');
    if (dot == std::string_view::npos || !isName(head.substr(dot + 1))) return false;
    const std::string_view classPart = head.substr(0, dot);
    const std::size_t colon = classPart.rfind(':');
    const std::string_view className =
        colon == std::string_view::npos ? classPart : classPart.substr(colon + 1);
    const std::string_view ns =
        colon == std::string_view::npos ? std::string_view() : classPart.substr(0, colon);
    return isName(className) && ns.find_first_of("\",") == std::string_view::npos;
}

// Starts like a number ("2.5", "-1e3", ".5"), so that words such as "inf"
// or "nan" stay strings.
bool looksNumeric(std::string_view token) {
    const std::size_t first = token[0] == '-' ? 1 : 0;
    return first < token.size() &&
           ((token[first] >= '0' && token[first] <= '9') || token[first] == '.');
}

class PathParser {
  public:
    // `base`: where `text` starts in the text the user gave (for messages).
    PathParser(Arena &arena, std::string_view text, std::size_t base)
        : arena_(arena), text_(text), base_(base) {}

    // The path, or null with `error_` set.
    CMPIObjectPath *parse() {
        if (text_.empty()) return fail(0, "empty path");
        std::size_t start = 0;
        if (!skipHost(&start)) return nullptr;

        const std::size_t keyMark = text_.find_first_of("=\"", start);
        std::size_t headEnd = text_.size();
        if (keyMark != std::string_view::npos) {
            headEnd = text_.rfind('.', keyMark);
            if (headEnd == std::string_view::npos || headEnd < start) {
                return fail(keyMark, "expected '.' before the first key");
            }
        }
        CMPIObjectPath *path = parseHead(start, headEnd);
        if (path == nullptr || headEnd == text_.size()) return path;
        return parseKeys(path, headEnd + 1) ? path : nullptr;
    }

    const std::string &error() const { return error_; }

  private:
    CMPIObjectPath *fail(std::size_t position, const std::string &what) {
        if (error_.empty()) error_ = what + " at position " + std::to_string(base_ + position);
        return nullptr;
    }

    // Skips "http://host:port/", "//host/" or (before a namespace)
    // "host:port/".
    bool skipHost(std::size_t *start) {
        std::size_t after = 0;
        if (startsWithNoCase(text_, "http://")) after = 7;
        if (startsWithNoCase(text_, "https://")) after = 8;
        if (after == 0 && text_.substr(0, 2) == "//") after = 2;
        if (after == 0) return true;
        const std::size_t slash = text_.find('/', after);
        if (slash == std::string_view::npos) {
            fail(text_.size(), "expected '/' after the host");
            return false;
        }
        *start = slash + 1;
        return true;
    }

    CMPIObjectPath *parseHead(std::size_t start, std::size_t end) {
        std::string_view head = text_.substr(start, end - start);
        const std::size_t colon = head.rfind(':');
        std::string_view ns =
            colon == std::string_view::npos ? std::string_view() : head.substr(0, colon);
        const std::size_t classStart = colon == std::string_view::npos ? 0 : colon + 1;
        const std::string_view className = head.substr(classStart);
        if (const std::size_t dot = className.find('.');
            dot != std::string_view::npos && isName(className.substr(0, dot))) {
            return fail(text_.size(), "expected '='");  // "Class.key" with no value
        }
        if (!isName(className)) return fail(start + classStart, "expected a class name");
        if (const std::size_t port = ns.find(':'); port != std::string_view::npos) {
            const std::size_t slash = ns.find('/', port);
            if (slash == std::string_view::npos) {
                return fail(start + port, "expected '/' after the host and port");
            }
            start += slash + 1;
            ns = ns.substr(slash + 1);
        }
        if (const std::size_t bad = ns.find_first_of("\",= \t"); bad != std::string_view::npos) {
            return fail(start + bad, "unexpected character in the namespace");
        }
        return makePath(arena_, ns, className);
    }

    bool parseKeys(CMPIObjectPath *path, std::size_t pos) {
        auto *state = stateOf<PathState>(path);
        while (true) {
            const std::size_t nameStart = pos;
            while (pos < text_.size() && isNameChar(text_[pos])) ++pos;
            const std::string_view name = text_.substr(nameStart, pos - nameStart);
            if (!isName(name)) return fail(nameStart, "expected a key name");
            if (pos >= text_.size() || text_[pos] != '=') return fail(pos, "expected '='");
            ++pos;
            if (state->keys.find(name) != nullptr) {
                return fail(nameStart, "duplicate key '" + std::string(name) + "'");
            }
            CMPIData value;
            if (!parseValue(&pos, &value)) return false;
            state->keys.items.emplace_back(std::string(name), value);
            if (pos == text_.size()) return true;
            if (text_[pos] != ',') return fail(pos, "expected ',' or the end");
            ++pos;
        }
    }

    bool parseValue(std::size_t *pos, CMPIData *value) {
        const std::size_t start = *pos;
        if (start < text_.size() && text_[start] == '"') {
            std::string content;
            if (!readQuoted(pos, &content)) return false;
            return quotedValue(content, start + 1, value);
        }
        const std::size_t end = unquotedEnd(start);
        if (end == std::string_view::npos) return false;
        if (end == start) return fail(start, "expected a value");
        *pos = end;
        return unquotedValue(text_.substr(start, end - start), start, value);
    }

    bool readQuoted(std::size_t *pos, std::string *content) {
        const std::size_t open = *pos;
        for (std::size_t i = open + 1; i < text_.size(); ++i) {
            const char c = text_[i];
            if (c == '\\') {
                if (++i == text_.size()) break;
                *content += text_[i];
            } else if (c == '"') {
                *pos = i + 1;
                return true;
            } else {
                *content += c;
            }
        }
        fail(open, "unterminated quoted value");
        return false;
    }

    // End of an unquoted token: the next ',' outside quotes (a reference
    // written without quotes has quoted keys of its own).
    std::size_t unquotedEnd(std::size_t start) {
        bool quoted = false;
        std::size_t i = start;
        for (; i < text_.size(); ++i) {
            const char c = text_[i];
            if (quoted && c == '\\') {
                ++i;
            } else if (c == '"') {
                quoted = !quoted;
            } else if (c == ',' && !quoted) {
                break;
            }
        }
        if (quoted || i > text_.size()) {
            fail(start, "unterminated quoted value");
            return std::string_view::npos;
        }
        return i;
    }

    bool quotedValue(const std::string &content, std::size_t position, CMPIData *value) {
        if (looksLikeReference(content)) return referenceValue(content, position, value);
        *value = stringData(content);
        return true;
    }

    bool unquotedValue(std::string_view token, std::size_t position, CMPIData *value) {
        if (integerValue(token, position, value)) return error_.empty();
        if (sameName(token, "true") || sameName(token, "false")) {
            *value = nullData(CMPI_boolean);
            value->state = CMPI_goodValue;
            value->value.boolean = sameName(token, "true") ? 1 : 0;
            return true;
        }
        if (token.find('=') != std::string_view::npos) {
            return referenceValue(token, position, value);
        }
        if (looksNumeric(token)) {
            double real = 0;
            auto [end, ec] = std::from_chars(token.data(), token.data() + token.size(), real);
            if (ec == std::errc() && end == token.data() + token.size()) {
                *value = nullData(CMPI_real64);
                value->state = CMPI_goodValue;
                value->value.real64 = real;
                return true;
            }
        }
        *value = stringData(token);
        return true;
    }

    // True when the token is an integer (value set, or error_ set when out of
    // every range).
    bool integerValue(std::string_view token, std::size_t position, CMPIData *value) {
        const std::size_t digitsStart = token[0] == '-' ? 1 : 0;
        if (digitsStart == token.size()) return false;
        for (std::size_t i = digitsStart; i < token.size(); ++i) {
            if (token[i] < '0' || token[i] > '9') return false;
        }
        const char *first = token.data();
        const char *last = token.data() + token.size();
        CMPISint64 sint = 0;
        if (std::from_chars(first, last, sint).ec == std::errc()) {
            *value = nullData(CMPI_sint64);
            value->state = CMPI_goodValue;
            value->value.sint64 = sint;
            return true;
        }
        CMPIUint64 uint = 0;
        if (digitsStart == 0 && std::from_chars(first, last, uint).ec == std::errc()) {
            *value = nullData(CMPI_uint64);
            value->state = CMPI_goodValue;
            value->value.uint64 = uint;
            return true;
        }
        fail(position, "number out of range");
        return true;
    }

    bool referenceValue(std::string_view text, std::size_t position, CMPIData *value) {
        PathParser inner(arena_, text, base_ + position);
        CMPIObjectPath *ref = inner.parse();
        if (ref == nullptr) {
            error_ = inner.error();
            return false;
        }
        *value = nullData(CMPI_ref);
        value->state = CMPI_goodValue;
        value->value.ref = ref;
        return true;
    }

    CMPIData stringData(std::string_view content) {
        CMPIData data = nullData(CMPI_string);
        data.state = CMPI_goodValue;
        data.value.string = makeString(arena_, content);
        return data;
    }

    Arena &arena_;
    std::string_view text_;
    std::size_t base_;
    std::string error_;
};

}  // namespace
}  // namespace detail

std::optional<CMPIObjectPath *> parsePath(const std::string &text, std::string *error) {
    try {
        detail::PathParser parser(detail::currentArena(), text, 0);
        if (CMPIObjectPath *path = parser.parse()) return path;
        if (error != nullptr) *error = parser.error();
    } catch (const std::bad_alloc &) {
        if (error != nullptr) *error = "out of memory";
    }
    return std::nullopt;
}

}  // namespace cmpihost
