// Carved records, and what is made of them: restored files and previews.
#include "recovery/carving/FileTypeRecovery.h"

#include "recovery/ScanLogDirectory.h"
#include "recovery/carving/CarveContext.h"
#include "tests/recovery/carving/CarveSupport.h"
#include "tests/support/FailingReader.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

struct Call
{
    std::int32_t percent;
    ResultCode error;
    bool operator==(const Call&) const = default;
};

struct Calls
{
    std::vector<Call> seen;
    ResultCode answer = ResultSuccess;
};

ResultCode OnFile(void* context,
                  std::int32_t percent,
                  std::int32_t,
                  ResultCode error,
                  const std::filesystem::path&)
{
    Calls& calls = *static_cast<Calls*>(context);
    calls.seen.push_back({percent, error});
    return calls.answer;
}

ResultCode OnPreview(void* context, std::int32_t percent, ResultCode error)
{
    return OnFile(context, percent, 100, error, {});
}

class FileTypeRecoveryTest : public testing::Test
{
protected:
    FileTypeRecoveryTest()
    {
        m_bytes = RandomBytes(400 * 512, 8);
        m_image.Put(0, m_bytes);
        EXPECT_EQ(m_carver.OpenImageFile(m_image.Path(), u'Z'), ResultSuccess);
        (void)m_carver.SetCallbacks(nullptr, OnFile, &m_calls, 100);
    }
    ~FileTypeRecoveryTest() override { ResetCarveContext(); }

    static FileRecord Record(std::string_view name, std::uint64_t lba, std::uint64_t size)
    {
        FileRecord record;
        record.EngineKind = EngineKindCarved;
        record.EntrySector = lba;
        record.FileSize = size;
        record.SetName(name);
        return record;
    }
    ByteVector Part(std::uint64_t lba, std::uint64_t size) const
    {
        const auto first = m_bytes.begin() + static_cast<std::ptrdiff_t>(lba * 512);
        return {first, first + static_cast<std::ptrdiff_t>(size)};
    }

    DataFolder m_data;
    TempFolder m_target;
    CarveImage m_image{400};
    ByteVector m_bytes;
    CFileTypeRecovery m_carver{OpenLog()};
    Calls m_calls;
};

TEST_F(FileTypeRecoveryTest, AHeadBecomesARecordAndAStep)
{
    const struct
    {
        std::string_view head;
        std::string_view name;
        std::uint64_t size;
        std::int64_t step;
    } cases[] = {
        {"'RIFF' 00 10 00 00 'WAVEfmt '", "5.wav", 4104, 1},  // a claim is not jumped over
        {"FF D8 FF E0 00 10 'JFIF' 00*8 FF D9", "5.jpg", 20, 1},
        {"'II' 2A 00", "5.tif", 1024, 2},
        {"'.RMF'", "5.rmvb", 1024, 2},
    };
    std::int64_t found = 0;
    SectorSource source;
    m_image.Put(7, Bytes("'%PDF-'"));
    ASSERT_EQ(source.OpenImage(m_image.Path()), ResultSuccess);
    FileRecordList records;
    for (const auto& one : cases) {
        const ByteVector sector = Padded(Bytes(one.head));
        std::int64_t step = 99;
        EXPECT_EQ(
            m_carver.CarveAtSector(ByteView(std::span(sector)), 5, {}, source, 512, step, found),
            ResultSuccess);
        EXPECT_EQ(step, one.step) << one.name;
        records.clear();
        ASSERT_EQ(m_carver.ListChildren(nullptr, 0, records), ResultSuccess);
        const auto record =
            std::find_if(records.begin(), records.end(),
                         [&one](const FileRecord& each) { return each.NameText() == one.name; });
        ASSERT_NE(record, records.end()) << one.name;
        EXPECT_EQ(std::uint64_t{record->FileSize}, one.size) << one.name;
        EXPECT_EQ(std::uint64_t{record->EntrySector}, 5u);
        EXPECT_EQ(std::uint32_t{record->EngineKind}, EngineKindCarved);
        EXPECT_EQ(std::uint16_t{record->DriveLetter}, u'Z');
        EXPECT_EQ(std::uint32_t{record->HeadIntact}, 1u);
        EXPECT_EQ(std::uint32_t{record->ClusterBytes}, NoClusterBytes);
        EXPECT_EQ(std::uint32_t{record->RecordNumber}, static_cast<std::uint32_t>(found));
    }
    const ByteVector pdf = Padded(Bytes("'%PDF-'"));
    std::int64_t step = 99;
    EXPECT_EQ(m_carver.CarveAtSector(ByteView(std::span(pdf)), 5, {}, source, 512, step, found),
              ResultInvalidParameter);
    EXPECT_EQ(step, 1);
    for (const std::int32_t size : {0, -1, 65537}) {
        EXPECT_EQ(
            m_carver.CarveAtSector(ByteView(std::span(pdf)), 5, {}, source, size, step, found),
            ResultInvalidParameter);
    }
    EXPECT_EQ(m_carver.GetRecordCount(), 4u);
    records.clear();
    EXPECT_EQ(m_carver.ListChildren(nullptr, 1, records), ResultSuccess);
    EXPECT_TRUE(records.empty());
    EXPECT_EQ(m_carver.SearchRecords("*.jpg|*.tif|", records), 1);
    EXPECT_EQ(records.size(), 2u);
}

TEST_F(FileTypeRecoveryTest, FilesComeBackToTheByte)
{
    const struct
    {
        std::uint64_t size;
        std::vector<Call> calls;
    } cases[] = {
        {0, {}}, {1000, {{100, 0}}}, {65536, {{100, 0}}}, {131073, {{49, 0}, {99, 0}, {100, 0}}}};
    for (const auto& one : cases) {
        m_calls.seen.clear();
        const FileRecord record = Record("3.jpg", 3, one.size);
        const std::filesystem::path path = m_target / "new/folder" / std::to_string(one.size);
        EXPECT_EQ(m_carver.RestoreRecord(&record, path, 0), ResultSuccess);
        EXPECT_EQ(ReadFileBytes(path), Part(3, one.size));
        EXPECT_EQ(m_calls.seen, one.calls) << one.size;
    }
}

TEST_F(FileTypeRecoveryTest, WhatCannotBeReadEndsTheCopyAndIsTold)
{
    const std::filesystem::path path = m_target / "file";
    // The block that reaches past the end is refused whole.
    FileRecord record = Record("200.tif", 200, 65536 + 512 * 100);
    EXPECT_EQ(m_carver.WriteCarvedFile(&record, path), ResultInvalidParameter);
    EXPECT_EQ(ReadFileBytes(path), Part(200, 65536));
    EXPECT_EQ(m_calls.seen.back(), (Call{100, ResultInvalidParameter}));
    EXPECT_EQ(m_carver.WriteCarvedFile(nullptr, path), ResultInvalidParameter);
    m_calls.seen.clear();
    m_calls.answer = ResultCancelled;
    record.EntrySector = 0;
    EXPECT_EQ(m_carver.WriteCarvedFile(&record, path), ResultCancelled);
    EXPECT_EQ(m_calls.seen.size(), 1u);
    m_calls = {};
    FailingReader failing;
    CFileTypeRecovery damaged(OpenLog());
    std::shared_ptr<ScanSource> source;
    ASSERT_EQ(ScanSource::OpenImage(m_image.Path(), &source), ResultSuccess);
    damaged.SetLogFolder(m_target / "log");
    ASSERT_EQ(damaged.ReopenStore("File_Type_old", 0, source, 512), ResultSuccess);
    failing.FailSector(150);
    record = Record("100.tif", 100, 65536);
    EXPECT_EQ(damaged.WriteCarvedFile(&record, m_target / "bad"), ResultReadFault);
    EXPECT_TRUE(
        ReadFileBytes(m_target / "bad").empty());  // nothing of the block, though sectors came
}

TEST_F(FileTypeRecoveryTest, PreviewsGoToAFileOrToTheBuffer)
{
    const struct
    {
        std::string_view name;
        std::string_view file;
    } cases[] = {{"3.JPG", "tmp.jpg"}, {"3.wmv", "tmp.avi"}, {"3.fla", ""}};
    for (const auto& one : cases) {
        const FileRecord record = Record(one.name, 3, 70000);
        std::filesystem::path path;
        ByteVector buffer(1000, 0xAA);
        std::uint32_t size = 900;
        EXPECT_EQ(m_carver.ReadRecordData(&record, path, buffer.data(), size, OnPreview, &m_calls),
                  ResultSuccess);
        if (one.file.empty()) {
            EXPECT_EQ(size, 900u);
            EXPECT_EQ(ByteVector(buffer.begin(), buffer.begin() + 900), Part(3, 900));
            EXPECT_EQ(buffer[900], 0xAA);
            continue;
        }
        EXPECT_EQ(size, 0u);
        EXPECT_EQ(path, ScanLogDirectory::DefaultRoot() / one.file);
        EXPECT_EQ(ReadFileBytes(path), Part(3, 70000));
        m_calls.answer = ResultCancelled;
        EXPECT_EQ(m_carver.ReadRecordData(&record, path, nullptr, size, OnPreview, &m_calls),
                  ResultCancelled);
        EXPECT_FALSE(std::filesystem::exists(path));  // half a picture is none
        m_calls = {};
    }
    std::filesystem::path path;
    std::uint32_t size = 5;
    EXPECT_EQ(m_carver.ReadRecordData(nullptr, path, nullptr, size, OnPreview, &m_calls),
              ResultInvalidParameter);
}

}  // namespace
