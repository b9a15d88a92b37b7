#include "Stores.hpp"

#include "../support/Printable.hpp"

#include <pkgcore/platform/storage/CanonicalAbsoluteIRI.hpp>
#include <pkgcore/platform/storage/Exceptions.hpp>
#include <pkgcore/platform/storage/IRIPrefix.hpp>
#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>
#include <pkgcore/portable/storage/providers/sqlite/SqliteProvider.hpp>

#include <memory>
#include <set>
#include <stdexcept>
#include <string>

namespace mirror {

namespace {

namespace provider = foundation::storage::provider;
namespace vfs = foundation::storage::vfs;

using Authorities = std::set<opc::ustring>;

/// A kind of store: what opens the one that "scheme://authority/" names.
struct Scheme {
    opc::ustring name;
    std::shared_ptr<provider::Provider> (*open)(const opc::ustring& authority);
};

/// All kinds; another one is another row. "file", the files of this machine, is always there.
const Scheme kSchemes[] = {
    {u"mem", [](const opc::ustring&) { return provider::makeMemoryProvider(); }},
    // sqlite://notes/ is the file notes.db in the working directory.
    {u"sqlite", [](const opc::ustring& name) { return provider::openSqliteProvider(name + u".db"); }},
};

vfs::CanonicalAbsoluteIRI parse(const opc::ustring& place) {
    try {
        return vfs::CanonicalAbsoluteIRI(place);
    } catch (const vfs::InvalidIRIException& failure) {
        throw std::invalid_argument(std::string(failure.what()) + ": " + printable(place));
    }
}

Authorities authoritiesOf(const opc::ustring& scheme, const std::vector<opc::ustring>& places) {
    Authorities authorities;
    for (const opc::ustring& place : places) {
        if (vfs::hasIRIPrefix(place) && parse(place).getScheme() == scheme) {
            const opc::ustring path = parse(place).getPath();  // the authority and what is in it
            authorities.insert(path.substr(0, path.find(u'/')));
        }
    }
    return authorities;
}

}  // namespace

Stores openStores(const std::vector<opc::ustring>& places) {
    vfs::StorageSystemBuilder builder;
    for (const Scheme& scheme : kSchemes) {
        for (const opc::ustring& authority : authoritiesOf(scheme.name, places)) {
            builder.mount(scheme.name, authority, scheme.open(authority));
        }
    }
    const vfs::StorageSystemReference system = builder.build();
    return {system, opc::FileSystemOpsSelector(system)};
}

}  // namespace mirror
