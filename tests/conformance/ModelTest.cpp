// Stores against a model of what every store has to do: random steps, taken by all of them at once.

#include <pkgcore/portable/storage/StorageSystemBuilder.hpp>
#include <pkgcore/portable/storage/providers/folder/FolderProvider.hpp>
#include <pkgcore/portable/storage/providers/memory/MemoryProvider.hpp>

#include "tests/conformance/model/Lockstep.hpp"
#include "tests/conformance/model/Model.hpp"
#include "tests/conformance/model/OptionalStores.hpp"
#include "tests/conformance/model/Shrink.hpp"
#include "tests/support/TempTree.hpp"
#include "tests/support/storage/BareProvider.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>

namespace test::model {

namespace {

namespace provider = foundation::storage::provider;
using foundation::storage::vfs::StorageSystemBuilder;

constexpr std::size_t kScriptLength = 1000;
constexpr unsigned kSeeds = 20;

std::unique_ptr<Client> clientOf(std::shared_ptr<provider::Provider> store,
                                 std::shared_ptr<void> keeper = nullptr) {
    return std::make_unique<Client>(StorageSystemBuilder().mount(u"store", u"s", std::move(store)).build(),
                                    u"store://s/", std::move(keeper));
}

Store memoryStore() {
    return {"memory", [] { return clientOf(provider::makeMemoryProvider()); }};
}

Store folderStore() {
    return {"folder", [] {
                const auto tree = std::make_shared<TempTree>(fastFolder());
                return clientOf(provider::makeFolderProvider(text(tree->path())), tree);
            }};
}

/// Copies, moves and appends are put together by the storage system.
Store emulatedStore() {
    const auto hide = [](provider::Traits& traits) {
        traits.copiesFiles = traits.copiesFolders = traits.movesFiles = traits.movesFolders = false;
        traits.appends = traits.removesTrees = false;
    };
    return {"emulated",
            [=] { return clientOf(std::make_shared<BareProvider>(provider::makeMemoryProvider(), hide)); }};
}

/// The scheme "file". Its folder is no root, and so behaves otherwise.
Store localStore() {
    return {"local", [] {
                const auto tree = std::make_shared<TempTree>(fastFolder());
                return std::make_unique<Client>(StorageSystemBuilder().build(),
                                                u"file://" + text(tree->path()) + u'/', tree);
            }};
}

Script withoutRoot(Script script) {
    const auto namesRoot = [](const Step& step) {
        return step.call != Call::LookAtEverything && (step.path.empty() || step.to.empty());
    };
    script.erase(std::remove_if(script.begin(), script.end(), namesRoot), script.end());
    return script;
}

/// The shortest script with which it happens, and what happens.
std::string explain(const Script& script, const Difference& difference, const std::vector<Store>& stores) {
    const Script shorter = shortest(script, difference.step, stores);
    std::ostringstream text;
    text << firstDifference(shorter, stores)->text << "\nafter\n" << shorter;
    return text.str();
}

void runScript(unsigned seed, const Script& script, const std::vector<Store>& stores) {
    if (const auto difference = firstDifference(script, stores)) {
        FAIL() << "seed " << seed << ", " << explain(script, *difference, stores);
    }
}

void runSeed(unsigned seed) {
    const Script script = randomScript(seed, kScriptLength);
    std::vector<Store> stores = optionalStores();
    stores.insert(stores.begin(), {memoryStore(), folderStore(), emulatedStore()});
    runScript(seed, script, stores);
    runScript(seed, withoutRoot(script), {localStore()});
}

class ModelSeeds : public testing::TestWithParam<unsigned> {};

TEST_P(ModelSeeds, StoresDoWhatTheModelDoes) { runSeed(GetParam()); }

INSTANTIATE_TEST_SUITE_P(Seed, ModelSeeds, testing::Range(1U, kSeeds + 1));

// PKGCORE_MODEL_STEPS=1000000 asks for as many steps, from the seed PKGCORE_MODEL_SEED on.
TEST(ModelNightly, StoresDoWhatTheModelDoes) {
    const char* const steps = std::getenv("PKGCORE_MODEL_STEPS");
    const char* const seed = std::getenv("PKGCORE_MODEL_SEED");
    if (steps == nullptr) {
        GTEST_SKIP() << "PKGCORE_MODEL_STEPS says how many steps are wanted";
    }
    const unsigned first = seed == nullptr ? kSeeds + 1 : static_cast<unsigned>(std::stoul(seed));
    const auto scripts = static_cast<unsigned>(std::stoul(steps) / kScriptLength);
    for (unsigned i = 0; i < scripts && !testing::Test::HasFailure(); ++i) {
        runSeed(first + i);
    }
}

// Otherwise the stores agree about little.
TEST(ModelScripts, HaveEveryCallSucceedAndFail) {
    std::map<Call, std::array<int, 2>> counts;
    for (unsigned seed = 1; seed <= kSeeds; ++seed) {
        Model model;
        for (const Step& step : randomScript(seed, kScriptLength)) {
            if (!model.leavesOpen(step)) ++counts[step.call][model.apply(step).code.failed() ? 1 : 0];
        }
    }
    for (const auto& [call, count] : counts) {
        const bool isQuestion = call == Call::Exists || call == Call::IsFile || call == Call::IsFolder ||
                                call == Call::LookAtEverything;
        EXPECT_GE(count[0], 50) << static_cast<int>(call);
        EXPECT_GE(count[1], isQuestion ? 0 : 50) << static_cast<int>(call);
    }
}

/// Forgets that a file is not writable when it takes the place of another one.
class ForgetfulStore : public BareProvider {
public:
    ForgetfulStore() : BareProvider(provider::makeMemoryProvider(), [](provider::Traits& /*traits*/) {}) {}

    void move(const Path& from, const Path& to, Policy policy) override {
        const bool replaces = find(to).has_value();
        BareProvider::move(from, to, policy);
        if (replaces) {
            setWritable(to, true);
        }
    }
};

TEST(ModelShrinking, AMistakeOfAStoreIsFoundAndShown) {
    const std::vector<Store> stores = {
        {"forgetful", [] { return clientOf(std::make_shared<ForgetfulStore>()); }}};
    for (unsigned seed = 1; seed <= 3; ++seed) {
        SCOPED_TRACE(seed);
        const Script script = randomScript(seed, 10'000);
        const auto difference = firstDifference(script, stores);
        ASSERT_TRUE(difference);
        const Script shorter = shortest(script, difference->step, stores);
        // Two files, a mark, the move, and what shows it.
        EXPECT_LE(shorter.size(), 6U) << shorter;
        EXPECT_NE(explain(script, *difference, stores).find("    rename "), std::string::npos);
        for (std::size_t i = 0; i < shorter.size(); ++i) {
            Script without = shorter;
            without.erase(without.begin() + static_cast<std::ptrdiff_t>(i));
            EXPECT_FALSE(firstDifference(without, stores)) << "step " << i << " is not needed\n" << shorter;
        }
    }
}

TEST(ModelShrinking, WhatIsLeftIsWhatItTakes) {
    std::vector<int> steps(1000);
    for (std::size_t i = 0; i < steps.size(); ++i) steps[i] = static_cast<int>(i);
    const auto fails = [](const std::vector<int>& some) {
        return std::count(some.begin(), some.end(), 17) + std::count(some.begin(), some.end(), 600) +
                   std::count(some.begin(), some.end(), 601) ==
               3;
    };
    EXPECT_EQ(shrink(steps, fails), (std::vector<int>{17, 600, 601}));
    EXPECT_TRUE(shrink(steps, [](const auto& /*some*/) { return true; }).empty());
}

}  // namespace

}  // namespace test::model
