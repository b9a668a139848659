// The user's commands: files, playlists, streams, and what the program was started with.

#include "app/FenAppDelegate.h"

#include "app/FenPlaylistController.h"
#include "app/FileTypes.h"
#include "app/ReadingDialog.h"
#include "controls/CustomWindow.h"
#include "core/player/TulNetworkSharing.h"
#include "core/player/TulPlayer.h"
#include "core/playlist/resolveEntrySource.h"
#include "platform/cocoa/Alert.h"
#include "platform/cocoa/ComboBox.h"
#include "platform/cocoa/OpenPanel.h"
#include "platform/cocoa/SavePanel.h"

#include <QFile>
#include <QLineEdit>
#include <QStandardPaths>

#include <filesystem>

namespace {

const QString playlistDescription = QStringLiteral("Playlists");
constexpr QSize addressFieldSize{300, 48};

std::string bytesOf(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

bool isFolder(const std::string& path) {
    std::error_code unknown;
    return std::filesystem::is_directory(path, unknown);
}

/// The path without symbolic links, as far as it exists.
std::string resolved(const std::string& path) {
    std::error_code failed;
    const auto canonical = std::filesystem::weakly_canonical(path, failed);
    return failed ? path : canonical.string();
}

} // namespace

void FenAppDelegate::openDocument() {
    cocoa::OpenPanel panel;
    panel.setTitle(QStringLiteral("Add a file to the current playlist"));
    panel.setAllowsMultipleSelection(true);
    panel.setAllowedFileTypes(QStringLiteral("Audio files"), app::audioTypes());
    panel.setDirectory(QStandardPaths::writableLocation(QStandardPaths::MusicLocation));
    panel.beginSheetModalForWindow(*window, [this](const QStringList& paths) { addFiles(paths); });
}

void FenAppDelegate::addFiles(const QStringList& paths) {
    std::vector<std::string> sources;
    for (const QString& path : paths)
        sources.push_back(resolved(bytesOf(path)));
    readEntries(sources);
}

void FenAppDelegate::readEntries(const std::vector<std::string>& sources) {
    app::ReadingDialog::whileShown(*player, *window,
                                   [&] { player->playlist->addEntries(sources, player->readingProgress); });
    player->prepareNext();
    playlistController->reloadPlaylistData();
}

void FenAppDelegate::openPlaylist() {
    cocoa::OpenPanel panel;
    panel.setTitle(QStringLiteral("Open a playlist file"));
    panel.setAllowsMultipleSelection(false);
    panel.setAllowedFileTypes(playlistDescription, app::playlistTypes());
    panel.setDirectory(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    panel.beginSheetModalForWindow(
        *window, [this](const QStringList& paths) { openPlaylistFile(bytesOf(paths.front())); });
}

void FenAppDelegate::openPlaylistFile(const std::string& path) {
    app::ReadingDialog::whileShown(*player, *window, [&] { player->openPlaylist(resolved(path)); });
    playlistController->reloadPlaylistData();
}

void FenAppDelegate::savePlaylist() {
    // The name that is still being typed is the list's.
    playlistController->playlistSelector->validateEditing();
    cocoa::SavePanel panel;
    panel.setTitle(QStringLiteral("Save playlist..."));
    panel.setAllowedFileTypes(playlistDescription, {QStringLiteral("tuq")});
    panel.setNameFieldStringValue(QString::fromStdString(player->playlist->name));
    panel.setDirectory(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    panel.beginSheetModalForWindow(
        *window, [this](const QString& path) { player->savePlaylist(resolved(bytesOf(path))); });
}

void FenAppDelegate::clearPlaylist() {
    player->clearPlaylist();
    playlistController->reloadPlaylistData();
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
    player->playlist->addEntry(address.text().toStdString());
    playlistController->reloadPlaylistData();
}

void FenAppDelegate::toggleNetworkSharing() {
    player->networkSharingEnabled = !player->networkSharingEnabled;
    if (!player->networkSharingEnabled) return player->networkSharing->stop();
    if (player->stream) player->networkSharing->start(*player->stream);
}

void FenAppDelegate::toggleSpectrumAnalyzer() {
    playerController->toggleSpectrumAnalyzer();
}

void FenAppDelegate::openSources(const std::vector<std::string>& sources) {
    const auto first = addSources(sources);
    if (!first || isStarted(player->playbackState())) return;
    player->playlist->selectEntry(*first);
    player->startCurrentEntry();
}

std::vector<std::string> FenAppDelegate::filesIn(const std::string& folder) {
    std::vector<std::string> files;
    app::ReadingDialog::whileShown(*player, *window,
                                   [&] { files = app::audioFilesIn(folder, player->readingProgress); });
    return files;
}

std::optional<std::int32_t> FenAppDelegate::addSources(const std::vector<std::string>& sources) {
    std::vector<std::string> appended;
    for (const std::string& source : sources) {
        if (source.empty()) continue; // an address without a path
        if (app::isPlaylist(source)) {
            openPlaylistFile(source);
        } else if (isAddress(source)) {
            appended.push_back(source);
        } else if (isFolder(source)) {
            const auto files = filesIn(resolved(source));
            appended.insert(appended.end(), files.begin(), files.end());
        } else {
            appended.push_back(resolved(source));
        }
    }
    if (appended.empty()) return std::nullopt;
    const auto first = static_cast<std::int32_t>(player->playlist->entryCount());
    readEntries(appended);
    return first;
}
