// Comparison of names whatever the case of their letters, in every script. For keywords and file endings, which are
// ASCII, see platform/letter_case.h.
//
// Texts may be in either encoding of text_encoding.h, also two texts that are compared. The locale is not used.
#pragma once

#include <string>
#include <string_view>

namespace vesk {

// As UTF-8, and each letter that has a single capital letter as that one: "ß" stays.
std::string in_capitals(std::string_view text);

bool equal_names(std::string_view a, std::string_view b);

} // namespace vesk
