#include "resilience/update/UpdateRules.h"
#include "resilience/update/UpdateManifest.h"
#include "resilience/update/UpdateSource.h"
#include "resilience/update/UpdateTrial.h"

#include <gtest/gtest.h>

namespace quillox {

namespace {

    using Time = UpdateManifest::Time;
    using std::chrono::seconds;

    constexpr auto fields = R"("version":"1.1.0","file":"quillox-1.1.0.tar.gz","size":30,)"
                            R"("minimumSystem":"2.36.0","issued":1000,"expires":2000,)";

    std::string hash(char letter)
    {
        return std::string(64, letter);
    }

    UpdateManifest announced()
    {
        return { { 1, 1, 0 }, "quillox-1.1.0.tar.gz", 30, hash('a'), { 2, 36, 0 },
            Time(seconds(1000)), Time(seconds(2000)) };
    }

    TEST(UpdateRulesTest, VersionsAreThreePlainNumbersAndOrderedAsSuch)
    {
        for (const auto* text : { "", "1", "1.2", "1.2.3.4", "1.02.3", "1.2.x", "-1.2.3", "1..3",
                 " 1.2.3", "1.2.3 ", "1.2.99999999999", "+1.2.3", "../1.2.3" })
            EXPECT_FALSE(Version::parse(text)) << text;
        EXPECT_LT(*Version::parse("1.9.10"), *Version::parse("1.10.0"));
        EXPECT_LT(*Version::parse("1.10.0"), *Version::parse("2.0.0"));
    }

    TEST(UpdateRulesTest, AManifestIsReadStrictly)
    {
        const auto good = std::string("{") + fields + R"("sha256":")" + hash('a') + "\"}";
        EXPECT_EQ(UpdateManifest::parse(good), announced());
        const std::pair<std::string, std::string> damages[] {
            { "1.1.0\"", "1.1\"" },
            { "\"size\":30", "\"size\":-30" },
            { "\"size\":30", "\"size\":\"30\"" },
            { "\"size\":30,", "" },
            { "\"size\":30", "\"size\":30,\"more\":1" },
            { "1000", "1000.5" },
            { "2000", "99999999999999" },
            { "aaaa", "AAAA" },
            { "aaaa", "aaa" },
            { "quillox-1", "../quillox-1" },
            { "quillox-1", "https:quillox-1" },
            { "quillox-1", ".quillox-1" },
            { "}", "" },
            { "}", "} {}" },
        };
        for (const auto& [from, to] : damages) {
            auto damaged = good;
            damaged.replace(damaged.find(from), from.size(), to);
            EXPECT_FALSE(UpdateManifest::parse(damaged)) << damaged;
        }
    }

    TEST(UpdateRulesTest, TheSignatureStandsOverTheFormatAndTheManifest)
    {
        const std::string format(SignedManifest::format);
        const auto read = SignedManifest::parse(format + std::string(128, 'f') + "\n{}");
        ASSERT_TRUE(read);
        EXPECT_EQ(read->signature, std::string(64, '\xff'));
        EXPECT_EQ(read->signedBytes, format + "{}");
        EXPECT_EQ(read->manifest(), "{}");
        for (const auto& text : { std::string(), format, format + std::string(128, 'f'),
                 format + std::string(127, 'f') + "g\n{}", format + std::string(126, 'f') + "\n{}",
                 "quillox-update 2\n" + std::string(128, 'f') + "\n{}",
                 format + std::string(128, 'f') + "\n" + std::string(8192, ' ') })
            EXPECT_FALSE(SignedManifest::parse(text)) << text.substr(0, 160);
    }

    TEST(UpdateRulesTest, AFeedIsHttpsOrForTestsThisVeryMachine)
    {
        const auto key = "publicKey=" + hash('b') + "\n";
        const auto parse = [&](const std::string& feed, const std::string& more = {}) {
            return UpdateSource::parse("# Updates\n\nfeed=" + feed + "\n" + key + more);
        };
        const auto source = parse("https://updates.example.org/quillox/update.manifest");
        ASSERT_TRUE(source);
        EXPECT_EQ(source->publicKey, std::string(32, '\xbb'));
        EXPECT_EQ(source->addressOf("a.tar.gz"), "https://updates.example.org/quillox/a.tar.gz");
        EXPECT_TRUE(parse("http://127.0.0.1:8000/m", "allowLoopback=true\n"));
        EXPECT_TRUE(parse("http://[::1]:8000/m", "allowLoopback=true"));
        for (const auto* feed : { "http://127.0.0.1:8000/m", "http://updates.example.org/m",
                 "file:///etc/passwd", "https:///m", "https://a.example/m?x=/y", "" })
            EXPECT_FALSE(parse(feed)) << feed;
        for (const auto* feed : { "http://localhost/m", "http://127.0.0.1.evil.example/m",
                 "http://updates.example.org/m" })
            EXPECT_FALSE(parse(feed, "allowLoopback=true\n")) << feed;
        for (const auto* more :
            { "allowLoopback=yes\n", "feed=https://b.example/m\n", "x=y\n", "z" })
            EXPECT_FALSE(parse("https://a.example/m", more)) << more;
        EXPECT_FALSE(UpdateSource::parse("feed=https://a.example/m\n"));
    }

    TEST(UpdateRulesTest, AManifestIsHeldAgainstWhatIsHere)
    {
        using Kind = UpdateVerdict::Kind;
        struct Row {
            const char* what;
            void (*change)(UpdateManifest&, UpdateCircumstances&);
            Kind kind;
            const char* reason;
        };
        const Row rows[] {
            { "newer", [](auto&, auto&) {}, Kind::Newer, "" },
            { "the same",
                [](auto&, auto& here) {
                    here.running = { 1, 1, 0 };
                },
                Kind::UpToDate, "" },
            { "older",
                [](auto&, auto& here) {
                    here.running = { 1, 2, 0 };
                },
                Kind::Refused, "1.1.0 is older than 1.2.0, which runs" },
            { "the newest seen", [](auto&, auto& here) { here.notes.newestIssued = 1000; },
                Kind::Newer, "" },
            { "replayed", [](auto&, auto& here) { here.notes.newestIssued = 1001; }, Kind::Refused,
                "the manifest of 1.1.0 is older than one that was seen before" },
            { "its last second",
                [](auto&, auto& here) { here.now = RunLoop::WallTime(seconds(1999)); }, Kind::Newer,
                "" },
            { "expired", [](auto&, auto& here) { here.now = RunLoop::WallTime(seconds(2000)); },
                Kind::Refused, "the manifest of 1.1.0 has expired" },
            { "expired, though the same",
                [](auto&, auto& here) {
                    here.now = RunLoop::WallTime(seconds(2000));
                    here.running = { 1, 1, 0 };
                },
                Kind::Refused, "the manifest of 1.1.0 has expired" },
            { "rolled back",
                [](auto&, auto& here) {
                    here.notes.rolledBack = { { 1, 1, 0 } };
                },
                Kind::Refused, "1.1.0 did not work here and was rolled back" },
            { "another one rolled back",
                [](auto&, auto& here) {
                    here.notes.rolledBack = { { 1, 0, 9 } };
                },
                Kind::Newer, "" },
            { "system",
                [](auto&, auto& here) {
                    here.system = { 2, 35, 0 };
                },
                Kind::Refused, "1.1.0 needs a newer system" },
            { "empty", [](auto& manifest, auto&) { manifest.size = 0; }, Kind::Refused,
                "the archive of 1.1.0 has an impossible size" },
            { "huge", [](auto& manifest, auto&) { manifest.size = largestArchive + 1; },
                Kind::Refused, "the archive of 1.1.0 has an impossible size" },
        };
        for (const auto& row : rows) {
            auto manifest = announced();
            UpdateCircumstances here { { 1, 0, 0 }, { 2, 36, 0 }, {},
                RunLoop::WallTime(seconds(1500)) };
            row.change(manifest, here);
            EXPECT_EQ(judge(manifest, here), (UpdateVerdict { row.kind, row.reason })) << row.what;
        }
    }

    TEST(UpdateRulesTest, NotesSurviveAndDamagedOnesAreForgotten)
    {
        const UpdateNotes notes { .staged = Version { 1, 2, 0 },
            .trial = UpdateNotes::Trial { { 1, 1, 0 }, { 1, 0, 0 }, 1 },
            .rolledBack = { { 0, 9, 0 }, { 1, 0, 5 } },
            .newestIssued = 1'732'350'000 };
        EXPECT_EQ(UpdateNotes::parse(notes.text()), notes);
        for (const auto* text : { "", "=", "\n\n", "trial=1.1.0\nstarts=1", "staged\n=x\nstarts=-5",
                 "rolledBack= x ../1\nnewestIssued=x" })
            EXPECT_EQ(UpdateNotes::parse(text), UpdateNotes {}) << text;
    }

    TEST(UpdateRulesTest, TwoFailedStartsOrASilentOneEndATrial)
    {
        using Ending = UpdateTrial::Ending;
        using Verdict = UpdateTrial::Verdict;
        const Version running { 1, 0, 0 };
        const Version next { 1, 1, 0 };
        const auto begun = UpdateTrial::begun({ .staged = next }, next, running);
        EXPECT_EQ(begun.staged, std::nullopt);
        EXPECT_FALSE(UpdateTrial::isOver({}) || UpdateTrial::isOver(begun));
        const auto once = UpdateTrial::started(begun);
        const auto twice = UpdateTrial::started(once);
        // As after two power cuts: nobody saw the ends.
        EXPECT_TRUE(!UpdateTrial::isOver(once) && UpdateTrial::isOver(twice));
        EXPECT_FALSE(UpdateTrial::isOver(UpdateTrial::endedWell(twice)));
        EXPECT_EQ(UpdateTrial::judge(once, Ending::Crashed), Verdict::Again);
        EXPECT_EQ(UpdateTrial::judge(twice, Ending::Crashed), Verdict::RollBack);
        EXPECT_EQ(UpdateTrial::judge(once, Ending::Silent), Verdict::RollBack);
        EXPECT_EQ(UpdateTrial::judge(twice, Ending::Well), Verdict::Undecided);
        for (const auto ending : { Ending::Crashed, Ending::Silent, Ending::Well })
            EXPECT_EQ(
                UpdateTrial::judge(UpdateTrial::succeeded(twice), ending), Verdict::Undecided);
        const auto back = UpdateTrial::rolledBack(twice);
        EXPECT_EQ(back.trial, std::nullopt);
        EXPECT_EQ(back.rolledBack, std::set { next });
    }

} // namespace

} // namespace quillox
