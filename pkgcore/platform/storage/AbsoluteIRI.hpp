#pragma once

#include <pkgcore/platform/Export.hpp>

#include <string>
#include <utility>

namespace foundation::storage::vfs {

/// The text of an IRI that was checked and is spelled as the class that takes it spells it. Nothing looks at
/// it again.
struct CheckedIRI {
    std::u16string text;   ///< encoded
    bool isPlain = false;  ///< known to have nothing encoded in it, which is to say no "%"
};

/// The name of a place in a storage system, "scheme://authority/path", with the characters of RFC 3987;
/// whatever else a name holds is percent-encoded. There is no query, no fragment and no user information.
///
/// IRIs are encoded, names are plain: what is taken or given as a whole IRI is encoded text, what is taken or
/// given as a name, a relative text or a path is plain text, and is encoded or decoded on the way. A file
/// that is called "100% done?.txt" so survives the way into an IRI and back.
///
/// Required of a constructor: a text that is no IRI is InvalidIRIException, whose text says which character
/// at which offset; one with a scheme that hasIRIPrefix() does not know is UnsupportedIRISchemeException.
/// A slash and a NUL are no part of a name, encoded or not. Storage is never asked. Any thread may use an
/// IRI that no other thread changes.
class PKGCORE_PLATFORM_API AbsoluteIRI {
public:
    /// No place: toString() is empty, and so is every other part.
    AbsoluteIRI() = default;

    /// From encoded text, which is brought into one spelling of the encoding: characters that need none are
    /// decoded, hexadecimal digits are capital. Letter case, dot segments and slashes stay as they are.
    explicit AbsoluteIRI(const std::u16string& text);

    /// The place that `relative`, plain text with "/" between names, has below `base`. One slash stands at
    /// the joint, whether or not `base` ends in one; slashes that `relative` begins with are kept behind it.
    /// An empty `relative` gives `base`.
    AbsoluteIRI(const AbsoluteIRI& base, const std::u16string& relative);

    /// From text that a parser has found good: nothing is checked.
    explicit AbsoluteIRI(CheckedIRI checked) noexcept
        : text_(std::move(checked.text)), isPlain_(checked.isPlain) {}

    /// The whole IRI, encoded.
    /// @{
    const std::u16string& toString() const& noexcept { return text_; }
    std::u16string toString() && noexcept { return std::move(text_); }
    /// @}

    /// Whether it is known that each part is the same encoded and plain. False says nothing.
    bool isPlain() const noexcept { return isPlain_; }

    /// What stands in front of "://", in the letter case of the text.
    std::u16string getScheme() const;

    /// What stands behind "://", plain: "store/a" of "mem://store/a", "/a" of "file:///a" and of
    /// "file://localhost/a", "/" of a root without an authority. InvalidIRIException for a place of the
    /// scheme "file" that is on another host.
    std::u16string getPath() const;

private:
    std::u16string text_;
    bool isPlain_ = false;
};

}  // namespace foundation::storage::vfs
