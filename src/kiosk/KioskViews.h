#pragma once

#include "kiosk/KioskNavBar.h"
#include "kiosk/OfflineOverlay.h"
#include "ports/View.h"
#include "support/Published.h"

#include <memory>

namespace quillox {

/// Draws what stands over and around the page of a sealed run. The models outlive the views. Main
/// thread only.
class KioskViews {
public:
    virtual ~KioskViews() = default;

    /// Covers its container opaquely while the model is offline; otherwise it shows nothing and
    /// lets every click through to what is below.
    virtual std::unique_ptr<View> makeOfflineNotice(OfflineModel&) = 0;

    /// As large as `KioskNavBar::size` says. Its buttons never take the keyboard from the page.
    virtual std::unique_ptr<View> makeNavBar(KioskNavBar&) = 0;

    /// A plain area in the colour that the model has at the time.
    virtual std::unique_ptr<View> makeNotchBar(Published<Color>&) = 0;
};

} // namespace quillox
