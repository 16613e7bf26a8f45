#include "app/wizard/CreateImageChecks.h"

#include "app/wizard/MainTexts.h"
#include "platform/SafeName.h"
#include "texts/TextForms.h"

ScanTarget TargetOf(const ImageSource& source)
{
    if (source.target != nullptr) {
        return TargetOf(*source.target->volume);
    }
    ScanTarget whole;
    whole.diskNumber = source.disk.number;
    whole.sectorSize = source.disk.sectorSize;
    whole.sectorCount = source.disk.sizeBytes / source.disk.sectorSize;
    return whole;
}

std::optional<ImageSource> ImageSourceOf(RecoveryTarget* target, const DiskFacts* disk)
{
    if (target != nullptr && !target->IsImage()) {
        return ImageSource{target, {}};
    }
    return disk != nullptr ? std::optional(ImageSource{nullptr, *disk}) : std::nullopt;
}

std::string ProposedName(const ImageSource& source)
{
    if (source.target == nullptr) {
        return SafeFileName(FormatText(DesktopText("DSK0105"), source.disk.number + 1));
    }
    const TargetRow& row = *source.target->volume;
    return SafeFileName(FormatText("%d (%s, %s)", unsigned{row.number}, row.fileSystem,
                                   FormatBytes(row.totalBytes)));
}

CreateImageChecks::CreateImageChecks(const ImageSource& source, const std::filesystem::path& file)
    : m_task(TargetOf(source), file)
{
}

std::optional<ImageObjection> CreateImageChecks::Next()
{
    std::optional<ImageProblem> problem = m_task.NextProblem();
    if (problem && problem->fault == ImageFault::Exists) {
        // The dialog has asked for it.
        problem = m_task.NextProblem();
    }
    if (!problem) {
        return std::nullopt;
    }
    switch (problem->fault) {
    case ImageFault::OnSource:
        return ImageObjection{MessageText("MSG0218")};
    case ImageFault::MayBeOnSource:
        return ImageObjection{DesktopText("DSK0106"), true};
    case ImageFault::TooLargeForFat32:
        return ImageObjection{MessageText("MSG0220")};
    case ImageFault::TooLargeForFat:
        return ImageObjection{MessageText("MSG0219")};
    case ImageFault::NoRoom:
        return ImageObjection{MessageText("MSG0221")};
    case ImageFault::SourceIsImage:
    case ImageFault::NoName:
    case ImageFault::NoFolder:
    case ImageFault::NotPlainFile:
    case ImageFault::Exists:
        break;
    }
    return ImageObjection{DesktopText("DSK0107")};
}
