// gallery: every control in every state, in one window.
//   --screenshot PATH   saves the window's picture at the screen's scale (QT_SCALE_FACTOR) and ends
//   --spectrum SECONDS  redraws a spectrum 20 times a second for so long, tells the CPU time that it took,
//   and ends
#include "controls/CustomWindow.h"
#include "controls/FenSpectrumAnalyzerView.h"
#include "platform/cocoa/Image.h"
#include "tools/gallery/GalleryPanels.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFile>
#include <QLabel>
#include <QTimer>

#include <ctime>
#include <iostream>

namespace {

double cpuSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

/// Values that change with every frame, as music's do.
FenSpectrumAnalyzerView::Values spectrumOfFrame(int frame) {
    FenSpectrumAnalyzerView::Values values;
    for (int bar = 0; bar < 8; ++bar)
        values.push_back(2 + (frame * (bar + 3) * 7) % 24);
    return values;
}

int measureSpectrum(double seconds) {
    const auto owned = CustomWindow::initWithContentRect({100, 100, 380, 600});
    CustomWindow& window = *owned;
    const std::unique_ptr<QWidget> content = gallery::makeMainWindow(true);
    content->setParent(&window);
    auto* const spectrum = content->findChild<FenSpectrumAnalyzerView*>();
    window.show();

    const int frames = static_cast<int>(seconds * 20.0);
    int frame = 0;
    double before = 0.0;
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, [&] {
        if (frame == 0) before = cpuSeconds(); // the window stands: its start is not the spectrum's
        spectrum->setSpectrumValues(spectrumOfFrame(frame));
        spectrum->update();
        if (frame++ == frames) QCoreApplication::quit();
    });
    timer.start(50);
    const int result = QApplication::exec();
    std::cout << frames << " redraws in " << seconds << " s: " << cpuSeconds() - before << " s of CPU\n";
    return result;
}

void place(QWidget& window, std::unique_ptr<QWidget> panel, const QPoint& where) {
    panel->setParent(&window);
    panel->move(where);
    panel.release()->show(); // the window owns it now
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QCommandLineParser options;
    options.addOptions(
        {{QStringLiteral("screenshot"), QStringLiteral("Save a picture and end."), QStringLiteral("path")},
         {QStringLiteral("spectrum"), QStringLiteral("Measure redraws and end."),
          QStringLiteral("seconds")}});
    options.process(application);

    QFont font(QStringLiteral("Roboto"));
    font.setPixelSize(11);
    QApplication::setFont(font);
    if (QFile style(QStringLiteral(":/style/skin.qss")); style.open(QIODevice::ReadOnly))
        application.setStyleSheet(QString::fromUtf8(style.readAll()));
    if (options.isSet(QStringLiteral("spectrum")))
        return measureSpectrum(options.value(QStringLiteral("spectrum")).toDouble());

    CustomWindow window;
    window.setFixedSize(1580, 640);
    QLabel ground(&window);
    ground.setFixedSize(window.size());
    ground.setStyleSheet(QStringLiteral("background: #3a4048;"));
    place(window, gallery::makeMainWindow(true), {15, 20});
    place(window, gallery::makeMainWindow(false), {405, 20});
    place(window, gallery::makeRows(), {795, 20});
    place(window, gallery::makeSliders(), {1190, 20});
    place(window, gallery::makeSmallViews(), {1190, 280});
    window.show();
    window.findChild<QWidget*>(QStringLiteral("focused"))->setFocus();

    QTimer settled; // the focus and the fonts have arrived by then
    settled.setSingleShot(true);
    QObject::connect(&settled, &QTimer::timeout, [&] {
        const bool saved = window.grab().save(options.value(QStringLiteral("screenshot")));
        QCoreApplication::exit(saved ? 0 : 1);
    });
    if (options.isSet(QStringLiteral("screenshot"))) settled.start(300);
    return QApplication::exec();
}
