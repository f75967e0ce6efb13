#pragma once

#include "platform/linux/system/AtomicFile.h"
#include "platform/linux/system/DefaultsDocument.h"

#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace quillox {

class SystemLog;

/// Passes every line on the first time it comes. Any thread.
class OnceLog {
public:
    explicit OnceLog(SystemLog& log)
        : m_log(log)
    {
    }

    void write(const std::string& line);

private:
    SystemLog& m_log;
    std::mutex m_mutex;
    std::set<std::string> m_written;
};

struct DefaultsValue {
    std::string key;
    /// Compact JSON.
    std::string json;

    bool operator==(const DefaultsValue&) const = default;
};

/// An administrator's defaults file, which is only read. Any thread.
class ProvidedDefaultsFile {
public:
    ProvidedDefaultsFile(std::string path, OnceLog&);

    /// Empty when the file is missing; what cannot be read or is damaged is logged and skipped.
    DefaultsDocument read() const;

private:
    std::string m_path;
    OnceLog& m_log;
};

/// The user's defaults file, which other processes may write at the same time. Any thread.
class UserDefaultsFile {
public:
    UserDefaultsFile(std::string path, OnceLog&);

    /// Empty when the file is missing or cannot be read, which is logged. A damaged file is set
    /// aside under a new name first; that waits up to 5 seconds for another process's turn.
    DefaultsDocument read() const;

    /// Replaces the values in what the file holds at that moment and waits for the disk. A file
    /// that cannot be read is not overwritten.
    FileResult update(const std::vector<DefaultsValue>&) const;

private:
    struct Contents {
        std::optional<DefaultsDocument> document;
        bool isDamaged = false;
        std::string reason;
    };

    Contents look() const;
    Contents lookAndRepair() const;
    FileResult setAside(const std::string& reason) const;

    std::string m_path;
    OnceLog& m_log;
};

} // namespace quillox
