// Texts of the front end are bytes: UTF-8 by preference, of an older code page otherwise.
#ifndef REFERENCE_ENGINE_OUTPUT_UTF8_H
#define REFERENCE_ENGINE_OUTPUT_UTF8_H

#include <string_view>

namespace reference_engine {

// No overlong forms, no surrogates, nothing beyond U+10FFFF.
bool is_utf8(std::string_view bytes);

} // namespace reference_engine

#endif
