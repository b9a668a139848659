#include "app/UnsavedChanges.h"

#include "core/player/TulPlayer.h"

namespace app {
namespace {

using namespace std::chrono_literals;

/// Rows that are found in a folder come every few milliseconds.
constexpr auto storeDelay = 500ms;
constexpr auto partTakes = 4ms;

} // namespace

UnsavedChanges::UnsavedChanges(TulPlayer& player) : m_player(player) {
    m_timer.setSingleShot(true);
    m_timer.callOnTimeout([this] { store(); });
}

void UnsavedChanges::noteEdit() {
    m_timer.start(storeDelay);
}

void UnsavedChanges::check() {
    if (!m_timer.isActive() && !m_player.listKeeper.isKept(*m_player.playlist)) m_timer.start(0ms);
}

void UnsavedChanges::store() {
    if (!m_player.listKeeper.keep(*m_player.playlist, partTakes)) m_timer.start(0ms);
}

} // namespace app
