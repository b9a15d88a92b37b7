#pragma once

#include "tests/support/RawFiles.hpp"
#include "tests/support/storage/ProviderCalls.hpp"
#include "tests/support/storage/RawDatabase.hpp"
#include "tests/support/storage/StoreFile.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace test {

inline constexpr std::size_t kChunk = 65'536;
/// More than a writer keeps in memory.
inline constexpr std::size_t kHuge = 5'000'000;

/// A store by two providers, which know as little of each other as two processes do.
class SqliteContent : public testing::Test {
protected:
    SqliteContent() {
        writeFile(*store, u"small", "old");
        writeFile(*store, u"large", large);
    }
    ~SqliteContent() override {
        store.reset();
        other.reset();
        EXPECT_EQ(raw().run("PRAGMA integrity_check"), "ok");
    }

    RawDatabase& raw() {
        if (!raw_) raw_ = std::make_unique<RawDatabase>(file.native());
        return *raw_;
    }
    int orphans() { return raw().count("orphan"); }
    int chunks() { return raw().count("chunk"); }
    int chunksOfHuge() const { return static_cast<int>(kHuge / kChunk) + 1; }

    const StoreFile file;
    std::shared_ptr<foundation::storage::provider::Provider> store = file.open();
    std::shared_ptr<foundation::storage::provider::Provider> other = file.open();
    const std::string large = someBytes(300'000);
    const std::string huge = someBytes(kHuge);

private:
    std::unique_ptr<RawDatabase> raw_;
};

}  // namespace test
