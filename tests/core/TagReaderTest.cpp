#include "core/player/TulPlayer.h"
#include "core/playlist/resolveEntrySource.h"
#include "tests/support/Media.h"
#include "tests/support/WaitFor.h"

#include <algorithm>
#include <condition_variable>
#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <numeric>
#include <optional>
#include <random>

namespace {

using namespace std::chrono_literals;
using support::waitFor;
using Tags = TulPlaylistEntry::Tags;

/// Tagged files in three formats, one without tags, and sources that are not files.
const std::vector<std::string>& sources() {
    static const std::vector<std::string> made = [] {
        const auto sine = support::sine(440, 4410);
        const auto path = [](const char* name) { return (support::scratch() / name).string(); };
        const auto wav = support::writeWav(path("in.wav"), sine).string();
        support::run({"flac", "-s", "-f", "-T", "TITLE=Lied", "-T", "ARTIST=Band", "-T", "ALBUM=Platte", "-o",
                      path("a.flac"), wav});
        support::run({"lame", "--quiet", "--tt", "Song", "--ta", "Trees", wav, path("b.mp3")});
        support::run({"opusenc", "--quiet", "--title", "Canto", wav, path("c.opus")});
        return std::vector<std::string>{path("a.flac"),   path("b.mp3"),
                                        path("c.opus"),   wav,
                                        path("gone.ogg"), "http://127.0.0.1:1/radio.mp3"};
    }();
    return made;
}

/// A row as the playlist files' readers make it.
std::unique_ptr<TulPlaylistEntry> row(const std::string& source, const std::string& title = {}) {
    auto made = std::make_unique<TulPlaylistEntry>();
    made->source = source;
    made->title = title;
    if (!title.empty()) made->length = 7;
    made->settleWithoutFile();
    return made;
}

std::string summary(const TulPlaylistEntry& entry) {
    return entry.source + "|" + entry.title + "|" + entry.artistAlbum + "|" + entry.artist + "|" +
           entry.album + "|" + std::to_string(entry.length);
}

/// A list that is edited by this thread, the main thread, while it is read.
class TagReaderTest : public testing::Test {
protected:
    explicit TagReaderTest(const Workers::Settings& settings = {}) : workers(settings) {
        workers.setWake([] {});
        reader.emplace(workers, [this](const auto& /*entry*/, auto at) { changed.push_back(at); });
        reader->follow(list, list.unreadCount());
    }
    void append(std::vector<std::unique_ptr<TulPlaylistEntry>> rows) {
        TulRows at(rows.size());
        std::iota(at.begin(), at.end(), static_cast<std::int32_t>(list.entryCount()));
        list.insertEntries(at, std::move(rows));
        reader->rowsInserted(at);
    }
    void append(int count, const std::string& source) {
        std::vector<std::unique_ptr<TulPlaylistEntry>> rows;
        while (count-- > 0)
            rows.push_back(row(source));
        append(std::move(rows));
    }
    bool readsAll() {
        return waitFor([this] {
            workers.deliver();
            return reader->progress().total == 0;
        });
    }

    TulPlaylist list;
    std::vector<std::int32_t> changed;
    Workers workers;
    std::optional<TagReader> reader;
};

TEST_F(TagReaderTest, EditsDuringReadingDoNotChangeTheResult) {
    std::mt19937 random(1);
    const auto any = [&](auto below) {
        return static_cast<std::int32_t>(random() % static_cast<unsigned>(below));
    };
    std::map<std::uint64_t, std::pair<std::string, std::string>> given; // title and what is to come, by id
    int made = 0;
    const auto appendSome = [&](int count) {
        std::vector<std::unique_ptr<TulPlaylistEntry>> rows;
        for (int i = 0; i < count; ++i, ++made) {
            const std::string title = made % 5 == 0 ? "Given " + std::to_string(made) : std::string();
            const std::string& source = sources()[static_cast<std::size_t>(made) % sources().size()];
            rows.push_back(row(source, title));
            const auto expected = row(source, title);
            expected->readTrackInfo(true);
            given[rows.back()->id] = {isAddress(source) ? expected->title : title, summary(*expected)};
        }
        append(std::move(rows));
    };

    appendSome(600);
    std::size_t read = 0;
    for (int step = 0; step < 400; ++step) {
        const auto before = changed.size();
        ASSERT_TRUE(waitFor([&] {
            workers.deliver();
            return changed.size() > before || reader->progress().total == 0;
        }));
        if (step % 100 == 50) appendSome(300);
        const auto rows = list.entryCount();
        list.moveEntries(any(rows), any(rows));
        reader->want(any(rows));
        if (step % 7 == 0) {
            const auto isAtWorker = [](const auto& entry) { return entry->tags == Tags::reading; };
            const auto found = std::find_if(list.entries.begin(), list.entries.end(), isAtWorker);
            const bool isFound = found != list.entries.end();
            const auto at = isFound ? static_cast<std::int32_t>(found - list.entries.begin()) : any(rows);
            auto removed = list.removeEntries({at});
            reader->rowsRemoved(removed);
            if (step % 2 == 0) { // taken back
                list.insertEntries({at}, std::move(removed));
                reader->rowsInserted({at});
            }
        }
        if (step % 50 == 0) {
            const auto saved = list.copyToSave();
            for (std::int32_t i = 0; i < saved->entryCount(); ++i) {
                const bool isRead = list.entryAt(i)->tags == Tags::read;
                read += isRead ? 1 : 0;
                if (isRead) continue;
                EXPECT_EQ(saved->entryAt(i)->title, given[list.entryAt(i)->id].first);
            }
        }
        const auto progress = reader->progress();
        EXPECT_LE(progress.done, progress.total);
    }
    EXPECT_GT(read, 0U);
    ASSERT_TRUE(readsAll());
    for (const auto& entry : list.entries) {
        EXPECT_EQ(entry->tags, Tags::read);
        EXPECT_EQ(summary(*entry), given[entry->id].second);
    }
}

/// Uses one worker, which is blocked until all requests are queued.
class TagReaderOrderTest : public TagReaderTest {
protected:
    TagReaderOrderTest() : TagReaderTest({.threads = 1, .hangTimeout = 1h}) {
        workers.run(Workers::Lane::bulk, [this](const auto&) {
            std::unique_lock lock(mutex);
            opened.wait(lock, [this] { return isOpen; });
        });
        append(30, sources()[0]);
    }
    ~TagReaderOrderTest() override { open(); }
    void open() {
        const std::lock_guard lock(mutex);
        isOpen = true;
        opened.notify_all();
    }

    std::mutex mutex;
    std::condition_variable opened;
    bool isOpen = false;
};

TEST_F(TagReaderOrderTest, ReadsThePlayingThenTheVisibleRowsThenTheRest) {
    reader->want(25);
    reader->want(20);
    reader->want(25);
    reader->prepare(*list.entryAt(28), 28);
    EXPECT_TRUE(reader->isPreparing());
    open();
    ASSERT_TRUE(readsAll());
    EXPECT_FALSE(reader->isPreparing());
    changed.erase(std::unique(changed.begin(), changed.end()), changed.end()); // the picture of what plays
    std::vector<std::int32_t> expected{28, 20, 25};
    for (std::int32_t i = 0; i < 30; ++i)
        if (i != 28 && i != 20 && i != 25) expected.push_back(i);
    EXPECT_EQ(changed, expected);
}

TEST_F(TagReaderOrderTest, StoppedReadsOnlyVisibleOrPlayingRows) {
    reader->stop();
    EXPECT_EQ(reader->progress().total, 0U);
    append(2, sources()[0]);
    open();
    reader->want(30);
    reader->prepare(*list.entryAt(27), 27);
    const auto unread = [this] {
        return std::ranges::count_if(list.entries, [](const auto& e) { return e->tags != Tags::read; });
    };
    // The first ones were with the worker already.
    ASSERT_TRUE(waitFor([&] {
        workers.deliver();
        return list.entryAt(30)->tags == Tags::read && list.entryAt(27)->tags == Tags::read && unread() <= 14;
    }));
    EXPECT_EQ(list.entryAt(29)->tags, Tags::left);
    EXPECT_EQ(list.entryAt(29)->shownTitle(), "a");
    reader->resume();
    append(1, sources()[1]);
    ASSERT_TRUE(readsAll());
    EXPECT_EQ(list.entryAt(32)->title, "Song");
    EXPECT_EQ(unread(), 14) << "those that were left are left";
}

TEST_F(TagReaderOrderTest, ResultsForAReplacedListAreDropped) {
    TulPlaylist other;
    other.appendEntry(row(sources()[1]));
    list.entries.clear();
    reader->follow(other, other.unreadCount());
    reader->readRest();
    open();
    ASSERT_TRUE(readsAll());
    EXPECT_EQ(changed, std::vector<std::int32_t>{0});
    EXPECT_EQ(other.entryAt(0)->title, "Song");
}

} // namespace
