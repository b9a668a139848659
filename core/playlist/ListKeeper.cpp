#include "core/playlist/ListKeeper.h"

#include "core/playlist/TulPlaylist.h"

#include <algorithm>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;

/// False for unchanged lists, and for an empty one without a file.
bool isWorthKeeping(const TulPlaylist& list) {
    return list.isChanged() && !(list.path.empty() && list.entries.empty());
}

std::string textOf(const TulPlaylist& list) {
    UnsavedListDocument document(list);
    for (const auto& entry : list.entries)
        document.add(*entry);
    return document.takeText();
}

} // namespace

struct ListKeeper::Draft {
    explicit Draft(const TulPlaylist& list)
        : id(list.id), edits(list.edits()), index(list.currentIndex), document(list) {}
    [[nodiscard]] bool isOf(const TulPlaylist& list) const {
        return id == list.id && edits == list.edits() && index == list.currentIndex;
    }

    std::uint64_t id;
    std::uint64_t edits;
    std::int32_t index;
    UnsavedListDocument document;
    std::size_t next = 0; ///< The first entry that is not in the document yet.
};

ListKeeper::ListKeeper(Workers& workers, std::function<void(FileStatus)> failed)
    : m_workers(workers), m_failed(std::move(failed)), m_folder(std::make_shared<UnsavedLists>("")) {}

void ListKeeper::setFolder(const std::string& folder) {
    m_folder = std::make_shared<UnsavedLists>(folder);
    run([](UnsavedLists&) { return FileStatus::done; });
}

void ListKeeper::run(Job job, std::function<void(FileStatus)> then) {
    const auto all = [this, folder = m_folder, job = std::move(job),
                      then = std::move(then)](const Workers::Reply& reply) {
        const FileStatus status = job(*folder);
        reply.post([this, then, status, lists = folder->list()] {
            m_lists = lists;
            if (then) then(status);
            if (status != FileStatus::done) m_failed(status);
            if (changed) changed();
        });
    };
    m_workers.run(Workers::Lane::saving, all);
}

bool ListKeeper::isSetAsideAs(const std::string& id, const TulPlaylist& list) const {
    const auto kept = m_kept.find(list.id);
    return kept != m_kept.end() && kept->second.restoredFrom == id;
}

bool ListKeeper::isKept(const TulPlaylist& list) const {
    const auto kept = m_kept.find(list.id);
    if (!isWorthKeeping(list)) return kept == m_kept.end();
    return kept != m_kept.end() && kept->second.edits == list.edits() &&
           kept->second.index == list.currentIndex;
}

bool ListKeeper::isStored(const TulPlaylist& list) const {
    const auto kept = m_kept.find(list.id);
    return isKept(list) && (kept == m_kept.end() || !kept->second.failed);
}

bool ListKeeper::keep(const TulPlaylist& list, std::chrono::milliseconds limit) {
    constexpr std::size_t rowsAtATime = 64;
    if (isStored(list)) return true;
    if (!isWorthKeeping(list)) {
        discard(list.id, list.path);
        return true;
    }
    const auto start = Clock::now();
    if (!m_draft || !m_draft->isOf(list)) m_draft = std::make_shared<Draft>(list);
    while (m_draft->next < list.entries.size()) {
        if (Clock::now() - start > limit) return false;
        const std::size_t end = std::min(m_draft->next + rowsAtATime, list.entries.size());
        for (; m_draft->next < end; ++m_draft->next)
            m_draft->document.add(*list.entries[m_draft->next]);
    }
    const std::string from =
        std::exchange(m_kept[list.id], {{}, list.edits(), list.currentIndex}).restoredFrom;
    run([draft = std::exchange(m_draft, nullptr),
         from](UnsavedLists& lists) { return lists.store(draft->document.takeText(), from); },
        [this, id = list.id, from](FileStatus status) {
            if (status != FileStatus::done) noteFailure(id, from);
        });
    return true;
}

/// Ignored when the list was replaced or discarded meanwhile.
void ListKeeper::noteFailure(std::uint64_t list, const std::string& restoredFrom) {
    const auto kept = m_kept.find(list);
    if (kept == m_kept.end() || !kept->second.restoredFrom.empty()) return;
    kept->second.restoredFrom = restoredFrom;
    kept->second.failed = true;
}

void ListKeeper::leave(std::unique_ptr<TulPlaylist> list, const Back& back) {
    m_draft.reset();
    if (!isWorthKeeping(*list)) {
        if (m_kept.contains(list->id)) discard(list->id, list->path);
        return back(std::move(list));
    }
    const bool isThere = isStored(*list);
    Kept& kept = m_kept[list->id];
    const std::string from = kept.restoredFrom;
    const std::string to = isThere && !from.empty() ? from : UnsavedLists::newId();
    kept = {to, list->edits(), list->currentIndex};
    // The worker owns the list while it writes its text.
    const auto old = std::make_shared<std::unique_ptr<TulPlaylist>>(isThere ? nullptr : std::move(list));
    run(
        [old, from, to](UnsavedLists& lists) {
            const FileStatus status = *old ? lists.store(textOf(**old), from) : FileStatus::done;
            if (from != to) lists.setAside(to);
            return status;
        },
        [old, back](FileStatus) {
            if (*old) back(std::move(*old));
        });
    if (isThere) back(std::move(list));
}

void ListKeeper::discard(std::uint64_t list, const std::string& file) {
    run([removal = removal(list, file)](UnsavedLists&) {
        removal();
        return FileStatus::done;
    });
    m_kept.erase(list);
}

std::function<void()> ListKeeper::removal(std::uint64_t list, const std::string& file) const {
    const auto kept = m_kept.find(list);
    return [folder = m_folder, file, isKept = kept != m_kept.end(),
            id = kept == m_kept.end() ? std::string() : kept->second.restoredFrom] {
        if (isKept) folder->remove(id);
        if (!file.empty()) folder->separateFrom(file);
    };
}

/// Keeps what was stored after a later edit.
void ListKeeper::noteSaved(std::uint64_t list, std::uint64_t edits, const std::string& file) {
    const auto kept = m_kept.find(list);
    if (kept != m_kept.end() && kept->second.edits <= edits) discard(list, file);
}

void ListKeeper::restore(const std::string& id, Restored restored) {
    restoreFound([id](const auto&) { return id; }, std::move(restored));
}

void ListKeeper::restoreFile(const std::string& file, Restored restored) {
    const auto find = [file](UnsavedLists& folder) {
        for (const UnsavedList& list : folder.list())
            if (list.file == file && !list.isSeparate) return list.id;
        return std::string();
    };
    restoreFound(find, std::move(restored));
}

void ListKeeper::restoreNameless(std::int64_t changedAt, Restored restored) {
    const auto find = [changedAt](UnsavedLists& folder) {
        std::string id;
        for (const UnsavedList& list : folder.list()) // the one changed last first
            if (list.file.empty() && list.changedAt >= changedAt) id = list.id;
        return id;
    };
    restoreFound(find, std::move(restored));
}

void ListKeeper::restoreFound(Find find, Restored restored) {
    const auto read = [this, folder = m_folder, find = std::move(find),
                       restored = std::move(restored)](const Workers::Reply& reply) {
        const std::string id = find(*folder);
        const auto list = std::make_shared<std::unique_ptr<TulPlaylist>>();
        if (!id.empty()) *list = folder->read(id);
        const std::size_t unread = *list ? (*list)->unreadCount() : 0;
        reply.post([this, id, list, unread, restored] {
            if (*list) m_kept[(*list)->id] = {id, (*list)->edits(), (*list)->currentIndex};
            restored(std::move(*list), unread);
        });
    };
    m_workers.run(Workers::Lane::saving, read);
}
