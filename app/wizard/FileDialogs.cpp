#include "app/wizard/FileDialogs.h"

#include "app/wizard/MainTexts.h"

#include <QFileDialog>

namespace {

QStringList ImageFilters()
{
    return {ToQt(DesktopText("DSK0101")) + QStringLiteral(" (*.img *.IMG)"),
            ToQt(DesktopText("DSK0102")) + QStringLiteral(" (*)")};
}

std::optional<std::filesystem::path> Run(QFileDialog& dialog)
{
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return std::nullopt;
    }
    // File names are bytes, and need not be what the locale says.
    const QByteArray name = QFile::encodeName(dialog.selectedFiles().constFirst());
    return std::filesystem::path(name.toStdString());
}

std::optional<std::filesystem::path> AskWhere(QWidget* parent,
                                              const std::filesystem::path& proposal,
                                              const QString& ending,
                                              const QStringList& filters)
{
    QFileDialog dialog(parent);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setDefaultSuffix(ending);
    dialog.setNameFilters(filters);
    if (proposal.has_parent_path()) {
        dialog.setDirectory(
            QFile::decodeName(QByteArray::fromStdString(proposal.parent_path().string())));
    }
    dialog.selectFile(QFile::decodeName(QByteArray::fromStdString(proposal.filename().string())));
    return Run(dialog);
}

}  // namespace

std::optional<std::filesystem::path> FileDialogs::OpenImage(QWidget* parent)
{
    QFileDialog dialog(parent);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setNameFilters(ImageFilters());
    return Run(dialog);
}

std::optional<std::filesystem::path> FileDialogs::SaveImage(QWidget* parent,
                                                            const std::filesystem::path& proposal)
{
    return AskWhere(parent, proposal, QStringLiteral("img"), ImageFilters());
}

std::optional<std::filesystem::path> FileDialogs::SaveText(QWidget* parent,
                                                           const std::filesystem::path& proposal)
{
    return AskWhere(parent, proposal, QStringLiteral("txt"),
                    {ToQt(ExtraText("EXT0255")) + QStringLiteral(" (*.txt)"),
                     ToQt(DesktopText("DSK0102")) + QStringLiteral(" (*)")});
}

std::optional<std::filesystem::path> FileDialogs::ChooseFolder(QWidget* parent,
                                                               const QString& title)
{
    QFileDialog dialog(parent, title);
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    return Run(dialog);
}
