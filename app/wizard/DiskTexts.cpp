#include "app/wizard/DiskTexts.h"

#include "app/wizard/MainTexts.h"
#include "texts/TextForms.h"
#include "ui/markup/TextMarkup.h"

namespace {

std::string Plain(std::string_view value)
{
    return PlainRun(ToQt(value)).toStdString();
}

std::string SizeText(std::uint64_t bytes)
{
    return FormatSize(static_cast<std::int64_t>(bytes));
}

DetailTexts ImageDetails(const RecoveryTarget& target)
{
    return {Labelled("MSG0209", target.imagePath.filename().string()),
            Labelled("MSG0210", SizeText(ImageBytes(target)))};
}

}  // namespace

// The closing mark of these two is none of an opening one; both end with the text all the same.
QString DiskHeaderText(const DiskFacts& disk)
{
    return ToQt(disk.removable ? FormatText("{f 5}{x 5}{i removable_drive.png 1 0}{x 2}%s %d{/5}",
                                            MessageText("MSG0202"), disk.number + 1)
                               : FormatText("{f 5}{x 5}{i physical_drive.png 1 0}{x 2}%s %d{/5}",
                                            MessageText("MSG0201"), disk.number + 1));
}

QString ImageHeaderText()
{
    return ToQt(FormatText("{f 7}{x 5}{i image_files.png 1 0}{x 2}%s{/f}", DesktopText("DSK0100")));
}

QString VolumeNameText(const TargetRow& row)
{
    if (static_cast<std::int64_t>(row.freeBytes) < 0) {
        return QStringLiteral("{f 5}{x 2}*:\\{/f}");
    }
    return ToQt(FormatText("{f 5}{x 2}%d:\\ %s{/f}", unsigned{row.number}, Plain(row.label)));
}

QString CellText(std::string_view value)
{
    return ToQt(FormatText("{f 5}%s{/f}", Plain(value)));
}

std::uint64_t ImageBytes(const RecoveryTarget& target)
{
    std::error_code failed;
    const std::uintmax_t size = std::filesystem::file_size(target.imagePath, failed);
    return failed ? 0 : size;
}

DetailTexts DetailsOf(const RecoveryTarget& target)
{
    if (target.IsImage()) {
        return ImageDetails(target);
    }
    const TargetRow& row = *target.volume;
    return {ToQt(FormatText("%s %d", MessageText("MSG0203"), unsigned{row.number})),
            row.label.empty() ? ToQt(MessageText("MSG0204")) : Labelled("MSG0204", row.label),
            Labelled("MSG0205", row.fileSystem),
            Labelled("MSG0206", SizeText(row.totalBytes)),
            Labelled("MSG0207", SizeText(row.usedBytes)),
            Labelled("MSG0208", SizeText(row.freeBytes))};
}

QString ScannedName(const RecoveryTarget& target)
{
    const QString name = DetailsOf(target).front();
    if (!target.volume) {
        return name;
    }
    const std::string size = SizeText(target.volume->totalBytes);
    const std::string& fileSystem = target.volume->fileSystem;
    return name + ToQt(fileSystem.empty() ? FormatText(" (%s)", size)
                                          : FormatText(" (%s, %s)", fileSystem, size));
}
