#include "lockdown/LockReport.h"

#include "lockdown/LockRules.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace quillox {

namespace {

    using State = LockFinding::State;
    using Verdict = LockReport::Verdict;

    constexpr std::size_t textWidth = 90;

    std::string filledIn(std::string_view text, const std::string& detail)
    {
        constexpr std::string_view mark = "{}";
        std::string filled(text);
        if (const auto place = filled.find(mark); place != std::string::npos)
            filled.replace(place, mark.size(), detail);
        return filled;
    }

    void decide(std::span<const LockRule> rules, const LockFacts& facts, LockReport& report)
    {
        std::string_view decided;
        for (const auto& rule : rules) {
            if (rule.subject == decided || !rule.applies(facts))
                continue;
            decided = rule.subject;
            const auto detail = rule.detail ? rule.detail(facts) : std::string();
            report.findings.push_back({ rule.subject, rule.state, std::string(rule.title),
                filledIn(rule.explanation, detail), filledIn(rule.remedy, detail),
                filledIn(rule.change, detail) });
        }
    }

    Verdict verdictOf(const std::vector<LockFinding>& findings)
    {
        const auto worst
            = std::ranges::max_element(findings, {}, [](const auto& each) { return each.state; });
        if (worst == findings.end() || worst->state == State::Blocking)
            return Verdict::CannotSeal;
        return worst->state == State::Closed ? Verdict::SealedTight : Verdict::SealedWithGaps;
    }

    std::string_view verdictText(Verdict verdict, bool isSealed)
    {
        switch (verdict) {
        case Verdict::SealedTight:
            return isSealed ? "Sealed tight: every way out below is closed."
                            : "This session can be sealed tight: every way out below is closed.";
        case Verdict::SealedWithGaps:
            return isSealed ? "Sealed, but with gaps." : "This session can be sealed, with gaps.";
        case Verdict::CannotSeal:
            return isSealed ? "Sealed, but without a lock." : "This session cannot be sealed.";
        }
        return {};
    }

    std::string_view stateText(State state)
    {
        switch (state) {
        case State::Closed:
            return "closed";
        case State::NotChecked:
            return "not checked";
        case State::Gap:
            return "open";
        case State::Blocking:
            return "no lock";
        }
        return {};
    }

    /// Breaks at spaces, and keeps the line ends that are there.
    std::string indented(std::string_view text, std::size_t indent)
    {
        std::string lines;
        while (!text.empty()) {
            auto length = std::min(text.find('\n'), text.size());
            if (indent + length > textWidth) {
                const auto space = text.rfind(' ', textWidth - indent);
                length = std::min(space == std::string_view::npos ? length : space, length);
            }
            lines += std::string(indent, ' ') + std::string(text.substr(0, length)) + "\n";
            text.remove_prefix(std::min(length + 1, text.size()));
        }
        return lines;
    }

    /// To be copied, so it is never broken.
    std::string quoted(std::string_view change)
    {
        std::string lines;
        for (std::size_t start = 0; start < change.size();) {
            const auto end = std::min(change.find('\n', start), change.size());
            lines += "        " + std::string(change.substr(start, end - start)) + "\n";
            start = end + 1;
        }
        return lines;
    }

    std::string findingText(const LockFinding& finding)
    {
        return fmt::format("\n[{}] {}\n", stateText(finding.state), finding.title)
            + indented(finding.explanation, 4) + indented(finding.remedy, 4)
            + quoted(finding.change);
    }

} // namespace

LockReport lockReport(const LockFacts& facts)
{
    LockReport report;
    decide(systemLockRules(), facts, report);
    if (facts.display == LockFacts::Display::X11)
        decide(x11LockRules(), facts, report);
    if (facts.display == LockFacts::Display::Wayland)
        decide(waylandLockRules(), facts, report);
    report.verdict = verdictOf(report.findings);
    return report;
}

std::string displayDescription(const LockFacts& facts)
{
    const auto server = facts.displayServer.empty() ? "" : ", " + facts.displayServer;
    switch (facts.display) {
    case LockFacts::Display::Absent:
        return "none";
    case LockFacts::Display::NotAnswering:
        return "does not answer";
    case LockFacts::Display::X11:
        return "X11 " + facts.displayName + server;
    case LockFacts::Display::Wayland:
        return "Wayland " + facts.displayName + server;
    }
    return {};
}

std::string lockReportText(const LockReport& report, const LockFacts& facts)
{
    auto text = fmt::format("{}\n\nDisplay: {}\nSession: {}\n",
        verdictText(report.verdict, isKioskKnownSealed(facts)), displayDescription(facts),
        facts.sessionDesktop.empty() ? "not named by the system" : facts.sessionDesktop);
    if (facts.kioskProcess != 0)
        text += fmt::format("Quillox runs as process {}{}.\n", facts.kioskProcess,
            facts.isKioskSealed ? (*facts.isKioskSealed ? " and is sealed" : " and is not sealed")
                                : "; whether it is sealed was not checked");
    auto findings = report.findings;
    std::ranges::stable_sort(
        findings, std::greater {}, [](const auto& finding) { return finding.state; });
    for (const auto& finding : findings)
        text += findingText(finding);
    return text;
}

} // namespace quillox
