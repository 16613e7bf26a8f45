#include "tests/skin/SkinFiles.h"

#include <QFile>

#include <filesystem>

SkinTest::SkinTest()
{
    WindowImplBase::UsePackage(SkinPackage::FromFolder(QStringLiteral(LUMIVAULT_SKIN)));
}

SkinTest::~SkinTest()
{
    WindowImplBase::UsePackage(nullptr);
}

std::set<std::string> NamesIn(const std::string& folder, const std::string& ending)
{
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == ending) {
            names.insert(entry.path().stem().string());
        }
    }
    return names;
}

QString MarkupOf(const std::string& name)
{
    QFile file(QStringLiteral(LUMIVAULT_SKIN "/xml/%1.xml").arg(QString::fromStdString(name)));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
    return QString::fromUtf8(file.readAll());
}

std::vector<std::string> LanguageStems()
{
    std::set<std::string> stems = NamesIn(LUMIVAULT_LANGUAGES, ".ini");
    stems.erase("config");
    return {stems.begin(), stems.end()};
}

SceneTexts TextsOf(const std::string& stem)
{
    return SceneTexts(std::filesystem::path(LUMIVAULT_LANGUAGES) / (stem + ".ini"));
}

std::vector<VisualControl*> VisibleControls(const WindowImplBase& window)
{
    std::vector<VisualControl*> controls;
    for (QWidget* widget : window.Root().findChildren<QWidget*>()) {
        auto* control = dynamic_cast<VisualControl*>(widget);
        if (control != nullptr && widget->isVisible()) {
            controls.push_back(control);
        }
    }
    return controls;
}

std::string Describe(const CControlUI& control)
{
    return control.GetName().toStdString() + " \"" + control.GetText().toStdString() + "\"";
}
