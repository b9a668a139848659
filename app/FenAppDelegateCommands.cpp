// The user's commands: files, playlists, streams, and what the program was started with.

#include "app/FenAppDelegate.h"

#include "app/FenPlaylistController.h"
#include "app/FileTypes.h"
#include "app/SharingText.h"
#include "app/SourceQueue.h"
#include "app/session/SessionKeeper.h"
#include "app/settings/Settings.h"
#include "controls/CustomWindow.h"
#include "core/player/TulNetworkSharing.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/Alert.h"
#include "platform/cocoa/ComboBox.h"
#include "platform/cocoa/OpenPanel.h"
#include "platform/cocoa/SavePanel.h"

#include <QFile>
#include <QLineEdit>
#include <QStandardPaths>

#include <utility>

namespace {

const QString playlistDescription = QStringLiteral("Playlists");
constexpr QSize addressFieldSize{300, 48};

std::string bytesOf(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

} // namespace

void FenAppDelegate::openDocument() {
    cocoa::OpenPanel panel;
    panel.setTitle(QStringLiteral("Add a file to the current playlist"));
    panel.setAllowsMultipleSelection(true);
    panel.setAllowedFileTypes(QStringLiteral("Audio files"), app::audioTypes());
    panel.setDirectory(QStandardPaths::writableLocation(QStandardPaths::MusicLocation));
    panel.beginSheetModalForWindow(*window, [this](const QStringList& paths) {
        std::vector<std::string> files;
        for (const QString& path : paths)
            files.push_back(bytesOf(path));
        m_sources->append(std::move(files), app::SourceSearch::Take::files);
    });
}

void FenAppDelegate::addFolder() {
    cocoa::OpenPanel panel;
    panel.setTitle(QStringLiteral("Add a folder to the current playlist"));
    panel.setCanChooseDirectories(true);
    panel.setDirectory(QStandardPaths::writableLocation(QStandardPaths::MusicLocation));
    panel.beginSheetModalForWindow(*window, [this](const QStringList& paths) {
        m_sources->append({bytesOf(paths.front())}, app::SourceSearch::Take::contents);
    });
}

void FenAppDelegate::openPlaylist() {
    cocoa::OpenPanel panel;
    panel.setTitle(QStringLiteral("Open a playlist file"));
    panel.setAllowsMultipleSelection(false);
    panel.setAllowedFileTypes(playlistDescription, app::playlistTypes());
    panel.setDirectory(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    panel.beginSheetModalForWindow(
        *window, [this](const QStringList& paths) { m_sources->openPlaylist(bytesOf(paths.front())); });
}

void FenAppDelegate::savePlaylist() {
    // The name that is still being typed is the list's.
    playlistController->playlistSelector->validateEditing();
    cocoa::SavePanel panel;
    panel.setTitle(QStringLiteral("Save playlist..."));
    panel.setAllowedFileTypes(playlistDescription, {QStringLiteral("tuq")});
    panel.setNameFieldStringValue(QString::fromStdString(player->playlist->name));
    if (const std::string& file = player->playlist->path; !file.empty())
        panel.setFile(QFile::decodeName(file.c_str()));
    panel.setDirectory(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    panel.beginSheetModalForWindow(*window,
                                   [this](const QString& path) { m_sources->savePlaylist(bytesOf(path)); });
}

void FenAppDelegate::clearPlaylist() {
    m_sources->clearPlaylist();
}

void FenAppDelegate::revertPlaylist() {
    m_sources->revertPlaylist();
}

void FenAppDelegate::openStream() {
    cocoa::Alert alert({.message = QStringLiteral("Stream address"),
                        .defaultButton = QStringLiteral("OK"),
                        .alternateButton = QStringLiteral("Cancel"),
                        .informative = QStringLiteral(
                            "Add the address of the stream here. It should start with http/https.")},
                       window.get());
    auto field = std::make_unique<QLineEdit>();
    field->setMinimumSize(addressFieldSize);
    const QLineEdit& address = *field;
    alert.setAccessoryView(std::move(field));
    if (alert.runModal() != cocoa::Alert::defaultReturn) return;
    m_sources->append({address.text().toStdString()}, app::SourceSearch::Take::asTyped);
}

void FenAppDelegate::toggleNetworkSharing() {
    player->networkSharingEnabled = !player->networkSharingEnabled;
    if (!player->networkSharingEnabled) return player->networkSharing->stop();
    if (player->stream) player->networkSharing->start(*player->stream);
    playlistController->showNotice(app::sharingNotice(*player));
}

void FenAppDelegate::applySharingSettings() {
    const bool isStopped = player->networkSharing->configure(
        settings->sharingName().toStdString(), static_cast<std::uint16_t>(settings->sharingPort()));
    if (!isStopped || !player->networkSharingEnabled) return;
    if (player->stream) player->networkSharing->start(*player->stream);
    playlistController->showNotice(app::sharingNotice(*player));
}

void FenAppDelegate::toggleSpectrumAnalyzer() {
    playerController->toggleSpectrumAnalyzer();
}

void FenAppDelegate::openSources(const std::vector<std::string>& sources) {
    if (sources.empty()) return;
    if (m_session && m_session->restoresList()) return appendAndPlay(sources);
    if (sources.size() == 1 && app::isPlaylist(sources.front()))
        return m_sources->openPlaylist(sources.front());
    m_sources->append(sources, app::SourceSearch::Take::contents, app::SourceQueue::Then::play);
}

void FenAppDelegate::appendAndPlay(const std::vector<std::string>& sources) {
    if (!sources.empty())
        m_sources->append(sources, app::SourceSearch::Take::contents, app::SourceQueue::Then::playAtOnce);
}

void FenAppDelegate::playRestored() {
    if (m_session) m_session->playWhenRestored();
}
