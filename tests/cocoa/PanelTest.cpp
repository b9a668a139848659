#include "platform/cocoa/OpenPanel.h"
#include "platform/cocoa/SavePanel.h"
#include "tests/support/Media.h"
#include "tests/support/TestApplication.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

class PanelTest : public testing::Test {
protected:
    PanelTest() {
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        for (const char* name : {"a.mp3", "b.FLAC", "Songs v1.2.tuq"})
            support::writeFile(support::scratch() / name, "x");
        window.show();
    }
    QFileDialog* dialog() {
        QFileDialog* found = nullptr;
        EXPECT_TRUE(support::runUntil([&] {
            found = window.findChild<QFileDialog*>();
            return found != nullptr && found->isVisible();
        }));
        return found;
    }
    void enter(const QString& names) {
        QFileDialog* const shown = dialog();
        shown->findChild<QLineEdit*>("fileNameEdit")->setText(names);
        QTest::keyClick(shown, Qt::Key_Return);
        EXPECT_TRUE(support::runUntil([&] { return window.findChild<QFileDialog*>() == nullptr; }));
    }
    QString in(const char* name) const { return folder + QLatin1Char('/') + QString::fromUtf8(name); }

    QApplication& application = support::offscreenApplication();
    const QString folder = QString::fromStdString(support::scratch().string());
    QWidget window;
};

TEST_F(PanelTest, OpensSeveralFilesInTheirOrderAndRemembersTheFolder) {
    cocoa::OpenPanel panel;
    panel.setAllowedFileTypes("Audio files", {"mp3", "flac"});
    panel.setAllowsMultipleSelection(true);
    panel.setDirectory(folder);
    QStringList chosen;
    bool finished = false;
    panel.beginSheetModalForWindow(window, [&](const QStringList& paths) {
        EXPECT_TRUE(finished) << "a long reading would delete a dialog that is at work";
        chosen = paths;
    });
    QObject::connect(dialog(), &QDialog::finished, [&] { finished = true; });
    enter("\"b.FLAC\" \"a.mp3\"");
    EXPECT_EQ(chosen, (QStringList{in("b.FLAC"), in("a.mp3")}));

    cocoa::OpenPanel second;
    second.setDirectory(QDir::rootPath());
    chosen.clear();
    second.beginSheetModalForWindow(window, [&](const QStringList& paths) { chosen = paths; });
    EXPECT_EQ(dialog()->directory().absolutePath(), folder);
    QTest::keyClick(dialog(), Qt::Key_Escape);
    EXPECT_TRUE(support::runUntil([&] { return window.findChild<QFileDialog*>() == nullptr; }));
    EXPECT_TRUE(chosen.isEmpty());
}

TEST_F(PanelTest, ASavedNameGetsItsExtensionAndReplacesAfterConfirmation) {
    QString saved;
    const auto save = [&](const char* name) {
        saved.clear();
        cocoa::SavePanel panel;
        panel.setAllowedFileTypes("Playlist", {"tuq"});
        panel.setNameFieldStringValue("Proposed");
        panel.setDirectory(folder);
        panel.beginSheetModalForWindow(window, [&](const QString& path) { saved = path; });
        EXPECT_EQ(dialog()->findChild<QLineEdit*>("fileNameEdit")->text(), "Proposed");
        enter(QString::fromUtf8(name));
    };
    // What follows the last dot need not be a type.
    for (const auto& [name, file] :
         {std::pair{"Party", "Party.tuq"}, {"Party.TUQ", "Party.TUQ"}, {"Vol. 2", "Vol. 2.tuq"}}) {
        save(name);
        EXPECT_EQ(saved, in(file));
    }

    bool asked = false;
    auto reply = QMessageBox::No;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        auto* const question = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (question == nullptr) return;
        asked = true;
        question->button(reply)->click();
    });
    poll.start(5);
    for (const auto answer : {QMessageBox::No, QMessageBox::Yes}) {
        asked = false;
        reply = answer;
        save("Songs v1.2"); // becomes the name of a file that exists
        EXPECT_TRUE(asked);
        EXPECT_EQ(saved, answer == QMessageBox::Yes ? in("Songs v1.2.tuq") : QString());
    }

    cocoa::SavePanel panel;
    panel.setAllowedFileTypes("Playlist", {"tuq"});
    panel.setFile("/usr/Songs v1.3.m3u");
    panel.beginSheetModalForWindow(window, [](const QString&) {});
    EXPECT_EQ(dialog()->directory().absolutePath(), "/usr") << "not the last folder";
    EXPECT_EQ(dialog()->findChild<QLineEdit*>("fileNameEdit")->text(), "Songs v1.3.tuq");
    QTest::keyClick(dialog(), Qt::Key_Escape);
}

} // namespace
