#include <pkgcore/platform/filesystem/DirectoryIterator.hpp>

#include <pkgcore/platform/filesystem/Exceptions.hpp>

#include "tests/support/scripted_platform/Platform.hpp"

namespace fl::filesystem::detail {

using scripted::Platform;

namespace {

void success() {}

}  // namespace

file_status upath_directory_entry::status() const {
    Platform& platform = Platform::current();
    platform.record("status", fullPathname_);
    return platform.entryStatus.next(fullPathname_, [this] { return scripted::ofKind(kind_); });
}

std::u16string_view upath_directory_entry::filename() const noexcept {
    return std::u16string_view(fullPathname_).substr(nameOffset_);
}

class upath_directory_iterator_impl::Source {
public:
    explicit Source(const std::u16string& folder)
        : folder_(folder), entries_(Platform::current().folders[folder]) {}

    const std::u16string& folder() const { return folder_; }
    bool ended() const { return position_ == entries_.size(); }
    const scripted::Entry& entry() const { return entries_[position_]; }
    void advance() { ++position_; }

private:
    std::u16string folder_;
    std::vector<scripted::Entry> entries_;
    std::size_t position_ = 0;
};

upath_directory_iterator_impl::upath_directory_iterator_impl(const std::u16string& nativeFolder,
                                                             initialization_mode mode)
    : source_(std::make_unique<Source>(nativeFolder)) {
    Platform& platform = Platform::current();
    platform.record("openListing", nativeFolder, mode);
    platform.openListing.next(nativeFolder, success);
}

upath_directory_iterator_impl::~upath_directory_iterator_impl() {
    Platform::current().record("closeListing", source_->folder());
}

bool upath_directory_iterator_impl::is_open() const noexcept { return !source_->ended(); }

void upath_directory_iterator_impl::increment() {
    Platform::current().increment.next(source_->folder(), success);
    source_->advance();
}

const upath_directory_entry& upath_directory_iterator_impl::operator*() const {
    if (source_->ended()) {
        throw_invalid_operation_exception();
    }
    // The entry is a view of the script; only the caller is to see it as constant.
    auto& entry = const_cast<upath_directory_entry&>(entry_);
    entry.fullPathname_ = source_->folder() + u"/" + source_->entry().name;
    entry.nameOffset_ = source_->folder().size() + 1;
    entry.kind_ = source_->entry().kind;
    return entry_;
}

}  // namespace fl::filesystem::detail
