#include "platform/linux/survey/RunDoctor.h"

#include "app/DoctorCommand.h"
#include "app/QuilloxApp.h"
#include "platform/linux/survey/LockSurveyLinux.h"

#include <cstdlib>
#include <iostream>
#include <unistd.h>

namespace quillox {

int runDoctor(const CommandLine& commandLine)
{
    // Nothing here needs the session's bus; the toolkit would wait for one that hangs, and start
    // one where there is none.
    setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
    const auto print = [asJson = commandLine.asJson](const LockFacts& facts) {
        return doctorCommand(facts, asJson, std::cout, std::cerr);
    };
    // The main thread hangs in the display's library then, and no destructor could run.
    const auto printAndExit = [print](const LockFacts& facts) { _exit(print(facts)); };
    return print(LockSurveyLinux(QuilloxApp::bundleIdentifier, printAndExit).survey());
}

} // namespace quillox
