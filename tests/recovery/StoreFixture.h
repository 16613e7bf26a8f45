// A record store in a temporary log folder, and short ways to fill it.
#pragma once

#include "recovery/ScanRecordReader.h"
#include "recovery/ScanRecordStore.h"
#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

class StoreFixture : public testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(Reopen(), ResultSuccess); }

    ResultCode Reopen()
    {
        m_reader.reset();
        m_store.reset();  // flushes
        m_store = std::make_unique<ScanRecordStore>();
        const ResultCode result = m_store->OpenStore(m_folder / "1", "Store");
        m_reader = std::make_unique<ScanRecordReader>(*m_store);
        return result;
    }

    std::filesystem::path FilePath(const std::string& suffix = "") const
    {
        return m_folder / "1" / ("Store" + suffix);
    }
    std::string TextOf(const std::string& suffix) const
    {
        const ByteVector bytes = ReadFileBytes(FilePath(suffix));
        return {bytes.begin(), bytes.end()};
    }

    // As an engine asks: what was looked up and is not there is entered.
    ResultCode ListChildren(std::uint64_t key, FileRecordList& outRecords)
    {
        std::vector<std::uint64_t> missing;
        const ResultCode result = m_reader->ListChildren(key, outRecords, missing);
        m_store->EnterEmptyKeys(missing);
        return result;
    }
    ResultCode CountChildren(std::uint64_t key, std::uint32_t& outCount)
    {
        std::vector<std::uint64_t> missing;
        const ResultCode result = m_reader->CountChildren(key, outCount, missing);
        m_store->EnterEmptyKeys(missing);
        return result;
    }

    std::uint32_t AddFile(std::string_view name,
                          std::uint32_t parent = 2,
                          std::uint32_t depth = 0,
                          bool intact = true)
    {
        FileRecord& record = m_store->ReserveRecord();
        record.RecordNumber = m_store->GetRecordCount();
        record.SetName(name);
        record.HeadIntact = intact ? 1 : 0;
        m_store->LinkRecord(parent, depth, record.RecordNumber);
        return m_store->GetRecordCount();
    }
    std::uint32_t AddFolder(std::string_view name,
                            std::uint32_t node,
                            std::uint32_t parent = 2,
                            std::uint32_t depth = 0)
    {
        FileRecord& record = m_store->ReserveRecord();
        record.RecordNumber = m_store->GetRecordCount();
        record.SetName(name);
        record.NodeId = node;
        record.IsFolder = 1;
        m_store->LinkFolder(parent, depth, record.RecordNumber, node, name);
        return m_store->GetRecordCount();
    }

    static std::vector<std::string> Names(const FileRecordList& records)
    {
        std::vector<std::string> names;
        for (const FileRecord& record : records) {
            names.emplace_back(record.NameText());
        }
        return names;
    }
    std::vector<std::string> Search(std::string_view pattern)
    {
        FileRecordList records;
        (void)m_store->FlushStore();
        EXPECT_EQ(m_reader->SearchRecords(
                      pattern, m_progress,
                      [&](const FileRecord& record, std::uint32_t) { records.push_back(record); }),
                  1);
        SortRecords(records);
        return Names(records);
    }
    std::string PathOf(std::uint32_t recordNumber)
    {
        FileRecord record;
        record.RecordNumber = recordNumber;
        std::string path = "untouched";
        EXPECT_EQ(m_reader->GetRecordPath(&record, path), ResultSuccess);
        return path;
    }

    TempFolder m_folder;
    std::unique_ptr<ScanRecordStore> m_store;
    std::unique_ptr<ScanRecordReader> m_reader;
    ScanRecordReader::SearchProgress m_progress;
};
