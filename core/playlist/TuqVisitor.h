#pragma once

#include "core/playlist/JsonList.h"
#include "core/playlist/PlaylistLimits.h"
#include "core/playlist/TulPlaylist.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// Makes a playlist of what a tuq document holds. Rejects it when a known member has another type, or an
/// entry no source; of members of one name the first counts.
class TuqVisitor : public json::ListVisitor {
public:
    /// Sources that are relative get the folder in front.
    explicit TuqVisitor(std::string folder) : m_folder(std::move(folder)) {}

    bool rootMember(std::string_view name, const json::Value& value) override;
    bool beginEntry() override;
    bool entryMember(std::string_view name, const json::Value& value) override;
    bool endEntry() override;

    /// When all has been told: the list, null without a name.
    std::unique_ptr<TulPlaylist> finish();
    /// Entries have been left out.
    [[nodiscard]] bool isCut() const { return m_isCut; }

private:
    using Members = std::uint8_t; ///< A bit for each that has come.

    void finishEntry(TulPlaylistEntry& entry, Members given) const;

    std::string m_folder;
    std::unique_ptr<TulPlaylist> m_playlist = std::make_unique<TulPlaylist>();
    PlaylistLimits m_limits;
    bool m_isCut = false;

    Members m_rootMembers = 0;
    std::string m_artist; ///< Of the root, for entries that have none.
    std::string m_album;
    std::int32_t m_start = -1;

    std::unique_ptr<TulPlaylistEntry> m_entry;
    Members m_entryMembers = 0;
    bool m_isValid = false;
    std::vector<Members> m_given; ///< By each entry of the list.
};
