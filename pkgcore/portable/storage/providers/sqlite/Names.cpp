#include <pkgcore/portable/storage/providers/sqlite/Names.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Errors.hpp>

namespace foundation::storage::sqlite {

std::string encodeName(std::u16string_view name) {
    std::string bytes(name.size() * 2, '\0');
    for (std::size_t i = 0; i < name.size(); ++i) {
        const unsigned unit = name[i];
        bytes[2 * i] = static_cast<char>(unit >> 8U);
        bytes[2 * i + 1] = static_cast<char>(unit & 0xFFU);
    }
    return bytes;
}

std::u16string decodeName(std::string_view bytes) {
    if (bytes.size() % 2 != 0) {
        failDamaged("half a character in a name");
    }
    std::u16string name(bytes.size() / 2, u'\0');
    for (std::size_t i = 0; i < name.size(); ++i) {
        const auto high = static_cast<unsigned char>(bytes[2 * i]);
        const auto low = static_cast<unsigned char>(bytes[2 * i + 1]);
        name[i] = static_cast<char16_t>(high << 8U | low);
    }
    return name;
}

}  // namespace foundation::storage::sqlite
