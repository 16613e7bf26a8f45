// A record store in a temporary log folder, and short ways to fill it.
#pragma once

#include "recovery/ScanLogDirectory.h"
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
    void SetUp() override
    {
        ScanLogDirectory::Instance().BeginNewLog();
        ASSERT_EQ(Reopen(), ResultSuccess);
    }

    ResultCode Reopen()
    {
        m_store.reset();  // flushes
        m_store = std::make_unique<ScanRecordStore>();
        return m_store->OpenStore("Store");
    }

    static std::filesystem::path FilePath(const std::string& suffix = "")
    {
        return ScanLogDirectory::Instance().CurrentLogPath() / ("Store" + suffix);
    }
    static std::string TextOf(const std::string& suffix)
    {
        const ByteVector bytes = ReadFileBytes(FilePath(suffix));
        return {bytes.begin(), bytes.end()};
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
        EXPECT_EQ(m_store->SearchRecords(pattern, records), 1);
        return Names(records);
    }
    std::string PathOf(std::uint32_t recordNumber)
    {
        FileRecord record;
        record.RecordNumber = recordNumber;
        std::string path = "untouched";
        EXPECT_EQ(m_store->GetRecordPath(&record, path), ResultSuccess);
        return path;
    }

    DataFolder m_data;
    std::unique_ptr<ScanRecordStore> m_store;
};
