// What the user can set, in the window that obeys it.

#include "app/FenAppDelegate.h"
#include "app/FenPlaylistController.h"
#include "app/TextField.h"
#include "app/settings/Settings.h"
#include "controls/CustomWindow.h"
#include "controls/RixSlider.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/TableView.h"
#include "tests/support/Media.h"
#include "tests/support/TestApplication.h"

#include <QScreen>
#include <QTest>

#include <gtest/gtest.h>

namespace {

using support::runUntil;

class SettingsTest : public testing::Test {
protected:
    SettingsTest() {
        setenv("TUL_AUDIO", "null", 1);
        setenv("HOME", support::scratch().c_str(), 1);
        setenv("XDG_CONFIG_HOME", (support::scratch() / "config").c_str(), 1);
        unsetenv("XDG_STATE_HOME");
        support::offscreenApplication();
        delegate.applicationDidFinishLaunching();
        EXPECT_TRUE(runUntil([&] { return !window().actions().empty(); }));
    }
    ~SettingsTest() override { delegate.settings->setTextSize(100); }

    QWidget& window() { return *delegate.window; }

    FenAppDelegate delegate;
};

TEST_F(SettingsTest, TheWindowGrowsWithItsTextAndIsWorkedAsBefore) {
    auto& table = *delegate.playlistController->playlistView;
    for (const int seconds : {3, 4, 5})
        delegate.player->playlist->addEntry(
            support::writeWav(support::scratch() / (std::to_string(seconds) + ".wav"),
                              support::sine(440, static_cast<std::size_t>(seconds) * 44100))
                .string());
    delegate.playlistController->reloadPlaylistData();
    auto& volume = *delegate.playerController->volumeSlider;
    const int free = window().screen()->availableGeometry().height();
    for (const int percent : {100, 125, 150, 200, 125}) {
        SCOPED_TRACE(percent);
        delegate.settings->setTextSize(percent);
        EXPECT_EQ(window().size(), QSize(380 * percent / 100, std::min(600 * percent / 100, free)));
        const auto fields = window().findChildren<app::TextField*>();
        for (const app::TextField* field : fields) {
            if (!field->isVisible()) continue;
            const int descent = field->fontMetrics().boundingRect(QStringLiteral("VOLUMEgpÉ")).height();
            EXPECT_LE(descent, field->height()) << field->objectName().toStdString();
            EXPECT_TRUE(field->parentWidget()->rect().contains(field->geometry()));
        }
        const double row = 55 * percent / 100.0;
        EXPECT_NEAR(table.rectOfRow(2).top(), 2 * row, 2);
        delegate.player->playlist->selectEntry(0);
        const QPoint onSecond(40, qRound(1.5 * row));
        QTest::mouseClick(table.viewport(), Qt::LeftButton, {}, onSecond);
        QTest::mouseDClick(table.viewport(), Qt::LeftButton, {}, onSecond);
        EXPECT_EQ(delegate.player->playlist->currentIndex, 1);
        for (const double fraction : {0.25, 0.75}) {
            const double knob = 14 * percent / 100.0;
            const double x = knob / 2 + fraction * (volume.width() - knob);
            QTest::mouseClick(&volume, Qt::LeftButton, {}, {qRound(x), volume.height() / 2});
            EXPECT_NEAR(delegate.player->volume, fraction, 0.02);
        }
    }
}

} // namespace
