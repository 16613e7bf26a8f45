#include "session/TypeFilter.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

TEST(TypeFilter, TakesExtensionsExactlyAndFamiliesByTheCatalogue)
{
    std::vector<FileRecord> records;
    for (const char* name : {"a.jpg", "b.JPG", "c.png", "d.bmp", "e.txt", "f.xyz", "none"}) {
        FileRecord& record = records.emplace_back();
        record.SetName(name);
        record.HeadIntact = 1;
    }
    records.emplace_back().SetName("headless.jpg");
    const std::vector<std::pair<std::string, int>> cases = {
        {"photo", 4},
        {"jpg", 2},
        {"JPG,.bmp,*.txt", 4},
        {".jp", 0},  // no substring rule for names given
        {" jpg , png ", 3},
        {"photos", 4},
        {"Pictures,docs", 5},
        {"jpeg", 2},  // the same type
        {".xyz", 1},
        {"document", 1},
        {"others", 1},  // f.xyz; a name without extension is no file of any type
        {"others,jpg", 3},
        {"photo,others,document", 6},
        {"all", 8},
    };
    for (const auto& [types, count] : cases) {
        const std::optional<TypeFilter> filter = TypeFilter::Parse(types);
        ASSERT_TRUE(filter) << types;
        EXPECT_EQ(std::count_if(records.begin(), records.end(),
                                [&](const FileRecord& record) { return filter->Accepts(record); }),
                  count)
            << types;
    }
    for (const char* types :
         {"", "jpg,,png", "a/b", "tar.gz", "*", "a|b", "jp", "jpg,xyz", ".photo|"}) {
        EXPECT_FALSE(TypeFilter::Parse(types)) << types;
    }
    std::string wrong;
    EXPECT_FALSE(TypeFilter::Parse("jpg, foo ,png", &wrong));
    EXPECT_EQ(wrong, "foo");
    EXPECT_NE(TypeFilter::KnownTypes().find("archive (zip, rar, "), std::string::npos)
        << TypeFilter::KnownTypes();
}

}  // namespace
