#pragma once

#include <pkgcore/filesystem/FileSystemOpsSelector.hpp>

#include "tests/conformance/model/Outcome.hpp"
#include "tests/conformance/model/Step.hpp"

#include <memory>
#include <string>

namespace test::model {

/// Takes the steps in a store, below an IRI.
class Client {
public:
    /// `root` ends in "/"; `keeper` goes with the client.
    Client(foundation::storage::vfs::StorageSystemReference storage, opc::ustring root,
           std::shared_ptr<void> keeper = nullptr);

    Outcome apply(const Step& step);

private:
    using Code = boost::system::error_code;

    opc::ustring iri(const std::u16string& path);
    std::u16string pathOf(const opc::ustring& iri);
    opc::FileSystemOps& ops() { return selector_.getVirtual(); }

    std::string query(const Step& step, Code& ec);
    void change(const Step& step, Code& ec);
    std::string read(const opc::ustring& file, Code& ec);
    void write(const Step& step, Code& ec);
    std::string list(const Step& step, Code& ec);
    std::string everything();

    std::shared_ptr<void> keeper_;
    foundation::storage::vfs::StorageSystemReference storage_;
    opc::FileSystemOpsSelector selector_;
    opc::ustring root_;
};

}  // namespace test::model
