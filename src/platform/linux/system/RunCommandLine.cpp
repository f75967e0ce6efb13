#include "platform/linux/system/RunCommandLine.h"

#include "app/ConfigCommand.h"
#include "platform/linux/system/DefaultsStoreFile.h"
#include "platform/linux/system/SystemLogStderr.h"
#include "platform/linux/system/TextFilesPosix.h"

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

} // namespace

int runCommandLine(const CommandLine& commandLine)
{
    switch (commandLine.kind) {
    case CommandLine::Kind::run:
    case CommandLine::Kind::displays:
    case CommandLine::Kind::doctor:
        return exitSuccess;
    case CommandLine::Kind::version:
        std::cout << versionText() << std::flush;
        return std::cout ? exitSuccess : exitFailure;
    case CommandLine::Kind::help:
        std::cout << helpText() << std::flush;
        return std::cout ? exitSuccess : exitFailure;
    case CommandLine::Kind::config:
        return runConfigCommand(commandLine.config);
    case CommandLine::Kind::error:
        std::cerr << "quillox: " << commandLine.error << std::endl;
        return exitUsage;
    }
    return exitUsage;
}

} // namespace quillox
