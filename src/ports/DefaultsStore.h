#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillox {

/// The user's defaults: a small store of JSON values by key. Reading falls back from the user's own
/// values to those that an administrator provides, key by key. Main thread only; nothing here waits
/// for the disk when it writes.
class DefaultsStore {
public:
    virtual ~DefaultsStore() = default;

    /// The value of `key` as JSON text, or none when no source has one that can be read.
    virtual std::optional<std::string> data(std::string_view key) const = 0;

    /// Replaces the user's value of `key` with `json`, one complete JSON value. A reader of any
    /// process sees either the old or the new value, also after a crash. What cannot be written is
    /// logged, once per reason, and the value is then only good for this process. Text that is not
    /// JSON is refused and changes nothing.
    virtual void setData(std::string_view key, std::string_view json) = 0;

    /// False unless the value of `key` is the JSON literal true.
    virtual bool boolean(std::string_view key) const = 0;
    virtual void setBoolean(std::string_view key, bool value) = 0;
};

} // namespace quillox
