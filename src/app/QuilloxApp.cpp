#include "app/QuilloxApp.h"

#include "app/AppState.h"

namespace quillox {

RootView QuilloxApp::rootView() const
{
    if (!m_app.hasOnboarded.get())
        return RootView::Onboarding;
    if (m_app.showFinishingScreen.get())
        return RootView::Finishing;
    return RootView::Operator;
}

} // namespace quillox
