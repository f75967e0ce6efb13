#pragma once

#include "kiosk/KioskViews.h"

namespace quillox {

class KioskViewsGtk final : public KioskViews {
public:
    std::unique_ptr<View> makeOfflineNotice(OfflineModel&) override;
    std::unique_ptr<View> makeNavBar(KioskNavBar&) override;
    std::unique_ptr<View> makeNotchBar(Published<Color>&) override;
};

} // namespace quillox
