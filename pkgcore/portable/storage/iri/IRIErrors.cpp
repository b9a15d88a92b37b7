#include <pkgcore/portable/storage/iri/IRIErrors.hpp>

#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/portable/i18n/CodePoints.hpp>

#include <cstdio>
#include <string>

namespace foundation::storage::portable {

namespace {

std::string character(char32_t point) {
    char name[16];
    static_cast<void>(std::snprintf(name, sizeof name, "U+%04lX", static_cast<unsigned long>(point)));
    return std::string("Character ") + name;
}

std::string at(std::size_t offset) { return " at offset " + std::to_string(offset); }

[[noreturn]] void refuse(std::u16string_view text, const std::string& message) {
    throw vfs::InvalidIRIException(message, std::u16string(text));
}

}  // namespace

void refuseCharacter(std::u16string_view text, std::size_t offset, const char* where) {
    if (offset >= text.size()) {
        refuse(text, "The end" + at(text.size()) + " is not allowed " + where);
    }
    std::size_t position = offset;
    const char32_t point = fl::i18n::portable::nextCodePoint(text.data(), position, text.size());
    refuse(text, character(point) + at(offset) + " is not allowed " + where);
}

void refuseEncoded(std::u16string_view text, std::size_t offset, char32_t point) {
    refuse(text, character(point) + ", encoded" + at(offset) + ", is not allowed in a name");
}

void refuseTriplet(std::u16string_view text, std::size_t offset, const char* what) {
    refuse(text, "The percent-encoding" + at(offset) + " " + what);
}

}  // namespace foundation::storage::portable
