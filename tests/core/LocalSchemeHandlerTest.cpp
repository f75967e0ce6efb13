#include "local/LocalSchemeHandler.h"
#include "fakes/FakeSiteFiles.h"

#include <gtest/gtest.h>

namespace quillox {

namespace {

    class LocalSchemeHandlerTest : public testing::Test {
    protected:
        LocalSchemeHandlerTest()
        {
            for (const auto* name : { "index.html", "docs/index.html", "a b.html", "50%.txt",
                     "100%25.txt", "100%.txt", "FILE.JPG", "model.GLB", "LICENSE" })
                files.add(std::string("/a/site/") + name, name);
            files.add("/a/site/ten.bin", "0123456789");
            files.add("/a/site/empty.bin", "");
            files.add("/etc/passwd", "secret");
            types.types = { { "glb", "model/gltf-binary" }, { "html", "wrong/type" } };
        }

        SchemeResponse get(const std::string& path, std::optional<std::string> range = {})
        {
            return handler.answer({ "qxlocal://local" + path, std::move(range) }).value();
        }

        FakeSiteFiles files;
        FakeFileTypes types;
        LocalSchemeHandler handler { "/a/site/", files, types };
    };

    const SchemeResponse::Headers notFoundHeaders { { "Content-Type", "text/plain" },
        { "Content-Length", "0" }, { "Access-Control-Allow-Origin", "*" },
        { "Cache-Control", "no-cache" } };

    TEST_F(LocalSchemeHandlerTest, MapsPathsIntoTheFolder)
    {
        const std::string html = "text/html; charset=utf-8";
        const std::string text = "text/plain; charset=utf-8";
        struct Row {
            std::string path;
            std::string file; ///< Which one is served; empty for 404.
            std::string type;
        };
        for (const auto& row :
            std::vector<Row> { { "", "index.html", html }, { "/", "index.html", html },
                { "/?a=/x.png#/y", "index.html", html }, { "/docs/", "docs/index.html", html },
                { "/docs/%2e%2e/a%20b.html", "a b.html", html },
                { "/a%2520b.html", "a b.html", html }, { "/50%.txt", "50%.txt", text },
                { "/100%2525.txt", "100%.txt", text }, // Decoded twice, so never 100%25.txt.
                { "/room/3", "index.html", html }, { "/room/3.5", "", "" },
                { "/missing.png", "", "" }, { "/FILE.JPG", "FILE.JPG", "image/jpeg" },
                { "/model.GLB", "model.GLB", "model/gltf-binary" },
                { "/LICENSE", "LICENSE", "application/octet-stream" },
                { "/../../etc/passwd", "", "" }, { "/%2e%2e/%2e%2e/etc/passwd", "", "" },
                { "/%252e%252e%252f%252e%252e%252fetc/passwd", "", "" },
                { "/index.html%2500.png", "", "" } }) {
            const auto answer = get(row.path);
            EXPECT_EQ(FakeSiteFiles::body(answer), row.file) << row.path;
            auto headers = notFoundHeaders;
            if (!row.file.empty()) {
                headers[0].second = row.type;
                headers[1].second = std::to_string(row.file.size());
                headers.emplace_back("Accept-Ranges", "bytes");
            }
            EXPECT_EQ(answer.status, row.file.empty() ? 404U : 200U) << row.path;
            EXPECT_EQ(answer.headers, headers) << row.path;
        }
        EXPECT_FALSE(handler.answer({ "", std::nullopt }));
    }

    TEST_F(LocalSchemeHandlerTest, CutsOneByteRange)
    {
        struct Row {
            std::string range;
            std::string body; ///< Empty where the range is ignored.
            std::string contentRange;
        };
        for (const auto& row : std::vector<Row> { { "bytes=0-", "0123456789", "bytes 0-9/10" },
                 { "bytes=-4", "6789", "bytes 6-9/10" }, { "bytes=5-100", "56789", "bytes 5-9/10" },
                 { "bytes=5-99999999999999999999999", "56789", "bytes 5-9/10" },
                 { "bytes=5-x", "56789", "bytes 5-9/10" }, { "bytes=10-", "", "" },
                 { "bytes=7-3", "", "" }, { "bytes=0-1,4-5", "", "" }, { "bytes=-0", "", "" },
                 { "bytes=x-5", "", "" }, { "items=0-3", "", "" } }) {
            const auto answer = get("/ten.bin", row.range);
            const bool isCut = !row.body.empty();
            EXPECT_EQ(answer.status, isCut ? 206U : 200U) << row.range;
            EXPECT_EQ(FakeSiteFiles::body(answer), isCut ? row.body : "0123456789") << row.range;
            EXPECT_EQ(answer.headers[1].second, isCut ? std::to_string(row.body.size()) : "10");
            const auto header = std::ranges::find(
                answer.headers, "Content-Range", &SchemeResponse::Headers::value_type::first);
            EXPECT_EQ(header != answer.headers.end() ? header->second : "", row.contentRange);
        }
        EXPECT_EQ(get("/empty.bin", "bytes=0-").status, 200U);
    }

} // namespace

} // namespace quillox
