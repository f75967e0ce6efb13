#include "app/QuilloxApp.h"

#include "app/AppState.h"

namespace quillox {

std::string QuilloxApp::version()
{
    return QUILLOX_VERSION;
}

RootView QuilloxApp::rootView() const
{
    if (!m_app.hasOnboarded.get())
        return RootView::Onboarding;
    if (m_app.showFinishingScreen.get())
        return RootView::Finishing;
    return RootView::Operator;
}

} // namespace quillox
