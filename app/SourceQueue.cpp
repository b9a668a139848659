#include "app/SourceQueue.h"

#include <utility>

namespace app {

SourceQueue::SourceQueue(TulPlayer& player, PlaylistEditor& editor, std::function<void()> changed)
    : m_player(player), m_editor(editor), m_changed(std::move(changed)) {
    m_editor.list.addingUndone = [this](std::uint64_t action) {
        if (m_search && m_search->command.action == action) giveUp();
    };
    m_player.reportFile = [this](const std::string& path, FileStatus status) {
        m_problem = {path, status, m_problem.number + 1};
        m_changed();
    };
}

SourceQueue::~SourceQueue() {
    m_player.reportFile = nullptr;
    giveUp();
    m_editor.list.addingUndone = [](std::uint64_t) {};
}

void SourceQueue::add(std::vector<std::string> sources, SourceSearch::Take take, Then then,
                      PlaylistEditor::Place place) {
    m_waiting.push_back(
        {std::move(sources), take, then, place, m_opens ? 0 : m_player.playlist->id, m_editor.beginAdding()});
    m_player.tagReader.resume();
    startNext();
}

void SourceQueue::openPlaylist(const std::string& path) {
    const auto opened = beginOpening();
    m_player.workers.run(Workers::Lane::own, [this, path, opened, opening = m_opening](const auto& reply) {
        reply.post([this, opened, opening, file = SourceSearch::resolved(path)] {
            if (opening == m_opening) m_player.openPlaylist(file, opened);
        });
    });
}

void SourceQueue::selectInternalPlaylist(std::int32_t index) {
    m_player.selectInternalPlaylist(index, beginOpening());
}

void SourceQueue::restorePlaylist(const std::string& path, std::int64_t changedAt,
                                  const TulResumption& resumption, TulPlayer::Opened opened) {
    m_player.restorePlaylist(path, changedAt, resumption,
                             [end = beginOpening(), opened = std::move(opened)](TulPlayer::Opening outcome) {
                                 opened(outcome);
                                 end(outcome);
                             });
}

void SourceQueue::openUnsaved(const UnsavedList& list) {
    m_player.openUnsaved(list.id, beginOpening());
}

void SourceQueue::revertPlaylist() {
    m_player.revertPlaylist(beginOpening());
}

void SourceQueue::savePlaylist(const std::string& path) {
    m_problem.status = FileStatus::done;
    m_player.savePlaylist(SourceSearch::resolved(path));
}

void SourceQueue::clearPlaylist() {
    ++m_opening;
    m_player.clearPlaylist();
    m_problem.status = FileStatus::done;
    endOpening();
}

/// What is to be called when it is there. Of several files only the last one counts.
std::function<void(TulPlayer::Opening)> SourceQueue::beginOpening() {
    m_opens = true;
    m_skipped = 0;
    m_problem.status = FileStatus::done;
    return [this, opening = ++m_opening](TulPlayer::Opening /*outcome*/) {
        if (opening == m_opening) endOpening();
    };
}

void SourceQueue::endOpening() {
    m_opens = false;
    for (Command& command : m_waiting)
        if (command.list == 0) command.list = m_player.playlist->id;
    startNext();
    m_changed();
}

void SourceQueue::startNext() {
    if (m_search && m_search->command.list != m_player.playlist->id) giveUp();
    while (!m_waiting.empty() && m_waiting.front().list != 0 &&
           m_waiting.front().list != m_player.playlist->id)
        m_waiting.pop_front();
    if (m_search || m_opens || m_waiting.empty()) return;

    m_skipped = 0;
    m_problem.status = FileStatus::done;
    m_search = std::make_shared<Search>();
    m_search->command = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_player.workers.run(Workers::Lane::own, [this, search = m_search](const Workers::Reply& reply) {
        const auto report = [&](SourceSearch::Found found) {
            reply.post([this, search, found = std::make_shared<SourceSearch::Found>(std::move(found))] {
                takeFound(search, *found);
            });
            return search->goesOn.load() && !reply.isAbandoned();
        };
        SourceSearch::run(search->command.sources, search->command.take, report);
        reply.post([this, search] {
            if (search == m_search) giveUp();
            startNext();
            m_changed();
        });
    });
}

void SourceQueue::giveUp() {
    if (m_search) m_search->goesOn = false;
    m_search = nullptr;
}

void SourceQueue::takeFound(const std::shared_ptr<Search>& search, SourceSearch::Found& found) {
    if (search != m_search) return;
    if (search->command.list != m_player.playlist->id) return startNext();
    m_skipped += found.skipped;
    if (found.status != FileStatus::done) m_player.reportFile(found.playlist, found.status);
    if (found.entries.empty()) return;
    const std::int32_t first =
        m_editor.add(search->command.action, search->command.place, std::move(found.entries));
    const Then then = std::exchange(search->command.then, Then::nothing);
    if (then == Then::playAtOnce || (then == Then::play && !isStarted(m_player.playbackState()))) {
        m_player.playlist->selectEntry(first);
        m_player.startCurrentEntry();
    }
}

} // namespace app
