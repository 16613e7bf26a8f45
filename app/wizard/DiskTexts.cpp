#include "app/wizard/DiskTexts.h"

#include "app/wizard/MainTexts.h"
#include "platform/Text.h"
#include "session/TargetContent.h"
#include "texts/TextForms.h"
#include "ui/markup/TextMarkup.h"

#include <QStringList>

namespace {

std::string Plain(std::string_view value)
{
    return PlainRun(ToQt(value)).toStdString();
}

// "Device: /dev/sda1"; nothing without a value.
QString Line(const char* key, std::string_view value)
{
    return value.empty() ? QString() : ToQt(FormatText("%s %s", ExtraText(key), Printable(value)));
}

QString ContentLine(const std::string& fileSystem)
{
    const TargetContent content = ContentCalled(fileSystem);
    const char* key = nullptr;
    switch (content.kind) {
    case ContentKind::Unknown:
    case ContentKind::Understood:
        return {};
    case ContentKind::NotUnderstood:
        key = "EXT0109";
        break;
    case ContentKind::Encrypted:
        key = "EXT0110";
        break;
    case ContentKind::Swap:
        key = "EXT0111";
        break;
    case ContentKind::VolumeGroup:
        key = "EXT0112";
        break;
    case ContentKind::Array:
        key = "EXT0113";
        break;
    }
    return ToQt(FormatText(ExtraText(key), Printable(content.fileSystem)));
}

DetailTexts ImageDetails(const RecoveryTarget& target)
{
    DetailTexts texts = {Labelled("MSG0209", target.ImageName()),
                         Labelled("MSG0210", FormatBytes(ImageBytes(target)))};
    texts[6] = Line("EXT0108", target.imagePath.parent_path().string());
    texts[9] = ContentLine(target.imageFileSystem);
    return texts;
}

QString ToolTip(const QStringList& lines)
{
    QStringList shown;
    for (const QString& line : lines) {
        if (!line.isEmpty()) {
            shown.append(ToQt(Printable(line.toStdString())));
        }
    }
    return shown.join(QLatin1Char('\n'));
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

QString ImagePartNameText(const TargetRow& row)
{
    return ToQt(FormatText("{f 5}{x 2}#%d %s{/f}", unsigned{row.number}, Plain(row.label)));
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
    if (!target.volume) {
        return ImageDetails(target);
    }
    const TargetRow& row = *target.volume;
    DetailTexts texts = {
        target.IsPartOfImage()
            ? Labelled("MSG0209", target.ImageName())
            : ToQt(FormatText("%s %d", MessageText("MSG0203"), unsigned{row.number})),
        row.label.empty() ? ToQt(MessageText("MSG0204")) : Labelled("MSG0204", row.label),
        Labelled("MSG0205", row.fileSystem),
        Labelled("MSG0206", FormatBytes(row.totalBytes)),
        Labelled("MSG0207", FormatBytes(row.usedBytes)),
        Labelled("MSG0208", FormatBytes(row.freeBytes))};
    texts[6] = target.IsPartOfImage() ? Line("EXT0108", target.imagePath.parent_path().string())
                                      : Line("EXT0105", row.node.string());
    texts[7] = Line("EXT0106", row.mountPoint);
    texts[8] = Line("EXT0107", row.disk.model);
    texts[9] = ContentLine(row.fileSystem);
    return texts;
}

QString ToolTipOf(const RecoveryTarget& target)
{
    const DetailTexts texts = DetailsOf(target);
    return ToolTip(QStringList(texts.begin(), texts.end()));
}

QString ToolTipOf(const DiskFacts& disk)
{
    return ToolTip({ToQt(FormatText("%s %d", MessageText(disk.removable ? "MSG0202" : "MSG0201"),
                                    disk.number + 1)),
                    Line("EXT0105", disk.node.string()), Line("EXT0107", disk.model),
                    Labelled("MSG0206", FormatBytes(disk.sizeBytes))});
}

QString ScannedName(const RecoveryTarget& target)
{
    QString name = ToQt(Printable(DetailsOf(target).front().toStdString()));
    if (!target.volume) {
        return name;
    }
    const std::string size = FormatBytes(target.volume->totalBytes);
    const std::string& fileSystem = target.volume->fileSystem;
    return name + ToQt(fileSystem.empty() ? FormatText(" (%s)", size)
                                          : FormatText(" (%s, %s)", Printable(fileSystem), size));
}
