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

std::string sourceFromAddress(const std::string& address) {
    constexpr std::string_view scheme = "file://";
    if (!address.starts_with(scheme)) return address;
    const std::string path = address.substr(std::min(address.find('/', scheme.size()), address.size()));
    return QByteArray::fromPercentEncoding(QByteArray::fromStdString(path)).toStdString();
}

std::vector<std::string> audioFilesIn(const std::string& folder, const ReadingProgress& progress) {
    namespace fs = std::filesystem;
    std::vector<std::string> files;
    std::error_code failed;
    fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied, failed);
    for (; !failed && entry != fs::end(entry); entry.increment(failed)) {
        if (!progress(files.size(), 0)) break;
        const bool hidden = entry->path().filename().string().starts_with('.');
        if (hidden) {
            entry.disable_recursion_pending();
        } else if (std::error_code unknown;
                   entry->is_regular_file(unknown) && hasType(entry->path(), audioTypes())) {
            files.push_back(entry->path().string());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

} // namespace app
