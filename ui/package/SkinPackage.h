// Where markup and pictures come from: the zip that is part of the program, another zip, or a folder of plain files while
// somebody works on the skin. User-interface thread.
#pragma once

#include "ui/package/ZipArchive.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class SkinPackage
{
public:
    SkinPackage() = default;
    SkinPackage(const SkinPackage&) = delete;
    SkinPackage& operator=(const SkinPackage&) = delete;
    virtual ~SkinPackage() = default;

    // The package that the program carries; one without members when the build left it out.
    static std::shared_ptr<SkinPackage> Embedded();
    // Null when the bytes are no archive.
    static std::shared_ptr<SkinPackage> FromZip(std::vector<std::uint8_t> bytes);
    // The folder is looked at only when something is read.
    static std::shared_ptr<SkinPackage> FromFolder(const QString& folder);

    // Content by name, such as "xml/skin.xml". A backslash separates like a slash. Nothing when it is missing, damaged,
    // too large or a name that would lead out of the package.
    std::optional<std::vector<std::uint8_t>> Read(const QString& name) const;

    // "xml\skin.xml" and "xml/./skin.xml" are "xml/skin.xml"; empty for a name that leads out of the package.
    static QString PlainName(const QString& name);

protected:
    virtual std::optional<std::vector<std::uint8_t>> ReadPlain(const QString& name) const = 0;
};
