#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quillox {

/// What the system tells about other processes. A process id of 0 or less stands for none.

/// The process at the other end of a local socket; 0 when it is elsewhere.
int peerProcess(int socket);

/// Its short name, at most 15 bytes; empty when there is none or it is hidden.
std::string processName(int process);

/// Its command line, the program first; empty when it is hidden.
std::vector<std::string> processArguments(int process);

/// Whether it has input devices open; nothing when we may not look.
std::optional<bool> readsInputDevices(int process);

/// Those that this process itself started and that are still there.
std::vector<int> childProcesses();

/// Whether `process` is `ancestor` or was started by it, directly or not.
bool isDescendant(int process, int ancestor);

} // namespace quillox
