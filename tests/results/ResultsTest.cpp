// The rules of the page of results, without a window.
#include "results/HiddenDoubles.h"
#include "results/NameFilter.h"
#include "results/RowOrder.h"
#include "results/RowTip.h"
#include "results/SelectionMap.h"
#include "results/TypeTree.h"
#include "texts/LanguageSection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <tuple>

namespace {

FoundRow Row(const std::string& name, std::uint64_t size = 0, bool isFolder = false)
{
    FoundRow row;
    row.record.SetName(name);
    row.record.FileSize = size;
    row.record.IsFolder = isFolder ? 1 : 0;
    return row;
}

TEST(ExtensionGroups, PutSpellingsTogetherInTheOrderOfTheResults)
{
    const std::vector<std::pair<std::string, std::string>> keys = {
        {"a.JPEG", "jpg"}, {"b.jpg", "jpg"},  {"c.tiff", "tif"},    {"d.scr", "pcx"},
        {"e.MIDI", "mid"}, {"f.m4p", "m4a"},  {"README", "readme"}, {"g.tar.gz", "gz"},
        {"h.", ""},        {"mtiff", "mtiff"}};
    for (const auto& [name, key] : keys) {
        EXPECT_EQ(GroupKeyOf(name), key) << name;
    }
    const std::vector<FoundRow> results = {Row("z.jpeg"), Row("x.png"), Row("a.JPG")};
    const ExtensionGroups groups = BuildGroups(results);
    ASSERT_EQ(groups.size(), 2u);
    EXPECT_EQ(groups.at("jpg"), (FileGroup{&results[0], &results[2]}));
}

TEST(TypeFilterMap, ALaterOptionOverridesAndTakesOutWhatIsItsOwn)
{
    const TypeOption audio = {TypeCategory::Audio, "RM (.rm)", "rm|ra", ""};
    const TypeOption video = {TypeCategory::Video, "RM (.rm)", "rm", ""};
    TypeFilterMap filter;
    AddOption(filter, audio);
    AddOption(filter, video);
    EXPECT_EQ(filter.at("rm"), &video);
    EXPECT_EQ(WildcardFilter(filter), "*.ra|*.rm");
    RemoveOption(filter, audio);
    EXPECT_TRUE(filter.empty());
    EXPECT_EQ(WildcardFilter(filter).substr(0, 12), "*.bmp|*.gif|");
    EXPECT_NE(WildcardFilter(filter).find("*.thm||*.mp3|"), std::string::npos);
    EXPECT_TRUE(WildcardFilter(filter).ends_with("*.m2t|"));

    EXPECT_EQ(LookUpOption(filter, "xyz"), nullptr);
    EXPECT_EQ(WildcardFilter(filter), "*.xyz") << "what was looked up is asked for next time";
}

TEST(TypeFilterMap, WildcardsBecomeThePatternOfTheEngines)
{
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"*.jpg|*.png", ".\\.jpg|.\\.png"},           {"a*b", "a.b"}, {"\\*x", "\\x"}, {"**", ".."},
        {"[a]{b}^$+?", "\\[a\\]\\{b\\}\\^\\$\\+\\?"}, {"", ""}};
    for (const auto& [wildcards, pattern] : cases) {
        EXPECT_EQ(FilterPattern(wildcards), pattern) << wildcards;
    }
}

TEST(TypeTree, ShowsGroupsThatHaveAnOption)
{
    const TypeOption jpg = {TypeCategory::Photo, "JPG (.jpg)", "jpg|jpeg", "file='a.png' dest='1'"};
    const TypeOption odd = {TypeCategory::Photo, "(x)", "odd", ""};
    const TypeOption mp3 = {TypeCategory::Audio, "MP3", "mp3", "file='b.png'"};
    TypeFilterMap filter;
    for (const TypeOption* option : {&jpg, &odd, &mp3}) {
        AddOption(filter, *option);
    }
    const std::vector<FoundRow> results = {Row("a.JPEG"), Row("b.jpg"), Row("c.mp3"), Row("README"),
                                           Row("d.odd")};
    const ExtensionGroups groups = BuildGroups(results);
    const TypeTree tree = BuildTypeTree(groups, filter);
    ASSERT_EQ(tree[0].nodes.size(), 2u);
    EXPECT_EQ(tree[0].nodes[0].text, "JPG (2)");
    EXPECT_EQ(tree[0].nodes[0].image, "file='a.png'");
    EXPECT_EQ(tree[0].nodes[0].extensions, "jpg|jpeg");
    EXPECT_EQ(tree[0].nodes[0].group, &groups.at("jpg"));
    EXPECT_EQ(tree[0].nodes[1].text, " (1)");
    EXPECT_EQ(tree[0].files, 3u);
    ASSERT_EQ(tree[1].nodes.size(), 1u);
    EXPECT_EQ(tree[1].nodes[0].text, "MP3 (1)");
    EXPECT_TRUE(tree[2].nodes.empty());
    EXPECT_TRUE(filter.contains("readme"));
    EXPECT_EQ(BuildTypeTree(groups, filter)[0].files, 3u) << "a key without an option stays none";
    EXPECT_EQ(WithCount("Photos", 12), "Photos (12)");
}

TEST(RowColumns, ShowWhatIsKnown)
{
    FoundRow file = Row("a.b.JPG", 1536);
    file.record.WriteTime = 116444736000000000;
    const auto text = [&](FileColumn column) { return ColumnText(file.record, column); };
    EXPECT_EQ(text(FileColumn::FileName), "a.b.JPG");
    EXPECT_EQ(text(FileColumn::Size), "1.50 KB");
    EXPECT_EQ(text(FileColumn::ModifiedTime), "1970-1-1 00:00:00");
    EXPECT_EQ(text(FileColumn::CreatedTime), "    ----    ");
    EXPECT_EQ(text(FileColumn::Path), "    ----    ");
    EXPECT_EQ(text(FileColumn::Type), "JPG");
    EXPECT_EQ(ColumnText(Row("none").record, FileColumn::Type), "file");
    EXPECT_EQ(ColumnText(Row("x.y", 9, true).record, FileColumn::Type), "folder");
    EXPECT_EQ(ColumnText(Row("x.y", 9, true).record, FileColumn::Size), "");
}

TEST(RowTip, TellsAllOfAFileAndHidesNothing)
{
    LanguageSection extras;
    for (const char* key : {"EXT0108", "EXT0114", "EXT0115", "EXT0116", "EXT0117"}) {
        extras.Set(key, std::string(key).substr(5) + ":");
    }
    extras.Set("EXT0118", "whole");
    extras.Set("EXT0119", "lost");
    FoundRow file = Row("cod\u202Egpj.exe\nb", 1536);
    file.record.WriteTime = 116444736000000000;
    EXPECT_EQ(RowTip(file.record, "DCIM\\1\u200F00\\", extras),
              "cod\\u202Egpj.exe?b\n08: DCIM/1\\u200F00\n14: 1.50 KB\n15: 1970-1-1 00:00:00\nlost");
    file.record.HeadIntact = 1;
    EXPECT_TRUE(RowTip(file.record, "", extras).ends_with("00:00:00\nwhole"));
    EXPECT_EQ(RowTip(Row("DCIM", 0, true).record, "", extras), "DCIM");
}

// The names in the order that the list would have.
std::string Sorted(const std::vector<FoundRow>& rows, FileColumn header)
{
    std::vector<const FileRecord*> records;
    for (const FoundRow& row : rows) {
        records.push_back(&row.record);
    }
    const std::vector<std::uint32_t> ranks = SortRanks(records, header);
    std::vector<std::size_t> order(rows.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return ranks[a] < ranks[b]; });
    std::string names;
    for (const std::size_t index : order) {
        names += std::string(rows[index].record.NameText()) + " ";
    }
    return names;
}

TEST(RowOrder, EachHeaderSortsByItsFixedColumn)
{
    std::vector<FoundRow> rows = {Row("b.png", 2000), Row("A.gif", 900), Row("c.avi", 0, true),
                                  Row("a.jpg", 10)};
    rows[0].record.CreationTime = 116444736000000000;
    rows[3].record.WriteTime = 116444736000000000;
    const std::vector<std::pair<FileColumn, std::string>> cases = {
        {FileColumn::FileName, "A.gif a.jpg b.png c.avi "},
        {FileColumn::Size, "c.avi a.jpg A.gif b.png "},
        {FileColumn::Path, "c.avi b.png a.jpg A.gif "},  // by "1.95 KB", "10 Bytes", "900 Bytes"
        {FileColumn::Type, "A.gif c.avi a.jpg b.png "},  // by the creation date
        {FileColumn::ModifiedTime,
         "b.png A.gif c.avi a.jpg "},  // by the path, which is the same for all
        {FileColumn::CreatedTime,
         "c.avi A.gif a.jpg b.png "}};  // by the type: folder, gif, jpg, png
    for (const auto& [header, names] : cases) {
        EXPECT_EQ(Sorted(rows, header), names) << static_cast<int>(header);
    }
    EXPECT_EQ(SortRanks({&rows[2].record, &rows[2].record}, FileColumn::Size),
              (std::vector<std::uint32_t>{0, 0}));
}

TEST(RowOrder, AFirstClickSortsNamesUpwardAndSizesDownward)
{
    for (const FileColumn header : {FileColumn::FileName, FileColumn::Type}) {
        EXPECT_EQ(NextDirection(header, 0), 1);
        EXPECT_EQ(NextDirection(header, 1), -1);
        EXPECT_EQ(NextDirection(header, -1), 1);
    }
    for (const FileColumn header :
         {FileColumn::Size, FileColumn::ModifiedTime, FileColumn::CreatedTime}) {
        EXPECT_EQ(NextDirection(header, 0), -1);
        EXPECT_EQ(NextDirection(header, -1), 1);
    }
    EXPECT_EQ(NextDirection(FileColumn::Path, 0), 0);
}

TEST(NameFilter, TakesAPartOfTheNameInAnyCase)
{
    const std::vector<std::tuple<const char*, const char*, bool>> cases = {
        {"", "", true},           {"", "a.jpg", true},          {"IMG", "my_img_1.jpg", true},
        {".JP", "a.jpg", true},   {"b", "a.jpg", false},        {"ÄRGER", "großer ärger.png", true},
        {"ΣΟΦΟΣ", "σοφος", true}, {"Ж", "\xD0", false},         {"\xF0\x9F\x93\xB7", "📷.jpg", true},
        {"a b", "A  b", false},   {"ёЛКА", "новая ЁЛКА", true}, {"*", "a.jpg", false}};
    for (const auto& [part, name, takes] : cases) {
        EXPECT_EQ(NameFilter(part).Takes(name), takes) << part << " in " << name;
    }
}

TEST(HiddenDoubles, LeaveARowOutOnlyWhereTheOtherIsSeen)
{
    const TypeOption jpg = {TypeCategory::Photo, "JPG (.jpg)", "jpg", ""};
    const TypeOption tif = {TypeCategory::Photo, "TIF (.tif)", "tif", ""};
    TypeFilterMap filter;
    AddOption(filter, jpg);
    AddOption(filter, tif);
    std::vector<FoundRow> results = {Row("named.jpg"), Row("f1.jpg"), Row("f2.tif"), Row("raw.nef"),
                                     Row("f3.jpg")};
    for (std::uint32_t i = 0; i < results.size(); ++i) {
        results[i].at = {i == 0 || i == 3 ? EngineKindFastFat : EngineKindCarved, i + 1};
        results[i].record.EngineKind = results[i].at.store;
    }
    results[1].doubleOf = results[0].at;
    results[2].doubleOf = results[3].at;                    // whose type is not shown
    results[4].doubleOf = StorePlace{EngineKindCarved, 1};  // the place of another store's row
    ExtensionGroups groups = BuildGroups(results);
    const std::vector<DoubleRow> doubles = DoublesIn(groups, filter);
    ASSERT_EQ(doubles.size(), 1u);
    EXPECT_EQ(doubles[0].row, &results[1]);
    EXPECT_EQ(doubles[0].shown, &results[0]);
    LeaveOut(groups, doubles);
    EXPECT_EQ(groups.at("jpg"), (FileGroup{&results[0], &results[4]}));
    EXPECT_EQ(groups.at("tif"), (FileGroup{&results[2]}));

    SelectionMap selection;
    SetSelected(selection, results[1], true);
    SetSelected(selection, results[2], true);
    MoveTicks(selection, doubles);
    ASSERT_EQ(selection.size(), 2u);
    EXPECT_TRUE(selection.contains(KeyOf(results[0]))) << "the tick has moved";
    EXPECT_TRUE(selection.contains(KeyOf(results[2])));
}

TEST(SelectionMap, SumsAndNeverOverflows)
{
    SelectionMap selection;
    for (std::uint32_t place = 1; place <= 3; ++place) {
        FoundRow row = Row("a.jpg", place == 3 ? std::numeric_limits<std::uint64_t>::max() : 5);
        row.record.RecordNumber = 7;  // the same for all
        row.at.place = place;
        SetSelected(selection, row, true);
        SetSelected(selection, row, true);
        EXPECT_EQ(selection.size(), place);
    }
    EXPECT_EQ(SelectedBytes(selection), std::uint64_t{std::numeric_limits<std::int64_t>::max()});
    selection.erase(std::prev(selection.end()));
    EXPECT_EQ(SelectedBytes(selection), 10u);
}

}  // namespace
