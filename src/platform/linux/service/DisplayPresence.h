#pragma once

namespace quillox {

/// Whether somebody listens on a display that the environment names. One on another machine counts
/// as there. Does not wait.
bool isDisplayPresent();

} // namespace quillox
