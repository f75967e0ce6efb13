#include "update/UpdateBed.h"

#include "fakes/FakeSystemLog.h"
#include "platform/linux/system/RunLoopGlib.h"
#include "platform/linux/update/InstallationFolders.h"
#include "platform/linux/update/SignatureCheckSodium.h"
#include "platform/linux/update/UpdateFeedSoup.h"
#include "resilience/update/UpdateCycle.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fcntl.h>
#include <memory>
#include <set>

namespace quillox {

namespace {

    using namespace std::chrono_literals;
    using Kind = UpdateCycle::Outcome::Kind;

    constexpr auto issued = "SOURCE_DATE_EPOCH=1700000000";

    /// The server of the tests, for as long as this lives.
    class Server {
    public:
        explicit Server(const std::string& root, const char* certificate = nullptr)
        {
            int ends[2];
            EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0);
            m_process = ::fork();
            if (m_process == 0) {
                ::dup2(ends[1], STDOUT_FILENO);
                ::execl("/usr/bin/python3", "/usr/bin/python3", QUILLOX_UPDATE_SERVER, root.c_str(),
                    certificate, nullptr);
                ::_exit(127);
            }
            ::close(ends[1]);
            m_output.reset(::fdopen(ends[0], "r"));
            port = std::atoi(nextLine().c_str());
            EXPECT_GT(port, 0);
        }
        ~Server()
        {
            ::kill(m_process, SIGTERM);
            ::waitpid(m_process, nullptr, 0);
        }

        /// What it was asked for next, and from which byte on.
        std::string nextLine()
        {
            char line[1024] {};
            EXPECT_TRUE(std::fgets(line, sizeof line, m_output.get()));
            return std::string(line).substr(0, std::string_view(line).find('\n'));
        }

        int port = 0;

    private:
        struct Close {
            void operator()(FILE* file) const { std::fclose(file); }
        };
        pid_t m_process = 0;
        std::unique_ptr<FILE, Close> m_output;
    };

    class UpdateCycleTest : public testing::Test {
    protected:
        /// The clock of the machine is the real one: what is issued in 2023 has to last.
        static void SetUpTestSuite()
        {
            bed = std::make_unique<UpdateBed>();
            bed->release("keys {0}/key >{0}/public");
            bed->release("keys {0}/foreign-key >/dev/null");
            bed->makeProgram(bed->folder.path / "tree", "1.1.0");
            const auto publish = [](const std::string& feed, const std::string& more) {
                bed->release(
                    fmt::format("publish --feed {{0}}/{} {} {{0}}/tree", feed, more), issued);
            };
            publish("right", "--key {0}/key --version 1.1.0 --days 36500");
            publish("foreign", "--key {0}/foreign-key --version 1.1.0 --days 36500");
            publish("expired", "--key {0}/key --version 1.1.0 --days 1");
            publish("old", "--key {0}/key --version 0.9.0 --days 36500");
            publish("system", "--key {0}/key --version 1.1.0 --days 36500 --minimum-system 99.0.0");
            publish("damaged", "--key {0}/key --version 1.1.0 --days 36500");
            std::fstream archive(bed->folder.path / "damaged/quillox-1.1.0.tar.gz",
                std::ios::in | std::ios::out | std::ios::binary);
            archive.seekp(1000).put('!');
            archive.close();
            publish("newer", "--key {0}/key --version 1.1.0 --days 36500");
            bed->release("renew --key {0}/key --days 36500 --feed {0}/newer",
                "SOURCE_DATE_EPOCH=1700000001");
            server = std::make_unique<Server>(bed->folder.path);
        }
        static void TearDownTestSuite()
        {
            server.reset();
            bed.reset();
        }

        void SetUp() override
        {
            m_port = server->port;
            std::filesystem::remove_all(bed->folders.updateFolder());
            std::filesystem::remove_all(bed->folders.folderOf({ 1, 1, 0 }));
        }

        /// Checks, and fetches what is found, as a feed of that folder with that fault makes it.
        UpdateCycle::Outcome run(const std::string& fault, const std::string& feed)
        {
            const auto address
                = fmt::format("{}:{}/{}/{}/update.manifest", m_origin, m_port, fault, feed);
            const auto source = UpdateSource::parse(fmt::format("feed={}\npublicKey={}\n"
                                                                "allowLoopback=true\n",
                address, contentsOf(bed->folder.path / "public").substr(0, 64)));
            SignatureCheckSodium signatures(source.value().publicKey, runLoop);
            InstallationFolders installation(
                InstallationFolders::find(bed->folders.programOf({ 1, 0, 0 })).value(), runLoop);
            UpdateCycle cycle(
                { runLoop, m_feed, signatures, installation, log, *source, { 2, 36, 0 } });
            auto outcome = wait([&](auto done) { cycle.check(done); });
            if (outcome.kind == Kind::Found)
                outcome = wait([&](auto done) { cycle.fetch(done); });
            return outcome;
        }

        UpdateCycle::Outcome wait(const std::function<void(UpdateCycle::OnOutcome)>& begin)
        {
            std::optional<UpdateCycle::Outcome> outcome;
            bool isLate = false;
            const auto deadline = runLoop.after(60s, [&] { isLate = true; });
            begin([&](UpdateCycle::Outcome done) { outcome = std::move(done); });
            while (!outcome && !isLate)
                g_main_context_iteration(nullptr, TRUE);
            EXPECT_TRUE(outcome) << "nothing came";
            return outcome.value_or(UpdateCycle::Outcome {});
        }

        void askOverTls(int port)
        {
            m_origin = "https://127.0.0.1";
            m_port = port;
        }

        inline static std::unique_ptr<UpdateBed> bed;
        inline static std::unique_ptr<Server> server;
        RunLoopGlib runLoop;
        FakeSystemLog log;

    private:
        std::string m_origin = "http://127.0.0.1";
        int m_port = 0;
        UpdateFeedSoup m_feed { runLoop, { .silence = 1s, .text = 60s, .file = 60s } };
    };

    TEST_F(UpdateCycleTest, BringsANewVersionBesideTheRunningOne)
    {
        const auto before = bed->versions();
        EXPECT_EQ(run("good", "right").kind, Kind::Staged);
        auto after = bed->versions();
        EXPECT_EQ(after[bed->folders.programOf({ 1, 1, 0 })],
            contentsOf(bed->folder.path / "tree/quillox"));
        EXPECT_EQ(std::filesystem::status(bed->folders.programOf({ 1, 1, 0 })).permissions(),
            std::filesystem::perms(0755));
        std::erase_if(after,
            [](const auto& entry) { return entry.first.find("/1.1.0/") != std::string::npos; });
        EXPECT_EQ(after, before);
        EXPECT_NE(bed->folders.notes().find("staged=1.1.0"), std::string::npos);
        // A second time nothing is fetched but the manifest.
        while (server->nextLine().find(".tar.gz") == std::string::npos) { }
        EXPECT_EQ(run("silent-archive", "right").kind, Kind::Staged);
        EXPECT_EQ(server->nextLine(), "/silent-archive/right/update.manifest -");
    }

    TEST_F(UpdateCycleTest, WhatIsNotRightIsRefusedWithOneLineAndChangesNothing)
    {
        const struct {
            const char *fault, *feed, *reason;
        } rows[] {
            { "good", "foreign", "the manifest's signature is wrong" },
            { "good", "damaged", "the archive of 1.1.0 is not what was signed" },
            { "good", "expired", "the manifest of 1.1.0 has expired" },
            { "good", "old", "0.9.0 is older than 1.0.0, which runs" },
            { "good", "system", "1.1.0 needs a newer system" },
            { "short", "right", "the manifest's signature is wrong" },
            { "short-archive", "right", "the archive has another size than the manifest says" },
            { "endless", "right", "the manifest is too large" },
            { "endless-archive", "right", "the archive is larger than the manifest says" },
            { "redirect-manifest", "right", "the server redirects to another address" },
            { "redirect-archive", "right", "the server redirects to another address" },
        };
        const auto before = bed->versions();
        for (const auto& [fault, feed, reason] : rows) {
            const auto lines = log.lines().size();
            EXPECT_EQ(run(fault, feed).kind, Kind::Refused) << fault << ' ' << feed;
            ASSERT_EQ(log.lines().size(), lines + 1) << fault << ' ' << feed;
            EXPECT_EQ(log.lines().back(), fmt::format("Quillox: update refused: {}.", reason));
            EXPECT_TRUE(bed->versions() == before) << fault << ' ' << feed;
            std::error_code none;
            for (const auto& entry :
                std::filesystem::directory_iterator(bed->folders.updateFolder(), none))
                EXPECT_EQ(entry.path().filename(), "notes") << fault << ' ' << feed;
        }
        EXPECT_EQ(run("good", "newer").kind, Kind::Staged);
        EXPECT_EQ(run("good", "right").reason,
            "the manifest of 1.1.0 is older than one that was seen before");
    }

    TEST_F(UpdateCycleTest, WhatBreaksOffGoesOnFromThere)
    {
        const auto whole
            = std::filesystem::file_size(bed->folder.path / "right/quillox-1.1.0.tar.gz");
        const auto askedFor = [&](const std::string& fault) {
            for (;;) {
                const auto line = server->nextLine();
                if (line.starts_with("/" + fault) && line.find(".tar.gz") != std::string::npos)
                    return line.substr(line.find(' ') + 1);
            }
        };
        for (const auto* fault : { "dies", "forgets" }) {
            SetUp();
            const auto before = bed->versions();
            EXPECT_EQ(run(fault, "right").kind, Kind::Failed);
            EXPECT_TRUE(bed->versions() == before);
            EXPECT_EQ(askedFor(fault), "-");
            EXPECT_EQ(run(fault, "right").kind, Kind::Staged);
            EXPECT_EQ(askedFor(fault), fmt::format("bytes={}-", whole / 2));
        }
        EXPECT_EQ(run("silent", "right").kind, Kind::Failed);
        EXPECT_EQ(run("good", "missing").reason, "the server answers with status 404");
    }

    TEST_F(UpdateCycleTest, AServerThatCannotProveItsNameIsNotListenedTo)
    {
        const auto file = (bed->folder.path / "certificate").string();
        const auto make = "openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=127.0.0.1 "
                          "-addext subjectAltName=IP:127.0.0.1 -keyout "
            + file + " -out " + file + ".public 2>/dev/null && cat " + file + ".public >>" + file;
        ASSERT_EQ(std::system(make.c_str()), 0);
        const Server impostor(bed->folder.path.string(), file.c_str());
        askOverTls(impostor.port);
        const auto outcome = run("good", "right");
        EXPECT_EQ(outcome.kind, Kind::Refused);
        EXPECT_TRUE(outcome.reason.starts_with("the server cannot be trusted")) << outcome.reason;
        EXPECT_EQ(log.lines().size(), 1U);
    }

    TEST_F(UpdateCycleTest, AProgramUpdatesItselfAndComesBackWhenTheNewOneCrashes)
    {
        const UpdateBed home;
        const auto makeTree = [&](const std::string& version, const char* feed) {
            const auto tree = home.folder.path / version;
            put(tree / "resources/update.properties",
                fmt::format("feed=http://127.0.0.1:{}/good/{}/update.manifest\npublicKey={}\n"
                            "allowLoopback=true\n",
                    server->port, feed, contentsOf(bed->folder.path / "public").substr(0, 64)));
            std::filesystem::copy_file(QUILLOX_STAND_IN, tree / "quillox");
            return tree;
        };
        const auto root = home.folder.path / "home/app";
        home.release("install --version 1.0.0 --launcher " QUILLOX_LAUNCHER " "
            + makeTree("1.0.0", "first").string() + " " + root.string());
        const auto publish = [&](const char* feed, const std::string& version,
                                 const std::filesystem::path& tree) {
            bed->release(fmt::format("publish --key {{0}}/key --version {} --days 36500 --feed "
                                     "{{0}}/{} {}",
                             version, feed, tree.string()),
                issued);
        };
        publish("first", "1.1.0", makeTree("1.1.0", "second"));
        const auto crashing = makeTree("1.2.0", "second");
        put(crashing / "crashes", "");
        publish("second", "1.2.0", crashing);

        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(std::system(("DISPLAY=:0 " + (root / "quillox").string()).c_str()), 0);
        EXPECT_LT(std::chrono::steady_clock::now() - begin, 120s);
        EXPECT_EQ(
            contentsOf(home.folder.path / "home/trace"), "1.0.0\n1.1.0\n1.2.0\n1.2.0\n1.1.0\n");
        EXPECT_EQ(VersionFolders(root.string()).current(), (Version { 1, 1, 0 }));
    }

    TEST_F(UpdateCycleTest, GivenUpInTheMiddleNothingComesAndNothingWaits)
    {
        const auto begin = runLoop.monotonicNow();
        {
            UpdateFeedSoup feed(runLoop);
            const auto fetch = feed.fetchText(
                fmt::format("http://127.0.0.1:{}/silent/right/update.manifest", server->port), 8192,
                [](const UpdateFeed::Outcome&) { ADD_FAILURE(); });
            while (!server->nextLine().starts_with("/silent/")) { }
        }
        EXPECT_LT(runLoop.monotonicNow() - begin, 10s);
        while (g_main_context_iteration(nullptr, FALSE)) { }
    }

} // namespace

} // namespace quillox
