#pragma once

#include "core/playlist/JsonList.h"
#include "core/playlist/PlaylistLimits.h"
#include "core/playlist/TulPlaylist.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// Builds a playlist from a tuq document. Rejects it when a known member has another type, or an entry lacks
/// a source. Of members of the same name the first counts.
class TuqVisitor : public json::ListVisitor {
public:
    /// `folder` is prepended to relative sources.
    explicit TuqVisitor(std::string folder) : m_folder(std::move(folder)) {}

    bool rootMember(std::string_view name, const json::Value& value) override;
    bool beginEntry() override;
    bool entryMember(std::string_view name, const json::Value& value) override;
    bool endEntry() override;

    /// The list, after the whole document was visited; null when it has no name.
    std::unique_ptr<TulPlaylist> finish();
    /// True when entries were left out because of a limit.
    [[nodiscard]] bool isCut() const { return m_isCut; }

private:
    using Members = std::uint8_t; ///< A bit for each member that was present.

    void finishEntry(TulPlaylistEntry& entry, Members given) const;

    std::string m_folder;
    std::unique_ptr<TulPlaylist> m_playlist = std::make_unique<TulPlaylist>();
    PlaylistLimits m_limits;
    bool m_isCut = false;

    Members m_rootMembers = 0;
    std::string m_artist; ///< Members of the root, for entries without their own.
    std::string m_album;
    std::int32_t m_start = -1;

    std::unique_ptr<TulPlaylistEntry> m_entry;
    Members m_entryMembers = 0;
    bool m_isValid = false;
    std::vector<Members> m_given; ///< The members of each entry.
};
