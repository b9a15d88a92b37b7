#pragma once

#include <ostream>
#include <random>
#include <string>
#include <vector>

namespace test::model {

/// What one call of a client asks for.
enum class Call : unsigned char {
    CreateFolder,
    CreateFolders,
    Write,
    Append,
    Overwrite,
    Read,
    Copy,
    CopyReplacing,
    Rename,
    Remove,
    RemoveAll,
    List,
    ListTree,
    Exists,
    IsFile,
    IsFolder,
    GetPermissions,
    SetPermissions,
    GetTime,
    SetTime,
    LookAtEverything  ///< the whole tree, with contents
};

/// A path is plain text below the root of a store, "a/b"; one that ends in "%2F" makes an IRI that is none.
struct Step {
    Call call;
    std::u16string path;
    std::u16string to;  ///< of copies and Rename
    unsigned number;    ///< what to write, which time, whether writable
};
using Script = std::vector<Step>;

std::ostream& operator<<(std::ostream& out, const Step& step);
std::ostream& operator<<(std::ostream& out, const Script& script);

/// The bytes that a number stands for.
std::string contentOf(unsigned number);

/// A made-up life of a store: the same for the same seed.
Script randomScript(unsigned seed, std::size_t length);

}  // namespace test::model
