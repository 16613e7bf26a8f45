#include "recovery/FileTypeCatalogue.h"
#include "recovery/RestoreSupport.h"
#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

namespace {

TEST(FileTypeCatalogue, CategoriesAndIconsFollowTheSubstringRule)
{
    struct Row
    {
        const char* name;
        const char* category;
        const char* icon;
    };
    const Row rows[] = {
        {"a.JPG", "photo", "image"},    {"a.jpe", "photo", "image"},
        {"a.r", "photo", "image"},      {"plain", "photo", "image"},
        {"end.", "photo", "image"},     {"a.mp", "photo", "image"},
        {"a.rm", "audio", "music"},     {"a.m4", "audio", "music"},
        {"a.ts", "video", "video"},     {"a.et", "document", "doc"},
        {"a.z", "archive", "zip"},      {"a.mpg", "others", "default"},
        {"a.flv", "others", "default"}, {"a.jfif", "others", "default"},
        {"a.b.PDF", "document", "doc"}, {"a.mo", "photo", "image"},
        {"a.od", "video", "doc"},       {"a.exe", "others", "exe"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(CategoryFolderName(row.name), row.category) << row.name;
        const std::string extension = LowerExtensionOf(row.name);
        EXPECT_EQ(FileIconPath(extension, true), std::string("FileIcon\\") + row.icon + ".png")
            << row.name;
        EXPECT_EQ(FileIconPath(extension, false),
                  std::string("FileIcon\\") + row.icon + "_error.png");
    }
    EXPECT_EQ(FileIconPath("Folder", false), "FileIcon\\folder.png");
    std::string extension = "kept";
    EXPECT_EQ(ExtensionOf("plain", extension), ResultInvalidParameter);
    EXPECT_EQ(extension, "kept");
}

TEST(RestoreSupport, PreviewsGoToTheFileOfTheirKindAndReplaceTheOneBefore)
{
    const DataFolder data;
    const std::pair<const char*, const char*> cases[] = {
        {"a.png", "tmp.jpg"}, {"b.jpg", "tmp.jpg"}, {"c.mp3", "tmp.avi"}, {"d.mkv", "tmp.avi"}};
    for (const auto& [name, file] : cases) {
        EXPECT_TRUE(PreviewNeedsFile(name));
        std::filesystem::path path;
        OutputFile out;
        ASSERT_EQ(OpenPreviewFile(data.Path(), name, path, out), ResultSuccess);
        EXPECT_EQ(path, data.Path() / file);
        EXPECT_EQ(std::filesystem::file_size(path), 0u) << "nothing of the last preview is left";
        EXPECT_EQ(out.Write(Bytes("'bytes'").data(), 5), ResultSuccess);
    }
    EXPECT_FALSE(PreviewNeedsFile("a.pdf"));
    EXPECT_FALSE(PreviewNeedsFile("plain"));
}

TEST(RestoreSupport, SeparatorsAreCountedWithoutTheLastCharacter)
{
    const std::pair<const char*, std::uint32_t> cases[] = {
        {"", 0}, {"a", 0}, {"/", 0}, {"/a", 1}, {"/a/", 1}, {"/a/b", 2}, {"a//b", 2}};
    for (const auto& [path, count] : cases) {
        EXPECT_EQ(CountSeparators(path), count) << path;
    }
}

}  // namespace
