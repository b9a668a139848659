#pragma once

#include "core/playlist/TagMessage.h"

#include <string>

namespace tags {

/// Lets the program "tulplayer-tags" read the local file `source`; each thread has one of its own, which is
/// started with the first question and ends with the thread, or with the player. Nothing when the file cannot
/// be read: what would need more than the program may have ends the program, and the next question starts
/// another.
///
/// Threads: any.
Message ask(Question question, const std::string& source);

} // namespace tags
