#pragma once

#include <string>
#include <string_view>

/// Encoded IRIs as texts: checking them, taking them apart, and bringing them into canonical form.
namespace foundation::storage::portable {

/// The parts of a checked IRI, as they stand in it.
struct IRIParts {
    std::u16string_view scheme;
    std::u16string_view authority;
    std::u16string_view path;  ///< from its first slash on, or empty
};

IRIParts partsOf(std::u16string_view checked) noexcept;

/// Checks an IRI and gives its one spelling, in which a character is encoded only where it has to be. A text
/// that is none is InvalidIRIException, which says which character at which offset; an unknown scheme is
/// UnsupportedIRISchemeException.
std::u16string checkedIRI(const std::u16string& text);

/// Whether a text is an IRI in canonical form at first sight, as most are. False where only parsing tells.
bool isPlainIRI(std::u16string_view text) noexcept;

/// The canonical form of a checked IRI; empty for an empty text.
std::u16string canonicalIRI(std::u16string checked);

/// Of items of the machine's own file system, in any letter case.
bool isFileScheme(std::u16string_view scheme) noexcept;

/// The plain path of a checked IRI with that scheme, from its root on. InvalidIRIException for one on another
/// host.
std::u16string pathOnThisHost(const std::u16string& checked);

/// Puts an IRI together from a scheme, an encoded authority and an encoded path, which begins with a slash
/// unless it is empty.
std::u16string joinedIRI(const IRIParts& parts);

/// Appends plain text with slashes between names to an IRI, of which at least the scheme and its mark are
/// there. Throws InvalidIRIException, with the plain text, for one that no IRI can hold.
void appendPath(std::u16string_view plain, std::u16string& iri);

/// The same for the name of a host, with its port.
void appendAuthority(std::u16string_view plain, std::u16string& iri);

}  // namespace foundation::storage::portable
