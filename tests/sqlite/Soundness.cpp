#include "tests/sqlite/Soundness.hpp"

#include "tests/support/storage/RawDatabase.hpp"

#include <gmock/gmock.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace test {

void expectSound(const StoreFile& file) {
    {
        RawDatabase database(file.native());
        EXPECT_EQ(database.run("PRAGMA integrity_check"), "ok");
        EXPECT_EQ(database.count("orphan"), 0) << "left behind";
        EXPECT_EQ(database.count("chunk WHERE (id >> 28) NOT IN (SELECT content FROM entry WHERE kind = 0)"),
                  0)
            << "bytes of no file";
        EXPECT_EQ(database.run("SELECT count(*) FROM chunk"),
                  database.run("SELECT ifnull(sum((size + 65535) / 65536), 0) FROM entry WHERE kind = 0"));
        EXPECT_EQ(database.count("entry WHERE parent <> 0 AND parent NOT IN "
                                 "(SELECT id FROM entry WHERE kind = 1)"),
                  0)
            << "in no folder";
    }
    EXPECT_THAT(filesBeside(file), testing::ElementsAre("store.db"));
}

std::vector<std::string> filesBeside(const StoreFile& file) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(file.tree().path())) {
        names.push_back(entry.path().filename().string());
    }
    return names;
}

void removeStore(const StoreFile& file) {
    for (const std::string& name : filesBeside(file)) ::unlink((file.tree() / name).c_str());
}

unsigned amountOf(const char* variable, unsigned usual) {
    const char* const wanted = std::getenv(variable);
    return wanted == nullptr ? usual : static_cast<unsigned>(std::stoul(wanted));
}

}  // namespace test
