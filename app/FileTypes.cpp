#include "app/FileTypes.h"

#include "core/playlist/resolveEntrySource.h"

#include <QByteArray>

#include <algorithm>
#include <filesystem>
#include <string_view>

namespace app {
namespace {

bool hasType(const std::filesystem::path& path, const QStringList& types) {
    const std::string suffix = path.extension().string();
    return !suffix.empty() && types.contains(QString::fromStdString(suffix.substr(1)), Qt::CaseInsensitive);
}

} // namespace

const QStringList& audioTypes() {
    static const QStringList types{QStringLiteral("mpg"), QStringLiteral("mpeg"), QStringLiteral("mp1"),
                                   QStringLiteral("m1a"), QStringLiteral("mp2"),  QStringLiteral("m2a"),
                                   QStringLiteral("mpa"), QStringLiteral("mp3"),  QStringLiteral("m4a"),
                                   QStringLiteral("ogg"), QStringLiteral("aif"),  QStringLiteral("aiff"),
                                   QStringLiteral("wav"), QStringLiteral("flac"), QStringLiteral("alac"),
                                   QStringLiteral("ape"), QStringLiteral("opus"), QStringLiteral("wv")};
    return types;
}

const QStringList& playlistTypes() {
    static const QStringList types{QStringLiteral("tuq"), QStringLiteral("tuv"), QStringLiteral("tup"),
                                   QStringLiteral("m3u"), QStringLiteral("m3u8")};
    return types;
}

bool isPlaylist(const std::string& source) {
    return !isAddress(source) && hasType(source, playlistTypes());
}

bool isAudio(const std::string& path) {
    return hasType(path, audioTypes());
}

std::string sourceFromAddress(const std::string& address) {
    constexpr std::string_view scheme = "file://";
    if (!address.starts_with(scheme)) return address;
    const std::string path = address.substr(std::min(address.find('/', scheme.size()), address.size()));
    return QByteArray::fromPercentEncoding(QByteArray::fromStdString(path)).toStdString();
}

} // namespace app
