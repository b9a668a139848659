#include "tools/gallery/GalleryPanels.h"

#include "controls/FenSpectrumAnalyzerView.h"
#include "controls/ImageBasedView.h"
#include "controls/InternalPlaylistComboBoxCell.h"
#include "controls/PlaylistEntryCell.h"
#include "controls/RixSlider.h"
#include "platform/cocoa/ComboBox.h"
#include "platform/cocoa/TableView.h"

#include <QLabel>
#include <QPainter>

#include <vector>

using cocoa::Image;

namespace gallery {
namespace {

/// A widget that its parent owns.
template <typename Widget, typename... Arguments> Widget* add(QWidget* parent, Arguments&&... arguments) {
    return std::make_unique<Widget>(parent, std::forward<Arguments>(arguments)...).release();
}

QLabel* text(QWidget* parent, const QRect& place, const QString& words, const QString& style,
             Qt::Alignment alignment = Qt::AlignCenter) {
    auto* const label = add<QLabel>(parent);
    label->setText(words);
    label->setGeometry(place);
    label->setAlignment(alignment);
    label->setStyleSheet(QStringLiteral("background: transparent; ") + style);
    return label;
}

/// One picture at its own size.
class Picture : public QWidget {
public:
    Picture(QWidget* parent, const QString& name, const QPoint& place, const QSize& size)
        : QWidget(parent), m_image(Image::named(name)) {
        setGeometry({place, size.isEmpty() ? m_image.size().toSize() : size});
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        m_image.drawInRect(painter, rect());
    }

private:
    Image m_image;
};

void addPicture(QWidget* parent, const QString& name, const QPoint& place, const QSize& size = {}) {
    add<Picture>(parent, name, place, size);
}

enum class Bar { position, level, balance };

RixSlider* slider(QWidget* parent, const QRect& place, Bar bar, double value) {
    auto* const made = add<RixSlider>(parent);
    made->setGeometry(place);
    made->cell()->setControlSize(cocoa::ControlSize::mini);
    made->setKnobImage(Image::named(bar == Bar::position ? QStringLiteral("slider_knob.png")
                                                         : QStringLiteral("slider_knob_yellow.png")));
    const QString track =
        bar == Bar::position ? QStringLiteral("slider_track") : QStringLiteral("slider_level_track");
    const QString filled = bar == Bar::position ? QStringLiteral("slider_position")
                           : bar == Bar::level  ? QStringLiteral("slider_level")
                                                : track;
    made->setBarFillImage(Image::named(track + QStringLiteral("_fill")));
    made->setBarRightAgeImage(Image::named(track + QStringLiteral("_right")));
    made->setBarFillBeforeKnobImage(Image::named(filled + QStringLiteral("_fill")));
    made->setBarLeftAgeImage(Image::named(filled + QStringLiteral("_left")));
    made->setDoubleValue(value);
    return made;
}

struct Row {
    const char* title;
    const char* second;
    const char* length;
    bool active = false;
    bool selected = false;
    int number = -1; ///< The row's own when negative.
};

/// A table over rows that stand in the program, owned by its panel.
class Rows : public QObject, public cocoa::TableViewDataSource, public cocoa::TableViewDelegate {
public:
    Rows(QWidget* parent, std::vector<Row> rows) : QObject(parent), m_rows(std::move(rows)) {}

    int numberOfRowsInTableView() override { return static_cast<int>(m_rows.size()); }
    double heightOfRow(int) override { return 55.0; }
    void willDisplayCell(cocoa::TextFieldCell& textCell, int index) override {
        const Row& row = m_rows[static_cast<std::size_t>(index)];
        auto& cell = dynamic_cast<PlaylistEntryCell&>(textCell);
        cell.setTrackNumber(row.number < 0 ? index + 1 : row.number);
        cell.setInfo1(QString::fromUtf8(row.title));
        cell.setInfo2(QString::fromUtf8(row.second));
        cell.setLengthInfo(QString::fromUtf8(row.length));
        cell.setActive(row.active);
        cell.setPlayIcon(Image::named(QStringLiteral("playlist_play_icon")));
        cell.setBackgroundColor(row.selected ? QColor::fromRgbF(0.161F, 0.212F, 0.267F)
                                             : QColor::fromRgbF(0.133F, 0.133F, 0.133F));
    }

private:
    std::vector<Row> m_rows;
};

void addTable(QWidget* parent, const QRect& place, std::vector<Row> rows) {
    auto* const table = add<cocoa::TableView>(parent);
    auto* const source = add<Rows>(parent, std::move(rows));
    table->setGeometry(place);
    table->setFrameShape(QFrame::NoFrame);
    table->setStyleSheet(QStringLiteral("cocoa--TableView { background: #222222; }"));
    table->setDataCell(std::make_unique<PlaylistEntryCell>());
    table->setDataSource(source);
    table->setDelegate(source);
    table->reloadData();
}

void addSelector(QWidget* parent, const QRect& place, const QString& name) {
    auto* const box = add<cocoa::ComboBox>(parent);
    box->setGeometry(place);
    box->setCell(std::make_unique<InternalPlaylistComboBoxCell>());
    box->setStringValue(name);
}

void addTexts(QWidget* window) {
    const QString blue = QStringLiteral("color: #4a90e2; font-size: %1px;");
    text(window, {2, 50, 68, 22}, QStringLiteral("01:24"), blue.arg(14));
    text(window, {312, 43, 64, 20}, QStringLiteral("03:07"), blue.arg(12));
    text(window, {76, 42, 228, 20}, QStringLiteral("Café Été"),
         QStringLiteral("color: #f8e71c; font: bold 13px Roboto;"));
    text(window, {76, 62, 228, 18}, QStringLiteral("Lumière"),
         QStringLiteral("color: #b9c6d6; font-size: 11px;"));
    auto* const spectrum = add<FenSpectrumAnalyzerView>(window);
    spectrum->setGeometry(322, 65, 45, 25);
    spectrum->setSpectrumValues(FenSpectrumAnalyzerView::Values{22, 18, 25, 14, 11, 8, 12, 5});
}

} // namespace

std::unique_ptr<QWidget> makeMainWindow(bool playing) {
    auto window = std::make_unique<QWidget>();
    QWidget* const in = window.get();
    in->setFixedSize(380, 600);
    auto* const ground = add<ImageBasedView>(in);
    ground->setGeometry(0, 0, 380, 600);
    ground->setViewImage(Image::named(QStringLiteral("window_background")));

    addPicture(in, QStringLiteral("title_menu"), {10, 5});
    addPicture(in, QStringLiteral("title_minimise"), {325, 5});
    addPicture(in, QStringLiteral("title_close"), {350, 5});
    text(in, {100, 5, 180, 20}, QStringLiteral("Playlist"),
         QStringLiteral("color: #9aa5b4; font-size: 11px; letter-spacing: 0.6px;"));

    addPicture(in,
               playing ? QStringLiteral("controls_background_with_separator")
                       : QStringLiteral("controls_background"),
               {0, 30});
    if (playing) {
        addTexts(in);
    } else {
        addPicture(in, QStringLiteral("btn_img_play"), {170, 112});
        text(in, {76, 62, 228, 18}, QStringLiteral("0.1.0"),
             QStringLiteral("color: #b9c6d6; font-size: 11px;"));
    }
    addPicture(in, QStringLiteral("btn_img_previous"), {134, 120});
    addPicture(in, QStringLiteral("btn_img_next"), {222, 120});
    slider(in, {18, 89, 344, 22}, Bar::position, playing ? 0.453 : 0.0);
    slider(in, {18, 121, 92, 22}, Bar::level, 0.5);
    slider(in, {270, 121, 92, 22}, Bar::balance, 0.5);
    const QString caption = QStringLiteral("color: #7d8896; font-size: 9px;");
    text(in, {18, 141, 92, 14}, QStringLiteral("VOLUME"), caption, Qt::AlignLeft | Qt::AlignVCenter);
    text(in, {270, 141, 92, 14}, QStringLiteral("BALANCE"), caption, Qt::AlignRight | Qt::AlignVCenter);

    addTable(in, {0, 166, 380, 382},
             {{"Weather Systems", "Nord Quartet - Northern Rooms", "04:12"},
              {"Café Été", "Lumière - Saisons", "03:07", playing},
              {"Ночной поезд", "Оркестр «Север» - Городские линии", "05:46", false, true},
              {"Long Way Down", "The Harbour Lights - Tides", "60:00"},
              {"stream", "", "00:00"},
              {"Interlude", "Nord Quartet - Northern Rooms", "01:58"}});

    addSelector(in, {16, 557, 348, 25}, QStringLiteral("Road trip"));
    for (int page = 0; page < 3; ++page)
        addPicture(in, page == 0 ? QStringLiteral("page_dot_current") : QStringLiteral("page_dot"),
                   {173 + 12 * page, 586});
    return window;
}

std::unique_ptr<QWidget> makeSliders() {
    auto panel = std::make_unique<QWidget>();
    QWidget* const in = panel.get();
    in->setFixedSize(380, 250);
    const double values[] = {0.0, 0.5, 1.0};
    for (int column = 0; column < 3; ++column) {
        const double value = values[column];
        int y = 8;
        const auto next = [&] { return QRect(10 + 124 * column, std::exchange(y, y + 25), 112, 22); };
        slider(in, next(), Bar::position, value);
        slider(in, next(), Bar::level, value);
        slider(in, next(), Bar::balance, value);
        slider(in, next(), Bar::position, value)->setEnabled(false);

        auto* const plain = add<RixSlider>(in);
        plain->setGeometry(next());
        plain->setDoubleValue(value);

        auto* const knobOnly = add<RixSlider>(in);
        knobOnly->setGeometry(next());
        knobOnly->cell()->setControlSize(cocoa::ControlSize::mini);
        knobOnly->setKnobImage(Image::named(QStringLiteral("slider_knob.png")));
        knobOnly->setDoubleValue(value);

        auto* const oneFill = add<RixSlider>(in);
        oneFill->setGeometry(next());
        oneFill->setKnobImage(Image::named(QStringLiteral("slider_knob_yellow.png")));
        oneFill->setBarFillImage(Image::named(QStringLiteral("slider_position_fill")));
        oneFill->cell()->setControlSize(cocoa::ControlSize::mini);
        oneFill->setDoubleValue(value);

        auto* const noKnobImage = add<RixSlider>(in);
        noKnobImage->setGeometry(next());
        noKnobImage->setBarFillImage(Image::named(QStringLiteral("slider_position_fill")));
        noKnobImage->setDoubleValue(value);
    }
    RixSlider* const focused = slider(in, {10, 214, 236, 22}, Bar::position, 0.3);
    focused->setObjectName(QStringLiteral("focused")); // takes the focus when the window stands
    slider(in, {258, 214, 112, 22}, Bar::position, 0.5)->setAttribute(Qt::WA_UnderMouse); // the hover look
    return panel;
}

std::unique_ptr<QWidget> makeRows() {
    auto panel = std::make_unique<QWidget>();
    panel->setFixedSize(380, 550);
    addTable(panel.get(), panel->rect(),
             {{"Inactive", "artist - album", "04:12"},
              {"Active", "artist - album", "03:07", true},
              {"Selected", "artist - album", "05:46", false, true},
              {"Active and selected", "artist - album", "75:00", true, true},
              {"A very long title that goes on and on until it reaches the end",
               "and a second line that is no shorter, for it names every one of the players", "100:00", true},
              {"No second line", "", "00:00", false, false, 42},
              {"Number 0 and no length", "artist", "", false, false, 0},
              {"夜行列車 — 星めぐりの歌", "宮沢賢治 - 銀河鉄道の夜", "03:33", false, false, 100},
              {"قطار الليل", "فرقة الشمال - خطوط المدينة", "02:22", false, false, 1000},
              {"🎵 Emoji 🎷", "🇫🇮 - 🌲", "01:11"}});
    return panel;
}

std::unique_ptr<QWidget> makeSmallViews() {
    auto panel = std::make_unique<QWidget>();
    QWidget* const in = panel.get();
    in->setFixedSize(380, 330);
    const std::vector<std::optional<FenSpectrumAnalyzerView::Values>> spectra = {
        std::nullopt, FenSpectrumAnalyzerView::Values{10, 0, 25}, FenSpectrumAnalyzerView::Values(8, 1),
        FenSpectrumAnalyzerView::Values{22, 18, 25, 14, 11, 8, 12, 5},
        FenSpectrumAnalyzerView::Values(8, 25)};
    for (std::size_t i = 0; i < spectra.size(); ++i) {
        auto* const view = add<FenSpectrumAnalyzerView>(in);
        view->setGeometry(10 + 72 * static_cast<int>(i), 8, 45, 25);
        view->setSpectrumValues(spectra[i]);
    }
    addSelector(in, {10, 44, 240, 25}, QStringLiteral("Road trip"));
    int x = 10;
    for (const char* name :
         {"btn_img_previous", "btn_img_previous_hover", "btn_img_play", "btn_img_next", "btn_img_next_hover",
          "title_menu", "title_menu_hover", "title_minimise", "title_minimise_hover", "title_close",
          "title_close_hover", "page_dot", "page_dot_hover", "page_dot_current"}) {
        const QString image = QString::fromLatin1(name);
        const QSize size = Image::named(image).size().toSize();
        addPicture(in, image, {x, 100 - size.height() / 2});
        x += size.width() + 6;
    }
    addPicture(in, QStringLiteral("default_cover_art.png"), {10, 130}, {190, 190});
    x = 212;
    for (const int size : {16, 24, 32, 64}) {
        addPicture(in, QStringLiteral("tulplayer"), {x, 130}, {size, size});
        x += size + 8;
    }
    addPicture(in, QStringLiteral("tulplayer"), {212, 204}, {116, 116});
    return panel;
}

} // namespace gallery
