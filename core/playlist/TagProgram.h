#pragma once

#include "core/playlist/TagMessage.h"

#include <string>

namespace tags {

/// Lets the program "tulplayer-tags" read the local file `source`. Each thread has its own process, started
/// by the first question, which ends with the thread or the player. Empty when the file cannot be read. A
/// file that exceeds the limits of the process ends it; the next question starts another.
///
/// Threads: any; blocks on the answer.
Message ask(Question question, const std::string& source);

} // namespace tags
