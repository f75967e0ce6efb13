#pragma once

namespace quillox::helpPages {

/// The setup guide that comes with the application. The workspace knows where it is.
inline constexpr auto setupGuide = "quillox:setup-guide";
/// Where in it the keyboard lock's permission is explained.
inline constexpr auto permissionAnchor = "permission";
/// Of the window that shows it where there is no browser.
inline constexpr auto setupGuideTitle = "Quillox setup guide";
inline constexpr auto setupGuideHeading = "SETUP GUIDE";
inline constexpr auto closeTitle = "CLOSE";

inline constexpr auto webSite = "https://quillox.orvendal.com/";
inline constexpr auto webSiteName = "QUILLOX.ORVENDAL.COM";

} // namespace quillox::helpPages
