#include "tests/fault/Losses.hpp"

namespace test {

namespace {

bool startsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

}  // namespace

bool isTemporary(const std::string& name) { return startsWith(name, "."); }
bool isNothing(const std::string& /*name*/) { return false; }

std::string differs(const std::string& name, const TreeSnapshot& found) {
    const auto at = found.find(name);
    return name + " is now " + (at == found.end() ? "gone" : at->second) + "; ";
}

std::string changed(const Outcome& outcome, bool (*isRemains)(const std::string&)) {
    std::string result;
    for (const auto& [name, what] : outcome.before) {
        const auto found = outcome.after.find(name);
        result += found == outcome.after.end() || found->second != what ? differs(name, outcome.after) : "";
    }
    for (const auto& [name, what] : outcome.after) {
        const bool isNew = outcome.before.count(name) == 0;
        const bool allowed = !outcome.couldCleanUp && isRemains(name);
        result += isNew && !allowed ? name + " was left behind; " : "";
    }
    return result;
}

std::string changedBesidesRemoval(const TreeSnapshot& before, const TreeSnapshot& after,
                                  const std::string& removed) {
    std::string result;
    for (const auto& [name, what] : before) {
        const auto found = after.find(name);
        const bool gone = found == after.end();
        const bool mayGo = name == removed || startsWith(name, removed + '/');
        result += gone                    ? (mayGo ? "" : differs(name, after))
                  : found->second != what ? differs(name, after)
                                          : "";
    }
    return result;
}

std::string isNoPartOfDone(const Outcome& outcome) {
    std::string result;
    for (const auto& [name, what] : outcome.after) {
        const auto wanted = outcome.done.find(name);
        if (wanted == outcome.done.end()) {
            result += name + " was left behind; ";
        } else if (startsWith(what, "file") && what != wanted->second && outcome.couldCleanUp) {
            result += name + " is broken: " + what + "; ";
        }
    }
    return result;
}

const Reasons kCopyIsHarmless = {
    {"ficlone", "blocks that cannot be shared are copied"},
    {"fallocate", "blocks that cannot be reserved are written all the same"},
    {"close", "what was only read is complete by then"},
    {"lseek", "a file whose holes cannot be found is read as a whole"},
};

Reasons together(Reasons reasons, const Reasons& more) {
    reasons.insert(more.begin(), more.end());
    return reasons;
}

const Reasons kRemovalIsHarmless = {
    {"unlinkat", "what a call refuses to remove may be of the other kind, which has a call of its own"},
    {"openat", "a folder that cannot be opened may be empty, and then it goes all the same"},
    {"openat(..)", "where the way up is closed the way down is too"},
    {"close", "what was only read is complete by then"},
    {"lseek", "a place that is lost is looked for from the beginning"},
};

const Reasons kReadingIsHarmless = {
    {"close", "what was only read is complete by then"},
};

}  // namespace test
