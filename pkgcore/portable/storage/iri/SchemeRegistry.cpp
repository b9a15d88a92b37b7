#include <pkgcore/portable/storage/iri/SchemeRegistry.hpp>

#include <pkgcore/portable/storage/iri/IRICharacters.hpp>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <mutex>

namespace foundation::storage::portable {

namespace {

/// In lower case.
constexpr std::u16string_view kFromTheStart[] = {u"file", u"mem", u"sqlite", u"zip", u"s3", u"dav"};

constexpr std::u16string_view kWithByteNames = u"file";

constexpr std::u16string_view kSchemeEnd = u"://";

/// A scheme that was added. Nodes are never changed and never freed, so that asking needs no lock.
struct Added {
    std::u16string scheme;
    bool hasByteNames;
    const Added* next;
};

std::atomic<const Added*> firstAdded{nullptr};

bool isSame(std::u16string_view lowerCase, std::u16string_view scheme) noexcept {
    return lowerCase.size() == scheme.size() &&
           std::equal(lowerCase.begin(), lowerCase.end(), scheme.begin(),
                      [](char16_t wanted, char16_t found) { return wanted == lowered(found); });
}

/// A later entry of the same scheme stands in front of an earlier one.
const Added* findAdded(std::u16string_view scheme) noexcept {
    const Added* node = firstAdded.load(std::memory_order_acquire);
    while (node != nullptr && !isSame(node->scheme, scheme)) {
        node = node->next;
    }
    return node;
}

bool isFromTheStart(std::u16string_view scheme) noexcept {
    return std::any_of(std::begin(kFromTheStart), std::end(kFromTheStart),
                       [scheme](std::u16string_view known) { return isSame(known, scheme); });
}

}  // namespace

bool isRegisteredScheme(std::u16string_view scheme) noexcept {
    return isFromTheStart(scheme) || findAdded(scheme) != nullptr;
}

bool hasByteNames(std::u16string_view scheme) noexcept {
    if (isSame(kWithByteNames, scheme)) {
        return true;
    }
    const Added* const added = findAdded(scheme);
    return added != nullptr && added->hasByteNames;
}

void registerScheme(std::u16string_view scheme, bool withByteNames) {
    static std::mutex adding;
    const std::lock_guard<std::mutex> lock(adding);
    if (isRegisteredScheme(scheme) && (!withByteNames || hasByteNames(scheme))) {
        return;
    }
    std::u16string name(scheme.size(), u'\0');
    std::transform(scheme.begin(), scheme.end(), name.begin(), lowered);
    firstAdded.store(new Added{std::move(name), withByteNames, firstAdded.load(std::memory_order_relaxed)},
                     std::memory_order_release);
}

std::size_t registeredPrefix(std::u16string_view text) noexcept {
    std::size_t length = 0;
    while (length < text.size() && isSchemeCharacter(text[length])) {
        ++length;
    }
    const bool isMarked = text.substr(length, kSchemeEnd.size()) == kSchemeEnd;
    return isMarked && isRegisteredScheme(text.substr(0, length)) ? length : 0;
}

}  // namespace foundation::storage::portable
