#include "platform/linux/system/RunCommandLine.h"

#include "app/ConfigCommand.h"
#include "app/QuilloxApp.h"
#include "app/SetupSessionCommand.h"
#include "app/UsageCommand.h"
#include "platform/linux/service/AgentPlaces.h"
#include "platform/linux/service/RestartingParent.h"
#include "platform/linux/system/CalendarPosix.h"
#include "platform/linux/system/DefaultsStoreFile.h"
#include "platform/linux/system/MachineFilesLinux.h"
#include "platform/linux/system/RunLoopGlib.h"
#include "platform/linux/system/RunningApplicationsSocket.h"
#include "platform/linux/system/SystemLogStderr.h"
#include "platform/linux/system/TextFilesPosix.h"
#include "platform/linux/system/UsageFilePosix.h"

#include <iostream>

namespace quillox {

namespace {

    int runConfigCommand(const ConfigRequest& request)
    {
        const auto paths = defaultsPathsFromEnvironment();
        SystemLogStderr log;
        DefaultsStoreFile defaults(paths, log);
        TextFilesPosix files;
        const auto flush = [&defaults](std::string* reason) { return defaults.flush(reason); };
        return ConfigCommand({ defaults, flush, paths.user, files, std::cin, std::cout, std::cerr })
            .run(request);
    }

    int runUsageCommand(const UsageRequest& request)
    {
        SystemLogStderr log;
        const auto path = usagePathFromEnvironment();
        UsageFilePosix file(path, log);
        const CalendarPosix calendar;
        const RunLoopGlib runLoop;
        const UsageDate dates(calendar, runLoop);
        UsageStore store(file, dates);
        return UsageCommand({ store, file.isDamaged() ? path + ": damaged or out of reach" : "",
                                [&file] { return file.flush(); },
                                RunningApplicationsSocket::firstCopy(QuilloxApp::bundleIdentifier),
                                std::cout, std::cerr })
            .run(request);
    }

    int runSetupSessionCommand(const SetupSessionRequest& request)
    {
        MachineFilesLinux files;
        return SetupSessionCommand({ files, std::cout, std::cerr }).run(request);
    }

    int keepAlive()
    {
        SystemLogStderr log;
        return RestartingParent({ AgentPlaces::ofThisProcess().program() }, log).run();
    }

} // namespace

int runCommandLine(const CommandLine& commandLine)
{
    switch (commandLine.kind) {
    case CommandLine::Kind::run:
    case CommandLine::Kind::displays:
    case CommandLine::Kind::doctor:
        return exitSuccess;
    case CommandLine::Kind::keepAlive:
        return keepAlive();
    case CommandLine::Kind::version:
        std::cout << versionText() << std::flush;
        return std::cout ? exitSuccess : exitFailure;
    case CommandLine::Kind::help:
        std::cout << helpText() << std::flush;
        return std::cout ? exitSuccess : exitFailure;
    case CommandLine::Kind::config:
        return runConfigCommand(commandLine.config);
    case CommandLine::Kind::usage:
        return runUsageCommand(commandLine.usage);
    case CommandLine::Kind::setupSession:
        return runSetupSessionCommand(commandLine.setupSession);
    case CommandLine::Kind::error:
        std::cerr << "quillox: " << commandLine.error << std::endl;
        return exitUsage;
    }
    return exitUsage;
}

} // namespace quillox
