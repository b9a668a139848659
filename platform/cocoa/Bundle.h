#pragma once

#include <QString>

/// The application's compiled-in files, and its version.
namespace cocoa::Bundle {

/// The compiled-in file ":/NAME.TYPE"; a null string when there is none. Images are found by Image::named.
QString pathForResource(const QString& name, const QString& type);

/// The version of the build, like "0.1.0".
QString shortVersionString();

} // namespace cocoa::Bundle
