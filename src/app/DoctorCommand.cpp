#include "app/DoctorCommand.h"

#include "app/CommandLine.h"
#include "lockdown/LockReport.h"

#include <nlohmann/json.hpp>

#include <ostream>

namespace quillox {

namespace {

    using Json = nlohmann::ordered_json;
    using State = LockFinding::State;
    using Verdict = LockReport::Verdict;

    /// Raised when a field changes its meaning or goes.
    constexpr int formatVersion = 1;

    const char* name(Verdict verdict)
    {
        switch (verdict) {
        case Verdict::SealedTight:
            return "sealedTight";
        case Verdict::SealedWithGaps:
            return "sealedWithGaps";
        case Verdict::CannotSeal:
            return "cannotSeal";
        }
        return "";
    }

    const char* name(State state)
    {
        switch (state) {
        case State::Closed:
            return "closed";
        case State::NotChecked:
            return "notChecked";
        case State::Gap:
            return "gap";
        case State::Blocking:
            return "blocking";
        }
        return "";
    }

    const char* name(LockFacts::Display display)
    {
        switch (display) {
        case LockFacts::Display::Absent:
            return "none";
        case LockFacts::Display::NotAnswering:
            return "notAnswering";
        case LockFacts::Display::X11:
            return "x11";
        case LockFacts::Display::Wayland:
            return "wayland";
        }
        return "";
    }

    int exitCode(Verdict verdict)
    {
        switch (verdict) {
        case Verdict::SealedTight:
            return exitSuccess;
        case Verdict::SealedWithGaps:
            return exitSealedWithGaps;
        case Verdict::CannotSeal:
            return exitCannotSeal;
        }
        return exitCannotSeal;
    }

    Json json(const LockFinding& finding)
    {
        return { { "subject", finding.subject }, { "state", name(finding.state) },
            { "title", finding.title }, { "explanation", finding.explanation },
            { "remedy", finding.remedy }, { "change", finding.change } };
    }

    std::string jsonText(const LockReport& report, const LockFacts& facts)
    {
        Json document { { "format", formatVersion }, { "verdict", name(report.verdict) },
            { "exitCode", exitCode(report.verdict) } };
        document["display"] = { { "kind", name(facts.display) }, { "name", facts.displayName },
            { "server", facts.displayServer } };
        document["session"] = { { "type", facts.sessionType }, { "desktop", facts.sessionDesktop },
            { "class", facts.sessionClass } };
        document["kiosk"] = { { "process", facts.kioskProcess },
            { "isSealed", facts.isKioskSealed ? Json(*facts.isKioskSealed) : Json(nullptr) } };
        document["findings"] = Json::array();
        for (const auto& finding : report.findings)
            document["findings"].push_back(json(finding));
        // Names of programs and windows may be in any encoding.
        return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
    }

} // namespace

int doctorCommand(const LockFacts& facts, bool asJson, std::ostream& out, std::ostream& err)
{
    const auto report = lockReport(facts);
    out << (asJson ? jsonText(report, facts) : lockReportText(report, facts)) << std::flush;
    if (out)
        return exitCode(report.verdict);
    err << "quillox: cannot write standard output" << std::endl;
    return exitFailure;
}

} // namespace quillox
