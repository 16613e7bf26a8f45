// The dialogs that ask for a file or folder; an interface, so that a test can answer.
#pragma once

#include <QString>

#include <filesystem>
#include <optional>

class QWidget;

// Nothing when the user cancels.
class IFileDialogs
{
public:
    IFileDialogs() = default;
    IFileDialogs(const IFileDialogs&) = delete;
    IFileDialogs& operator=(const IFileDialogs&) = delete;
    virtual ~IFileDialogs() = default;

    // A disk image that exists.
    virtual std::optional<std::filesystem::path> OpenImage(QWidget* parent) = 0;
    // Where to write an image, ending in ".img" unless the user has given another ending; asks before a file is replaced. The
    // proposal is a name, or a path that was chosen before.
    virtual std::optional<std::filesystem::path>
    SaveImage(QWidget* parent, const std::filesystem::path& proposal) = 0;
    virtual std::optional<std::filesystem::path> ChooseFolder(QWidget* parent,
                                                              const QString& title) = 0;
    // Where to write a text file; asks before a file is replaced.
    virtual std::optional<std::filesystem::path>
    SaveText(QWidget* parent, const std::filesystem::path& proposal) = 0;
};

// Those of the desktop.
class FileDialogs : public IFileDialogs
{
public:
    std::optional<std::filesystem::path> OpenImage(QWidget* parent) override;
    std::optional<std::filesystem::path> SaveImage(QWidget* parent,
                                                   const std::filesystem::path& proposal) override;
    std::optional<std::filesystem::path> ChooseFolder(QWidget* parent,
                                                      const QString& title) override;
    std::optional<std::filesystem::path> SaveText(QWidget* parent,
                                                  const std::filesystem::path& proposal) override;
};
