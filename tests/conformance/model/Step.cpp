#include "tests/conformance/model/Step.hpp"

#include <gtest/gtest.h>

#include <iterator>

namespace test::model {

namespace {

constexpr const char* kCallNames[] = {
    "createFolder", "createFolders", "write",           "append",   "overwrite",      "read",
    "copy",         "copyReplacing", "rename",          "remove",   "removeAll",      "list",
    "listTree",     "exists",        "isFile",          "isFolder", "getPermissions", "setPermissions",
    "getTime",      "setTime",       "lookAtEverything"};

/// How often a call comes, in the order of Call.
constexpr double kWeights[] = {6, 10, 16, 3, 3, 5, 6, 8, 10, 2, 1, 2, 2, 2, 2, 2, 2, 6, 3, 3, 1};

const char16_t* const kNames[] = {u"a", u"b", u"aa", u"\u00E9 %41"};

class Source {
public:
    explicit Source(unsigned seed) : engine_(seed) {}

    Step step() {
        std::discrete_distribution<unsigned> call(std::begin(kWeights), std::end(kWeights));
        const Call next = static_cast<Call>(call(engine_));
        return next == Call::LookAtEverything ? Step{next, u"", u"", 0}
                                              : Step{next, path(), path(), below(1000)};
    }

private:
    unsigned below(unsigned limit) { return static_cast<unsigned>(engine_() % limit); }

    /// Mostly one to three names; seldom the root, or no IRI at all.
    std::u16string path() {
        const unsigned kind = below(100);
        if (kind == 0) return u"";
        if (kind == 1) return u"a%2F";
        std::u16string path = kNames[below(std::size(kNames))];
        for (unsigned more = below(10); more > 5; more -= 3) {
            path += u'/';
            path += kNames[below(std::size(kNames))];
        }
        return path;
    }

    std::mt19937 engine_;
};

}  // namespace

/// Without what the call does not look at.
std::ostream& operator<<(std::ostream& out, const Step& step) {
    out << kCallNames[static_cast<std::size_t>(step.call)] << ' ' << testing::PrintToString(step.path);
    switch (step.call) {
        case Call::Copy:
        case Call::CopyReplacing:
        case Call::Rename:
            return out << ' ' << testing::PrintToString(step.to);
        case Call::Write:
        case Call::Append:
        case Call::Overwrite:
        case Call::SetTime:
            return out << ' ' << step.number;
        case Call::SetPermissions:
            return out << (step.number % 2 == 0 ? " rw" : " r");
        default:
            return out;
    }
}

std::ostream& operator<<(std::ostream& out, const Script& script) {
    for (const Step& step : script) {
        out << "    " << step << '\n';
    }
    return out;
}

// One in a hundred is longer than a buffer.
std::string contentOf(unsigned number) {
    const std::size_t size = number % 100 == 7 ? 70'000 : number % 20;
    return std::string(size, static_cast<char>('a' + number % 26));
}

Script randomScript(unsigned seed, std::size_t length) {
    Source source(seed);
    Script script;
    while (script.size() < length) {
        script.push_back(source.step());
    }
    script.push_back(Step{Call::LookAtEverything, u"", u"", 0});
    return script;
}

}  // namespace test::model
