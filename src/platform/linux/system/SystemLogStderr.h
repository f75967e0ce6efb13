#pragma once

#include "platform/linux/system/FileDescriptor.h"
#include "ports/SystemLog.h"

#include <string>

namespace quillox {

/// Writes to standard error, and besides to the journal when there is one that does not already
/// read standard error.
class SystemLogStderr final : public SystemLog {
public:
    explicit SystemLogStderr(std::string journalSocket = "/run/systemd/journal/socket");

    void write(std::string_view line) override;

private:
    void writeToJournal(const std::string& line);

    std::string m_journalSocket;
    FileDescriptor m_socket;
};

} // namespace quillox
