#include <pkgcore/portable/storage/providers/sqlite/KnownFolder.hpp>

#include <pkgcore/portable/storage/providers/sqlite/Schema.hpp>

#include <string_view>

namespace foundation::storage::sqlite {

namespace {

std::u16string_view folderOf(const provider::Path& path) noexcept {
    const std::u16string_view text = path.text();
    const std::size_t end = text.rfind(u'/');
    return text.substr(0, end == std::u16string_view::npos ? 0 : end);
}

}  // namespace

void KnownFolder::remember(const provider::Path& path, std::int64_t folder, std::uint32_t state) {
    path_ = folderOf(path);
    number_ = folder;
    state_ = state;
}

std::optional<KnownFolder::Known> KnownFolder::around(const provider::Path& path) const {
    if (path.isRoot()) {
        return std::nullopt;
    }
    const std::u16string_view folder = folderOf(path);
    if (folder.empty()) {
        return Known{kRootFolder, std::nullopt};
    }
    return folder == path_ ? std::optional<Known>({number_, state_}) : std::nullopt;
}

}  // namespace foundation::storage::sqlite
