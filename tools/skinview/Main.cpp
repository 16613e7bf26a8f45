// Shows a markup file in a window, or draws it into a picture: for those who work on the skin.
#include "texts/LanguageManager.h"
#include "ui/custom/CustomElements.h"
#include "ui/windows/WindowImplBase.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QPixmap>
#include <QTextStream>

#include <utility>

namespace {

constexpr IniLimits LanguageLimits = {1 << 16, 1 << 10};

class SkinViewWindow : public WindowImplBase
{
public:
    explicit SkinViewWindow(QString file) : m_file(std::move(file)) {}

    QString GetWindowClassName() const override { return QStringLiteral("SkinView"); }
    QString GetSkinFile() const override { return m_file; }

protected:
    std::unique_ptr<CControlUI> CreateControl(const QString& element,
                                              const std::shared_ptr<Skin>& skin) override
    {
        auto control = MakeCustomControl(element, skin);
        return control ? std::move(control) : MakeMenuControl(element, skin);
    }

private:
    QString m_file;
};

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

// All texts of controls; those that the program fills in itself have no control of their name. Nothing is written down.
bool ApplyTexts(WindowImplBase& window, const QString& stem)
{
    const std::filesystem::path folder = LanguagePaths::OfThisProgram().dataFolder / "Languages";
    const IniReader reader = IniReader::FromFile(folder / (stem.toStdString() + ".ini"));
    const std::vector<std::string> sections = reader.SectionNames(LanguageLimits);
    for (const std::string& name : sections) {
        LanguageSection section;
        for (const std::string& line : reader.Lines(name, LanguageLimits)) {
            const IniPair pair = SplitIniLine(line);
            section.Set(pair.key, pair.value);
        }
        window.ApplyLanguage(section);
    }
    return !sections.empty();
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
        {QStringLiteral("scale"), QStringLiteral("Enlarge everything, such as by 1.5."),
         QStringLiteral("factor")},
    });
}

int Show(const QCommandLineParser& parser, const QString& file)
{
    if (parser.isSet(QStringLiteral("skin"))) {
        auto package = OpenSkin(parser.value(QStringLiteral("skin")));
        if (!package) {
            return Fail(QStringLiteral("%1 is no skin").arg(parser.value(QStringLiteral("skin"))));
        }
        WindowImplBase::UsePackage(std::move(package));
    }
    SkinViewWindow window(file);
    const bool isMade = window.Create(nullptr);
    for (const QString& problem : window.MarkupProblems()) {
        QTextStream(stderr) << problem << '\n';
    }
    if (!isMade) {
        return Fail(QStringLiteral("%1 cannot be shown").arg(file));
    }
    const QString language = parser.value(QStringLiteral("language"));
    if (!language.isEmpty() && !ApplyTexts(window, language)) {
        return Fail(QStringLiteral("there is no language %1").arg(language));
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
    if (parser.positionalArguments().size() != 1) {
        QTextStream(stderr) << parser.helpText();
        return 2;
    }
    return Show(parser, parser.positionalArguments().first());
}
