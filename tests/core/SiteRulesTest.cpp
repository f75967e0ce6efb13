#include "config/SiteRules.h"

#include <gtest/gtest.h>

namespace quillox {

namespace {

    TEST(SiteRules, AnExtraDomainIsCleanedLiterally)
    {
        struct Row {
            std::string_view typed;
            std::optional<std::string> host;
        };
        const Row rows[] {
            { " \tHTTPS://Partner.ORG/rooms/?q=1\t ", "partner.org" },
            { "example.org.", "example.org" },
            { ". . example.org . /x", "example.org" },
            { "a/b://c", "c" },
            { "http://a://b", "a:" },
            { "a//b", "a" },
            { "example.org:8080", "example.org:8080" },
            { "*.example.org", "*.example.org" },
            { "user@www.example.org", "user@www.example.org" },
            { "a?b", "a?b" },
            { "\nexample.org", "\nexample.org" },
            { "ÜBER.example", "über.example" },
            { "", {} },
            { " . .\t", {} },
            { "://", {} },
            { "https:///example.org", {} },
        };
        KioskSettings settings;
        std::vector<std::string> hosts;
        for (const auto& [typed, host] : rows) {
            EXPECT_EQ(KioskSettings::normalizeHost(typed), host) << typed;
            for (int repetition = 0; repetition < 2; ++repetition) {
                settings.allowedDomains.emplace_back(typed);
                if (host)
                    hosts.push_back(*host);
            }
        }
        EXPECT_EQ(settings.allowedHosts(), hosts);
    }

    TEST(SiteRules, TheSectionIsTheDecodedPathOfTheStartAddress)
    {
        struct Row {
            std::string_view url;
            std::optional<std::string> prefix;
        };
        const Row rows[] {
            { "https://example.org/exhibits/", "/exhibits" },
            { "https://example.org/a%20b/%C3%A9?q#f", "/a b/é" },
            { "https://example.org/a//", "/a/" },
            { "https://example.org//", "/" },
            { "https://example.org/", {} },
            { "https://example.org", {} },
            { "ftp://example.org/a", {} },
            { "example.org/a", {} },
        };
        for (const auto& [url, prefix] : rows) {
            KioskSettings settings;
            settings.url = url;
            EXPECT_EQ(settings.lockedPathPrefix(), prefix) << url;
        }
    }

    struct Judgement {
        bool isAllowed;
        std::string_view url;
    };

    template <std::size_t count>
    void expectJudgements(const KioskSettings& settings, const Judgement (&rows)[count])
    {
        const SiteRules rules(settings);
        for (const auto& [isAllowed, text] : rows) {
            const auto url = Url::parse(text);
            ASSERT_TRUE(url) << text;
            EXPECT_EQ(rules.isAllowed(*url), isAllowed) << text << " from " << settings.url;
        }
    }

    TEST(SiteRules, KeepsToTheStartHostItsSubdomainsAndTheExtraDomains)
    {
        KioskSettings settings;
        settings.url = "https://example.org/";
        settings.restrictToPath = true; // The start address has no section.
        settings.allowedDomains = { "Partner.org.", "*.wild.org", "port.org:8080" };
        expectJudgements(settings,
            { { true, "https://example.org" }, { true, "HTTP://example.org:8080/x" },
                { true, "https://a.shop.example.org/" }, { false, "https://notexample.org/" },
                { false, "https://example.org.evil.org/" }, { false, "https://org/" },
                { false, "https://Example.org/" }, { false, "https://example.org./" },
                { true, "https://partner.org/" }, { true, "https://a.B.PARTNER.org/x" },
                { false, "https://notpartner.org/" }, { false, "https://a.wild.org/" },
                { false, "https://port.org:8080/" }, { false, "ftp://example.org/" },
                { false, "about:blank" }, { false, "data:example.org" }, { false, "https://" },
                { true, "qxlocal://local/" }, { false, "QXLOCAL://local/" } });
        settings.restrictToDomain = false;
        expectJudgements(settings,
            { { true, "ftp://evil.org/" }, { true, "about:blank" }, { true, "https://" } });

        settings = { .url = "https://www.example.org/" };
        expectJudgements(settings,
            { { true, "https://a.www.example.org/" }, { false, "https://example.org/" } });
        settings = { .url = "https://Example.org/", .allowedDomains = { "partner.org" } };
        expectJudgements(
            settings, { { true, "https://a.Example.org/" }, { false, "https://example.org/" } });
        settings = { .allowedDomains = { "partner.org" } };
        expectJudgements(settings, { { false, "https://partner.org/" }, { true, "qxlocal:x" } });
        settings = { .url = "https://example.org/",
            .allowedDomains = { "partner.org" },
            .sourceKind = SourceKind::local,
            .localPath = "/srv/site" };
        expectJudgements(settings,
            { { false, "https://example.org/" }, { false, "https://partner.org/" },
                { true, "qxlocal://local/a" } });
    }

    TEST(SiteRules, KeepsToTheSectionOfTheStartHostOnly)
    {
        KioskSettings settings;
        settings.url = "https://example.org/exhibits/";
        settings.restrictToPath = true;
        settings.allowedDomains = { "partner.org" };
        expectJudgements(settings,
            { { true, "https://example.org/exhibits" }, { true, "http://example.org/exhibits/a/b" },
                { true, "https://example.org/%65xhibits/?q" }, { false, "https://example.org/" },
                { false, "https://example.org" }, { false, "https://example.org/exhibitsale" },
                { false, "https://example.org/Exhibits" },
                { false, "https://example.org/exhibits/..%2fstaff" },
                { false, "https://sub.example.org/exhibits/a" },
                { true, "https://partner.org/staff" }, { true, "https://a.partner.org" } });
        settings.allowedDomains = { "example.org" };
        expectJudgements(settings, { { true, "https://sub.example.org/staff" } });
    }

} // namespace

} // namespace quillox
