#include "tests/recovery/deep/DeepSupport.h"

#include "platform/Folders.h"

#include <algorithm>
#include <stdexcept>

DeepRun::DeepRun(const std::filesystem::path& image, ScanDepth depth)
    : m_owner(RecoveryEngineFactory(OpenLog()).MakeEngineForImage(image, 1001, depth)),
      m_engine(dynamic_cast<CProfessionalRecovery*>(m_owner.get()))
{
    if (m_engine == nullptr) {
        throw std::runtime_error("no deep engine for " + image.string());
    }
}

ResultCode DeepRun::OnProgress(void* context,
                               std::int32_t progress,
                               std::int32_t range,
                               std::int32_t /*secondsLeft*/,
                               std::uint64_t doneSectors,
                               std::uint64_t totalSectors,
                               std::uint64_t /*filesFound*/,
                               std::uint32_t /*reserved*/)
{
    return static_cast<DeepRun*>(context)->m_decide({progress, range, doneSectors, totalSectors});
}

ResultCode DeepRun::Scan(std::function<ResultCode(const DeepProgress&)> decide)
{
    m_decide = std::move(decide);
    m_engine->SetCallbacks(m_decide ? &OnProgress : nullptr, nullptr, this, 100);
    const ResultCode result = m_engine->Scan(nullptr);
    m_engine->SetCallbacks(nullptr, nullptr, nullptr, 100);
    return result;
}

FileRecordList DeepRun::Search(std::string_view pattern)
{
    FileRecordList records;
    (void)m_engine->SearchRecords(pattern, records);
    return records;
}

std::map<std::string, ByteVector> DeepRun::Restore()
{
    TempFolder folder;
    std::map<std::string, ByteVector> files;
    int count = 0;
    for (const FileRecord& record : Search()) {
        std::string path;
        (void)m_engine->GetRecordPath(&record, path);
        std::replace(path.begin(), path.end(), '\\', '/');
        path += record.NameText();
        const std::filesystem::path to = folder / std::to_string(count++);
        if (!files.contains(path) && m_engine->RestoreRecord(&record, to, 0) == ResultSuccess) {
            files[path] = ReadFileBytes(to);
        }
    }
    return files;
}

std::map<std::uint32_t, std::set<std::string>> DeepRun::ComparePreviews()
{
    const TempFolder folder;
    std::map<std::uint32_t, std::set<std::string>> results;
    for (const FileRecord& record : Search()) {
        const std::filesystem::path restored = folder / "restored";
        const ResultCode expected = m_engine->RestoreRecord(&record, restored, 0);
        if (expected != ResultSuccess) {
            continue;
        }
        ByteVector whole = ReadFileBytes(restored);
        std::filesystem::remove(restored);
        ByteVector buffer(2000);
        std::uint32_t size = static_cast<std::uint32_t>(buffer.size());
        std::filesystem::path temporary;
        const ResultCode result =
            m_engine->ReadRecordData(&record, temporary, buffer.data(), size, nullptr, nullptr);
        buffer.resize(size);
        if (result != ResultSuccess) {
            whole.clear();
        } else if (temporary.empty()) {
            whole.resize(std::min(whole.size(), std::size_t{2000}));
        } else {
            buffer = ReadFileBytes(temporary);
        }
        results[std::uint32_t{record.EngineKind}].insert(result == ResultSuccess && buffer == whole
                                                             ? "same"
                                                             : "other than " +
                                                                   std::string(record.NameText()));
    }
    return results;
}

std::map<std::string, ByteVector> DeepRun::StoreBytes() const
{
    std::vector<std::string> names;
    if (ListFolder(m_engine->LogFolder(), names) != ResultSuccess) {
        throw std::runtime_error("no log folder");
    }
    std::map<std::string, ByteVector> files;
    for (const std::string& name : names) {
        std::string plain = name.substr(0, name.find("_0_"));
        for (const char* suffix : {"_Relation", "_DirInfo"}) {
            plain += name.ends_with(suffix) ? suffix : "";
        }
        files[plain] = ReadFileBytes(m_engine->LogFolder() / name);
    }
    return files;
}
