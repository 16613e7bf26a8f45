// The restoring side of CFastFatRecovery: a file or a folder's tree to disk, and data for a preview.
#include "recovery/RestoreSupport.h"
#include "recovery/fat/ClusterCopy.h"
#include "recovery/fat/FastFatRecovery.h"

ResultCode CFastFatRecovery::RestoreRecord(const FileRecord* record,
                                           const std::filesystem::path& destPath,
                                           std::uint32_t baseDepth)
{
    if (record == nullptr) {
        return ResultInvalidParameter;
    }
    const ClusterReader reader = {m_source, m_geometry.sectorSize, [this](std::uint32_t cluster) {
                                      return m_table.NextCluster(cluster);
                                  }};
    const auto restoreFile = [&](const FileRecord& file, const std::filesystem::path& path) {
        return RestoreClusters(reader, file, path, m_fileCallback, m_callbackContext);
    };
    if (record->IsFolder != 0) {
        return RestoreFolderTree(*this, *record, destPath, baseDepth, restoreFile);
    }
    if (const ResultCode made = MakeFolderOf(destPath)) {
        return made;
    }
    return restoreFile(*record, destPath);
}

ResultCode CFastFatRecovery::ReadRecordData(const FileRecord* record,
                                            std::filesystem::path& tempPathInOut,
                                            std::uint8_t* buffer,
                                            std::uint32_t& inOutSize,
                                            PreviewProgressCallback progressFn,
                                            void* context)
{
    if (record == nullptr) {
        return ResultInvalidParameter;
    }
    const ClusterReader reader = {m_source, m_geometry.sectorSize, [this](std::uint32_t cluster) {
                                      return m_table.NextCluster(cluster);
                                  }};
    return PreviewClusters(reader, *record,
                           {tempPathInOut, buffer, inOutSize, progressFn, context});
}
