#include "results/RowColumns.h"

#include "recovery/FileTypeCatalogue.h"
#include "texts/TextForms.h"

namespace {

std::string TimeText(std::uint64_t fileTime)
{
    return fileTime == 0 ? NoValueText : FormatFileTime(fileTime);
}

std::string TypeText(const FileRecord& record)
{
    if (record.IsFolder != 0) {
        return "folder";
    }
    std::string extension;
    return ExtensionOf(record.NameText(), extension) == ResultSuccess ? extension : "file";
}

}  // namespace

std::string ColumnText(const FileRecord& record, FileColumn column)
{
    switch (column) {
    case FileColumn::CheckAll:
        break;
    case FileColumn::FileName:
        return std::string(record.NameText());
    case FileColumn::Size:
        return record.IsFolder != 0 ? "" : FormatBytes(record.FileSize);
    case FileColumn::ModifiedTime:
        return TimeText(record.WriteTime);
    case FileColumn::CreatedTime:
        return TimeText(record.CreationTime);
    case FileColumn::Path:
        return NoValueText;
    case FileColumn::Type:
        return TypeText(record);
    }
    return {};
}
