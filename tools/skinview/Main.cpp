// Shows a markup file in a window, or draws it into a picture: for those who work on the skin.
#include "texts/LanguageManager.h"
#include "ui/windows/WindowImplBase.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QPixmap>
#include <QTextStream>

#include <utility>

namespace {

class SkinViewWindow : public WindowImplBase
{
public:
    explicit SkinViewWindow(QString file) : m_file(std::move(file)) {}

    QString GetWindowClassName() const override { return QStringLiteral("SkinView"); }
    QString GetSkinFile() const override { return m_file; }

private:
    QString m_file;
};

int Fail(const QString& message)
{
    QTextStream(stderr) << message << '\n';
    return 1;
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
    parser.setApplicationDescription(
        QStringLiteral("Shows a markup file of the skin in a window."));
    parser.addPositionalArgument(QStringLiteral("file"),
                                 QStringLiteral("name in the skin, such as xml/LikeItWnd.xml"));
    parser.addHelpOption();
    parser.addOptions({
        {QStringLiteral("skin"), QStringLiteral("Take a folder or zip as the skin."),
         QStringLiteral("path")},
        {QStringLiteral("shot"), QStringLiteral("Draw into a PNG file and end."),
         QStringLiteral("file")},
        {QStringLiteral("language"), QStringLiteral("Show the texts of a language file."),
         QStringLiteral("path")},
        {QStringLiteral("scale"), QStringLiteral("Enlarge everything."), QStringLiteral("factor")},
    });
    parser.process(application);
    return 0;
}
