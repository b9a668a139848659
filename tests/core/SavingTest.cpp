#include "core/files/folders.h"
#include "core/files/overwriteFile.h"
#include "core/files/replaceFile.h"
#include "core/playlist/TulInternalPlaylistManager.h"
#include "core/playlist/TulPlaylistFileTUQ.h"
#include "tests/support/Media.h"
#include "tests/support/WaitFor.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <random>
#include <sched.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

// What a save leaves when the program is killed, when the disk is full, and when two programs save at once.
// Longer: TUL_KILLS=1000 TUL_SHARING_SECONDS=60 saving_test.

namespace {

namespace fs = std::filesystem;

int setting(const char* variable, int byDefault) {
    const char* value = std::getenv(variable);
    return value ? std::atoi(value) : byDefault;
}

fs::path freshFolder() {
    static int number = 0;
    fs::path folder = support::scratch() / ("saving" + std::to_string(++number));
    fs::create_directories(folder);
    fs::permissions(support::scratch(), fs::perms(0755)); // for those without privileges
    fs::permissions(folder, fs::perms(0777));
    return folder;
}

/// Runs `work` in a process of its own, as a user without privileges.
pid_t startAsOrdinaryUser(const std::function<bool()>& work) {
    const pid_t child = fork();
    if (child != 0) return child;
    constexpr uid_t nobody = 65534;
    const bool changed = geteuid() != 0 || (setgid(nobody) == 0 && setuid(nobody) == 0);
    const bool endsWithTest = prctl(PR_SET_PDEATHSIG, SIGKILL) == 0; // after the change, which would reset it
    _exit(changed && endsWithTest && work() ? 0 : 1);
}

bool succeeds(pid_t child) {
    int status = 0;
    return waitpid(child, &status, 0) == child && status == 0;
}

std::size_t filesIn(const fs::path& folder) {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
}

/// Seen by child processes as well.
struct Shared {
    std::atomic<int> begun;
    std::atomic<int> done;
};
std::shared_ptr<Shared> share() {
    void* memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return {new (memory) Shared{}, [](Shared* shared) { munmap(shared, sizeof(Shared)); }};
}

/// The list that is saved as number `number`: longer and shorter ones by turns, of up to a megabyte.
TulPlaylist listOf(int number) {
    TulPlaylist list;
    list.name = std::to_string(number);
    for (int i = 0; i < 20 + number * 7919 % 230; ++i) {
        auto entry = std::make_unique<TulPlaylistEntry>();
        entry->source = "/music/" + std::to_string(number) + "/" + std::to_string(i) + ".flac";
        entry->title = std::string(4000, static_cast<char>('a' + number % 26));
        list.appendEntry(std::move(entry));
    }
    return list;
}

bool isListOf(int number, const fs::path& file) {
    FileStatus status{};
    const auto list = TulPlaylistFileTUQ().read(file, status);
    const TulPlaylist expected = listOf(number);
    if (!list || list->name != expected.name || list->entryCount() != expected.entryCount()) return false;
    return std::ranges::equal(list->entries, expected.entries, [](const auto& a, const auto& b) {
        return a->source == b->source && a->title == b->title;
    });
}

bool saveList(int number, const fs::path& file) {
    return TulPlaylistFileTUQ().write(listOf(number), file) == FileStatus::done;
}

/// The store, which is given one playlist more by each save.
bool saveStore(int number, const fs::path& file) {
    TulInternalPlaylistManager store;
    store.storePath = file;
    store.addPlaylist("N" + std::to_string(number),
                      "/lists/" + std::to_string(number) + std::string(500, 'x'));
    return store.save() == FileStatus::done;
}

bool isStoreOf(int number, const fs::path& file) {
    TulInternalPlaylistManager store;
    store.storePath = file;
    if (store.load() != FileStatus::done || store.count() != number + 1) return false;
    for (int i = 0; i <= number; ++i)
        if (store.playlistAt(i).second != "N" + std::to_string(i)) return false;
    return true;
}

struct Kind {
    const char* name;
    bool newFilesAllowed;
    bool (*save)(int number, const fs::path& file);
    bool (*isThere)(int number, const fs::path& file);
};

class Kill : public testing::TestWithParam<Kind> {};

TEST_P(Kill, LeavesTheOldFileOrTheNewOne) {
    const Kind& kind = GetParam();
    const fs::path folder = freshFolder();
    const fs::path state = freshFolder();
    setenv("XDG_STATE_HOME", state.c_str(), 1);
    setenv("XDG_RUNTIME_DIR", state.c_str(), 1);
    const fs::path file =
        kind.name == std::string("state") ? state / "tulplayer/list.tuq" : folder / "list.tuq";
    ASSERT_TRUE(
        succeeds(startAsOrdinaryUser([&] { return makeFolder(folderOf(file)) && kind.save(0, file); })));
    if (!kind.newFilesAllowed) fs::permissions(folder, fs::perms(0555));

    const auto shared = share();
    std::chrono::duration<double> oneSave = std::chrono::seconds(1);
    for (int i = 0; i < 5; ++i) {
        const auto start = std::chrono::steady_clock::now();
        ASSERT_TRUE(succeeds(startAsOrdinaryUser([&] { return kind.save(++shared->begun, file); })));
        oneSave = std::min(oneSave, std::chrono::duration<double>(std::chrono::steady_clock::now() - start));
    }
    shared->done = shared->begun.load();
    std::mt19937 random(1);
    std::uniform_real_distribution<double> moment(0, 2);
    int finishedLater = 0;
    for (int i = 0, kills = setting("TUL_KILLS", 20); i < kills; ++i) {
        const pid_t child = startAsOrdinaryUser([&] {
            for (;;) {
                ++shared->begun;
                if (!kind.save(shared->begun, file)) return false;
                shared->done = shared->begun.load();
            }
        });
        ASSERT_TRUE(support::waitFor([&] { return shared->begun > shared->done; }));
        std::this_thread::sleep_for(moment(random) * oneSave); // the moment of the kill is what varies
        kill(child, SIGKILL);
        ASSERT_FALSE(succeeds(child));
        finishedLater +=
            fs::exists(state / "tulplayer/unfinished") && filesIn(state / "tulplayer/unfinished") > 0;
        ASSERT_TRUE(succeeds(startAsOrdinaryUser([&] {
            completeSaves();
            const bool isNew = kind.isThere(shared->begun, file);
            if (!isNew && !kind.isThere(shared->done, file)) return false;
            (isNew ? shared->done : shared->begun) = isNew ? shared->begun.load() : shared->done.load();
            return true;
        }))) << "neither old nor new after kill "
             << i;
    }
    RecordProperty("saves", shared->done);
    RecordProperty("finished-by-the-next-start", finishedLater);
    ASSERT_TRUE(succeeds(startAsOrdinaryUser([&] { return kind.save(shared->done + 1, file); })));
    fs::permissions(folder, fs::perms(0777));
    EXPECT_LE(filesIn(folder), 1U) << "temporary files are removed by the next save";
    EXPECT_TRUE(kind.newFilesAllowed || filesIn(state / "tulplayer/unfinished") == 0);
}

INSTANTIATE_TEST_SUITE_P(Saving, Kill,
                         testing::Values(Kind{"list", true, saveList, isListOf},
                                         Kind{"listInItsPlace", false, saveList, isListOf},
                                         Kind{"state", true, saveList, isListOf},
                                         Kind{"store", true, saveStore, isStoreOf},
                                         Kind{"storeInItsPlace", false, saveStore, isStoreOf}),
                         [](const auto& each) { return std::string(each.param.name); });

/// A file system of its own that holds `kilobytes`; false where mounting is not allowed.
bool mountSmallDisk(const fs::path& folder, int kilobytes) {
    const std::string size = "size=" + std::to_string(kilobytes) + "k,mode=0777";
    const bool own = unshare(CLONE_NEWNS) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0;
    return own && mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("tmpfs", folder.c_str(), "tmpfs", 0, size.c_str()) == 0;
}

void fill(const fs::path& folder) {
    const int fd = open((folder / "filler").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const std::string page(4096, 'f');
    while (write(fd, page.data(), page.size()) > 0) {
    }
    close(fd);
}

struct FullDisk {
    const char* name;
    bool stateIsFull;
    bool hasRuntimeFolder;
    std::size_t size; ///< Of the list that is to be saved; the old one has 10,000 bytes.
    FileStatus expected;
};

TEST(FullDisk, SavesWhatFitsIntoTheOldFileAndLeavesItOtherwise) {
    constexpr int notAllowed = 77;
    const FullDisk cases[] = {
        {"smaller", false, false, 5000, FileStatus::done},
        {"same", false, false, 10'000, FileStatus::done},
        {"as many blocks", false, false, 12'000, FileStatus::done},
        {"larger", false, false, 20'000, FileStatus::noSpace},
        {"state full", true, false, 5000, FileStatus::noSpace},
        {"state full, runtime folder", true, true, 5000, FileStatus::done},
    };
    for (const FullDisk& each : cases) {
        const fs::path disk = freshFolder();
        const fs::path other = freshFolder();
        const pid_t child = fork();
        if (child == 0) {
            if (!mountSmallDisk(disk, 256)) _exit(notAllowed);
            setenv("XDG_STATE_HOME", (each.stateIsFull ? disk : other).c_str(), 1);
            each.hasRuntimeFolder ? setenv("XDG_RUNTIME_DIR", other.c_str(), 1) : unsetenv("XDG_RUNTIME_DIR");
            const std::string before(10'000, 'a');
            const std::string after(each.size, 'b');
            const fs::path file = disk / "list";
            bool right = replaceFile(file, before) == FileStatus::done;
            fill(disk);
            const bool isDone = each.expected == FileStatus::done;
            right = right && replaceFile(disk / "new", after) == FileStatus::noSpace;
            right = right && replaceFile(file, after) == each.expected;
            right = right && support::readFile(file) == (isDone ? after : before);
            fs::remove(disk / "filler");
            right = right && !fs::exists(disk / "new");
            right = right && replaceFile(file, std::string(20'000, 'c')) == FileStatus::done;
            _exit(right && support::readFile(file) == std::string(20'000, 'c') ? 0 : 1);
        }
        int status = 0;
        waitpid(child, &status, 0);
        if (WIFEXITED(status) && WEXITSTATUS(status) == notAllowed) GTEST_SKIP() << "mounting is not allowed";
        EXPECT_EQ(status, 0) << each.name;
    }
}

TEST(FullDisk, KeepsRegistrationsThatTheStoreHadNoRoomFor) {
    const fs::path disk = freshFolder();
    const pid_t child = fork();
    if (child == 0) {
        if (!mountSmallDisk(disk, 64)) _exit(0); // as above
        setenv("XDG_STATE_HOME", disk.c_str(), 1);
        unsetenv("XDG_RUNTIME_DIR");
        TulInternalPlaylistManager store;
        store.storePath = disk / "lists/playlists.json";
        store.addPlaylist("A", "/a");
        bool right = store.save() == FileStatus::done;
        fill(disk);
        store.addPlaylist("B", "/b");
        store.renamePlaylist("/a", "A1");
        right = right && store.save() == FileStatus::noSpace;
        TulInternalPlaylistManager onDisk;
        onDisk.storePath = store.storePath;
        right = right && onDisk.load() == FileStatus::done && onDisk.count() == 1;
        fs::remove(disk / "filler");
        right = right && store.save() == FileStatus::done && onDisk.load() == FileStatus::done;
        right = right && onDisk.count() == 2 && onDisk.indexOfName("A1") == 0 && onDisk.indexOfName("B") == 1;
        _exit(right ? 0 : 1);
    }
    EXPECT_TRUE(succeeds(child));
}

TEST(TwoPrograms, LoseNoEntryOfTheStoreTheyShare) {
    const fs::path folder = freshFolder();
    const fs::path store = folder / "playlists.json";
    const auto shared = share(); // how many playlists each of the two has saved
    const int seconds = setting("TUL_SHARING_SECONDS", 1);
    const auto path = [](char program, int number) {
        return std::string("/") + program + std::to_string(number);
    };
    const auto work = [&](char program, std::atomic<int>& saved) {
        return startAsOrdinaryUser([&, program] {
            TulInternalPlaylistManager manager;
            manager.storePath = store;
            const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
            for (int i = 0; std::chrono::steady_clock::now() < end && i < 9000; ++i) {
                if (i % 10 == 0 && manager.load() != FileStatus::done) return false; // the program is started
                manager.addPlaylist("new", path(program, i));
                if (manager.save() != FileStatus::done) return false;
                manager.renamePlaylist(path(program, i), "renamed");
                if (manager.save() != FileStatus::done || !saveList(i, folder / "list.tuq")) return false;
                saved = i + 1;
            }
            return true;
        });
    };
    const pid_t one = work('a', shared->begun);
    const pid_t two = work('b', shared->done);
    EXPECT_TRUE(succeeds(one));
    EXPECT_TRUE(succeeds(two));

    TulInternalPlaylistManager manager;
    manager.storePath = store;
    ASSERT_EQ(manager.load(), FileStatus::done);
    EXPECT_EQ(manager.count(), shared->begun + shared->done);
    EXPECT_GT(std::min<int>(shared->begun, shared->done), 0);
    RecordProperty("playlists", manager.playlists.size());
    EXPECT_TRUE(
        std::ranges::all_of(manager.playlists, [](const auto& each) { return each.second == "renamed"; }));
    EXPECT_EQ(filesIn(folder), 2U);
}

} // namespace
