// What the user can set, in the window that obeys it.

#include "app/settings/Settings.h"
#include "app/FenAppDelegate.h"
#include "app/FenPlaylistController.h"
#include "app/StatusLine.h"
#include "app/TextField.h"
#include "app/settings/SettingsPanel.h"
#include "controls/CustomWindow.h"
#include "controls/RixSlider.h"
#include "core/player/TulLoudness.h"
#include "core/player/TulPlayer.h"
#include "platform/cocoa/TableView.h"
#include "tests/support/Media.h"
#include "tests/support/TestApplication.h"

#include <QAccessible>
#include <QPointer>
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

TEST_F(SettingsTest, ThePanelIsWorkedByKeysAndWhatItSetsHoldsAtOnce) {
    app::Settings& settings = *delegate.settings;
    const QPointer<QWidget> before = window().focusWidget();
    const auto press = [&](Qt::Key key, int times = 1, Qt::KeyboardModifiers modifiers = {}) {
        for (int i = 0; i < times; ++i)
            QTest::keyClick(window().focusWidget(), key, modifiers);
    };
    press(Qt::Key_Comma, 1, Qt::ControlModifier);
    auto* const panel = window().findChild<app::SettingsPanel*>();
    ASSERT_TRUE(panel && panel->isVisible());
    const auto name = [&] {
        return QAccessible::queryAccessibleInterface(window().focusWidget())->text(QAccessible::Name);
    };
    const struct {
        const char* title;
        bool (app::Settings::*isOn)() const;
        int tabs; ///< From here to the next switch.
    } switches[] = {{"Restore the session at start", &app::Settings::restoresSession, 1},
                    {"Notifications", &app::Settings::showsNotifications, 6},
                    {"Pause when headphones are removed", &app::Settings::pausesWhenSinkIsRemoved, 1},
                    {"Keep the computer awake while playing", &app::Settings::keepsAwake, 1}};
    for (const auto& [title, isOn, tabs] : switches) {
        SCOPED_TRACE(title);
        EXPECT_EQ(name(), title);
        EXPECT_EQ(QAccessible::queryAccessibleInterface(window().focusWidget())->role(),
                  QAccessible::CheckBox);
        for (int i = 0; i < 2; ++i) {
            const bool was = (settings.*isOn)();
            press(Qt::Key_Space);
            EXPECT_EQ((settings.*isOn)(), !was);
        }
        press(Qt::Key_Tab, tabs);
    }
    EXPECT_EQ(name(), "Close");
    press(Qt::Key_Tab); // and around
    EXPECT_EQ(name(), "Restore the session at start");
    press(Qt::Key_Tab);
    press(Qt::Key_Space);
    EXPECT_FALSE(delegate.playerController->showsNotifications);
    press(Qt::Key_Space);
    EXPECT_TRUE(delegate.playerController->showsNotifications);

    press(Qt::Key_Tab);
    press(Qt::Key_Down, 2);
    EXPECT_EQ(settings.loudness(), TulLoudness::album);
    press(Qt::Key_Up, 2);
    EXPECT_EQ(settings.loudness(), TulLoudness::off);
    press(Qt::Key_Tab, 2);
    EXPECT_EQ(name(), "Sharing name");
    for (const auto& [typed, name] :
         {std::pair{"Kitchen", "Kitchen"}, {"  ", "Kitchen"}, {"Tulplayer", "Tulplayer"}}) {
        press(Qt::Key_A, 1, Qt::ControlModifier);
        QTest::keyClicks(window().focusWidget(), typed);
        press(Qt::Key_Return);
        EXPECT_EQ(settings.sharingName(), name);
    }
    press(Qt::Key_Tab);
    for (const auto& [typed, port] :
         {std::pair{"8000", 8000}, {"80", 8000}, {"70000", 8000}, {"9090", 9090}}) {
        press(Qt::Key_A, 1, Qt::ControlModifier);
        QTest::keyClicks(window().focusWidget(), typed);
        press(Qt::Key_Return);
        EXPECT_EQ(settings.sharingPort(), port);
    }
    press(Qt::Key_Tab);
    press(Qt::Key_Right, 5);
    EXPECT_EQ(settings.textSize(), 125);
    EXPECT_EQ(window().width(), 475);
    press(Qt::Key_Escape);
    EXPECT_FALSE(panel->isVisible());
    EXPECT_EQ(window().focusWidget(), before);
}

TEST_F(SettingsTest, OneThatCannotBeStoredHoldsAndSaysSo) {
    const auto file = support::scratch() / "config/tulplayer/settings.json";
    std::filesystem::create_directories(file.parent_path());
    support::writeFile(file, "{ edited by hand");
    delegate.settings->setShowsNotifications(false);
    EXPECT_FALSE(delegate.playerController->showsNotifications);
    const auto& line = *delegate.playlistController->statusLine;
    EXPECT_TRUE(
        runUntil([&] { return line.isVisible() && line.text().startsWith("Settings cannot be stored"); }));
    std::filesystem::remove(file);
    delegate.settings->setShowsNotifications(true);
}

} // namespace
