#include "config/SiteRules.h"
#include "fakes/FakeRunLoop.h"
#include "fakes/FakeSystemLog.h"
#include "platform/linux/webkit/WebEngine.h"

#include <array>
#include <fstream>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <webkit/webkit.h>

namespace quillox {

namespace {

    struct Spelling {
        bool isAllowed;
        std::string written;
        std::string page; ///< That a relative spelling is resolved against; the start address.
    };

    void appendCharacter(std::string& text, gunichar character)
    {
        char bytes[6];
        text.append(bytes, static_cast<std::size_t>(g_unichar_to_utf8(character, bytes)));
    }

    /// Replaces what the corpus writes in braces.
    std::string spelledOut(std::string_view row)
    {
        std::string text;
        for (auto brace = row.find('{'); brace != row.npos; brace = row.find('{')) {
            text += row.substr(0, brace);
            const std::string inner(row.substr(brace + 1, row.find('}') - brace - 1));
            row.remove_prefix(brace + inner.size() + 2);
            if (const auto star = inner.rfind('*'); star != inner.npos) {
                for (int count = std::stoi(inner.substr(star + 1)); count > 0; --count)
                    text += inner.substr(0, star);
            } else if (inner == "port") {
                text += "8080";
            } else {
                appendCharacter(text, static_cast<gunichar>(std::stoul(inner.substr(2), {}, 16)));
            }
        }
        return text += row;
    }

    std::vector<Spelling> corpus()
    {
        constexpr std::string_view heading = "on the start address ";
        std::vector<Spelling> spellings;
        std::ifstream file(QUILLOX_CORPUS);
        std::string page;
        for (std::string line; std::getline(file, line);) {
            if (const auto start = line.find(heading); start != line.npos)
                page = spelledOut(line.substr(start + heading.size()));
            else if (line.starts_with("allowed ") || line.starts_with("refused "))
                spellings.push_back({ line[0] == 'a', spelledOut(line.substr(8)), page });
        }
        return spellings;
    }

    SiteRules rulesFor(const std::string& start)
    {
        KioskSettings settings;
        settings.url = start;
        settings.restrictToPath = true;
        return SiteRules(settings);
    }

    /// How the engine reads addresses: for each pair of an address and its page the whole address
    /// and its host, both empty where it cannot read it.
    class EngineReading {
    public:
        struct Result {
            std::string url;
            std::string host;
        };

        std::vector<Result> operator()(const std::vector<std::array<std::string, 2>>& pairs)
        {
            GVariantDict arguments;
            g_variant_dict_init(&arguments, nullptr);
            g_variant_dict_insert(&arguments, "pairs", "s", nlohmann::json(pairs).dump().c_str());
            m_results.clear();
            webkit_web_view_call_async_javascript_function(
                m_view.get(), script, -1, g_variant_dict_end(&arguments), nullptr, nullptr, nullptr,
                [](GObject* view, GAsyncResult* result, gpointer self) {
                    static_cast<EngineReading*>(self)->finish(WEBKIT_WEB_VIEW(view), result);
                },
                this);
            m_isWaiting = true;
            while (m_isWaiting)
                g_main_context_iteration(nullptr, TRUE);
            return std::move(m_results);
        }

    private:
        static constexpr auto script = R"(
            return JSON.stringify(JSON.parse(pairs).map(([text, page]) => {
              try { const url = new URL(text, page); return [url.href, url.hostname] }
              catch { return ["", ""] }
            })))";

        void finish(WebKitWebView* view, GAsyncResult* result)
        {
            m_isWaiting = false;
            const GObjectOwner<JSCValue> value(
                webkit_web_view_call_async_javascript_function_finish(view, result, nullptr));
            ASSERT_TRUE(value);
            const GTextOwner text(jsc_value_to_string(value.get()));
            for (const auto& pair : nlohmann::json::parse(text.get()))
                m_results.push_back({ pair[0], pair[1] });
        }

        GObjectOwner<WebKitNetworkSession> m_session { webkit_network_session_new_ephemeral() };
        GObjectOwner<WebKitWebView> m_view { WEBKIT_WEB_VIEW(g_object_ref_sink(
            g_object_new(WEBKIT_TYPE_WEB_VIEW, "network-session", m_session.get(), nullptr))) };
        std::vector<Result> m_results;
        bool m_isWaiting = false;
    };

    std::string inBrackets(const std::string& host)
    {
        return host.find(':') == host.npos ? host : "[" + host + "]";
    }

    TEST(AddressCorpus, IsJudgedAsTheEngineReadsIt)
    {
        const auto spellings = corpus();
        ASSERT_GE(spellings.size(), 150u);
        std::vector<std::array<std::string, 2>> pairs;
        for (const auto& spelling : spellings)
            pairs.push_back({ spelling.written, spelling.page });
        const auto readings = EngineReading()(pairs);
        ASSERT_EQ(readings.size(), spellings.size());
        for (std::size_t i = 0; i < spellings.size(); ++i) {
            const auto& [isAllowed, written, page] = spellings[i];
            SCOPED_TRACE(written + " on " + page + " is " + readings[i].url);
            const auto url = Url::parse(readings[i].url);
            EXPECT_EQ(url && rulesFor(page).isAllowed(*url), isAllowed);
            if (url && url->host()) {
                EXPECT_EQ(inBrackets(*url->host()), readings[i].host);
            }
        }
    }

    /// What is accepted before the engine has read it: the start address, as it was typed.
    TEST(AddressCorpus, WhatIsAcceptedUnreadHasTheSameHostForTheEngine)
    {
        struct Accepted {
            std::string written;
            std::string host;
        };
        std::vector<Accepted> accepted;
        std::vector<std::array<std::string, 2>> pairs;
        for (const auto& spelling : corpus()) {
            KioskSettings settings;
            settings.url = spelling.written;
            if (const auto start = settings.startURL()) {
                accepted.push_back({ spelling.written, inBrackets(*start->host()) });
                pairs.push_back({ spelling.written, "about:blank" });
                pairs.push_back({ "http://" + accepted.back().host, "about:blank" });
            }
        }
        EXPECT_GE(accepted.size(), 50u);
        const auto readings = EngineReading()(pairs);
        FakeRunLoop runLoop;
        FakeSystemLog log;
        const WebEngine engine(runLoop, log, 0);
        for (std::size_t i = 0; i < accepted.size(); ++i) {
            SCOPED_TRACE(accepted[i].written);
            const auto& whole = readings.at(2 * i);
            EXPECT_EQ(whole.host, readings.at(2 * i + 1).host);
            if (!whole.url.empty()) {
                EXPECT_EQ(engine.canonicalURL(accepted[i].written), whole.url);
            }
        }
    }

} // namespace

} // namespace quillox
