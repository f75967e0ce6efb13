#pragma once

#include "lockdown/LockFacts.h"

#include <functional>
#include <string>

typedef struct _GdkDisplay GdkDisplay;

namespace quillox {

/// Finds out what stands between visitors and the machine, for the lock report.
class LockSurveyLinux {
public:
    /// `identifier` is the application's. `onNoAnswer` is called on another thread when the display
    /// is silent for five seconds; it must end the process, since the caller hangs for good.
    LockSurveyLinux(std::string identifier, std::function<void(const LockFacts&)> onNoAnswer);

    /// Opens the display that the program would open, looks, and tries what can be tried without
    /// harm: on X11 the keyboard is held for some milliseconds. Takes less than two seconds with a
    /// display that answers, and eleven at most. Main thread only, once.
    LockFacts survey();

private:
    LockFacts machineFacts() const;

    std::string m_identifier;
    std::function<void(const LockFacts&)> m_onNoAnswer;
};

/// The parts of the survey, by subject. The first two block while the display hangs.
void surveyX11(GdkDisplay*, LockFacts&);
void surveyWayland(GdkDisplay*, LockFacts&);
/// What has nothing to do with the display; takes half a second at most. Any thread.
void surveySystem(LockFacts&);

} // namespace quillox
