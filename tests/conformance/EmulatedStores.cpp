#include "tests/conformance/EmulatedStores.hpp"

#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>

#include "tests/support/storage/BareProvider.hpp"

namespace foundation::storage::conformance {

namespace {

Backend hiding(std::string name, std::function<void(provider::Traits&)> hide) {
    return storeFrom(std::move(name), [hide = std::move(hide)] {
        return std::make_shared<test::BareProvider>(provider::makeMemoryProvider(), hide);
    });
}

void hideTransfers(provider::Traits& traits) {
    traits.copiesFiles = traits.copiesFolders = traits.movesFiles = traits.movesFolders = false;
}

void hideAllButTheNecessary(provider::Traits& traits) {
    hideTransfers(traits);
    traits.readsAt = traits.appends = traits.removesTrees = false;
    traits.setsWritable = traits.setsLastModified = false;
}

void hideChanges(provider::Traits& traits) {
    hideAllButTheNecessary(traits);
    traits.writes = traits.createsFolders = traits.removes = false;
}

}  // namespace

std::vector<Backend> emulatedStores() {
    return {
        hiding("transfers", hideTransfers),
        hiding("allButTheNecessary", hideAllButTheNecessary),
        hiding("changes", hideChanges),
        hiding("copies", [](provider::Traits& traits) { traits.copiesFiles = traits.copiesFolders = false; }),
        hiding("folderMoves", [](provider::Traits& traits) { traits.movesFolders = false; }),
        hiding("appends", [](provider::Traits& traits) { traits.appends = false; }),
        hiding("marks",
               [](provider::Traits& traits) { traits.setsWritable = traits.setsLastModified = false; }),
        hiding("removal", [](provider::Traits& traits) { traits.removes = traits.removesTrees = false; }),
    };
}

}  // namespace foundation::storage::conformance
