#pragma once

#include <QPushButton>
#include <QTextBrowser>
#include <QWidget>

#include <string>
#include <utility>
#include <vector>

class Workers;
struct FileDetails;

namespace app {

/// What a file says of itself, over the page that asks: texts that can be selected and copied. It is read on
/// a worker.
///
/// Threads: main thread only.
class InformationPanel : public QWidget {
    Q_OBJECT
public:
    using Lines = std::vector<std::pair<QString, QString>>;

    InformationPanel(QWidget& page, const std::string& source);

    /// Covers `page`, and goes when it is closed. The keyboard returns to `page` then.
    static void show(QWidget& page, Workers& workers, const std::string& source);

    /// Names and texts, like "Format" and "FLAC, 44.1 kHz, stereo, 16 bit".
    static Lines linesOf(const FileDetails& details);

    /// What Copy copies: a line each.
    QString text() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showLines(Lines lines);
    QRectF panelRect() const;
    void layOut();
    void shut();

    QWidget& m_page;
    std::string m_source;
    Lines m_lines;
    QTextBrowser m_text;
    QPushButton m_copy;
    QPushButton m_close;
};

} // namespace app
