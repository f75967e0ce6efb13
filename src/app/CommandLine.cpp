#include "app/CommandLine.h"

#include "app/ConfigDocument.h"
#include "app/QuilloxApp.h"
#include "app/SetupSessionArguments.h"
#include "config/SettingsFields.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace quillox {

namespace {

    using Action = ConfigRequest::Action;

    struct Command {
        std::string_view name;
        Action action;
        std::size_t fewestArguments;
        std::size_t mostArguments;
        bool takesWithPassword;
        bool takesJson;
        std::string_view usage;
        std::string_view purpose;
    };

    constexpr std::array commands {
        Command { "show", Action::show, 0, 0, true, true, "show [--json] [--with-password]",
            "Print every setting." },
        Command { "get", Action::get, 1, 1, true, false, "get KEY [--with-password]",
            "Print one setting, as \"set\" takes it." },
        Command { "set", Action::set, 2, 2, false, false, "set KEY VALUE", "Change one setting." },
        Command { "reset", Action::reset, 0, 1, false, false, "reset [KEY]",
            "Give one setting its default, or all but hasOnboarded." },
        Command { "export", Action::exportFile, 1, 1, true, false, "export FILE [--with-password]",
            "Write the settings to FILE (\"-\": standard output)." },
        Command { "import", Action::importFile, 1, 1, false, false, "import FILE",
            "Take settings from FILE (\"-\": standard input)." },
        Command { "path", Action::path, 0, 0, false, false, "path",
            "Print the name of the settings file." },
    };

    constexpr auto usageUsage = "[--json | --csv | --prometheus] [--days N]";
    constexpr int mostDays = 36'500;

    CommandLine failure(std::string error)
    {
        return { .kind = CommandLine::Kind::error, .error = std::move(error) };
    }

    CommandLine config(ConfigRequest request)
    {
        return { .kind = CommandLine::Kind::config, .config = std::move(request) };
    }

    bool isHelp(const std::string& argument)
    {
        return argument == "--help" || argument == "-h";
    }

    /// Takes the options that the command knows out of the arguments. A value never counts as one.
    void takeOptions(
        const Command& command, std::vector<std::string>& arguments, ConfigRequest& request)
    {
        std::erase_if(arguments, [&](const std::string& argument) {
            const auto isPassword = command.takesWithPassword && argument == "--with-password";
            const auto isJson = command.takesJson && argument == "--json";
            request.withPassword = request.withPassword || isPassword;
            request.json = request.json || isJson;
            return isPassword || isJson;
        });
    }

    CommandLine parseConfig(std::vector<std::string> arguments)
    {
        if (arguments.empty())
            return failure("config: a command is missing; see quillox config --help");
        if (arguments.size() == 1 && isHelp(arguments[0]))
            return config({});
        const auto command = std::find_if(commands.begin(), commands.end(),
            [&](const Command& candidate) { return candidate.name == arguments[0]; });
        if (command == commands.end())
            return failure(fmt::format(
                "config: no command {}; see quillox config --help", quoted(arguments[0])));
        arguments.erase(arguments.begin());
        if (arguments.size() == 1 && isHelp(arguments[0]))
            return config({});
        ConfigRequest request;
        request.action = command->action;
        takeOptions(*command, arguments, request);
        // Where options are known, what looks like another one is a mistake, not a name.
        const auto unknown = std::find_if(arguments.begin(), arguments.end(),
            [](const std::string& argument) { return argument.starts_with("--"); });
        const auto mayHoldValue = command->action == Action::set;
        if (arguments.size() < command->fewestArguments || arguments.size() > command->mostArguments
            || (unknown != arguments.end() && !mayHoldValue))
            return failure(fmt::format("usage: quillox config {}", command->usage));
        const auto isAboutFile
            = command->action == Action::exportFile || command->action == Action::importFile;
        if (isAboutFile)
            request.file = arguments[0];
        else if (!arguments.empty())
            request.key = arguments[0];
        if (mayHoldValue)
            request.value = arguments[1];
        return config(std::move(request));
    }

    CommandLine usage(UsageRequest request)
    {
        return { .kind = CommandLine::Kind::usage, .usage = request };
    }

    struct UsageFormat {
        std::string_view option;
        UsageRequest::Format format;
    };

    constexpr std::array usageFormats {
        UsageFormat { "--json", UsageRequest::Format::json },
        UsageFormat { "--csv", UsageRequest::Format::csv },
        UsageFormat { "--prometheus", UsageRequest::Format::prometheus },
    };

    std::optional<int> numberOfDays(const std::string& text)
    {
        int days = 0;
        const auto* end = text.data() + text.size();
        const auto [rest, error] = std::from_chars(text.data(), end, days);
        const bool isValid = error == std::errc() && rest == end && days >= 1 && days <= mostDays;
        return isValid ? std::optional(days) : std::nullopt;
    }

    CommandLine parseUsageReset(const std::vector<std::string>& arguments)
    {
        const auto isConfirmed = arguments.size() == 2 && arguments[1] == "--yes";
        if (arguments.size() > 1 && !isConfirmed)
            return failure("usage: quillox usage reset --yes");
        return usage({ .action = UsageRequest::Action::reset, .isConfirmed = isConfirmed });
    }

    CommandLine parseUsage(const std::vector<std::string>& arguments)
    {
        if (arguments.size() == 1 && isHelp(arguments[0]))
            return usage({ .action = UsageRequest::Action::help });
        if (!arguments.empty() && arguments[0] == "reset")
            return parseUsageReset(arguments);
        UsageRequest request;
        for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
            const auto format = std::ranges::find(usageFormats, *argument, &UsageFormat::option);
            if (format != usageFormats.end() && request.format == UsageRequest::Format::text) {
                request.format = format->format;
                continue;
            }
            if (*argument != "--days" || request.lastDays)
                return failure(fmt::format("usage: quillox usage {}", usageUsage));
            if (++argument == arguments.end() || !(request.lastDays = numberOfDays(*argument)))
                return failure(
                    fmt::format("usage: --days takes a whole number from 1 to {}", mostDays));
        }
        if (request.lastDays && request.format == UsageRequest::Format::prometheus)
            return failure("usage: --prometheus counts all time; it cannot take --days");
        return usage(request);
    }

    CommandLine parseSetupSession(const std::vector<std::string>& arguments)
    {
        auto request = setupSessionRequest(arguments);
        if (!request)
            return failure(fmt::format("usage: quillox setup-session {}", setupSessionUsage));
        return { .kind = CommandLine::Kind::setupSession, .setupSession = std::move(*request) };
    }

    CommandLine parseDoctor(const std::vector<std::string>& arguments)
    {
        const auto isJson = arguments.size() == 1 && arguments[0] == "--json";
        if (!arguments.empty() && !isJson)
            return failure("usage: quillox doctor [--json]");
        return { .kind = CommandLine::Kind::doctor, .asJson = isJson };
    }

} // namespace

CommandLine CommandLine::parse(const std::vector<std::string>& arguments)
{
    if (arguments.empty())
        return {};
    const auto& first = arguments[0];
    if (first == "config")
        return parseConfig({ arguments.begin() + 1, arguments.end() });
    if (first == "usage")
        return parseUsage({ arguments.begin() + 1, arguments.end() });
    if (first == "setup-session")
        return parseSetupSession({ arguments.begin() + 1, arguments.end() });
    if (arguments.size() == 1 && first == "--version")
        return { .kind = Kind::version };
    if (arguments.size() == 1 && isHelp(first))
        return { .kind = Kind::help };
    if (arguments.size() == 1 && first == "displays")
        return { .kind = Kind::displays };
    if (arguments.size() == 1 && first == "--keep-alive")
        return { .kind = Kind::keepAlive };
    if (first == "doctor")
        return parseDoctor({ arguments.begin() + 1, arguments.end() });
    const auto isKnown
        = first == "displays" || first == "--version" || first == "--keep-alive" || isHelp(first);
    return failure(fmt::format(
        "unexpected argument {}; see quillox --help", quoted(isKnown ? arguments[1] : first)));
}

std::string versionText()
{
    return "Quillox " + QuilloxApp::version() + "\n";
}

std::string helpText()
{
    return "Usage: quillox [--keep-alive]\n"
           "       quillox config COMMAND\n"
           "       quillox displays\n"
           "       quillox doctor [--json]\n"
           "       quillox setup-session --user NAME [OPTIONS]\n"
           "       quillox usage [OPTIONS]\n"
           "       quillox --version | --help\n"
           "\n"
           "Seals one website into a locked full screen. Without arguments the program starts;\n"
           "with --keep-alive it starts again by itself after a crash, until it is quit or the\n"
           "session ends;\n"
           "\"quillox config --help\" tells how to change its settings from a terminal;\n"
           "\"quillox displays\" lists the numbers that displayID can have here;\n"
           "\"quillox doctor\" says how well this session can be sealed and what would close the\n"
           "gaps: exit code 0 when there are none, 3 with gaps, 4 when there is no lock;\n"
           "\"quillox setup-session\" has the machine log a user in to Quillox alone when it "
           "starts,\n"
           "see \"quillox setup-session --help\";\n"
           "\"quillox usage\" tells how much the display is used, see \"quillox usage --help\".\n";
}

std::string configHelpText()
{
    std::string text = "Usage: quillox config COMMAND\n\nCommands:\n";
    for (const auto& command : commands)
        text += fmt::format("  {:<32} {}\n", command.usage, command.purpose);
    text += "\nSettings:\n";
    for (const auto& field : settingsFields)
        text += fmt::format("  {:<20} {}\n", field.name, validValues(field));
    text += "  hasOnboarded         true or false\n"
            "\n"
            "A list is a JSON array, or texts with commas between them. The password is only\n"
            "printed or exported with --with-password; import it from standard input to keep it\n"
            "out of the list of processes. A running program takes the settings at its next\n"
            "start. An exported file can be installed for every user of a machine as\n"
            "/etc/xdg/Quillox/defaults.json, readable by them; what a user sets goes before it.\n";
    return text;
}

std::string usageHelpText()
{
    return fmt::format(
        "Usage: quillox usage {}\n"
        "       quillox usage reset --yes\n"
        "\n"
        "Tells from the statistics of this user how much the display is used. They are counted on\n"
        "this machine and go nowhere by themselves. A running program adds to the file every 20\n"
        "seconds; reading it disturbs nothing.\n"
        "\n"
        "  --days N      Only the last N days, of which today is the first. The busiest hour and\n"
        "                the last use stay those of all time.\n"
        "  --json        One object: \"format\", which is 1; \"lastDays\", N or null; "
        "\"lastUsed\",\n"
        "                seconds since 1970 or null; \"busiestHour\", 0 to 23 or null; \"total\" "
        "with\n"
        "                \"sessions\" and \"activeSeconds\"; \"sources\", the same for each site, "
        "most\n"
        "                used first; \"records\", the same for each day and site, with \"hours\", "
        "the\n"
        "                sessions that began in each hour of the day.\n"
        "  --csv         The records as a table for spreadsheets, with a head line. A site that a\n"
        "                spreadsheet would take for a formula gets an apostrophe in front.\n"
        "  --prometheus  The sums of all time as metrics, for the textfile folder of a node\n"
        "                exporter: write them to a file beside it and move that into it.\n"
        "  reset --yes   Forget everything. Not while the program runs, which holds the "
        "statistics\n"
        "                and would write them again.\n",
        usageUsage);
}

} // namespace quillox
