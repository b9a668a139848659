#pragma once

#include <QByteArray>

#include <memory>
#include <string>
#include <vector>

class QMimeData;

namespace app {

/// An entry's source as other programs take it: a `file:` address, or the address that it is, whose bytes
/// are ASCII. Empty for what is neither an address nor an absolute path.
QByteArray addressOf(const std::string& source);

/// The addresses as the type text/uri-list has them.
QByteArray addressList(const std::vector<std::string>& sources);

/// For the clipboard: addresses for file managers; as text, paths and addresses, one a line.
std::unique_ptr<QMimeData> copyOf(const std::vector<std::string>& sources);

} // namespace app
