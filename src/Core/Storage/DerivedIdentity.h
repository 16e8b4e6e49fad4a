#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

// Identities of what the program makes by itself, such as a memo of a recording that was left
// behind: drawn from what it is made of, so that two machines which make the same thing at the same
// time don't make two. They look like any other UUID. Pure; throw LazyLibrary::MissingError.
namespace nomely::DerivedIdentity {

// What a part of `parts` says can't be mistaken for a part of its neighbour: "a", "bc" is another
// identity than "ab", "c". `kind` tells apart what different makers make of the same parts.
using Parts = std::initializer_list<std::string_view>;

// "0F8FAD5B-D9CB-869F-A165-70867728950E" (version 8, RFC 9562).
[[nodiscard]] std::string uuid(std::string_view kind, Parts parts);
// "memo_0f8fad5bd9cb869fa16570867728950e"
[[nodiscard]] std::string memoId(std::string_view kind, Parts parts);

// Eight hexadecimal digits, by which the names of two different contents are told apart:
// "tags.yaml.other-0f8fad5b".
[[nodiscard]] std::string contentMark(std::string_view bytes);

}  // namespace nomely::DerivedIdentity
