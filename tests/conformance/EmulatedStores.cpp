#include "tests/conformance/EmulatedStores.hpp"

#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>
#include <pkgcore/testing/conformance/ConformanceTest.hpp>

#include "tests/support/storage/BareProvider.hpp"

namespace foundation::storage::conformance {

namespace {

using Hide = std::function<void(provider::Traits&)>;

Backend hiding(std::string name, Hide hide) {
    return storeFrom(std::move(name), [hide = std::move(hide)] {
        return std::make_shared<test::BareProvider>(provider::makeMemoryProvider(), hide);
    });
}

/// A store with something in it, which can be read alone.
Backend hidingChanges(std::string name, Hide hide) {
    const Contents content{{u"empty", ""}, {u"d/e/long", someBytes(300'000)}, {u"d/f", "0123456789"}};
    const auto make = [hide = std::move(hide), content] {
        const auto store = provider::makeMemoryProvider();
        store->createFolder(provider::Path(u"d", u"store"));
        store->createFolder(provider::Path(u"d/e", u"store"));
        for (const auto& [path, bytes] : content) {
            const auto writer =
                store->openWriter(provider::Path(path, u"store"), provider::WriteMode::Create);
            writer->write(bytes.data(), bytes.size());
            writer->commit();
        }
        return std::make_shared<test::BareProvider>(store, hide);
    };
    return storeFrom(std::move(name), make, content);
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

// Made once: GoogleTest asks for them again for each test, at the start of each program.
const std::vector<Backend>& emulatedStores() {
    static const std::vector<Backend> stores = {
        hiding("transfers", hideTransfers),
        hiding("allButTheNecessary", hideAllButTheNecessary),
        hidingChanges("changes", hideChanges),
        hidingChanges("changesOnly",
                      [](provider::Traits& traits) {
                          hideChanges(traits);
                          traits.readsAt = true;
                      }),
        hiding("copies", [](provider::Traits& traits) { traits.copiesFiles = traits.copiesFolders = false; }),
        hiding("folderMoves", [](provider::Traits& traits) { traits.movesFolders = false; }),
        hiding("appends", [](provider::Traits& traits) { traits.appends = false; }),
        hiding("marks",
               [](provider::Traits& traits) { traits.setsWritable = traits.setsLastModified = false; }),
        hiding("largeFiles",
               [](provider::Traits& traits) {
                   hideTransfers(traits);
                   traits.maxFileSize = 500'000;
               }),
        hiding("removal", [](provider::Traits& traits) { traits.removes = traits.removesTrees = false; }),
    };
    return stores;
}

}  // namespace foundation::storage::conformance
