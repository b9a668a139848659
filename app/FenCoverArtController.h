#pragma once

#include "app/FenMultiFunctionalViewController.h"

#include <cstdint>
#include <utility>

class QImage;

namespace app {
class CoverArtView;
}

/// The page that shows the current entry's picture, or a default picture.
///
/// Threads: main thread only.
class FenCoverArtController : public FenMultiFunctionalViewController {
public:
    /// Null until the page's view is loaded.
    app::CoverArtView* coverArtView = nullptr;

    void initialize() override;
    /// Shows the current entry's picture; with an empty playlist the picture stays.
    void updateCoverArt();

protected:
    void loadView(QWidget& view) override;

private:
    void show(const QImage& picture);

    /// Entry id and size of the picture that is shown or being decoded.
    std::pair<std::uint64_t, std::int32_t> m_wanted;
};
