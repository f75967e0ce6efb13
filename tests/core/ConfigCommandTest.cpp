#include "app/ConfigCommand.h"

#include "fakes/FakeDefaultsStore.h"
#include "ports/TextFiles.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

namespace quillox {

namespace {

    class MemoryTextFiles final : public TextFiles {
    public:
        Text read(const std::string& path) override
        {
            if (const auto found = files.find(path); found != files.end())
                return { found->second, {} };
            return { {}, path + ": No such file" };
        }
        std::optional<std::string> write(const std::string& path, std::string_view text) override
        {
            if (path.starts_with("/readonly/"))
                return path + ": Read-only file system";
            files[path] = text;
            return std::nullopt;
        }

        std::map<std::string, std::string> files;
    };

    class ConfigCommandTest : public testing::Test {
    protected:
        int run(const std::vector<std::string>& arguments, const std::string& input = {})
        {
            std::istringstream in(input);
            std::ostringstream out;
            std::ostringstream err;
            auto words = arguments;
            words.insert(words.begin(), "config");
            const auto line = CommandLine::parse(words);
            const auto flush = [this](std::string* reason) {
                *reason = diskFailure;
                return diskFailure.empty();
            };
            auto code = exitUsage;
            if (line.kind == CommandLine::Kind::config)
                code = ConfigCommand({ defaults, flush, "/home/d.json", files, in, out, err })
                           .run(line.config);
            output = out.str();
            error = line.error.empty() ? err.str() : line.error + "\n";
            return code;
        }

        KioskSettings settings() const { return KioskSettings::load(defaults); }

        FakeDefaultsStore defaults;
        MemoryTextFiles files;
        std::string diskFailure;
        std::string output;
        std::string error;
    };

    TEST_F(ConfigCommandTest, WhatIsSetIsStoredAndComesBackAsTyped)
    {
        const std::pair<const char*, const char*> rows[] { { "url", "https://example.org/x" },
            { "url", "https://" }, { "scrollOnly", "true" }, { "idleResetSeconds", "-1" },
            { "exitPassword", "--with-password" }, { "displayID", "4294967295" },
            { "navPosition", "topLeft" }, { "localPath", "/srv/a, b" }, { "localPath", "" },
            { "localEntry", "a/b..html" }, { "hasOnboarded", "true" },
            { "allowedDomains", R"(["a.org","b, c"])" } };
        for (const auto& [key, value] : rows) {
            EXPECT_EQ(run({ "set", key, value }), exitSuccess) << key << ": " << error;
            EXPECT_EQ(run({ "get", key, "--with-password" }), exitSuccess);
            EXPECT_EQ(output, std::string(value) + "\n") << key;
        }
        run({ "set", "allowedDomains", " a.org,, b.org " });
        EXPECT_EQ(settings().allowedDomains, (std::vector<std::string> { "a.org", "b.org" }));
        EXPECT_TRUE(defaults.boolean("hasOnboarded"));
    }

    TEST_F(ConfigCommandTest, AWrongCommandKeyOrValueIsOneLineAndWritesNothing)
    {
        struct Row {
            std::vector<std::string> arguments;
            const char* named;
        };
        const Row rows[] { { {}, "--help" }, { { "frob" }, "frob" }, { { "get" }, "get KEY" },
            { { "set", "url" }, "set KEY VALUE" }, { { "show", "--jsn" }, "show [--json]" },
            { { "get", "navPositon" }, "did you mean navPosition?" },
            { { "reset", "" }, "the keys are: url, " }, { { "set", "", "true" }, "the keys are" },
            { { "set", "colour\nx", "1" }, "colour\\nx" },
            { { "set", "navPosition", "middle" }, "bottomCenter, bottomRight" },
            { { "set", "scrollOnly", "yes" }, "true or false" },
            { { "set", "displayID", "-1" }, "0 to 4294967295" },
            { { "set", "idleResetSeconds", "1e3" }, "whole number" },
            { { "set", "url", "example.org" }, "http or https" },
            { { "set", "localPath", "srv" }, "absolute" },
            { { "set", "localEntry", "" }, "without .." },
            { { "set", "localEntry", "a/../b" }, "without .." },
            { { "set", "exitPassword", "\xff" }, "UTF-8" },
            { { "set", "allowedDomains", std::string(100'000, '[') }, "list of texts" },
            { { "get", "exitPassword" }, "--with-password" } };
        for (const auto& row : rows) {
            EXPECT_EQ(run(row.arguments), exitUsage) << row.named;
            EXPECT_NE(error.find(row.named), std::string::npos) << error;
            EXPECT_EQ(error.find('\n'), error.size() - 1) << error;
            EXPECT_EQ(output, "");
        }
        EXPECT_TRUE(defaults.saves.empty());
    }

    TEST_F(ConfigCommandTest, ThePasswordShowsOnlyWhenAskedFor)
    {
        run({ "set", "exitPassword", "secret" });
        for (const std::vector<std::string>& words :
            { std::vector<std::string> { "show" }, { "show", "--json" }, { "export", "-" } }) {
            EXPECT_EQ(run(words), exitSuccess);
            EXPECT_EQ(output.find("secret"), std::string::npos) << output;
            auto asked = words;
            asked.emplace_back("--with-password");
            run(asked);
            EXPECT_NE(output.find("\"secret\""), std::string::npos) << output;
        }
        run({ "import", "-" }, R"({"kioskSettings":{"exitPassword":["secret"]}})");
        EXPECT_EQ(error.find("secret"), std::string::npos) << error;
    }

    TEST_F(ConfigCommandTest, AnExportCanBeImportedAndWhatItLacksStays)
    {
        const KioskSettings stored { .url = "https://a.org", .displayID = 9 };
        stored.save(defaults);
        defaults.setBoolean("hasOnboarded", true);
        EXPECT_EQ(run({ "export", "/e.json" }), exitSuccess);
        EXPECT_EQ(run({ "reset" }), exitSuccess);
        EXPECT_EQ(settings(), KioskSettings {});
        EXPECT_TRUE(defaults.boolean("hasOnboarded"));
        run({ "set", "exitPassword", "kept" });
        EXPECT_EQ(run({ "import", "/e.json" }), exitSuccess) << error;
        EXPECT_EQ(settings().url, "https://a.org");
        EXPECT_EQ(settings().exitPassword, "kept");
        EXPECT_EQ(run({ "import", "-" }, R"({"showHome":true})"), exitSuccess) << error;
        EXPECT_TRUE(settings().showHome);
    }

    TEST_F(ConfigCommandTest, AnImportIsStrictAndNamesThePlace)
    {
        const std::pair<const char*, const char*> rows[] { { "{", "f: parse error at line 1" },
            { "[]", "f: it must hold a JSON object" }, { R"({"x":1})", "f: \"x\": no such key" },
            { R"({"kioskSettings":[]})", "f: kioskSettings: it must be an object" },
            { R"({"hasOnboarded":0})", "f: hasOnboarded: 0 is not valid" },
            { R"({"kioskSettings":{"hasOnboarded":true}})", "f: kioskSettings.hasOnboarded" },
            { R"({"hasOnboarded":true,"kioskSettings":{"showBack":true,"navPosition":"up"}})",
                "f: kioskSettings.navPosition: \"up\" is not valid; it must be one of: topLeft" },
            { R"({"kioskSettings":{"ulr":"x"}})",
                "f: kioskSettings.\"ulr\": no such key; did you" },
            { R"({"kioskSettings":{"url":"ftp://a"}})", "f: kioskSettings.url: \"ftp://a\"" } };
        for (const auto& [text, named] : rows) {
            files.files["f"] = text;
            EXPECT_EQ(run({ "import", "f" }), exitUsage) << text;
            EXPECT_NE(error.find(named), std::string::npos) << error;
            EXPECT_EQ(error.find('\n'), error.size() - 1) << error;
        }
        EXPECT_TRUE(defaults.saves.empty());
    }

    TEST_F(ConfigCommandTest, FailuresOfTheDiskNameTheFileAndTheReason)
    {
        EXPECT_EQ(run({ "import", "/none" }), exitFailure);
        EXPECT_EQ(error, "quillox: cannot read /none: No such file\n");
        EXPECT_EQ(run({ "export", "/readonly/x" }), exitFailure);
        EXPECT_EQ(error, "quillox: cannot write /readonly/x: Read-only file system\n");
        diskFailure = "/home/d.json: No space left";
        EXPECT_EQ(run({ "set", "showHome", "true" }), exitFailure);
        EXPECT_EQ(error, "quillox: cannot write /home/d.json: No space left\n");
        EXPECT_EQ(run({ "path" }), exitSuccess);
        EXPECT_EQ(output, "/home/d.json\n");
    }

} // namespace

} // namespace quillox
