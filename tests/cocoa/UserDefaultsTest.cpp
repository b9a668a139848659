#include "platform/cocoa/UserDefaults.h"
#include "tests/support/Media.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

const QString key = "InternalPlaylistStorage";

QString storedIn(const std::string& content) {
    const auto path = support::scratch() / "settings.json";
    support::writeFile(path, content);
    cocoa::UserDefaults defaults(QString::fromStdString(path.string()));
    defaults.registerDefaults({{key, "/registered"}});
    return defaults.stringForKey(key);
}

TEST(UserDefaults, OnlyAStoredStringOverridesTheDefault) {
    const struct {
        const char* content;
        const char* expected;
    } cases[] = {{R"({"InternalPlaylistStorage": "/mine, é/p.json"})", "/mine, é/p.json"},
                 {R"({"InternalPlaylistStorage": ""})", ""},
                 {R"({"InternalPlaylistStorage": 5})", "/registered"},
                 {R"({"InternalPlaylistStorage": ["/a"]})", "/registered"},
                 {R"({"InternalPlaylistStorage": null})", "/registered"},
                 {R"({"Other": "/mine"})", "/registered"},
                 {R"(["InternalPlaylistStorage"])", "/registered"},
                 {R"({"InternalPlaylistStorage": "/mine")", "/registered"},
                 {"", "/registered"}};
    for (const auto& each : cases)
        EXPECT_EQ(storedIn(each.content).toStdString(), each.expected) << each.content;
}

TEST(UserDefaults, SettingKeepsValuesOfOtherPrograms) {
    const auto path = support::scratch() / "made" / "settings.json";
    const auto name = QString::fromStdString(path.string());
    cocoa::UserDefaults first(name);
    cocoa::UserDefaults second(name);
    EXPECT_TRUE(first.setObject(150, "TextSize"));
    EXPECT_TRUE(second.setObject(true, "KeepsAwake"));
    const cocoa::UserDefaults third(name);
    EXPECT_EQ(third.integerForKey("TextSize"), 150);
    EXPECT_TRUE(third.boolForKey("KeepsAwake"));

    const std::string edited = R"({"TextSize": 150,})";
    support::writeFile(path, edited);
    EXPECT_FALSE(first.setObject(125, "TextSize"));
    EXPECT_EQ(first.integerForKey("TextSize"), 125);
    EXPECT_EQ(support::readFile(path), edited);
}

TEST(UserDefaults, AreFoundInTheUsersConfigurationFolder) {
    const auto folder = support::scratch() / "config";
    std::filesystem::create_directories(folder / "tulplayer");
    support::writeFile(folder / "tulplayer" / "settings.json",
                       R"({"InternalPlaylistStorage": "/from config"})");
    setenv("XDG_CONFIG_HOME", folder.c_str(), 1);
    EXPECT_EQ(cocoa::UserDefaults::standardUserDefaults().stringForKey(key), "/from config");
    EXPECT_TRUE(cocoa::UserDefaults::standardUserDefaults().stringForKey("unknown").isNull());
}

} // namespace
