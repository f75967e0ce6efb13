#include "app/UsageCommand.h"

#include "app/ConfigDocument.h"
#include "usage/UsageStatsView.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <ostream>

namespace quillox {

namespace {

    /// Raised when a field changes its meaning or goes.
    constexpr int formatVersion = 1;

    double secondsSince1970(RunLoop::WallTime time)
    {
        return std::chrono::duration<double>(time.time_since_epoch()).count();
    }

    bool isControl(char character)
    {
        return static_cast<unsigned char>(character) < 0x20 || character == 0x7f;
    }

    /// A name must not steer the terminal.
    std::string forTerminal(const std::string& name)
    {
        return std::ranges::any_of(name, isControl) ? quoted(name) : name;
    }

    /// In quotation marks where a table needs them, and never what a spreadsheet would calculate.
    std::string forTable(const std::string& name)
    {
        const bool isFormula = !name.empty()
            && (std::string_view("=+-@").find(name[0]) != std::string_view::npos
                || isControl(name[0]));
        const bool isPlain = std::ranges::none_of(name, [](char character) {
            return character == ',' || character == '"' || isControl(character);
        });
        const std::string text = (isFormula ? "'" : "") + name;
        if (isPlain)
            return text;
        std::string field = "\"";
        for (const char character : text)
            field.append(character == '"' ? 2 : 1, character);
        return field + '"';
    }

    std::string forLabel(const std::string& name)
    {
        std::string label;
        for (const char character : name) {
            if (character == '\n') {
                label += "\\n";
                continue;
            }
            if (character == '\\' || character == '"')
                label += '\\';
            label += character;
        }
        return label;
    }

    std::string json(const UsageStore::Summary& summary)
    {
        return fmt::format(
            R"("sessions":{},"activeSeconds":{})", summary.sessions, summary.activeSeconds);
    }

} // namespace

UsageCommand::UsageCommand(Machine machine)
    : m_machine(std::move(machine))
{
}

int UsageCommand::run(const UsageRequest& request)
{
    switch (request.action) {
    case UsageRequest::Action::help:
        m_machine.out << usageHelpText();
        return print();
    case UsageRequest::Action::show:
        return show(request);
    case UsageRequest::Action::reset:
        return reset(request);
    }
    return exitUsage;
}

int UsageCommand::show(const UsageRequest& request)
{
    if (!m_machine.damage.empty())
        return fail(exitFailure, "cannot read " + m_machine.damage);
    switch (request.format) {
    case UsageRequest::Format::text:
        writeText(request.lastDays);
        break;
    case UsageRequest::Format::json:
        writeJson(request.lastDays);
        break;
    case UsageRequest::Format::csv:
        writeCsv(request.lastDays);
        break;
    case UsageRequest::Format::prometheus:
        writePrometheus();
        break;
    }
    return print();
}

int UsageCommand::reset(const UsageRequest& request)
{
    if (!request.isConfirmed)
        return fail(
            exitUsage, "this forgets all statistics; confirm it: quillox usage reset --yes");
    if (m_machine.runningProcess != 0)
        return fail(exitFailure,
            fmt::format("Quillox runs as process {} and would write its statistics again; end it "
                        "first",
                m_machine.runningProcess));
    m_machine.store.reset();
    if (const auto reason = m_machine.flush(); !reason.empty())
        return fail(exitFailure, "cannot write " + reason);
    return exitSuccess;
}

void UsageCommand::writeText(std::optional<int> lastDays)
{
    using View = UsageStatsView;
    const auto body = View(m_machine.store).body(lastDays);
    fmt::print(m_machine.out, "{}\n{}\n\n", View::title, View::subtitle);
    if (body.isEmpty) {
        fmt::print(m_machine.out, "{}\n", View::emptyText);
        return;
    }
    std::size_t width = 0;
    for (const auto* rows : { &body.statistics, &body.lines, &body.websites })
        for (const auto& row : *rows)
            width = std::max(width, forTerminal(row.title).size());
    const auto print = [&](const std::vector<View::Row>& rows) {
        for (const auto& row : rows)
            fmt::print(m_machine.out, "{:<{}}{}\n", forTerminal(row.title),
                row.value.empty() ? 0 : width + 2, row.value);
    };
    print(body.statistics);
    print(body.lines);
    if (!body.websites.empty())
        fmt::print(m_machine.out, "\n{}\n", View::websitesTitle);
    print(body.websites);
}

void UsageCommand::writeJson(std::optional<int> lastDays)
{
    auto& out = m_machine.out;
    const auto& store = m_machine.store;
    const auto hour = store.peakHour();
    fmt::print(out, R"({{"format":{},"lastDays":{},"lastUsed":{},"busiestHour":{},"total":{{{}}})",
        formatVersion, lastDays ? fmt::to_string(*lastDays) : "null",
        store.lastUsed() ? fmt::format("{:.3f}", secondsSince1970(*store.lastUsed())) : "null",
        hour ? fmt::to_string(*hour) : "null", json(store.total(lastDays)));
    const char* separator = "";
    fmt::print(out, ",\n\"sources\":[");
    for (const auto& [source, summary] : store.perSource(lastDays)) {
        fmt::print(out, "{}\n{{\"source\":{},{}}}", separator, quoted(source), json(summary));
        separator = ",";
    }
    separator = "";
    fmt::print(out, "],\n\"records\":[");
    store.visit(lastDays, [&](const auto& date, const auto& source, const auto& counts) {
        fmt::print(out, R"({}{}{{"date":{},"source":{},{},"hours":[{}]}})", separator, '\n',
            quoted(date), quoted(source), json({ counts.sessions, counts.activeSeconds }),
            fmt::join(counts.hours, ","));
        separator = ",";
    });
    fmt::print(out, "]}}\n");
}

void UsageCommand::writeCsv(std::optional<int> lastDays)
{
    auto& out = m_machine.out;
    fmt::print(out, "date,source,sessions,active_seconds");
    for (std::size_t hour = 0; hour < UsageDay::hoursPerDay; ++hour)
        fmt::print(out, ",hour_{:02}", hour);
    fmt::print(out, "\r\n");
    m_machine.store.visit(lastDays, [&](const auto& date, const auto& source, const auto& counts) {
        fmt::print(out, "{},{},{},{},{}\r\n", forTable(date), forTable(source), counts.sessions,
            counts.activeSeconds, fmt::join(counts.hours, ","));
    });
}

void UsageCommand::writePrometheus()
{
    auto& out = m_machine.out;
    const auto sources = m_machine.store.perSource(std::nullopt);
    const auto family = [&](const char* name, const char* type, const char* help) {
        fmt::print(out, "# HELP {} {}\n# TYPE {} {}\n", name, help, name, type);
    };
    family("quillox_sessions_total", "counter", "Visitor sessions begun.");
    for (const auto& [source, summary] : sources)
        fmt::print(out, "quillox_sessions_total{{source=\"{}\"}} {}\n", forLabel(source),
            summary.sessions);
    family("quillox_active_seconds_total", "counter", "Time in which visitors used the display.");
    for (const auto& [source, summary] : sources)
        fmt::print(out, "quillox_active_seconds_total{{source=\"{}\"}} {}\n", forLabel(source),
            summary.activeSeconds);
    if (!m_machine.store.lastUsed())
        return;
    family("quillox_last_use_timestamp_seconds", "gauge", "When a visitor last used the display.");
    fmt::print(out, "quillox_last_use_timestamp_seconds {:.3f}\n",
        secondsSince1970(*m_machine.store.lastUsed()));
}

int UsageCommand::print()
{
    if (m_machine.out << std::flush)
        return exitSuccess;
    return fail(exitFailure, "cannot write standard output");
}

int UsageCommand::fail(int exitCode, const std::string& line)
{
    m_machine.err << "quillox: " << line << std::endl;
    return exitCode;
}

} // namespace quillox
