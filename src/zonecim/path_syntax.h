// The text forms zonecim reads, in wbemcli's syntax, before any typing:
//
//   object path   [http://host:port/][namespace:]Class[.Key=value[,Key=value...]]
//   method call   Method[.Param=value[,Param=value...]]
//
// A value is a quoted string ("a b", with \" and \\ as escapes), a bare word
// (10, true, zs1) or, unquoted, an object path of its own
// ([namespace:]Class.Key=value...) standing for a reference. Where such a
// nested path ends is a question of names: "Ref=VORNA_Zone.InstanceID="1^2^0",Other=5"
// could give Other to the reference or to the outer list. A NameScope answers
// it: a name that an enclosing level owns (a property of the outer class, a
// parameter of the method) ends the nested path; other names stay with it.
#pragma once

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zonecim {

// Wrong command-line input: zonecim reports it and exits with status 2.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

struct TextPath;

struct TextValue {
    enum class Kind { Quoted, Bare, Path };
    Kind kind = Kind::Bare;
    std::string text;                      // Quoted (escapes resolved) and Bare
    std::shared_ptr<const TextPath> path;  // Path
};

struct TextBinding {
    std::string name;
    TextValue value;
};

struct TextPath {
    std::string name_space;  // empty when the text named none
    std::string class_name;
    std::vector<TextBinding> keys;
};

struct TextMethodCall {
    std::string method;
    std::vector<TextBinding> arguments;
};

// Which level of a text owns a name. For one level (an object path's class,
// or a method): known tells whether the owner's names are known at all,
// owns whether the name is one of them.
struct NameOwner {
    bool known = false;
    std::function<bool(std::string_view name)> owns;
};

// Decides where nested paths end. owner_of_path gives the owner for a path
// of a class (its property names, when the class is known); key_of tells
// whether a name is a key of a class, used when no enclosing owner is known.
struct NameScope {
    std::function<NameOwner(std::string_view class_name)> owner_of_path;
    std::function<bool(std::string_view class_name, std::string_view name)> key_of;
};

// A scope that knows no names: a nested path keeps only its first key.
NameScope blind_scope();

// Parses an object path; throws UsageError naming what is wrong.
TextPath parse_path(std::string_view text, const NameScope &scope);
// Parses a method call; method_owner tells which names are the method's
// parameters (it receives the method name). Throws UsageError.
TextMethodCall parse_method_call(std::string_view text, const NameScope &scope,
                                 const std::function<NameOwner(std::string_view)> &method_owner);
// Splits a property list "A,B,C" (blanks around names dropped, empty
// entries refused). Throws UsageError.
std::vector<std::string> parse_property_list(std::string_view text);

}  // namespace zonecim
