#include "tests/support/Desk.h"

#include "tests/support/Media.h"
#include "tests/support/TestApplication.h"

#include <QDir>
#include <QPixmap>
#include <QRasterWindow>
#include <QRegularExpression>
#include <QScreen>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <numbers>
#include <stdexcept>
#include <string>

namespace support {
namespace {

constexpr int rate = 44100;
constexpr auto patience = std::chrono::seconds(40);

QString home() {
    return qEnvironmentVariable("HOME");
}

/// Ends with this process, even if that is killed.
void startChild(QProcess& child, const QString& program, const QStringList& arguments) {
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel); // what a sanitizer says
    child.start("setpriv", QStringList{"--pdeathsig", "KILL", program} + arguments);
    if (!child.waitForStarted()) throw std::runtime_error("cannot start " + program.toStdString());
}

QString xdotool(const QStringList& arguments) {
    QProcess tool;
    tool.start(QStringLiteral("xdotool"), arguments);
    tool.waitForFinished();
    return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
}

/// The amplitude of one tone, by Goertzel's algorithm.
double amplitude(const std::vector<double>& samples, double hertz) {
    const double turn = 2 * std::numbers::pi * hertz / rate;
    double last = 0;
    double before = 0;
    for (const double sample : samples) {
        const double next = sample + 2 * std::cos(turn) * last - before;
        before = last;
        last = next;
    }
    const double power = last * last + before * before - 2 * std::cos(turn) * last * before;
    return 2 * std::sqrt(std::max(power, 0.0)) / static_cast<double>(samples.size());
}

double rootMeanSquare(const std::vector<double>& samples) {
    double sum = 0;
    for (const double sample : samples)
        sum += sample * sample;
    return std::sqrt(sum / static_cast<double>(samples.size()));
}

/// The left channel.
std::vector<double> monoFrames(const std::vector<std::int16_t>& stereo, std::size_t from, std::size_t count) {
    std::vector<double> frames(count);
    for (std::size_t i = 0; i < count; ++i)
        frames[i] = stereo[(from + i) * 2] / 32768.0;
    return frames;
}

} // namespace

Desk::Desk() {
    for (const char* name :
         {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME", "XDG_CURRENT_DESKTOP",
          "WAYLAND_DISPLAY", "QT_SCALE_FACTOR", "QT_QPA_PLATFORMTHEME", "TUL_AUDIO"})
        unsetenv(name);
    QDir().mkpath(home() + "/Documents");
    const QString address = "unix:path=" + home() + "/bus";
    startChild(m_bus, "dbus-daemon",
               {"--session", "--nofork", "--nopidfile", "--print-address", "--address=" + address});
    if (!m_bus.waitForReadyRead()) throw std::runtime_error("no session bus");
    qputenv("DBUS_SESSION_BUS_ADDRESS", address.toUtf8());
    static int count = 1;
    static char name[] = "desk";
    static char* arguments[] = {name, nullptr};
    m_application = std::make_unique<QGuiApplication>(count, arguments);
}

Desk::~Desk() {
    m_otherWindow.reset();
    for (QProcess* child : {&m_program, &m_bus}) {
        child->kill();
        child->waitForFinished();
    }
}

void Desk::start(const QString& program, const QStringList& arguments) {
    startChild(m_program, program, arguments);
    const QStringList search{
        "search", "--onlyvisible", "--all", "--pid", QString::number(m_program.processId()),
        "--name", "^Tulplayer$"};
    const auto isActive = [&] {
        m_window = xdotool(search).toStdString();
        return !m_window.empty() && xdotool({"getactivewindow"}).toStdString() == m_window;
    };
    if (!until(isActive)) throw std::runtime_error("no window");
    const auto place =
        QRegularExpression("X=(-?\\d+)\nY=(-?\\d+)")
            .match(xdotool({"getwindowgeometry", "--shell", QString::fromStdString(m_window)}));
    m_origin = {place.captured(1).toInt(), place.captured(2).toInt()};
}

bool Desk::ended() {
    return endsWithin(patience);
}

bool Desk::endsWithin(std::chrono::milliseconds limit) {
    return runUntil([&] { return m_program.state() == QProcess::NotRunning; }, limit) &&
           m_program.exitStatus() == QProcess::NormalExit && m_program.exitCode() == 0;
}

void Desk::signal(int number) const {
    kill(static_cast<pid_t>(m_program.processId()), number);
}

void Desk::mouse(const std::vector<std::string>& actions, QPoint place) {
    const QPoint there = m_origin + place;
    std::vector<std::string> command{"xdotool", "mousemove", std::to_string(there.x()),
                                     std::to_string(there.y())};
    command.insert(command.end(), actions.begin(), actions.end());
    run(command);
}

void Desk::click(QPoint place) {
    mouse({"click", "1"}, place);
}

void Desk::doubleClick(QPoint place) {
    mouse({"click", "--repeat", "2", "--delay", "40", "1"}, place);
}

void Desk::rightClick(QPoint place) {
    mouse({"click", "3"}, place);
}

void Desk::press(QPoint place) {
    mouse({"mousedown", "1"}, place);
}

void Desk::moveTo(QPoint place) {
    mouse({}, place);
}

void Desk::release() {
    run({"xdotool", "mouseup", "1"});
}

void Desk::key(const std::string& keys) {
    run({"xdotool", "key", keys});
}

void Desk::type(const std::string& text) {
    run({"xdotool", "type", "--delay", "4", text});
}

void Desk::turnAway() {
    m_otherWindow = std::make_unique<QRasterWindow>();
    m_otherWindow->setTitle("Other");
    m_otherWindow->setGeometry(0, 0, 60, 60);
    m_otherWindow->show();
    if (!until([this] { return activeWindow() == QLatin1String("Other"); }))
        throw std::runtime_error("the window keeps the keyboard");
}

void Desk::turnBack() {
    m_otherWindow.reset();
    run({"xdotool", "windowactivate", m_window});
    if (!until([this] { return activeWindow() == QLatin1String("Tulplayer"); }))
        throw std::runtime_error("the window does not come back");
}

QString Desk::activeWindow() const {
    return xdotool({"getactivewindow", "getwindowname"});
}

QImage Desk::seen(const QRect& area) const {
    const QRect there = area.translated(m_origin);
    return QGuiApplication::primaryScreen()
        ->grabWindow(0, there.x(), there.y(), there.width(), there.height())
        .toImage()
        .convertToFormat(QImage::Format_RGB32);
}

bool Desk::plays(double hertz) const {
    const auto stereo = m_sound.recorded();
    constexpr std::size_t tenth = rate / 10;
    if (stereo.size() / 2 < tenth) return false;
    const auto latest = monoFrames(stereo, stereo.size() / 2 - tenth, tenth);
    const double level = rootMeanSquare(latest);
    return level > 0.02 && amplitude(latest, hertz) / std::numbers::sqrt2 > 0.9 * level;
}

std::vector<double> Desk::loudness(std::size_t from) const {
    constexpr std::size_t step = rate / 50;
    const auto stereo = m_sound.recorded();
    std::vector<double> values;
    for (; from + step <= stereo.size() / 2; from += step)
        values.push_back(rootMeanSquare(monoFrames(stereo, from, step)));
    return values;
}

bool Desk::until(const std::function<bool()>& condition) {
    return runUntil(condition, patience);
}

} // namespace support
