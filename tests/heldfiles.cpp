#include "heldfiles.h"

#include "child.h"
#include "databasefile.h"
#include "exports.h"

#include <fstream>
#include <iostream>

namespace client {

namespace fs = std::filesystem;

namespace {

void addRecords()
{
    addOneOfEverything();
    ASSERT_EQ(call("addUsers", {items(R"({"id":#,"name":")" + std::string(200, 'n') + "\"}", 1000, 1059)}), "0");
}

std::vector<Held> makeAll()
{
    const TemporaryDirectory directory;
    std::vector<Held> held = {{"nothing", {}}};
    Child([] {
        static const auto *const cache = new RunningCache;
        ASSERT_NE(cache, nullptr);
        addRecords();
    });
    Held kept = {"a file that was left by a kill", filesHere()};
    EXPECT_TRUE(kept.files.contains("CacheDb-wal"));
    {
        const RunningCache cache;
        kept.users = call("getUsers");
        EXPECT_NE(kept.users.find("1059|n"), std::string::npos) << "acknowledged, and lost";
    }
    kept.content = content();
    held.push_back(kept);
    const auto keep = [&](const char *name) {
        kept.name = name;
        kept.files = filesHere();
        held.push_back(kept);
    };
    keep("a file that was left cleanly");
    ask("PRAGMA journal_mode=WAL");
    keep("a file that says it has a log, and has none");
    ask("PRAGMA journal_mode=DELETE");
    Child([] {
        static Connection file;
        file.ask("PRAGMA cache_size=2; BEGIN; UPDATE Users SET UsersName = 'spoiled'; DELETE FROM Events");
    });
    keep("a file that was left in the middle of a change");
    EXPECT_NE(kept.files["CacheDb"].find("spoiled"), std::string::npos);
    return held;
}

} // namespace

Files filesHere()
{
    Files files;
    for (const fs::directory_entry &entry : fs::directory_iterator(fs::current_path())) {
        std::ifstream file(entry.path(), std::ios::binary);
        files[entry.path().filename()].assign(std::istreambuf_iterator<char>(file), {});
    }
    return files;
}

void lay(const Files &files)
{
    for (const fs::directory_entry &entry : fs::directory_iterator(fs::current_path()))
        fs::remove(entry.path());
    for (const auto &[path, bytes] : files)
        std::ofstream(path, std::ios::binary) << bytes;
}

const std::vector<Held> &allHeld()
{
    static const std::vector<Held> all = makeAll();
    return all;
}

} // namespace client
