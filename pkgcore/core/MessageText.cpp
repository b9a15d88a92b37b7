#include <pkgcore/core/MessageText.hpp>

#include <pkgcore/core/Exception.hpp>
#include <pkgcore/core/StringConversions.hpp>
#include <pkgcore/platform/i18n/Codecvt.hpp>
#include <pkgcore/platform/i18n/Conversion.hpp>

namespace opc::detail {
namespace {

std::string toUserEncodingLeniently(const ustring& path) {
    const fl::i18n::codecvt_ustring_to_string converter(std::string(), true);
    return fl::i18n::to_string(path, converter);
}

}  // namespace

std::string toMessageText(const ustring& path) {
    try {
        return toUDEString(path);
    } catch (const Exception&) {
        // A name that the user's encoding cannot spell is still worth reading with substitutes in it.
        return toUserEncodingLeniently(path);
    }
}

}  // namespace opc::detail
