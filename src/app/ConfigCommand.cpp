#include "app/ConfigCommand.h"

#include "config/DefaultsKeys.h"
#include "ports/DefaultsStore.h"
#include "ports/TextFiles.h"

#include <fmt/format.h>

#include <istream>
#include <iterator>
#include <ostream>

namespace quillox {

namespace {

    constexpr std::string_view passwordKey = "exitPassword";
    constexpr std::string_view standardStream = "-";

} // namespace

ConfigCommand::ConfigCommand(Machine machine)
    : m_machine(std::move(machine))
{
}

int ConfigCommand::run(const ConfigRequest& request)
{
    if (request.key) {
        if (const auto objection = objectionToKey(*request.key))
            return fail(exitUsage, *objection);
    }
    using Action = ConfigRequest::Action;
    switch (request.action) {
    case Action::help:
        return print(configHelpText());
    case Action::show:
        return show(request);
    case Action::get:
        return get(request);
    case Action::set:
        return set(request);
    case Action::reset:
        return reset(request);
    case Action::exportFile:
        return exportFile(request);
    case Action::importFile:
        return importFile(request);
    case Action::path:
        return print(m_machine.path + "\n");
    }
    return exitUsage;
}

int ConfigCommand::show(const ConfigRequest& request)
{
    const auto configuration = load();
    if (request.json)
        return print(exportedConfiguration(configuration, request.withPassword));
    std::string text;
    for (const auto key : configurationKeys()) {
        const auto isHidden = key == passwordKey && !request.withPassword;
        const auto isEmpty = configuration.settings.exitPassword.empty();
        text += fmt::format("{} = {}\n", key,
            isHidden ? (isEmpty ? "(empty)" : "(hidden)") : configurationValue(configuration, key));
    }
    return print(text);
}

int ConfigCommand::get(const ConfigRequest& request)
{
    if (request.key == passwordKey && !request.withPassword)
        return fail(exitUsage, "exitPassword is only printed with --with-password");
    return print(configurationText(load(), *request.key) + "\n");
}

int ConfigCommand::set(const ConfigRequest& request)
{
    auto configuration = load();
    if (const auto objection = setConfigurationText(configuration, *request.key, request.value))
        return fail(exitUsage, *objection);
    return store(configuration);
}

int ConfigCommand::reset(const ConfigRequest& request)
{
    auto configuration = load();
    for (const auto key : configurationKeys()) {
        if (request.key ? key == *request.key : key != hasOnboardedKey)
            resetConfigurationKey(configuration, key);
    }
    return store(configuration);
}

int ConfigCommand::exportFile(const ConfigRequest& request)
{
    const auto text = exportedConfiguration(load(), request.withPassword);
    if (request.file == standardStream)
        return print(text);
    if (const auto reason = m_machine.files.write(request.file, text))
        return fail(exitFailure, "cannot write " + *reason);
    return exitSuccess;
}

int ConfigCommand::importFile(const ConfigRequest& request)
{
    TextFiles::Text text;
    if (request.file == standardStream)
        text.contents.emplace(
            std::istreambuf_iterator<char>(m_machine.in), std::istreambuf_iterator<char>());
    else
        text = m_machine.files.read(request.file);
    if (!text.contents)
        return fail(exitFailure, "cannot read " + text.reason);
    auto configuration = load();
    if (const auto objection = importConfiguration(configuration, *text.contents)) {
        const auto name
            = request.file == standardStream ? std::string("standard input") : request.file;
        return fail(exitUsage, fmt::format("{}: {}", name, *objection));
    }
    return store(configuration);
}

Configuration ConfigCommand::load() const
{
    Configuration configuration;
    configuration.settings = KioskSettings::load(m_machine.defaults);
    configuration.hasOnboarded = m_machine.defaults.boolean(hasOnboardedKey);
    return configuration;
}

/// What was not named stays as it is: an administrator may go on providing it.
int ConfigCommand::store(const Configuration& configuration)
{
    if (configuration.isSettingsNamed)
        configuration.settings.save(m_machine.defaults);
    if (configuration.isHasOnboardedNamed)
        m_machine.defaults.setBoolean(hasOnboardedKey, configuration.hasOnboarded);
    std::string reason;
    if (!m_machine.flush(&reason))
        return fail(exitFailure, "cannot write " + reason);
    return exitSuccess;
}

int ConfigCommand::print(const std::string& text)
{
    if (m_machine.out << text << std::flush)
        return exitSuccess;
    return fail(exitFailure, "cannot write standard output");
}

int ConfigCommand::fail(int exitCode, const std::string& line)
{
    m_machine.err << "quillox: " << line << std::endl;
    return exitCode;
}

} // namespace quillox
