#include <pkgcore/portable/storage/ProviderTypes.hpp>

namespace foundation::storage::provider {

namespace {

constexpr char16_t kSeparator = u'/';

/// Where the last name begins.
std::size_t startOfName(std::u16string_view path) noexcept {
    const std::size_t separator = path.rfind(kSeparator);
    return separator == std::u16string_view::npos ? 0 : separator + 1;
}

}  // namespace

std::u16string_view Path::name() const noexcept {
    return std::u16string_view(text_).substr(startOfName(text_));
}

Path Path::parent() const {
    const std::size_t start = startOfName(text_);
    return Path(text_.substr(0, start == 0 ? 0 : start - 1), authority_);
}

Path Path::child(std::u16string_view name) const {
    std::u16string text;
    text.reserve(text_.size() + 1 + name.size());
    text = text_;
    if (!text.empty()) {
        text += kSeparator;
    }
    text += name;
    return Path(std::move(text), authority_);
}

bool Path::isAtOrBelow(const Path& other) const noexcept {
    const std::size_t length = other.text_.size();
    return authority_ == other.authority_ && text_.compare(0, length, other.text_) == 0 &&
           (length == 0 || text_.size() == length || text_[length] == kSeparator);
}

}  // namespace foundation::storage::provider
