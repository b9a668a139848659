#pragma once

#include "controls/AttributedString.h"

#include <QString>

#include <string>
#include <vector>

/// Text as a search compares it: without case, accents and typographic variants, so that "royksopp" finds
/// "Røyksopp", and "strasse" "Straße". Marks that make another letter (Japanese, Indic) stay.
namespace app {

/// Appends UTF-8, from UTF-8; bytes that are not are taken as Latin-1.
void appendFolded(std::string& folded, const std::string& bytes);

/// What is between the spaces.
std::vector<std::string> foldedWords(const QString& text);

/// Every place in `text` where one of the folded words is.
std::vector<TextRange> rangesOfWords(const std::vector<std::string>& words, const QString& text);

} // namespace app
