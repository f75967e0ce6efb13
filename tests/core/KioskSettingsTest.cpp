#include "config/KioskSettings.h"

#include "config/SettingsFields.h"
#include "fakes/FakeDefaultsStore.h"
#include "fakes/FakeFileSystem.h"

#include <gtest/gtest.h>

#include <limits>

namespace quillox {

namespace {

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
