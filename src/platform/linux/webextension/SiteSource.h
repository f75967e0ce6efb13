#pragma once

#include <string>

namespace quillox {

/// Has GStreamer read what is played from the private scheme out of the folder `root`. The rules
/// are those of every other request for the scheme; what they answer with 404 is an error of the
/// source, at once. Call it once per process, after GStreamer has started. False when GStreamer
/// does not take it.
bool registerSiteSource(const std::string& root);

} // namespace quillox
