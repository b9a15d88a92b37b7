#include "tests/sqlite/Change.hpp"

#include "tests/support/storage/ProviderCalls.hpp"

#include <boost/date_time/posix_time/posix_time_types.hpp>

#include <iterator>

namespace test {

namespace provider = foundation::storage::provider;
using provider::Path;
using provider::WriteMode;
using Verb = Change::Verb;

namespace {

constexpr auto kReplace = provider::ReplacementPolicy::ReplaceExisting;

WriteMode modeOf(Verb verb) {
    return verb == Verb::Write      ? WriteMode::Create
           : verb == Verb::WriteNew ? WriteMode::CreateNew
                                    : WriteMode::Append;
}

std::int64_t timeOf(const Change& change) {
    return static_cast<std::int64_t>(change.seed % 2'000'000'000'000'000U);
}

boost::posix_time::ptime asTime(std::int64_t microseconds) {
    return boost::posix_time::ptime(boost::gregorian::date(1970, 1, 1)) +
           boost::posix_time::microseconds(microseconds);
}

bool isAtOrBelow(const std::u16string& path, const std::u16string& top) {
    return Path(path).isAtOrBelow(Path(top));
}

const Thing* thingAt(const Tree& tree, const std::u16string& path) {
    const auto found = tree.find(path);
    return found == tree.end() ? nullptr : &found->second;
}

bool isFolder(const Tree& tree, const std::u16string& path) {
    const Thing* const thing = thingAt(tree, path);
    return path.empty() || (thing != nullptr && thing->isFolder);
}

bool isFile(const Tree& tree, const std::u16string& path) {
    const Thing* const thing = thingAt(tree, path);
    return thing != nullptr && !thing->isFolder;
}

bool mayBeMadeAt(const Tree& tree, const std::u16string& path) {
    return !path.empty() && isFolder(tree, Path(path).parent().text());
}

void eraseTree(Tree& tree, const std::u16string& top) {
    for (auto it = tree.begin(); it != tree.end();) {
        it = isAtOrBelow(it->first, top) ? tree.erase(it) : std::next(it);
    }
}

bool writeFileIn(const Change& change, Tree& tree) {
    const Thing* const old = thingAt(tree, change.path);
    const bool isRefused = old != nullptr && (old->isFolder || change.verb == Verb::WriteNew);
    if (isRefused || !mayBeMadeAt(tree, change.path)) return false;
    std::string bytes = old != nullptr && change.verb == Verb::Append ? *old->bytes : std::string();
    bytes += patternOf(change.seed, change.size);
    const bool isWritable = old == nullptr || old->isWritable;
    tree[change.path] = {false, isWritable, std::nullopt,
                         std::make_shared<const std::string>(std::move(bytes))};
    return true;
}

bool createFolderIn(const Change& change, Tree& tree) {
    if (thingAt(tree, change.path) != nullptr || !mayBeMadeAt(tree, change.path)) return false;
    tree[change.path] = {true, true, std::nullopt, nullptr};
    return true;
}

bool removeIn(const Change& change, Tree& tree) {
    const auto found = tree.find(change.path);
    if (found == tree.end()) return false;
    const auto inside = tree.lower_bound(change.path + u'/');
    if (inside != tree.end() && isAtOrBelow(inside->first, change.path)) return false;
    tree.erase(found);
    return true;
}

bool removeTreeIn(const Change& change, Tree& tree) {
    if (change.path.empty() || !isFolder(tree, change.path)) return false;
    eraseTree(tree, change.path);
    return true;
}

bool moveOrCopy(const Change& change, Tree& tree) {
    const Thing* const from = thingAt(tree, change.path);
    const Thing* const to = thingAt(tree, change.to);
    const bool isRefused = from == nullptr || (to != nullptr && to->isFolder != from->isFolder) ||
                           isAtOrBelow(change.to, change.path) || isAtOrBelow(change.path, change.to);
    if (isRefused || !mayBeMadeAt(tree, change.to)) return false;
    const Tree old = tree;
    eraseTree(tree, change.to);
    if (change.verb == Verb::Move) eraseTree(tree, change.path);
    for (const auto& [path, thing] : old) {
        if (!isAtOrBelow(path, change.path)) continue;
        Thing& copy = tree[change.to + path.substr(change.path.size())];
        copy = thing;
        if (change.verb == Verb::Copy) copy.modified.reset();
    }
    return true;
}

bool mark(const Change& change, Tree& tree) {
    if (!isFile(tree, change.path)) return false;
    Thing& thing = tree[change.path];
    if (change.verb == Verb::SetTime) {
        thing.modified = timeOf(change);
    } else {
        thing.isWritable = change.seed % 2 == 0;
    }
    return true;
}

/// Few names, so that things meet; one of them outside the first plane.
std::u16string randomName(std::mt19937& random) {
    constexpr const char16_t* kNames[] = {u"a", u"b", u"name with spaces", u"\xE4\x4E2D", u"\xD83D\xDE00"};
    return kNames[random() % std::size(kNames)];
}

std::u16string randomPath(std::mt19937& random, const Tree& tree) {
    const std::size_t choice = random() % (tree.size() + 3);
    if (choice >= tree.size()) return randomName(random);
    const auto& [path, thing] = *std::next(tree.begin(), static_cast<std::ptrdiff_t>(choice));
    const bool mayGoDeeper = thing.isFolder && path.size() < 40;
    return mayGoDeeper && random() % 2 == 0 ? path + u'/' + randomName(random) : path;
}

/// In a page, in a row, in some rows, and more than what is kept in memory before it is stored.
std::size_t randomSize(std::mt19937& random) {
    constexpr std::size_t kLimits[] = {1, 3'000, 3'000, 60'000, 60'000, 300'000, 300'000, 9'000'000};
    const std::size_t kind = random() % 20;
    return random() % kLimits[kind == 0 ? 7 : kind % 7];
}

std::size_t sizeOf(const Tree& tree) {
    std::size_t size = 0;
    for (const auto& [path, thing] : tree) size += thing.isFolder ? 0 : thing.bytes->size();
    return size;
}

Verb randomVerb(std::mt19937& random, const Tree& tree) {
    constexpr std::size_t kMaxThings = 25;
    constexpr std::size_t kMaxBytes = 12'000'000;
    if (tree.size() > kMaxThings || sizeOf(tree) > kMaxBytes) {
        return random() % 2 == 0 ? Verb::Remove : Verb::RemoveTree;
    }
    return static_cast<Verb>(random() % 10);
}

}  // namespace

void Change::makeIn(provider::Provider& store) const {
    const Path at(path);
    switch (verb) {
        case Verb::Write:
        case Verb::WriteNew:
        case Verb::Append:
            return writeFile(store, path, patternOf(seed, size), modeOf(verb));
        case Verb::CreateFolder:
            return store.createFolder(at);
        case Verb::Remove:
            return store.remove(at);
        case Verb::RemoveTree:
            return store.removeTree(at);
        case Verb::Move:
            return store.move(at, Path(to), kReplace);
        case Verb::Copy:
            return store.copy(at, Path(to), kReplace);
        case Verb::SetWritable:
            return store.setWritable(at, seed % 2 == 0);
        case Verb::SetTime:
            return store.setLastModified(at, asTime(timeOf(*this)));
    }
}

bool Change::makeIn(Tree& tree) const {
    switch (verb) {
        case Verb::Write:
        case Verb::WriteNew:
        case Verb::Append:
            return writeFileIn(*this, tree);
        case Verb::CreateFolder:
            return createFolderIn(*this, tree);
        case Verb::Remove:
            return removeIn(*this, tree);
        case Verb::RemoveTree:
            return removeTreeIn(*this, tree);
        case Verb::Move:
        case Verb::Copy:
            return moveOrCopy(*this, tree);
        case Verb::SetWritable:
        case Verb::SetTime:
            return mark(*this, tree);
    }
    return false;
}

std::string textOf(const Change& change) {
    constexpr const char* kVerbs[] = {"write",       "write new", "append", "create folder", "remove",
                                      "remove tree", "move",      "copy",   "set writable",  "set time"};
    return std::string(kVerbs[static_cast<std::size_t>(change.verb)]) + " '" + utf8(change.path) + "' '" +
           utf8(change.to) + "' " + std::to_string(change.size);
}

Change randomChange(std::mt19937& random, const Tree& tree) {
    while (true) {
        Change change;
        change.verb = randomVerb(random, tree);
        change.path = randomPath(random, tree);
        change.to = randomPath(random, tree);
        change.size = randomSize(random);
        change.seed = random();
        Tree after = tree;
        if (change.makeIn(after)) return change;
    }
}

std::vector<Change> allKinds(std::size_t largeSize) {
    return {{Verb::CreateFolder, u"d", {}, 0, 0},
            {Verb::Write, u"d/small", {}, 700, 1},
            {Verb::WriteNew, u"d/large", {}, largeSize, 2},
            {Verb::Write, u"d/small", {}, 900, 3},
            {Verb::Append, u"d/large", {}, 5'000, 4},
            {Verb::SetWritable, u"d/small", {}, 0, 1},
            {Verb::SetTime, u"d/large", {}, 0, 1'234'567'890'123'456},
            {Verb::Move, u"d/small", u"d/other", 0, 0},
            {Verb::Copy, u"d", u"e", 0, 0},
            {Verb::Move, u"d", u"e", 0, 0},
            {Verb::Remove, u"e/other", {}, 0, 0},
            {Verb::RemoveTree, u"e", {}, 0, 0}};
}

}  // namespace test
