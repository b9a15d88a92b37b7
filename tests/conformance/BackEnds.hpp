#pragma once

#include <pkgcore/filesystem/FileSystemOps.hpp>

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace test {

/// A back end with an empty folder that belongs to one test.
class Place {
public:
    Place() = default;
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;
    virtual ~Place() = default;

    virtual opc::FileSystemOps& ops() = 0;
    /// The folder, as normalizePath of the back end spells it.
    virtual opc::ustring folder() const = 0;
};

/// What the suite needs to know of a back end.
struct BackEnd {
    std::string name;
    std::function<std::unique_ptr<Place>()> makePlace;
    bool hasLinks;
    /// What lies in the place has a native path.
    bool hasLocalPaths;
    /// Every output stream goes to any place; otherwise those that are opened with std::ios::in do.
    bool seeksAllOutput;
};

inline void PrintTo(const BackEnd& backEnd, std::ostream* out) { *out << backEnd.name; }

/// Every back end of the library, the virtual one with each store that it cannot do without.
std::vector<BackEnd> backEnds();

/// Those of stores that have a library of their own, as far as they are built.
std::vector<BackEnd> optionalBackEnds();

}  // namespace test
