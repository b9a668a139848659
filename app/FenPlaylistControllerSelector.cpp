// The playlist selector: internal playlists, then unsaved lists without an internal playlist.

#include "app/FenPlaylistController.h"

#include "app/SourceQueue.h"
#include "controls/InternalPlaylistComboBoxCell.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/ComboBox.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QLocale>

#include <algorithm>

namespace {

/// The title of a list without a name.
QString namelessTitle(std::int64_t changedAt) {
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(changedAt);
    return QStringLiteral("Unsaved, ") +
           QLocale(QLocale::English).toString(time, QStringLiteral("d MMM HH:mm"));
}

QString titleOf(const UnsavedList& list) {
    if (list.name.empty() && list.file.empty()) return namelessTitle(list.changedAt);
    const QString name = list.name.empty()
                             ? QFileInfo(QFile::decodeName(list.file.c_str())).completeBaseName()
                             : QString::fromStdString(list.name);
    return list.isSeparate ? name + QStringLiteral(": ") + namelessTitle(list.changedAt) : name;
}

} // namespace

void FenPlaylistController::updateSelector() {
    if (!playlistSelector) return;
    updateUnsavedLists();
    const TulPlaylist& list = *player->playlist;
    playlistSelector->setStringValue(QString::fromStdString(list.name));
    playlistSelector->lineEdit()->setPlaceholderText(
        list.entries.empty() || !list.isChanged() ? QString() : namelessTitle(list.changedAt()));
    const bool differs = !list.path.empty() && list.isChanged();
    static_cast<InternalPlaylistComboBoxCell*>(playlistSelector->cell())->setMarked(differs);
    playlistSelector->setAccessibleDescription(differs ? QStringLiteral("Changed since it was saved")
                                                       : QString());
    playlistSelector->update();
}

void FenPlaylistController::playlistNameChange() {
    if (!player || !player->playlist) return;
    const int chosen = playlistSelector->indexOfSelectedItem();
    if (chosen < 0) {
        player->renamePlaylist(playlistSelector->stringValue().toStdString());
        return updateSelector();
    }
    // The name comes with the list.
    const auto internal = static_cast<int>(player->internalPlaylistManager->count());
    if (chosen < internal) return sources->selectInternalPlaylist(chosen);
    sources->openUnsaved(m_unsavedLists.at(static_cast<std::size_t>(chosen - internal)));
}

void FenPlaylistController::updateUnsavedLists() {
    const auto& internal = player->internalPlaylistManager->playlists;
    m_unsavedLists = player->listKeeper.lists();
    std::erase_if(m_unsavedLists, [&](const UnsavedList& list) {
        const auto path = &std::pair<std::string, std::string>::first;
        return !list.isSeparate && std::ranges::find(internal, list.file, path) != internal.end();
    });
}

int FenPlaylistController::numberOfItemsInComboBox() {
    if (!player || !player->internalPlaylistManager) return 0;
    return static_cast<int>(player->internalPlaylistManager->count()) +
           static_cast<int>(m_unsavedLists.size());
}

std::optional<QString> FenPlaylistController::objectValueForItemAtIndex(int index) {
    if (!player || !player->internalPlaylistManager) return std::nullopt;
    const auto internal = static_cast<int>(player->internalPlaylistManager->count());
    if (index < internal)
        return QString::fromStdString(player->internalPlaylistManager->playlistAt(index).second);
    return titleOf(m_unsavedLists.at(static_cast<std::size_t>(index - internal)));
}

bool FenPlaylistController::isMarkedItemAtIndex(int index) {
    if (index >= player->internalPlaylistManager->count()) return false;
    const std::string path = player->internalPlaylistManager->playlistAt(index).first;
    const auto isOfFile = [&](const UnsavedList& list) { return list.file == path && !list.isSeparate; };
    const bool isShown = path == player->playlist->path;
    return isShown ? player->playlist->isChanged()
                   : std::ranges::any_of(player->listKeeper.lists(), isOfFile);
}

std::int64_t FenPlaylistController::indexOfItemWithStringValue(const QString& string) {
    if (!player || !player->internalPlaylistManager) return cocoa::NotFound;
    const std::int32_t internal = player->internalPlaylistManager->indexOfName(string.toStdString());
    if (internal >= 0) return internal;
    const auto found = std::ranges::find(m_unsavedLists, string, titleOf);
    if (found == m_unsavedLists.end()) return cocoa::NotFound;
    return player->internalPlaylistManager->count() + (found - m_unsavedLists.begin());
}
