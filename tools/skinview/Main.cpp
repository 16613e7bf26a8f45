// Shows a markup file in a window, or draws it into a picture: for those who work on the skin.
#include "texts/LanguageManager.h"
#include "tools/skinview/scenes/Scenes.h"
#include "ui/custom/MenuUI.h"
#include "ui/custom/MenuWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QPixmap>
#include <QTextStream>

#include <utility>

namespace {

int Fail(const QString& message)
{
    QTextStream(stderr) << "lumivault-skinview: " << message << '\n';
    return 1;
}

std::shared_ptr<SkinPackage> OpenSkin(const QString& path)
{
    if (QFileInfo(path).isDir()) {
        return SkinPackage::FromFolder(path);
    }
    const auto bytes =
        SkinPackage::FromFolder(QFileInfo(path).path())->Read(QFileInfo(path).fileName());
    return bytes ? SkinPackage::FromZip(*bytes) : nullptr;
}

std::filesystem::path LanguageFile(const QString& stem)
{
    return LanguagePaths::OfThisProgram().dataFolder / "Languages" / (stem.toStdString() + ".ini");
}

void AddOptions(QCommandLineParser& parser)
{
    parser.setApplicationDescription(
        QStringLiteral("Shows a markup file of the skin in a window."));
    parser.addPositionalArgument(
        QStringLiteral("file"), QStringLiteral("Its name in the skin, such as xml/LikeItWnd.xml."));
    parser.addHelpOption();
    parser.addOptions({
        {QStringLiteral("skin"),
         QStringLiteral("Take a folder or a zip as the skin, not what the program carries."),
         QStringLiteral("path")},
        {QStringLiteral("shot"), QStringLiteral("Draw into a PNG file and end."),
         QStringLiteral("file")},
        {QStringLiteral("language"),
         QStringLiteral("Show the texts of a language, such as German."), QStringLiteral("name")},
        {QStringLiteral("scenes"),
         QStringLiteral("Draw every window at work into PNG files of a folder, and end."),
         QStringLiteral("folder")},
        {QStringLiteral("scale"), QStringLiteral("Enlarge everything, such as by 1.5."),
         QStringLiteral("factor")},
    });
}

bool UseSkin(const QString& path)
{
    auto package = OpenSkin(path);
    const bool isSkin = package != nullptr;
    if (isSkin) {
        WindowImplBase::UsePackage(std::move(package));
    }
    return isSkin;
}

void TellProblems(const WindowImplBase& window)
{
    for (const QString& problem : window.MarkupProblems()) {
        QTextStream(stderr) << problem << '\n';
    }
}

// The menu, as it opens from the main window.
bool DrawMenu(const QString& folder, const SceneTexts& texts)
{
    SceneWindow window(QStringLiteral("xml/skin.xml"));
    // It deletes itself when it closes.
    auto* menu = new CMenuWindow({});
    if (!window.Create(nullptr) || !menu->Init(nullptr, 0, 0, window.Root())) {
        delete menu;
        return false;
    }
    for (const auto& [key, text] : texts.Section("MenuWnd").Entries()) {
        if (CControlUI* item = menu->GetMenu()->FindControl(QString::fromStdString(key))) {
            item->SetText(QString::fromStdString(text));
        }
    }
    QApplication::processEvents();
    menu->GetMenu()->adjustSize();
    const bool isDrawn = menu->GetMenu()->grab().save(folder + QStringLiteral("/menu.png"), "PNG");
    menu->GetMenu()->close();
    QApplication::processEvents();
    return isDrawn;
}

int DrawScenes(const QString& folder, const SceneTexts& texts)
{
    for (const Scene& scene : AllScenes()) {
        const auto window = MakeScene(scene, texts);
        if (!window) {
            return Fail(QStringLiteral("%1 cannot be shown").arg(scene.file));
        }
        TellProblems(*window);
        window->show();
        // Without the mark of the keyboard, which would stand on the first control.
        window->setFocus();
        QApplication::processEvents();
        const QString file = QStringLiteral("%1/%2.png").arg(folder, scene.name);
        if (!window->grab().save(file, "PNG")) {
            return Fail(QStringLiteral("%1 cannot be written").arg(file));
        }
    }
    return DrawMenu(folder, texts) ? 0 : Fail(QStringLiteral("the menu cannot be drawn"));
}

int ShowFile(const QCommandLineParser& parser, const QString& file, const SceneTexts& texts)
{
    SceneWindow window(file);
    const bool isMade = window.Create(nullptr);
    TellProblems(window);
    if (!isMade) {
        return Fail(QStringLiteral("%1 cannot be shown").arg(file));
    }
    // All texts of controls; those that the program fills in itself have no control of their name.
    for (const std::string& name : texts.SectionNames()) {
        window.ApplyLanguage(texts.Section(name));
    }
    if (window.size().isEmpty()) {
        window.resize(window.Root().ContentSize());
    }
    window.show();
    const QString shot = parser.value(QStringLiteral("shot"));
    if (shot.isEmpty()) {
        return QApplication::exec();
    }
    return window.grab().save(shot, "PNG") ? 0
                                           : Fail(QStringLiteral("%1 cannot be written").arg(shot));
}

int Run(const QCommandLineParser& parser)
{
    const QString skin = parser.value(QStringLiteral("skin"));
    if (!skin.isEmpty() && !UseSkin(skin)) {
        return Fail(QStringLiteral("%1 is no skin").arg(skin));
    }
    const QString language = parser.value(QStringLiteral("language"));
    const SceneTexts texts(LanguageFile(language.isEmpty() ? QStringLiteral("English") : language));
    if (texts.IsEmpty()) {
        return Fail(QStringLiteral("there is no language %1").arg(language));
    }
    const QString folder = parser.value(QStringLiteral("scenes"));
    return folder.isEmpty() ? ShowFile(parser, parser.positionalArguments().first(), texts)
                            : DrawScenes(folder, texts);
}

}  // namespace

int main(int argc, char** argv)
{
    // Qt reads the scale when it starts, before it has looked at any argument.
    for (int i = 1; i + 1 < argc; ++i) {
        if (qstrcmp(argv[i], "--scale") == 0) {
            qputenv("QT_SCALE_FACTOR", argv[i + 1]);
        }
    }
    const QApplication application(argc, argv);
    QCommandLineParser parser;
    AddOptions(parser);
    parser.process(application);
    const qsizetype wanted = parser.isSet(QStringLiteral("scenes")) ? 0 : 1;
    if (parser.positionalArguments().size() != wanted) {
        QTextStream(stderr) << parser.helpText();
        return 2;
    }
    return Run(parser);
}
