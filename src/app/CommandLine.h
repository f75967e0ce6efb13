#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quillox {

/// What `quillox config` is asked to do.
struct ConfigRequest {
    enum class Action { help, show, get, set, reset, exportFile, importFile, path };

    Action action = Action::help;
    /// For `get` and `set`, and for `reset` when it is not about every field.
    std::optional<std::string> key;
    /// For `set`.
    std::string value;
    /// For `exportFile` and `importFile`; "-" is standard output or input.
    std::string file;
    bool withPassword = false;
    bool json = false;

    bool operator==(const ConfigRequest&) const = default;
};

/// What `quillox usage` is asked to do.
struct UsageRequest {
    enum class Action { help, show, reset };
    enum class Format { text, json, csv, prometheus };

    Action action = Action::show;
    Format format = Format::text;
    /// At least 1, which is today; none is all time.
    std::optional<int> lastDays {};
    /// For `reset`: it is really meant.
    bool isConfirmed = false;

    bool operator==(const UsageRequest&) const = default;
};

/// What `quillox setup-session` is asked to do.
struct SetupSessionRequest {
    enum class Action { help, setUp, undo };
    enum class Session { wayland, x11 };

    Action action = Action::setUp;
    std::string user {};
    Session session = Session::wayland;
    /// It is really meant.
    bool isConfirmed = false;

    bool operator==(const SetupSessionRequest&) const = default;
};

/// What the program is asked to do.
struct CommandLine {
    enum class Kind {
        run,
        keepAlive,
        version,
        help,
        displays,
        doctor,
        config,
        usage,
        setupSession,
        error
    };

    Kind kind = Kind::run;
    /// For `config`.
    ConfigRequest config = {};
    /// For `usage`.
    UsageRequest usage = {};
    /// For `setup-session`.
    SetupSessionRequest setupSession = {};
    /// For `doctor`: as a document for scripts.
    bool asJson = false;
    /// For `error`: one line without its end, to follow the program's name.
    std::string error = {};

    /// `arguments` without the program's own name.
    static CommandLine parse(const std::vector<std::string>& arguments);
};

/// The exit codes of the command line.
inline constexpr int exitSuccess = 0;
/// Something could not be read or written.
inline constexpr int exitFailure = 1;
/// The command, a key or a value is wrong, or it was not confirmed; nothing was changed.
inline constexpr int exitUsage = 2;
/// `doctor`: there is a lock, but ways around it are open or could not be checked.
inline constexpr int exitSealedWithGaps = 3;
/// `doctor`: there is no lock here.
inline constexpr int exitCannotSeal = 4;

/// Complete texts, with their last line ended.
std::string versionText();
std::string helpText();
std::string configHelpText();
std::string usageHelpText();

} // namespace quillox
