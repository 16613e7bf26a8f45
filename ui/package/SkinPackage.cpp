#include "ui/package/SkinPackage.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QResource>
#include <QStringList>

#include <utility>

namespace {

class ZipSkinPackage : public SkinPackage
{
public:
    explicit ZipSkinPackage(std::vector<std::uint8_t> bytes)
        : m_bytes(std::move(bytes)), m_archive(ZipArchive::Open(ByteView(m_bytes)))
    {
    }
    bool IsValid() const { return m_archive.has_value(); }

protected:
    std::optional<std::vector<std::uint8_t>> ReadPlain(const QString& name) const override
    {
        return m_archive ? m_archive->Read(name.toStdString()) : std::nullopt;
    }

private:
    std::vector<std::uint8_t> m_bytes;
    std::optional<ZipArchive> m_archive;
};

class FolderSkinPackage : public SkinPackage
{
public:
    explicit FolderSkinPackage(QString folder) : m_folder(std::move(folder)) {}

protected:
    std::optional<std::vector<std::uint8_t>> ReadPlain(const QString& name) const override
    {
        const QString path = QDir(m_folder).filePath(name);
        QFile file(path);
        // A device or a pipe could be read without end.
        if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
            return std::nullopt;
        }
        const QByteArray content = file.read(qint64{ZipArchive::MaxMemberBytes} + 1);
        if (content.size() > qint64{ZipArchive::MaxMemberBytes}) {
            return std::nullopt;
        }
        return std::vector<std::uint8_t>(content.begin(), content.end());
    }

private:
    QString m_folder;
};

}  // namespace

std::shared_ptr<SkinPackage> SkinPackage::Embedded()
{
    static const std::shared_ptr<SkinPackage> package = [] {
        const QByteArray content =
            QResource(QStringLiteral(":/lumivault/skin.zip")).uncompressedData();
        return std::make_shared<ZipSkinPackage>(
            std::vector<std::uint8_t>(content.begin(), content.end()));
    }();
    return package;
}

std::shared_ptr<SkinPackage> SkinPackage::FromZip(std::vector<std::uint8_t> bytes)
{
    auto package = std::make_shared<ZipSkinPackage>(std::move(bytes));
    return package->IsValid() ? package : nullptr;
}

std::shared_ptr<SkinPackage> SkinPackage::FromFolder(const QString& folder)
{
    return std::make_shared<FolderSkinPackage>(folder);
}

std::optional<std::vector<std::uint8_t>> SkinPackage::Read(const QString& name) const
{
    const QString plain = PlainName(name);
    return plain.isEmpty() ? std::nullopt : ReadPlain(plain);
}

QString SkinPackage::PlainName(const QString& name)
{
    QString slashed = name;
    slashed.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (slashed.startsWith(QLatin1Char('/')) || slashed.contains(QChar(0))) {
        return {};
    }
    QStringList parts;
    for (const QString& part : slashed.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        if (part == QLatin1String("..")) {
            return {};
        }
        if (part != QLatin1String(".")) {
            parts.append(part);
        }
    }
    return parts.join(QLatin1Char('/'));
}
