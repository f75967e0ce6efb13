#pragma once

#include "ports/Application.h"
#include "ports/Dialogs.h"
#include "ports/SystemLog.h"
#include "ports/Workspace.h"

namespace quillox {

/// Opens addresses with the desktop's default programs. The address of the keyboard lock's
/// permission opens a help window of our own, which says what this session lacks.
class WorkspaceGtk final : public Workspace {
public:
    WorkspaceGtk(Application& application, Dialogs& dialogs, SystemLog& log)
        : m_application(application)
        , m_dialogs(dialogs)
        , m_log(log)
    {
    }

    void open(const std::string& url) override;
    /// The new instance takes this one's place in the same process, once the main loop has ended.
    void relaunch() override;
    bool wantsRelaunch() const { return m_wantsRelaunch; }

private:
    void showPermissionHelp();

    Application& m_application;
    Dialogs& m_dialogs;
    SystemLog& m_log;
    bool m_wantsRelaunch = false;
};

} // namespace quillox
