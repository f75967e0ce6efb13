#include "config/SettingsFields.h"
#include "config/SiteRules.h"
#include "fakes/FakeDefaultsStore.h"
#include "fakes/FakeFileSystem.h"

#include <gtest/gtest.h>

#include <limits>

namespace quillox {

namespace {

    TEST(Url, PartsAreReportedAsWrittenAndThePathDecoded)
    {
        struct Row {
            std::string_view text;
            std::string_view scheme;
            std::optional<std::string> host;
            std::string_view path;
        };
        const Row rows[] { { "https://example.org", "https", "example.org", "" },
            { "HTTPS://WWW.Example.org/", "HTTPS", "WWW.Example.org", "/" },
            { "http://example.org:8080/a%20b/%C3%A9?q=100%#top", "http", "example.org", "/a b/é" },
            { "http://127.0.0.1:0?x", "http", "127.0.0.1", "" },
            { "http://[2001:db8::1]:80/x", "http", "2001:db8::1", "/x" },
            { "http://[::ffff:10.0.0.1]", "http", "::ffff:10.0.0.1", "" },
            { "https://müller.example/straße", "https", "müller.example", "/straße" },
            { "https://例え.jp/", "https", "例え.jp", "/" },
            { "https://a/?f[]=\\d", "https", "a", "/" }, { "https://", "https", {}, "" },
            { "https:///path", "https", {}, "/path" }, { "about:blank", "about", {}, "blank" },
            { "qxlocal://local/a%2Fb", "qxlocal", "local", "/a/b" } };
        for (const auto& row : rows) {
            SCOPED_TRACE(row.text);
            const auto url = Url::parse(row.text);
            ASSERT_TRUE(url);
            EXPECT_EQ(url->scheme(), row.scheme);
            EXPECT_EQ(url->host(), row.host);
            EXPECT_EQ(url->path(), row.path);
            EXPECT_EQ(url->text(), row.text);
        }
        EXPECT_EQ(Url::parse("HtTp://a")->lowercaseScheme(), "http");
    }

    TEST(Url, WhatHasTwoReadingsOrNoneIsRefused)
    {
        const std::string_view rows[] { "", "example.org", "/path", "://example.org", "1http://a",
            " https://a", "https://a ", "https://a/\tb", "https://a/\u00a0", "https://a/\u202e",
            "https://a?b c", "https://good.example\\@evil.example", "https://a/b\\c",
            "https://user@a", "https://user:pass@a", "https://a@", "https://a%2eb", "https://a/%",
            "https://a/%4", "https://a/%zz", "https://a/%00", "https://[::1", "https://::1",
            "https://[::1]x", "https://[1::2::3]", "https://[12345::]", "https://[fe80::1%25eth0]",
            "https://[1:2:3:4:5:6:7]", "https://[1:2:3:4:5:6:7:8:9]", "https://[::1.2.3]",
            "https://a[b]", "https://a:", "https://a:b", "https://a:65536", "https://a:1:2",
            "https://:80", "https://127.1", "https://0x7f.1", "https://010.0.0.1",
            "https://256.0.0.1", "https://1.2.3.4.5", "https://a|b", "https://a\uff0fb",
            "https://a\u3002b", "https://\xff", "https://a/\xc3" };
        for (const auto row : rows)
            EXPECT_FALSE(Url::parse(row)) << row;
        EXPECT_FALSE(Url::parse(std::string_view("https://a/\0b", 12)));
    }

    TEST(Url, ComponentsAreEscapedAndReadBackAsTheyWere)
    {
        const auto url = Url::fromComponents("qxlocal", "local", "/a b/100%?#;\\é@:.html");
        EXPECT_EQ(url.text(), "qxlocal://local/a%20b/100%25%3F%23%3B%5C%C3%A9@:.html");
        EXPECT_EQ(Url::parse(url.text())->path(), url.path());
        EXPECT_EQ(url.host(), "local");
    }

    TEST(SiteRules, AnExtraDomainIsCleanedLiterally)
    {
        struct Row {
            std::string_view typed;
            std::optional<std::string> host;
        };
        const Row rows[] { { " \tHTTPS://Partner.ORG/rooms/?q=1\t ", "partner.org" },
            { "example.org.", "example.org" }, { ". . example.org . /x", "example.org" },
            { "a/b://c", "c" }, { "http://a://b", "a:" }, { "a//b", "a" },
            { "example.org:8080", "example.org:8080" }, { "*.example.org", "*.example.org" },
            { "user@www.example.org", "user@www.example.org" }, { "a?b", "a?b" },
            { "\nexample.org", "\nexample.org" }, { "ÜBER.example", "über.example" }, { "", {} },
            { " . .\t", {} }, { "://", {} }, { "https:///example.org", {} } };
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
        const Row rows[] { { "https://example.org/exhibits/", "/exhibits" },
            { "https://example.org/a%20b/%C3%A9?q#f", "/a b/é" },
            { "https://example.org/a//", "/a/" }, { "https://example.org//", "/" },
            { "https://example.org/", {} }, { "https://example.org", {} },
            { "ftp://example.org/a", {} }, { "example.org/a", {} } };
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

    /// A record in which no field has its default.
    KioskSettings otherSettings()
    {
        return { "http://example.org/é", false, true, { "a.org", "" }, true,
            std::numeric_limits<std::int64_t>::min(), "päss\"\n", true, true, true, 4294967295u,
            true, true, true, true, NavPosition::topRight, true, NotchBarColor::pageBackground,
            SourceKind::local, "/srv/site", "start.html", false };
    }

    TEST(KioskSettings, EveryFieldIsWrittenInOrderAndReadBack)
    {
        const auto other = otherSettings();
        for (const auto& field : settingsFields) {
            EXPECT_NE(encodedField(field, other), encodedField(field, {})) << field.name;
            auto changed = other;
            resetField(field, changed);
            EXPECT_NE(changed, other) << field.name;
        }
        EXPECT_EQ(KioskSettings::decoded(*other.encoded()), other);
        EXPECT_EQ(KioskSettings {}.encoded(),
            R"({"url":"https://","restrictToDomain":true,"restrictToPath":false,)"
            R"("allowedDomains":[],"scrollOnly":false,"idleResetSeconds":0,"exitPassword":"",)"
            R"("requireExitPassword":false,"keepAlive":false,"autoStartKiosk":false,)"
            R"("displayID":0,"showBack":false,"showForward":false,"showRefresh":false,)"
            R"("showHome":false,"navPosition":"bottomCenter","avoidNotch":false,)"
            R"("notchBarColor":"black","sourceKind":"remote","localPath":"",)"
            R"("localEntry":"index.html","autoUpdate":true})");
    }

    TEST(KioskSettings, AFieldThatIsMalformedTakesItsDefaultAndTheOthersStay)
    {
        struct Row {
            std::string_view json;
            KioskSettings expected;
        };
        const Row rows[] {
            { R"({"url":null,"scrollOnly":true,"unknown":1})", { .scrollOnly = true } },
            { R"({"navPosition":"middle","displayID":"7","idleResetSeconds":-5})",
                { .idleResetSeconds = -5 } },
            { R"({"displayID":7.0,"idleResetSeconds":1e3})",
                { .idleResetSeconds = 1000, .displayID = 7 } },
            { R"({"displayID":-1,"idleResetSeconds":1.5})", {} },
            { R"({"displayID":4294967296,"idleResetSeconds":9223372036854775808})", {} },
            { R"({"displayID":1e300,"idleResetSeconds":-9223372036854775808.0})",
                { .idleResetSeconds = std::numeric_limits<std::int64_t>::min() } },
            { R"({"displayID":true,"scrollOnly":1,"autoUpdate":"no"})", {} },
            { R"({"allowedDomains":["a.org",3]})", {} },
            { R"({"exitPassword":"x"})", { .exitPassword = "x", .requireExitPassword = true } },
            { R"({"requireExitPassword":7,"exitPassword":"x"})",
                { .exitPassword = "x", .requireExitPassword = true } },
            { R"({"exitPassword":"x","requireExitPassword":false})", { .exitPassword = "x" } },
            { R"({"exitPassword":5})", {} },
        };
        for (const auto& row : rows)
            EXPECT_EQ(KioskSettings::decoded(row.json), row.expected) << row.json;
        for (const auto* text : { "", "[]", "7", "null", "{", "{}x", "{\"url\":\"\xff\"}" })
            EXPECT_FALSE(KioskSettings::decoded(text)) << text;
    }

    TEST(KioskSettings, ARecordThatCannotBeEncodedLeavesTheStoredOne)
    {
        FakeDefaultsStore defaults;
        otherSettings().save(defaults);
        KioskSettings { .exitPassword = "\xff" }.save(defaults);
        EXPECT_EQ(KioskSettings::load(defaults), otherSettings());
        defaults.setData("kioskSettings", "[1]");
        EXPECT_EQ(KioskSettings::load(defaults), KioskSettings {});
    }

    TEST(KioskSettings, TheSourceFollowsFromTheFields)
    {
        FakeFileSystem files;
        files.addFile("/srv/Exhibit/index.html");
        constexpr auto local = SourceKind::local;
        struct Row {
            KioskSettings settings;
            std::string_view start;
            bool hasSource;
            std::string_view usageKey;
        };
        const Row rows[] {
            { {}, "", false, "https://" },
            { { .url = "example.org" }, "", false, "example.org" },
            { { .url = "HTTP://A.org/x?y" }, "HTTP://A.org/x?y", true, "A.org" },
            { { .url = "http://a.org", .sourceKind = local }, "http://a.org", true, "a.org" },
            { { .sourceKind = local, .localPath = "/srv/Exhibit" }, "qxlocal://local/index.html",
                true, "local:Exhibit" },
            { { .sourceKind = local, .localPath = "/srv/Exhibit/", .localEntry = "a b.html" },
                "qxlocal://local/a%20b.html", false, "local:Exhibit" },
            { { .sourceKind = local, .localPath = "/srv/Exhibit/index.html" },
                "qxlocal://local/index.html", false, "local:index.html" },
            { { .localPath = "/srv/Exhibit" }, "", false, "https://" },
        };
        for (const auto& row : rows) {
            SCOPED_TRACE(row.settings.url + " " + row.settings.localPath);
            const auto start = row.settings.kioskStartURL();
            EXPECT_EQ(start ? start->text() : "", row.start);
            EXPECT_EQ(row.settings.hasSource(files), row.hasSource);
            EXPECT_EQ(row.settings.usageSourceKey(), row.usageKey);
        }
        EXPECT_EQ(rows[4].settings.localRootURL(files), "/srv/Exhibit");
    }

} // namespace

} // namespace quillox
