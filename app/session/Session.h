#pragma once

#include "core/player/TulResumption.h"

#include <QByteArray>
#include <QPoint>

#include <cstdint>
#include <optional>
#include <string>

namespace app {

/// What one run of the program leaves to the next.
struct Session {
    /// Only where the user wants the session back.
    struct Whole {
        std::string list;           ///< The playlist file; empty for a list without one.
        std::int64_t changedAt = 0; ///< Of its last change that is not saved; 0 when there is none.
        TulResumption resumption;
        int page = 0;
        std::optional<QPoint> place; ///< Of the window, where the program may say where it is.

        /// There was a list to come back to.
        [[nodiscard]] bool hasList() const { return !list.empty() || changedAt != 0; }
        bool operator==(const Whole&) const = default;
    };

    double volume = 0.5;  ///< 0 silent .. 1 full.
    double balance = 0.0; ///< -1 left .. 0 middle .. 1 right.
    std::optional<Whole> whole;

    bool operator==(const Session&) const = default;
    /// Differs in no more than the position in the track.
    [[nodiscard]] bool isSameButPosition(const Session& other) const;

    /// As the file that keeps it.
    [[nodiscard]] QByteArray toJson() const;
    /// Nothing when it is no such file. Values out of range count as the nearest in range.
    static std::optional<Session> fromJson(const QByteArray& json);
};

} // namespace app
