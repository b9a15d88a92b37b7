#include "tests/support/scripted_platform/Platform.hpp"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace scripted {

using fl::filesystem::file_status;

namespace {

Platform* active = nullptr;

[[noreturn]] void misused(const char* text) {
    std::fputs(text, stderr);
    std::abort();
}

}  // namespace

Entry file(const std::u16string& name) { return {name, file_status::regular_file}; }
Entry folder(const std::u16string& name) { return {name, file_status::directory_file}; }
Entry link(const std::u16string& name) { return {name, file_status::symlink_file}; }

file_status ofKind(unsigned kind) {
    file_status status;
    status.kind = kind;
    return status;
}

file_status nothing() { return ofKind(file_status::file_not_found); }
file_status aFile() { return ofKind(file_status::regular_file); }
file_status aFolder() { return ofKind(file_status::directory_file); }
file_status aLink() { return ofKind(file_status::symlink_file); }

Platform::Platform() {
    if (active != nullptr) {
        misused("Only one scripted platform can be active.\n");
    }
    active = this;
}

Platform::~Platform() { active = nullptr; }

Platform& Platform::current() {
    if (active == nullptr) {
        misused("The platform was called while no script was active.\n");
    }
    return *active;
}

Calls Platform::callsTo(const std::vector<std::string>& names) const {
    Calls found;
    std::copy_if(calls_.begin(), calls_.end(), std::back_inserter(found), [&names](const std::string& call) {
        return std::find(names.begin(), names.end(), call.substr(0, call.find('('))) != names.end();
    });
    return found;
}

}  // namespace scripted
