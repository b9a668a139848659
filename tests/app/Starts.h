#pragma once

#include "tests/support/Child.h"
#include "tests/support/Desk.h"
#include "tests/support/Media.h"
#include "tests/support/WaitFor.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

/// Starts of the player (TUL_PLAYER) from a command line, beside the one on the desk.
namespace starts {

inline std::string track(const std::string& name, double hertz, int seconds = 60) {
    return support::encode(name, support::sine(hertz, static_cast<std::size_t>(seconds) * 44100)).string();
}

struct Answer {
    int status = -1;
    std::string out;
    std::string err;
};

/// A start of the program that is under way; what it prints goes to files.
class Started {
public:
    explicit Started(const std::vector<std::string>& arguments, const std::filesystem::path& folder = "/") {
        static int count = 0;
        m_files = (support::scratch() / ("start" + std::to_string(++count))).string();
        std::vector<std::string> command{
            "sh",
            "-c",
            R"(cd "$1"; f=$2; shift 2; setpriv --pdeathsig KILL "$@" >"$f.out" 2>"$f.err" & echo $! >"$f.pid"; wait $!; echo $? >"$f.rc"; mv "$f.rc" "$f.end")",
            "sh",
            folder.string(),
            m_files,
            TUL_PLAYER};
        command.insert(command.end(), arguments.begin(), arguments.end());
        m_child = support::Child(command);
    }
    /// To the player, not to the shell that waits for it.
    void signal(int number) const {
        support::run(
            {"sh", "-c", "kill -\"$1\" \"$(cat \"$2\")\"", "sh", std::to_string(number), m_files + ".pid"});
    }
    bool ended() const { return std::filesystem::exists(m_files + ".end"); }
    Answer answer() const {
        EXPECT_TRUE(support::waitFor([&] { return ended(); }, std::chrono::seconds(40)));
        return {std::stoi("0" + support::readFile(m_files + ".end")), support::readFile(m_files + ".out"),
                support::readFile(m_files + ".err")};
    }

private:
    std::string m_files;
    support::Child m_child;
};

inline Answer start(const std::vector<std::string>& arguments, const std::filesystem::path& folder = "/") {
    return Started(arguments, folder).answer();
}

/// What the running player says of itself.
inline QJsonObject status() {
    return QJsonDocument::fromJson(QByteArray::fromStdString(start({"--status=json"}).out)).object();
}

inline bool reaches(const char* key, const QJsonValue& value) {
    return support::Desk::until([&] { return status().value(QLatin1String(key)) == value; });
}

} // namespace starts
