#pragma once

#include "tests/conformance/BackEnds.hpp"

#include <boost/system/error_code.hpp>

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace test {

/// A back end with a small tree: file, other, empty/, full/ (inner, deep/ (leaf)).
class Scene {
public:
    explicit Scene(const BackEnd& backEnd);

    opc::FileSystemOps& ops() const { return place_->ops(); }

    /// The path of an item; of none with the empty name.
    opc::ustring at(const std::string& name) const;

    /// The top of the back end, above everything.
    opc::ustring root() const;

    /// A path without what belongs to the back end.
    std::string shown(const opc::ustring& path) const;

    /// Everything that is there, with the contents.
    std::string tree() const;

private:
    std::unique_ptr<Place> place_;
};

/// The items of a scene, and names at which nothing is.
extern const std::vector<std::string> kSubjects;

/// What came of a call.
struct Outcome {
    boost::system::error_code code;
    std::string result;  ///< without what belongs to the back end
    std::string tree;    ///< what is there then

    friend bool operator==(const Outcome& one, const Outcome& other) {
        return one.code == other.code && one.result == other.result && one.tree == other.tree;
    }
    friend std::ostream& operator<<(std::ostream& out, const Outcome& one) {
        return out << one.code << " [" << one.result << "]" << one.tree;
    }
};

/// A call of a public operation.
struct Call {
    std::string name;
    std::string from;
    std::string to;  ///< where it takes two paths
    std::function<std::string(Scene&, boost::system::error_code&)> run;

    Outcome on(const BackEnd& backEnd) const;
    friend std::ostream& operator<<(std::ostream& out, const Call& call) {
        return out << call.name << " '" << call.from << "' '" << call.to << "'";
    }
};

/// A name that is longer than file systems take.
extern const std::string kLongName;

/// Every operation that can fail, on each subject or on each two of them; and what cannot be undone on the
/// root.
std::vector<Call> allCalls();

/// The same on an item with the long name, and moves and copies from it and to it. Of the stores, some take
/// every name.
std::vector<Call> longNameCalls();

}  // namespace test
