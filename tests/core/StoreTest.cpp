#include "core/files/replaceFile.h"
#include "core/playlist/TulInternalPlaylistManager.h"
#include "tests/support/Media.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using support::readFile;
using support::writeFile;

fs::path freshFolder() {
    static int number = 0;
    fs::path folder = support::scratch() / ("store" + std::to_string(++number));
    fs::create_directories(folder);
    fs::permissions(support::scratch(), fs::perms(0755)); // for asOrdinaryUser
    return folder;
}

std::size_t filesIn(const fs::path& folder) {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
}

/// What `check` answers as a user without privileges, in a process of its own.
bool asOrdinaryUser(const std::function<bool()>& check) {
    const pid_t child = fork();
    if (child == 0) {
        constexpr uid_t nobody = 65534;
        const bool changed = geteuid() != 0 || (setgid(nobody) == 0 && setuid(nobody) == 0);
        _exit(changed && check() ? 0 : 1);
    }
    int status = 0;
    return waitpid(child, &status, 0) == child && status == 0;
}

TEST(Store, RegistersByPathAndComesBack) {
    TulInternalPlaylistManager manager;
    manager.storePath = (freshFolder() / "playlists.json").string();
    manager.load();
    EXPECT_EQ(manager.count(), 0);
    EXPECT_EQ(manager.currentIndex, -1);

    manager.addPlaylist("Road trip", "/a/Road.tuq");
    manager.addPlaylist("", "/a/nameless.tuq");
    manager.addPlaylist("Road trip", "/a//Road.tuq");
    EXPECT_EQ(manager.currentIndex, 1);
    manager.addPlaylist("Renamed", "/a/Road.tuq");
    EXPECT_EQ(manager.currentIndex, 1);
    EXPECT_EQ(manager.indexOfName("Road trip"), 0);
    EXPECT_EQ(manager.indexOfName("Renamed"), -1);
    manager.save();
    EXPECT_EQ(readFile(manager.storePath), R"({"entries":[{"source":"/a/Road.tuq","name":"Road trip"},)"
                                           R"({"source":"/a//Road.tuq","name":"Road trip"}]})");
    const auto saved = manager.playlists;
    manager.load();
    EXPECT_EQ(manager.playlists, saved);
    EXPECT_EQ(manager.currentIndex, 1);
}

TEST(Store, KeepsValidPairsAndNeverReplacesWhatItCannotUse) {
    TulInternalPlaylistManager manager;
    const fs::path folder = freshFolder();
    manager.storePath = (folder / "playlists.json").string();
    writeFile(manager.storePath, R"({"entries":[7,{"source":"/a","name":"A"},{"source":"/b"},
                                   {"source":"/a","name":"B"},{"source":1,"name":"C"}]})");
    EXPECT_EQ(manager.load(), FileStatus::done);
    const std::vector<std::pair<std::string, std::string>> valid = {{"/a", "A"}, {"/a", "B"}};
    EXPECT_EQ(manager.playlists, valid);
    EXPECT_EQ(manager.save(), FileStatus::done);

    std::string tooMany = R"({"entries":[)";
    for (int i = 0; i < 20'001; ++i)
        tooMany += R"({"source":"/x","name":"X"},)";
    const std::pair<std::string, FileStatus> unusable[] = {
        {"{\"entries\":[", FileStatus::malformed},   {"[]", FileStatus::malformed},
        {"{\"entries\":{}}", FileStatus::malformed}, {std::string(1 << 20, '['), FileStatus::malformed},
        {tooMany + "{}]}", FileStatus::cut},
    };
    for (const auto& [text, status] : unusable) {
        writeFile(manager.storePath, text);
        manager.playlists = valid;
        EXPECT_EQ(manager.save(), status);
        EXPECT_EQ(manager.playlists, valid) << "kept for the next save";
        EXPECT_EQ(readFile(manager.storePath), text);
        EXPECT_EQ(manager.load(), status);
    }
    fs::remove(manager.storePath);
    fs::create_directory(manager.storePath);
    EXPECT_EQ(manager.load(), FileStatus::notAllowed);
    EXPECT_EQ(manager.save(), FileStatus::notAllowed);
    fs::remove(manager.storePath);
    writeFile(manager.storePath, ""); // as a full disk leaves it
    EXPECT_EQ(manager.save(), FileStatus::done);
    EXPECT_EQ(filesIn(folder), 1U);
}

TEST(Store, IsSharedByProgramsThatAddAndRename) {
    TulInternalPlaylistManager one;
    one.storePath = (freshFolder() / "missing/folder/playlists.json").string();
    TulInternalPlaylistManager two = one;
    one.addPlaylist("A", "/a");
    EXPECT_EQ(one.save(), FileStatus::done);
    EXPECT_EQ(fs::status(fs::path(one.storePath).parent_path()).permissions(), fs::perms(0700));

    two.addPlaylist("B", "/b");
    EXPECT_EQ(two.save(), FileStatus::done);
    EXPECT_EQ(two.playlistAt(two.currentIndex).first, "/b") << "the current one follows its file";

    // A copy is saved while the first goes on.
    one.renamePlaylist("/a", "A1");
    TulInternalPlaylistManager worker = one;
    one.addPlaylist("C", "/c");
    one.renamePlaylist("/a", "A2");
    one.renamePlaylist("/a", "A");
    two.renamePlaylist("/b", "B1");
    EXPECT_EQ(worker.save(), FileStatus::done);
    EXPECT_EQ(two.save(), FileStatus::done);
    one.takeStored(worker);
    EXPECT_EQ(one.playlistAt(0).second, "A");
    EXPECT_EQ(one.playlistAt(one.currentIndex).first, "/c");
    EXPECT_EQ(one.save(), FileStatus::done);
    EXPECT_EQ(readFile(one.storePath), R"({"entries":[{"source":"/a","name":"A"},)"
                                       R"({"source":"/b","name":"B1"},{"source":"/c","name":"C"}]})");
}

TEST(ReplaceFile, KeepsLinksAndPermissionsAndLeavesNothingBehind) {
    const fs::path folder = freshFolder();
    fs::create_directories(folder / "elsewhere");
    writeFile(folder / "elsewhere/real", "old");
    fs::permissions(folder / "elsewhere/real", fs::perms(0640));
    fs::create_symlink("elsewhere/real", folder / "link");
    fs::create_symlink("elsewhere/later", folder / "dangling");
    EXPECT_EQ(replaceFile(folder / "link", "new"), FileStatus::done);
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
    EXPECT_EQ(readFile(folder / "elsewhere/real"), "new");
    EXPECT_EQ(fs::status(folder / "elsewhere/real").permissions(), fs::perms(0640));
    EXPECT_EQ(replaceFile(folder / "dangling", "made"), FileStatus::done);
    EXPECT_EQ(readFile(folder / "elsewhere/later"), "made");
    EXPECT_NE(replaceFile(folder / "elsewhere", "x"), FileStatus::done);
    EXPECT_NE(replaceFile(folder / "no/such/folder", "x"), FileStatus::done);
    EXPECT_EQ(replaceFile(folder / std::string(255, 'n'), "long name"), FileStatus::done);
    fs::create_symlink("loop", folder / "loop");
    EXPECT_NE(replaceFile(folder / "loop", "x"), FileStatus::done);
    EXPECT_EQ(filesIn(folder / "elsewhere"), 2U);
}

TEST(ReplaceFile, RemovesStaleTemporaryFiles) {
    const fs::path folder = freshFolder();
    for (int i = 0; i < 32; ++i)
        writeFile(folder / (".tulplayer-" + std::to_string(getpid()) + "-" + std::to_string(i)), "left over");
    EXPECT_EQ(replaceFile(folder / "list", "new"), FileStatus::done);
    EXPECT_EQ(readFile(folder / "list"), "new");
    EXPECT_EQ(filesIn(folder), 1U);
}

TEST(ReplaceFile, LeavesTheOldFileWhenItIsProtectedOrThereIsNoRoom) {
    const fs::path folder = freshFolder();
    const fs::path state = freshFolder();
    fs::permissions(state, fs::perms(0777));
    setenv("XDG_STATE_HOME", state.c_str(), 1);
    for (const bool inPlace : {false, true}) { // where the folder allows no new file
        fs::permissions(folder, fs::perms(0777));
        writeFile(folder / "list", "a longer old text");
        fs::permissions(folder, fs::perms(inPlace ? 0555 : 0777));
        const auto replaceWithRoomFor = [&](rlim_t room, const std::string& text) {
            return asOrdinaryUser([&] {
                const rlimit limit{room, room};
                return std::signal(SIGXFSZ, SIG_IGN) != SIG_ERR && setrlimit(RLIMIT_FSIZE, &limit) == 0 &&
                       replaceFile(folder / "list", text) == FileStatus::done;
            });
        };
        fs::permissions(folder / "list", fs::perms(0444));
        EXPECT_FALSE(replaceWithRoomFor(16'384, "new"));
        fs::permissions(folder / "list", fs::perms(0666));
        EXPECT_FALSE(replaceWithRoomFor(4096, std::string(8192, 'x')));
        EXPECT_EQ(readFile(folder / "list"), "a longer old text");
        EXPECT_TRUE(replaceWithRoomFor(16'384, std::string(8192, 'x')));
        EXPECT_TRUE(replaceWithRoomFor(16'384, "new"));
        EXPECT_EQ(readFile(folder / "list"), "new");
        EXPECT_EQ(filesIn(folder), 1U);
    }
    fs::permissions(folder, fs::perms(0777));
}

} // namespace
