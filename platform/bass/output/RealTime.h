#pragma once

#include <sys/types.h>

namespace bass {

/// Asks for the priority of a thread of this process that must meet the device's deadlines: of RealtimeKit,
/// the service of desktops for programs without rights of their own. Where there is none, or it refuses, all
/// stays as it is.
///
/// The thread may then work for a fifth of a second without a pause. One that does not rest by then goes back
/// to the usual priority (SIGXCPU, whose handler this sets), before the kernel would end the process.
///
/// Threads: any; returns at once. A thread of its own, "tul-priority", waits for the answer, and ends.
void requestRealTime(pid_t thread);

} // namespace bass
