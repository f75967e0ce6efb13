#include "platform/linux/system/SiteFilesLinux.h"
#include "contract/SavedFiles.h"
#include "platform/linux/system/FileTypesGio.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>

namespace quillox {

namespace {

    namespace fs = std::filesystem;
    using enum SiteFiles::Kind;

    TEST(SiteFilesLinuxTest, OpensRegularFilesBeneathTheFolderAndNothingElse)
    {
        const TemporaryFolder temporary;
        const auto& folder = temporary.path;
        const auto site = folder / "site";
        fs::create_directories(site / "docs");
        std::ofstream(site / "docs/page.html") << "0123456789";
        std::ofstream(folder / "secret.txt") << "secret";
        ASSERT_EQ(::mkfifo((site / "pipe").c_str(), 0600), 0);
        fs::create_symlink("docs/page.html", site / "inside");
        fs::create_symlink(site / "docs/page.html", site / "inside-absolute");
        fs::create_symlink("../secret.txt", site / "outside");
        fs::create_symlink(folder / "secret.txt", site / "outside-absolute");
        fs::create_symlink(folder, site / "outside-folder");
        fs::create_symlink("/dev/zero", site / "device");
        fs::create_symlink("nowhere", site / "dangling");
        fs::create_directory_symlink(site, folder / "linked-root");

        struct Row {
            std::string name;
            SiteFiles::Kind kind;
            bool opens;
        };
        const SiteFilesLinux files;
        for (const auto& row : std::vector<Row> {
                 { "", Directory, false },
                 { "docs", Directory, false },
                 { "docs/page.html", Other, true },
                 { "inside", Other, true },
                 { "inside-absolute", Other, true },
                 { "outside", Other, false },
                 { "outside-absolute", Other, false },
                 { "outside-folder/secret.txt", Other, false },
                 { "../secret.txt", Other, false },
                 { "device", Other, false },
                 { "pipe", Other, false },
                 { "dangling", Missing, false },
                 { "nothing", Missing, false },
             }) {
            for (const auto& root : { site, folder / "linked-root" }) {
                EXPECT_EQ(files.kind(root, row.name), row.kind) << row.name;
                EXPECT_EQ(files.open(root, row.name) != nullptr, row.opens) << row.name;
            }
        }

        const auto page = files.open(site, "docs/page.html");
        EXPECT_EQ(page->size(), 10U);
        std::array<std::byte, 4> buffer {};
        EXPECT_EQ(page->read(7, buffer), 3U);
        EXPECT_EQ(buffer[0], std::byte { '7' });
        EXPECT_EQ(page->read(10, buffer), 0U);
    }

    TEST(FileTypesGioTest, AsksTheRegistry)
    {
        const FileTypesGio types;
        EXPECT_EQ(types.mimeType("bmp"), "image/bmp");
        EXPECT_FALSE(types.mimeType("no-such-extension"));
    }

} // namespace

} // namespace quillox
