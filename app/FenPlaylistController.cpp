#include "app/FenPlaylistController.h"

#include "app/DisplayText.h"
#include "app/FailureText.h"
#include "app/Skin.h"
#include "app/SourceQueue.h"
#include "app/StatusLine.h"
#include "app/editing/PlaylistEditor.h"
#include "app/editing/RowMenu.h"
#include "app/search/ListSearch.h"
#include "controls/InternalPlaylistComboBoxCell.h"
#include "controls/PlaylistEntryCell.h"
#include "core/player/TulPlayer.h"
#include "core/playlist/resolveEntrySource.h"
#include "platform/cocoa/Autoresizing.h"
#include "platform/cocoa/ComboBox.h"
#include "platform/cocoa/Scale.h"
#include "platform/cocoa/TableView.h"
#include "ui_PlaylistView.h"

#include <QLineEdit>
#include <QLocale>

#include <algorithm>
#include <utility>

namespace {

constexpr double rowHeight = 55.0;

/// Shorter reading shows no progress.
constexpr qint64 quietMs = 250;
constexpr qint64 textIntervalMs = 50;
constexpr qint64 outcomeMs = 8000;

QString number(std::size_t count) {
    return QLocale(QLocale::English).toString(static_cast<qulonglong>(count));
}

QColor rowColour(bool selected) {
    return selected ? QColor::fromRgbF(0.161F, 0.212F, 0.267F) : QColor::fromRgbF(0.133F, 0.133F, 0.133F);
}

} // namespace

FenPlaylistController::FenPlaylistController() = default;

FenPlaylistController::~FenPlaylistController() = default;

void FenPlaylistController::initialize() {
    lastPlaylistEntry = -1;
    if (playlistView) setUpTable();
    player->rowChanged = [this](std::int32_t row) {
        if (playlistView) updateRow(row);
        if (m_search) m_search->rowChanged(row);
    };
    player->loadInternalPlaylists();
    player->listKeeper.changed = [this] { updateSelector(); };
    displayName = QStringLiteral("Playlist");
}

void FenPlaylistController::loadView(QWidget& view) {
    // What the selector is made with; its style has the same.
    QFont font(QStringLiteral("Roboto"));
    font.setPixelSize(cocoa::scaledToInt(12));
    view.setFont(font);
    Ui::PlaylistView layout;
    layout.setupUi(&view);
    QObject::connect(&cocoa::Autoresizing::of(view), &cocoa::Autoresizing::laidOut, &view,
                     [this] { layOutTable(); });
    playlistView = layout.playlistView;
    playlistSelector = layout.playlistSelector;
    statusLine = layout.statusLine;
    searchField = layout.searchField;
    view.setFocusProxy(playlistView);
    QPalette rows = playlistView->palette();
    rows.setColor(QPalette::Base, rowColour(false));
    playlistView->setPalette(rows);
    playlistView->setDataCell(std::make_unique<PlaylistEntryCell>());
    setUpTable();
    setUpSearch();
    app::dressInSkin(*playlistView);
    app::dressInSkin(*playlistSelector);
    app::dressInSkin(*statusLine);
    QObject::connect(&statusLine->stopButton(), &QPushButton::clicked, statusLine, [this] {
        player->tagReader.stop();
        updateStatusLine();
    });
    playlistSelector->setCell(std::make_unique<InternalPlaylistComboBoxCell>());
    playlistSelector->setDataSource(this);
    playlistSelector->lineEdit()->setAcceptDrops(false); // the window handles file drops
    playlistSelector->setAction([this] {
        playlistNameChange();
        // Editing is finished: return the focus to the table.
        if (playlistSelector->window()->focusWidget() == playlistSelector) playlistView->setFocus();
    });
    reloadPlaylistData();
}

void FenPlaylistController::setUpTable() {
    playlistView->setDataSource(this);
    playlistView->setDelegate(this);
    playlistView->setDoubleAction([this] { doubleClick(); });
    if (m_editor && !m_rowMenu) m_rowMenu = std::make_unique<app::RowMenu>(*this, *m_editor);
    reInitializeDragAndDrop();
}

void FenPlaylistController::reloadPlaylistData() {
    if (!player->playlist || !playlistView) return;
    const bool isAnother = std::exchange(m_shownList, player->playlist->id) != player->playlist->id;
    if (isAnother) m_search->close();
    playlistView->reloadData();
    m_search->listChanged();
    if (isAnother) {
        playlistView->selectRowIndexes({});
        playlistView->scrollRowToVisible(player->playlist->currentIndex);
    }
    updateSelector();
}

/// The mark of the current row may have come from another row that is still drawn with it.
void FenPlaylistController::updateRow(std::int32_t row) {
    QWidget& rows = *playlistView->viewport();
    if (row == player->playlist->currentIndex) return rows.update();
    rows.update(playlistView->rectOfRow(row).toAlignedRect());
}

void FenPlaylistController::updatePlaylistViewSlow() {
    // Starting and failing change the row of the entry.
    const TulPlaybackState state = player->playbackState();
    if (playlistView && std::exchange(m_shownState, state) != state) playlistView->viewport()->update();
    if (!player->stream) return;
    const TulPlaylist& list = *player->playlist;
    const std::int32_t current = list.currentIndex;
    const std::uint64_t entry = list.entryCount() == 0 ? 0 : list.currentEntry()->id;
    if (current == lastPlaylistEntry && entry == m_lastEntry) return;
    // Do not scroll if the user has scrolled away from the playing row. Compare ids, because rows may move.
    const bool follows = m_lastEntry == 0 || (entry != m_lastEntry && isInView(m_lastEntry));
    reloadPlaylistData();
    if (playlistView && follows) playlistView->scrollRowToVisible(current);
    lastPlaylistEntry = current;
    m_lastEntry = entry;
}

void FenPlaylistController::updateStatusLine() {
    if (!statusLine) return;
    const auto progress = player->tagReader.progress();
    const bool isBusy = progress.total > 0 || sources->isSearching();
    if (!isBusy) {
        m_busy.invalidate();
        const bool isNewProblem = std::exchange(m_problem, sources->problem().number) != m_problem;
        if (isNewProblem) m_notice.clear();
        const bool isSame = std::exchange(m_outcome, outcomeText()) == m_outcome;
        if (isNewProblem || !isSame) m_sinceText.start();
        if (!m_notice.isEmpty() && m_sinceText.hasExpired(outcomeMs)) {
            m_notice.clear();
            m_outcome = outcomeText(); // which was shown before
            return showsStatus(false);
        }
        if (!m_outcome.isEmpty()) statusLine->showText(m_outcome);
        return showsStatus(!m_outcome.isEmpty() && !m_sinceText.hasExpired(outcomeMs));
    }
    m_outcome.clear();
    if (!m_busy.isValid()) m_busy.start();
    if (!m_busy.hasExpired(quietMs)) return showsStatus(false);
    if (!statusLine->isHidden() && !m_sinceText.hasExpired(textIntervalMs)) return;
    m_sinceText.start();
    if (progress.total == 0) {
        statusLine->showText(QStringLiteral("Looking for audio files"));
    } else {
        statusLine->showProgress(
            QStringLiteral("Reading %1 of %2").arg(number(progress.done), number(progress.total)),
            static_cast<double>(progress.done) / static_cast<double>(progress.total));
    }
    showsStatus(true);
}

void FenPlaylistController::showNotice(const QString& text) {
    m_notice = text;
    m_outcome.clear();
    updateStatusLine();
}

void FenPlaylistController::showsStatus(bool shows) {
    statusLine->setVisible(shows);
    layOutTable();
}

QString FenPlaylistController::outcomeText() const {
    if (!m_notice.isEmpty()) return m_notice;
    const auto& problem = sources->problem();
    if (problem.status != FileStatus::done) return app::fileStatusText(problem.status, problem.path);
    if (sources->skipped() == 0) return {};
    if (sources->skipped() == 1) return QStringLiteral("1 file is not audio");
    return QStringLiteral("%1 files are not audio").arg(number(sources->skipped()));
}

int FenPlaylistController::numberOfRowsInTableView() {
    if (!player || !player->playlist) return 0;
    return static_cast<int>(player->playlist->entryCount());
}

QVariant FenPlaylistController::objectValueForTableColumn(int row) {
    return QVariant::fromValue(static_cast<void*>(player->playlist->entryAt(row)));
}

void FenPlaylistController::willDisplayCell(cocoa::TextFieldCell& cell, int row) {
    auto& entryCell = static_cast<PlaylistEntryCell&>(cell);
    const TulPlaylistEntry& entry = *player->playlist->entryAt(row);
    player->tagReader.want(row);
    const bool isLengthKnown = entry.length > 0 || entry.tags == TulPlaylistEntry::Tags::read;
    entryCell.setTrackNumber(row + 1);
    entryCell.setInfo1(app::displayText(entry.shownTitle()));
    const QString failure = failureOf(row);
    entryCell.setFailed(!failure.isEmpty());
    entryCell.setInfo2(failure.isEmpty() ? app::displayText(entry.shownArtistAlbum()) : failure);
    markFound(entryCell);
    const bool isLive = entry.length <= 0 && isAddress(entry.source);
    const QString length = isLive ? QStringLiteral("live") : app::timeText(entry.length);
    entryCell.setLengthInfo(failure.isEmpty() && isLengthKnown ? length : QString());
    entryCell.setActive(entry.active);
    entryCell.setStopsAfter(player->stopsAfter(entry));
    entryCell.setPlayIcon(cocoa::Image::named(QStringLiteral("playlist_play_icon")));
    entryCell.setBackgroundColor(rowColour(playlistView->selectedRowIndexes().contains(row)));
    playlistView->noteHeightOfRowsWithIndexesChanged({row});
}

double FenPlaylistController::heightOfRow(int row) {
    return m_search && m_search->hides(row) ? 0 : rowHeight;
}

/// Why an entry does not play; empty without a failure.
QString FenPlaylistController::failureOf(int row) const {
    const TulPlaylistEntry& entry = *player->playlist->entryAt(row);
    return app::failureText(entry.failure, entry.source);
}

void FenPlaylistController::doubleClick() {
    play(playlistView->clickedRow());
}

void FenPlaylistController::playCurrentRow() {
    play(currentRow());
}

void FenPlaylistController::play(std::int32_t row) {
    player->playlist->selectEntry(row);
    player->startCurrentEntry();
}
