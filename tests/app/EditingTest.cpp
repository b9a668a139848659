// Steps of editing: any of them, all the way back and forth, against a list that is edited the simple way.

#include "app/editing/PlaylistEditor.h"
#include "app/editing/SourceAddress.h"
#include "core/player/TulPlayer.h"
#include "tests/support/Media.h"
#include "tests/support/TestApplication.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

namespace {

using app::PlaylistEditor;
using Ids = std::vector<std::uint64_t>;

TulPlaylist::Entries someEntries(int count) {
    TulPlaylist::Entries entries;
    while (count-- > 0) {
        auto& entry = entries.emplace_back(std::make_unique<TulPlaylistEntry>());
        entry->source = "http://127.0.0.1:1/" + std::to_string(entry->id % 7);
        entry->title = "Title " + std::to_string(entry->id * 7919 % 13);
        entry->settleWithoutFile();
    }
    return entries;
}

Ids idsOf(const TulPlaylist::Entries& entries) {
    Ids ids;
    for (const auto& entry : entries)
        ids.push_back(entry->id);
    return ids;
}

/// Entries by their ids. The current one stays where it was when it is removed, but is not a row then.
struct Model {
    Ids ids;
    std::uint64_t current = 0;
    bool currentIsRow = true;

    Ids rows() const {
        Ids visible = ids;
        if (!currentIsRow) std::erase(visible, current);
        return visible;
    }
    std::int32_t rowAfterCurrent() const {
        if (current == 0) return 0;
        const auto place = std::ranges::find(ids, current) - ids.begin();
        return static_cast<std::int32_t>(place + (currentIsRow ? 1 : 0));
    }
    void insert(std::int32_t row, const Ids& added) {
        const Ids visible = rows();
        const auto before = static_cast<std::size_t>(row) < visible.size()
                                ? std::ranges::find(ids, visible[static_cast<std::size_t>(row)])
                                : ids.end();
        ids.insert(before, added.begin(), added.end());
    }
    Ids take(const TulRows& which) {
        Ids taken;
        const Ids visible = rows();
        for (const std::int32_t row : which)
            taken.push_back(visible[static_cast<std::size_t>(row)]);
        std::erase_if(ids, [&](auto id) { return std::ranges::find(taken, id) != taken.end(); });
        return taken;
    }
    void remove(const TulRows& which) {
        for (const std::uint64_t id : rowsAt(which))
            if (id == current)
                currentIsRow = false;
            else
                std::erase(ids, id);
    }
    Ids rowsAt(const TulRows& which) const {
        Ids found;
        for (const std::int32_t row : which)
            found.push_back(rows()[static_cast<std::size_t>(row)]);
        return found;
    }
    void move(const TulRows& which, std::int32_t before) {
        const auto above = std::ranges::count_if(which, [&](auto row) { return row < before; });
        const Ids taken = take(which);
        insert(before - static_cast<std::int32_t>(above), taken);
    }
    void order(const Ids& ordered) {
        if (currentIsRow) {
            ids = ordered;
            return;
        }
        const auto follows = std::ranges::find(ids, current) + 1;
        const std::uint64_t following = follows == ids.end() ? 0 : *follows;
        ids = ordered;
        ids.insert(std::ranges::find(ids, following), current);
    }
};

class EditingTest : public testing::Test {
protected:
    EditingTest() {
        setenv("TUL_AUDIO", "null", 1);
        support::offscreenApplication();
        player = std::make_unique<TulPlayer>();
        player->setExecutor([](const auto&) {}); // no track ends by itself
        editor = std::make_unique<PlaylistEditor>(*player);
        editor->list.selectedRows = [this] { return selected; };
        editor->list.edited = [this](const auto& selection) {
            if (selection) selected = selection->rows;
            ++edits;
        };
        editor->list.addingUndone = [this](std::uint64_t action) { undoneAction = action; };
    }
    ~EditingTest() override { editor.reset(); }

    std::int32_t any(std::int64_t below) {
        return static_cast<std::int32_t>(random() % static_cast<unsigned>(below));
    }
    TulRows anyRows() {
        TulRows rows;
        const unsigned density = 1 + random() % 6;
        for (std::int32_t row = 0; row < player->playlist->entryCount(); ++row)
            if (random() % density == 0) rows.push_back(row);
        return rows;
    }
    /// Does something to both.
    void act(Model& model) {
        const TulRows rows = anyRows();
        const auto count = static_cast<std::int32_t>(player->playlist->entryCount());
        switch (any(11)) {
        case 0:
            editor->remove(rows);
            return model.remove(rows);
        case 1:
        case 2: {
            const std::int32_t before = any(count + 1);
            editor->move(rows, before);
            Model moved = model;
            moved.move(rows, before);
            if (moved.rows() != model.rows()) model = moved; // else it is no step
            return;
        }
        case 3:
            if (rows.empty() || rows.front() == 0) return;
            editor->moveUp(rows);
            for (const std::int32_t row : rows)
                model.move({row}, row - 1);
            return;
        case 4:
            if (rows.empty() || rows.back() == count - 1) return;
            editor->moveDown(rows);
            for (auto row = rows.rbegin(); row != rows.rend(); ++row)
                model.move({*row}, *row + 2);
            return;
        case 5: {
            TulRows others = rows;
            std::erase_if(others, [&](auto row) {
                return model.rows()[static_cast<std::size_t>(row)] == model.current;
            });
            editor->playNext(rows);
            return model.move(others, model.rowAfterCurrent());
        }
        case 6: {
            editor->reverse();
            Ids ids = model.rows();
            std::ranges::reverse(ids);
            return model.order(ids);
        }
        case 7: {
            editor->sort(app::SortKey::title); // done at once: the workers run in place
            TulPlaylist& list = *player->playlist;
            EXPECT_TRUE(std::ranges::is_sorted(list.entries, {}, [](const auto& e) {
                return std::stoi(e->title.substr(6));
            })) << "numbers by their value";
            return model.order(idsOf(list.entries));
        }
        case 8: {
            auto entries = someEntries(1 + any(5));
            const std::int32_t before = any(count + 1);
            model.insert(before, idsOf(entries));
            const bool atEnd = before == count;
            editor->add(editor->beginAdding(),
                        {.beforeEntry = atEnd ? 0 : player->playlist->entryAt(before)->id},
                        std::move(entries));
            return;
        }
        case 9:
            if (count == 0) return;
            if (!model.currentIsRow) std::erase(model.ids, model.current);
            player->playlist->selectEntry(any(count));
            model.current = player->playlist->currentEntry()->id;
            model.currentIsRow = true;
            return;
        default:
            if (random() % 4 != 0) return;
            auto list = std::make_unique<TulPlaylist>();
            list->name = "List";
            list->entries = someEntries(any(20));
            model = {.ids = idsOf(list->entries)};
            if (!model.ids.empty()) model.current = model.ids.front();
            player->setPlaylist(std::move(list));
        }
    }
    void expectList(const Ids& rows, std::uint64_t current) {
        const TulPlaylist& list = *player->playlist;
        ASSERT_EQ(idsOf(list.entries), rows);
        for (std::int32_t row = 0; row < list.entryCount(); ++row)
            ASSERT_EQ(list.entryAt(row)->active,
                      list.entryAt(row)->id == current && row == list.currentIndex);
        const bool isRow = std::ranges::find(rows, current) != rows.end();
        ASSERT_TRUE(!isRow || list.currentEntry()->id == current);
        ASSERT_TRUE(rows.empty() || list.currentIndex < list.entryCount());
        for (const std::int32_t row : selected)
            ASSERT_LT(row, list.entryCount());
    }

    std::mt19937 random{7};
    std::unique_ptr<TulPlayer> player;
    std::unique_ptr<PlaylistEditor> editor;
    TulRows selected;
    int edits = 0;
    std::uint64_t undoneAction = 0;
};

TEST_F(EditingTest, AnyStepsAreTakenBackAndDoneAgainLikeOnASimpleList) {
    for (int round = 0; round < 30; ++round) {
        Model model;
        std::vector<Model> before; // each step
        std::vector<std::uint64_t> lists;
        for (int i = 0; i < 90; ++i) {
            const Model was = model;
            const std::uint64_t list = player->playlist->id;
            const int editsBefore = edits;
            act(model);
            ASSERT_NO_FATAL_FAILURE(expectList(model.rows(), model.current)) << "round " << round;
            ASSERT_EQ(player->playlist->rowAfterCurrent(), model.rowAfterCurrent());
            if (edits == editsBefore) continue;
            before.push_back(was);
            lists.push_back(list);
        }
        std::vector<Model> after(before.begin() + 1, before.end());
        after.push_back(model);

        // A step back leaves what is played; the list before has its own current entry.
        std::uint64_t current = model.current;
        std::vector<std::uint64_t> left(before.size());
        for (std::size_t step = before.size(); step-- > 0;) {
            const std::uint64_t list = player->playlist->id;
            left[step] = current;
            editor->undoAction().trigger();
            if (player->playlist->id != list) current = before[step].current;
            ASSERT_NO_FATAL_FAILURE(expectList(before[step].rows(), current)) << "round " << round;
            ASSERT_EQ(player->playlist->id, lists[step]);
            ASSERT_TRUE(current != before[step].current ||
                        player->playlist->rowAfterCurrent() == before[step].rowAfterCurrent());
        }
        for (std::size_t step = 0; step < after.size(); ++step) {
            const std::uint64_t list = player->playlist->id;
            editor->redoAction().trigger();
            if (player->playlist->id != list) current = left[step];
            ASSERT_NO_FATAL_FAILURE(expectList(after[step].rows(), current)) << "round " << round;
        }
        player->setPlaylist(std::make_unique<TulPlaylist>());
    }
}

TEST_F(EditingTest, StepsHaveNamesOneForEachActionAndAHundredAreKept) {
    const auto add = [this](std::uint64_t action, std::uint64_t before = 0) {
        editor->add(action, {.beforeEntry = before, .isDrop = before != 0}, someEntries(3));
    };
    const auto undo = [this] {
        const std::string text = editor->undoAction().text().toStdString();
        editor->undoAction().trigger();
        return text + " " + std::to_string(player->playlist->entryCount());
    };
    EXPECT_FALSE(editor->undoAction().isEnabled());
    const std::uint64_t files = editor->beginAdding();
    add(files);
    add(files);
    const std::uint64_t first = player->playlist->entryAt(0)->id;
    const std::uint64_t dropped = editor->beginAdding();
    add(dropped, first);
    add(dropped, first);
    EXPECT_EQ(player->playlist->entryAt(6)->id, first);
    selected = {6};
    add(dropped, first);
    EXPECT_EQ(selected, TulRows{9}) << "what was selected stays so";
    editor->moveDown({0});
    add(dropped, first); // a step of its own: something else was done meanwhile
    EXPECT_EQ(undo(), "Undo Drop 15");
    EXPECT_EQ(undo(), "Undo Move 15");
    EXPECT_EQ(undo(), "Undo Drop 6");
    EXPECT_EQ(undoneAction, dropped);
    EXPECT_EQ(editor->redoAction().text(), "Redo Drop");
    EXPECT_EQ(undo(), "Undo Add 0");
    EXPECT_EQ(undo(), "Undo 0");

    add(files);
    editor->remove({});
    editor->move({1}, 1);
    editor->moveUp({0, 1});
    EXPECT_EQ(editor->undoAction().text(), "Undo Add") << "what changes nothing is no step";
    player->playlist->name = "Mine";
    player->clearPlaylist();
    EXPECT_EQ(player->playlist->name, "");
    EXPECT_EQ(undo(), "Undo Clear 3");
    EXPECT_EQ(player->playlist->name, "Mine");
    for (int i = 0; i < 150; ++i)
        editor->reverse();
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(undo(), "Undo Reverse 3");
    EXPECT_FALSE(editor->undoAction().isEnabled());
}

TEST(SourceAddress, IsWhatOtherProgramsOpen) {
    const std::pair<std::string, QByteArray> cases[] = {
        {"/music/50% #1?/Caf\xc3\xa9 \xff.mp3", "file:///music/50%25%20%231%3F/Caf%C3%A9%20%FF.mp3"},
        {"http://h/a%20b?c=d#e", "http://h/a%20b?c=d#e"},
        {"http://h/\xc3\xa9 \"<x>\"", "http://h/%C3%A9%20%22%3Cx%3E%22"},
        {"a.mp3", ""},
        {"", ""},
    };
    for (const auto& [source, address] : cases)
        EXPECT_EQ(app::addressOf(source), address) << source;
    EXPECT_EQ(app::addressList({"/a", "b", "/c"}), "file:///a\r\nfile:///c\r\n");
}

} // namespace
