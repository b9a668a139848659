#pragma once

#include "app/FenMultiFunctionalViewController.h"

#include <cstdint>
#include <utility>

class QImage;

namespace app {
class CoverArtView;
}

/// The page that shows the current entry's picture, or a picture of our own where it has none.
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

    /// Id and bytes of the picture that is, or is about to be, on the page.
    std::pair<std::uint64_t, std::int32_t> m_wanted;
};
