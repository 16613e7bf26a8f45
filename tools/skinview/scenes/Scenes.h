// Every window of the program as it looks in the midst of its work, filled with texts of a language and with made-up disks and
// files: for pictures of the windows, and for the tests that look for texts without room.
#pragma once

#include "texts/LanguageSection.h"
#include "ui/windows/WindowImplBase.h"

#include <QSize>
#include <QString>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

// A window of any markup file, which does nothing by itself.
class SceneWindow : public WindowImplBase
{
public:
    explicit SceneWindow(QString file);

    QString GetWindowClassName() const override { return QStringLiteral("SceneWindow"); }
    QString GetSkinFile() const override { return m_file; }

protected:
    std::unique_ptr<CControlUI> CreateControl(const QString& element,
                                              const std::shared_ptr<Skin>& skin) override;

private:
    QString m_file;
};

// The texts of one language file, all at once.
class SceneTexts
{
public:
    explicit SceneTexts(const std::filesystem::path& file);

    bool IsEmpty() const { return m_sections.empty(); }
    std::vector<std::string> SectionNames() const;
    const LanguageSection& Section(const std::string& name) const;
    QString Text(const std::string& section, const QString& key) const;
    QString Message(const QString& key) const { return Text("Messages", key); }
    // Its placeholders become the values, in their order.
    QString Message(const QString& key, const QStringList& values) const
    {
        return Filled(Message(key), values);
    }
    QString Extra(const QString& key, const QStringList& values = {}) const
    {
        return Filled(Text("Extras", key), values);
    }
    static QString Filled(const QString& text, const QStringList& values);

private:
    std::map<std::string, LanguageSection> m_sections;
};

struct Scene
{
    QString name;
    QString file;  // "ScanProcessWnd" for xml/ScanProcessWnd.xml
    QSize size;    // as the program makes it
    std::string section;
    void (*fill)(SceneWindow& window, const SceneTexts& texts, const QString& message);
    QString message;  // the key of that in a message box
};

std::vector<Scene> AllScenes();
// Made, filled and laid out; not shown. Null when the markup cannot be read.
std::unique_ptr<SceneWindow> MakeScene(const Scene& scene, const SceneTexts& texts);
