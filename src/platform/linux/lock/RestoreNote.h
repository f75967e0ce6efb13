#pragma once

#include "platform/linux/lock/Restoration.h"
#include "support/Lifetime.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quillox {

class RunLoop;
class SystemLog;
struct FileResult;

/// Where the XDG base directories of this process's environment put the note.
std::string restoreNotePathFromEnvironment();

/// A file that says what to put back when this process could not do it itself. Its users note here
/// what they are about to change, save, and change it when that is on the disk. It is written on a
/// worker thread; a note without contents is a file removed. One living process at a time may use
/// it. Main thread only.
class RestoreNote {
public:
    RestoreNote(std::string path, RunLoop&, SystemLog&);
    /// Waits until what was saved is on the disk or has failed; who waits for it is not called.
    ~RestoreNote();

    /// Takes over the contents that a killed process left. A file that cannot be understood is
    /// set aside and logged. Waits for the disk: call it before anything is shown, once it is sure
    /// that no other process uses the note.
    void load();

    Restoration& contents() { return m_contents; }

    /// Calls back, never from within this call, when the contents as they then are have been saved.
    /// It is called also when that failed, which is logged: a lock matters more than its note.
    void save(std::function<void()> onSaved = nullptr);

private:
    void work();
    FileResult write(const std::string& text, bool waitsForSettings) const;
    void handleWritten();

    const std::string m_path;
    RunLoop& m_runLoop;
    SystemLog& m_log;
    Restoration m_contents;
    std::vector<std::function<void()>> m_waiting;
    std::function<void()> m_onWritten;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    /// What the file is to hold; guarded by the mutex, as all that follows.
    std::string m_text;
    bool m_hasFewerSettings = false;
    bool m_isWriteWanted = false;
    bool m_isWriting = false;
    bool m_isStopping = false;
    std::size_t m_settingCount = 0;
    std::thread m_worker;
    Lifetime m_lifetime;
};

} // namespace quillox
