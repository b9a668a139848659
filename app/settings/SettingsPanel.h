#pragma once

#include <QComboBox>
#include <QLineEdit>
#include <QTimer>
#include <QWidget>

#include <functional>

class QHBoxLayout;
class QLabel;
class QVBoxLayout;
class RixSlider;

namespace app {

class Settings;
class Switch;

/// A list to choose from, in the skin's look.
class Choice : public QComboBox {
    Q_OBJECT
public:
    using QComboBox::QComboBox;

protected:
    void paintEvent(QPaintEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
};

/// All settings, a row each. What is changed holds at once.
///
/// Threads: main thread only; `settings` must outlive it.
class SettingsPanel : public QWidget {
    Q_OBJECT
public:
    /// Sharing is the player's, and no setting: it ends with the program.
    struct Sharing {
        std::function<bool()> isOn;
        std::function<void()> toggle;
        /// Where others can listen, and how many do; or why they cannot.
        std::function<QString()> text;
    };

    SettingsPanel(Settings& settings, Sharing sharing, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    Switch* addSwitch(const QString& title, void (Settings::*set)(bool));
    QHBoxLayout* addRow(const QString& title, QWidget& control);
    void addSharing();
    void addTextSize();
    void showSettings();
    void showSharing();
    void layOut();

    Settings& m_settings;
    Sharing m_sharing;
    QTimer m_sharingTimer;
    // All are children of this.
    QVBoxLayout* m_rows;
    Switch* m_restoresSession;
    Switch* m_showsNotifications;
    Choice* m_loudness;
    Switch* m_shares = nullptr;
    QLineEdit* m_sharingName = nullptr;
    QLineEdit* m_sharingPort = nullptr;
    RixSlider* m_textSize = nullptr;
    QLabel* m_textSizeText = nullptr;
    Switch* m_pausesWhenSinkIsRemoved;
    Switch* m_keepsAwake;
};

} // namespace app
