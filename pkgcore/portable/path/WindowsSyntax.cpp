#include <pkgcore/portable/path/WindowsSyntax.hpp>

#include <pkgcore/portable/path/PathElements.hpp>
#include <pkgcore/portable/path/WindowsRoot.hpp>

#include <algorithm>

namespace fl::filesystem::syntax::windows {

namespace {

constexpr char16_t kSeparator = u'\\';
constexpr std::u16string_view kSeparators = u"\\/";

Root rootOf(std::u16string_view path) { return findRoot(path); }

bool isAbsolute(const Root& root) {
    const bool hasRootFolder = root.length > root.nameLength;
    return root.kind == RootKind::drive ? hasRootFolder : root.kind != RootKind::none;
}

void tidyUp(std::u16string& path) {
    const RootKind kind = rootOf(path).kind;
    const bool opensWithTwo = kind == RootKind::share || kind == RootKind::device;
    collapseSeparators(path, opensWithTwo ? 2 : 0, kSeparator);
    dropTrailingSeparators(path, rootOf(path).length, kSeparators);
}

bool isDriveAlone(std::u16string_view path) {
    const Root root = rootOf(path);
    return root.kind == RootKind::drive && root.nameLength == path.size();
}

void removeLastElement(std::wstring& path, std::size_t rootLength) {
    const std::size_t separator = path.rfind(L'\\');
    path.erase(std::max(separator == path.npos ? 0 : separator, rootLength));
}

void appendElement(std::wstring& path, std::wstring_view element, std::size_t rootLength) {
    if (element == L"..") {
        removeLastElement(path, rootLength);
    } else if (!element.empty() && element != L".") {
        path.append(path.size() > rootLength ? L"\\" : L"").append(element);
    }
}

/// Appends the elements of `elements` to the root that `path` holds; ".." never leaves it.
std::wstring appendResolved(std::wstring path, std::wstring_view elements) {
    const std::size_t rootLength = path.size();
    while (!elements.empty()) {
        const std::size_t end = std::min(elements.find(L'\\'), elements.size());
        appendElement(path, elements.substr(0, end), rootLength);
        elements.remove_prefix(std::min(end + 1, elements.size()));
    }
    return path;
}

std::wstring verbatimRoot(std::wstring_view rootName, RootKind kind) {
    std::wstring verbatim(LR"(\\?\)");
    if (kind == RootKind::share) {
        verbatim.append(LR"(UNC\)");
        rootName.remove_prefix(2);
    }
    return verbatim.append(rootName).append(L"\\");
}

}  // namespace

std::u16string make_native_form(std::u16string path, bool tidy) {
    std::replace(path.begin(), path.end(), u'/', kSeparator);
    if (tidy) {
        tidyUp(path);
    }
    return path;
}

std::u16string make_generic_form(std::u16string nativePath) {
    std::replace(nativePath.begin(), nativePath.end(), kSeparator, u'/');
    return nativePath;
}

std::u16string extract_extension(const std::u16string& nativePath) {
    return std::u16string(extensionOfName(lastElement(nativePath, rootOf(nativePath).length, kSeparators)));
}

std::u16string extract_filename(const std::u16string& nativePath) {
    return std::u16string(lastElement(nativePath, rootOf(nativePath).length, kSeparators));
}

std::u16string extract_parent_path(const std::u16string& nativePath) {
    return std::u16string(withoutLastElement(nativePath, rootOf(nativePath).length, kSeparators));
}

std::u16string concatenate_pathname(const std::u16string& base, const std::u16string& rest, bool native) {
    const bool restIsRooted = rest.find_first_of(kSeparators) == 0;
    if (isDriveAlone(base) && !restIsRooted) {
        return base + rest;
    }
    return join(base, native ? u"\\" : u"/", rest, kSeparators);
}

bool is_absolute(const std::u16string& nativePath) { return isAbsolute(rootOf(nativePath)); }

std::wstring make_access_form(std::wstring widePath) {
    const Root root = findRoot(std::wstring_view(widePath));
    if (!isAbsolute(root) || root.kind == RootKind::device) {
        return widePath;
    }
    std::replace(widePath.begin(), widePath.end(), L'/', L'\\');
    const std::wstring_view path = widePath;
    return appendResolved(verbatimRoot(path.substr(0, root.nameLength), root.kind), path.substr(root.length));
}

}  // namespace fl::filesystem::syntax::windows
