#include "config/Url.h"

#include <gtest/gtest.h>

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
        const Row rows[] {
            { "https://example.org", "https", "example.org", "" },
            { "HTTPS://WWW.Example.org/", "HTTPS", "WWW.Example.org", "/" },
            { "http://example.org:8080/a%20b/%C3%A9?q=100%#top", "http", "example.org", "/a b/é" },
            { "http://127.0.0.1:0?x", "http", "127.0.0.1", "" },
            { "http://[2001:db8::1]:80/x", "http", "2001:db8::1", "/x" },
            { "http://[::ffff:10.0.0.1]", "http", "::ffff:10.0.0.1", "" },
            { "https://müller.example/straße", "https", "müller.example", "/straße" },
            { "https://例え.jp/", "https", "例え.jp", "/" },
            { "https://a/?f[]=\\d", "https", "a", "/" },
            { "https://", "https", {}, "" },
            { "https:///path", "https", {}, "/path" },
            { "about:blank", "about", {}, "blank" },
            { "qxlocal://local/a%2Fb", "qxlocal", "local", "/a/b" },
        };
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

} // namespace

} // namespace quillox
