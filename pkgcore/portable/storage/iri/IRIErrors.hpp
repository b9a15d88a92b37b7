#pragma once

#include <cstddef>
#include <string_view>

/// The words in which an IRI is refused, all as InvalidIRIException with the whole text. An offset counts
/// UTF-16 units from the beginning of the text.
namespace foundation::storage::portable {

/// "Character U+0020 at offset 9 is not allowed in the path of an IRI", where `where` is "in the path of an
/// IRI". At the end of the text it is the end that is refused.
[[noreturn]] void refuseCharacter(std::u16string_view text, std::size_t offset, const char* where);

/// "Character U+002F, encoded at offset 9, is not allowed in a name".
[[noreturn]] void refuseEncoded(std::u16string_view text, std::size_t offset, char32_t point);

/// "The percent-encoding at offset 9 is not UTF-8", where `what` is "is not UTF-8".
[[noreturn]] void refuseTriplet(std::u16string_view text, std::size_t offset, const char* what);

}  // namespace foundation::storage::portable
