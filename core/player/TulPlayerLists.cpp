// The player's operations on playlists: opening, saving, the user's edits, and the internal playlists.

#include "core/player/TulPlayer.h"

#include "core/files/overwriteFile.h"
#include "core/playlist/resolveEntrySource.h"

#include <algorithm>
#include <filesystem>
#include <utility>

void TulPlayer::setStorePath(const std::string& path) {
    internalPlaylistManager->storePath = path;
}

void TulPlayer::setStateFolder(const std::string& path) {
    listKeeper.setFolder(path + "/lists");
}

void TulPlayer::loadInternalPlaylists() {
    runOnStore(&TulInternalPlaylistManager::load);
}

void TulPlayer::setPlaylist(std::unique_ptr<TulPlaylist> newPlaylist) {
    const std::size_t unread = newPlaylist->unreadCount();
    setPlaylist(std::move(newPlaylist), unread);
}

void TulPlayer::setPlaylist(std::unique_ptr<TulPlaylist> newPlaylist, std::size_t unread) {
    replacePlaylist(std::move(newPlaylist), unread, Replacement::opened);
    playlist->entryCount() > 0 ? startCurrentEntry() : prepareNext();
    tagReader.readRest();
}

void TulPlayer::replacePlaylist(std::unique_ptr<TulPlaylist> newPlaylist, std::size_t unread,
                                Replacement why) {
    const auto left = exchangePlaylist(std::move(newPlaylist), unread);
    if (playlistReplaced) return playlistReplaced(left, why);
    if (left->list) discard(std::move(left->list));
}

std::shared_ptr<LeftPlaylist> TulPlayer::exchangePlaylist(std::unique_ptr<TulPlaylist> other,
                                                          std::size_t unread) {
    playlist.swap(other);
    tagReader.follow(*playlist, unread);
    const auto& stored = internalPlaylistManager->playlists;
    const auto known = std::ranges::find(stored, playlist->path, &std::pair<std::string, std::string>::first);
    internalPlaylistManager->currentIndex =
        known == stored.end() ? -1 : static_cast<std::int32_t>(known - stored.begin());

    auto left = std::make_shared<LeftPlaylist>();
    listKeeper.leave(std::move(other), [this, place = std::weak_ptr(left)](auto list) {
        const auto wanted = place.lock();
        if (!wanted) return discard(std::move(list));
        wanted->list = std::move(list);
        if (wanted->arrived) wanted->arrived();
    });
    return left;
}

void TulPlayer::discard(std::shared_ptr<void> object) {
    workers.run(Workers::Lane::bulk, [object = std::move(object)](const auto&) {});
}

void TulPlayer::beginOpening(Opened opened) {
    endOpening(Opening::givenUp);
    m_resumption.reset();
    m_opened = std::move(opened);
}

void TulPlayer::endOpening(Opening outcome) {
    ++m_opening;
    if (const Opened opened = std::exchange(m_opened, {})) opened(outcome);
}

void TulPlayer::openPlaylist(const std::string& path, Opened opened) {
    beginOpening(std::move(opened));
    if (path == playlist->path && playlist->isChanged()) {
        if (playlist->entryCount() > 0)
            startCurrentEntry(); // the current playlist is that file with its unsaved changes
        return endOpening(Opening::done);
    }
    readOrRestorePlaylist(path);
}

void TulPlayer::readOrRestorePlaylist(const std::string& path) {
    listKeeper.restoreFile(
        path, [this, path, opening = m_opening](std::unique_ptr<TulPlaylist> list, std::size_t unread) {
            if (opening != m_opening) return discard(std::move(list));
            if (list) return showOpened(std::move(list), unread);
            readPlaylist(path, [this](std::unique_ptr<TulPlaylist> read, std::size_t rest) {
                showOpened(std::move(read), rest);
            });
        });
}

void TulPlayer::openUnsaved(const std::string& id, Opened opened) {
    beginOpening(std::move(opened));
    if (listKeeper.isSetAsideAs(id, *playlist)) return endOpening(Opening::givenUp);
    listKeeper.restore(id,
                       [this, opening = m_opening](std::unique_ptr<TulPlaylist> list, std::size_t unread) {
                           if (opening != m_opening) return discard(std::move(list));
                           list ? showOpened(std::move(list), unread) : endOpening(Opening::rejected);
                       });
}

void TulPlayer::restorePlaylist(const std::string& path, std::int64_t changedAt,
                                const TulResumption& resumption, Opened opened) {
    beginOpening(std::move(opened));
    m_resumption = resumption;
    if (!path.empty()) return readOrRestorePlaylist(path);
    listKeeper.restoreNameless(
        changedAt, [this, opening = m_opening](std::unique_ptr<TulPlaylist> list, std::size_t unread) {
            if (opening != m_opening) return discard(std::move(list));
            list ? showOpened(std::move(list), unread) : endOpening(Opening::rejected);
        });
}

void TulPlayer::resume(const TulResumption& resumption) {
    const auto isSource = [&](const auto& entry) { return entry->source == resumption.source; };
    const auto& entries = playlist->entries;
    auto found = entries.begin() + std::clamp<std::int64_t>(resumption.index, 0, playlist->entryCount());
    if (found == entries.end() || !isSource(*found)) found = std::ranges::find_if(entries, isSource);
    if (found == entries.end()) return;
    const auto row = static_cast<std::int32_t>(found - entries.begin());
    if (!resumption.isOpened) {
        playlist->currentIndex = row;
        return;
    }
    playlist->selectEntry(row);
    m_resumesAt = {(*found)->id, resumption.position};
    m_request = TulPlaybackRequest::pause;
    m_skipsFailures = false;
    isAddress((*found)->source) ? stream.reset() : startEntry();
}

TulResumption TulPlayer::resumption() const {
    TulResumption here;
    if (playlist->entryCount() == 0) return here;
    const TulPlaylistEntry& entry = *playlist->currentEntry();
    here.index = playlist->currentIndex;
    here.source = entry.source;
    const bool waits = entry.id == m_resumesAt.entry;
    here.isOpened = waits || (stream && entry.id == m_playingEntry);
    if (waits) here.position = m_resumesAt.position;
    if (waits || !here.isOpened || m_request == TulPlaybackRequest::stop) return here;
    // That of a live stream leads nowhere.
    if (stream->length() > 0 || stream->isConnecting()) here.position = std::max(stream->position(), 0.0);
    return here;
}

void TulPlayer::readPlaylist(const std::string& path, Show show) {
    const auto read =
        [this, path, show = std::move(show), opening = m_opening,
         file = std::shared_ptr(playlistFileFactory->createPlaylistFile(path))](const Workers::Reply& reply) {
            completeSaves();
            FileStatus status{};
            const auto result = std::make_shared<std::unique_ptr<TulPlaylist>>(file->read(path, status));
            const std::size_t unread = *result ? (*result)->unreadCount() : 0;
            reply.post([this, path, show, opening, result, status, unread] {
                if (opening != m_opening) return discard(std::move(*result));
                report(path, status);
                if (!*result) return endOpening(Opening::rejected);
                // A list that was read in part is not bound to the file: saving it there would remove the
                // rest.
                (*result)->markSaved(status == FileStatus::done ? path : std::string(), (*result)->edits());
                show(std::move(*result), unread);
            });
        };
    workers.run(Workers::Lane::own, read);
}

void TulPlayer::showOpened(std::unique_ptr<TulPlaylist> list, std::size_t unread) {
    const std::string path = list->path;
    const auto& stored = internalPlaylistManager->playlists;
    const auto known = std::ranges::find(stored, path, &std::pair<std::string, std::string>::first);
    if (known != stored.end()) list->name = known->second;
    if (m_resumption) {
        replacePlaylist(std::move(list), unread, Replacement::restored);
        resume(*m_resumption);
        prepareNext();
        tagReader.readRest();
    } else {
        setPlaylist(std::move(list), unread);
    }
    if (!path.empty()) {
        internalPlaylistManager->addPlaylist(playlist->name, path);
        runOnStore(&TulInternalPlaylistManager::save);
    }
    endOpening(Opening::done);
}

void TulPlayer::selectInternalPlaylist(std::int32_t index, Opened opened) {
    if (index < 0 || index >= internalPlaylistManager->count()) {
        if (opened) opened(Opening::givenUp);
        return;
    }
    const std::string path = internalPlaylistManager->playlistAt(index).first;
    if (path == playlist->path) {
        if (opened) opened(Opening::givenUp);
        return;
    }
    openPlaylist(path, [this, index, opened = std::move(opened)](Opening outcome) {
        if (outcome == Opening::done) internalPlaylistManager->currentIndex = index;
        if (opened) opened(outcome);
    });
}

void TulPlayer::revertPlaylist(Opened opened) {
    beginOpening(std::move(opened));
    if (playlist->path.empty() || !playlist->isChanged()) return endOpening(Opening::givenUp);
    readPlaylist(playlist->path, [this](std::unique_ptr<TulPlaylist> list, std::size_t unread) {
        showReverted(std::move(list), unread);
    });
}

/// Selects the entry with the source of the current one, so that playing goes on from there.
void TulPlayer::showReverted(std::unique_ptr<TulPlaylist> list, std::size_t unread) {
    list->name = playlist->name;
    if (playlist->entryCount() > 0) {
        const TulPlaylistEntry& current = *playlist->currentEntry();
        const auto same = std::ranges::find(list->entries, current.source, &TulPlaylistEntry::source);
        if (same != list->entries.end() && current.active)
            list->selectEntry(static_cast<std::int32_t>(same - list->entries.begin()));
    }
    listKeeper.discard(playlist->id, playlist->path);
    playlist->markSaved(playlist->path, playlist->edits());
    replacePlaylist(std::move(list), unread, Replacement::reverted);
    prepareNext();
    tagReader.readRest();
    endOpening(Opening::done);
}

void TulPlayer::savePlaylist(const std::string& path) {
    const std::shared_ptr<TulPlaylist> copy = playlist->copyToSave();
    copy->path = path;
    if (copy->name.empty()) copy->name = std::filesystem::path(path).stem().string();
    const auto save = [this, copy, list = playlist->id, edits = playlist->edits(),
                       file = std::shared_ptr(playlistFileFactory->createPlaylistFile(path)),
                       store = std::make_shared<TulInternalPlaylistManager>(*internalPlaylistManager),
                       removal = listKeeper.removal(playlist->id, path)](const Workers::Reply& reply) {
        const FileStatus written = file->write(*copy, copy->path);
        const bool isThere = written == FileStatus::done || written == FileStatus::postponed;
        FileStatus remembered = FileStatus::done;
        if (isThere) {
            removal();
            store->addPlaylist(copy->name, copy->path);
            store->renamePlaylist(copy->path, copy->name);
            remembered = store->save();
        }
        reply.post([=, this] {
            report(copy->path, written);
            if (!isThere) return;
            noteSaved(*copy, list, edits);
            takeStored(*store, remembered);
        });
    };
    workers.run(Workers::Lane::saving, save);
}

/// Updates the state after a save. The list may have been changed, renamed or replaced meanwhile.
void TulPlayer::noteSaved(const TulPlaylist& copy, std::uint64_t list, std::uint64_t edits) {
    listKeeper.noteSaved(list, edits, copy.path);
    const std::int32_t before = internalPlaylistManager->currentIndex;
    internalPlaylistManager->addPlaylist(copy.name, copy.path);
    internalPlaylistManager->renamePlaylist(copy.path, copy.name);
    if (list != playlist->id) {
        internalPlaylistManager->currentIndex = before;
        return;
    }
    playlist->markSaved(copy.path, edits);
    if (playlist->name.empty()) playlist->name = copy.name;
    if (playlist->name != copy.name) registerPlaylist(playlist->name, copy.path);
    noteEdited();
}

void TulPlayer::finishSaving() {
    listKeeper.keep(*playlist, std::chrono::hours(1)); // no time limit
    workers.finishSaving();
}

void TulPlayer::registerPlaylist(const std::string& name, const std::string& path) {
    internalPlaylistManager->addPlaylist(name, path);
    internalPlaylistManager->renamePlaylist(path, name);
    runOnStore(&TulInternalPlaylistManager::save);
}

/// Runs `load` or `save` on a copy of the store, on a worker. First finishes the overwriting of a killed
/// program, which may concern the store. Lane::saving keeps the results in order.
void TulPlayer::runOnStore(FileStatus (TulInternalPlaylistManager::*operation)()) {
    const auto run = [this, operation,
                      store = std::make_shared<TulInternalPlaylistManager>(*internalPlaylistManager)](
                         const Workers::Reply& reply) {
        completeSaves();
        const FileStatus status = (*store.*operation)();
        reply.post([this, store, status] { takeStored(*store, status); });
    };
    workers.run(Workers::Lane::saving, run);
}

void TulPlayer::takeStored(const TulInternalPlaylistManager& copy, FileStatus status) {
    if (status == FileStatus::done || status == FileStatus::cut) internalPlaylistManager->takeStored(copy);
    report(internalPlaylistManager->storePath, status);
}

void TulPlayer::report(const std::string& path, FileStatus status) const {
    if (status != FileStatus::done && reportFile) reportFile(path, status);
}

TulPlaylist::Entries TulPlayer::removeEntries(const TulRows& rows) {
    TulPlaylist::Entries removed = playlist->removeEntries(rows);
    tagReader.rowsRemoved(removed);
    return removed;
}

void TulPlayer::insertEntries(const TulRows& rows, TulPlaylist::Entries added) {
    playlist->insertEntries(rows, std::move(added));
    tagReader.rowsInserted(rows);
}

void TulPlayer::endEdit() {
    prepareNext();
    noteEdited();
}

void TulPlayer::renamePlaylist(const std::string& name) {
    const bool hasFile = !playlist->path.empty();
    if (name == playlist->name || (hasFile && name.empty())) return;
    playlist->name = name;
    if (hasFile) return registerPlaylist(name, playlist->path);
    playlist->markChanged();
    noteEdited();
}

void TulPlayer::clearPlaylist() {
    endOpening(Opening::givenUp);
    replacePlaylist(std::make_unique<TulPlaylist>(), 0, Replacement::cleared);
    prepareNext();
}

void TulPlayer::noteEdited() {
    if (playlistEdited) playlistEdited();
}
